// Making, copying and freeing image records. Any thread; a record belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "ZynImage.h"

namespace QTD {

constexpr uint32_t kRecordSize = 96;

// Bytes of a line of `width` pixels, rounded up to a multiple of 4; 0 when they pass 32 bits.
uint32_t LinePitch(uint32_t width, uint32_t bitsPerPixel);

// A negative height asks for a bottom-up picture (`origin` 1). A null `existing` allocates the record with
// malloc; a given one is zeroed first, its buffers are not freed. Null for an unknown pixel code, and for a
// picture whose bytes pass 32 bits (a fresh record is freed, a given one stays zeroed).
ZynImage* ImageCreateHeader(ZynImage* existing, uint32_t width, int32_t signedHeight, uint32_t pixelType);

// The header and a zero-filled buffer of `imageSize` bytes, owned by the record; a size of 0 gets none. Null
// when memory is short.
ZynImage* ImageCreate(ZynImage* existing, uint32_t width, int32_t signedHeight, uint32_t pixelType);

// A copy without pixels, owned buffer and attachments, in a record of malloc where `existing` is null. A null
// source gives an empty record that has its size and version only.
ZynImage* ImageCloneHeader(ZynImage* existing, const ZynImage* source);

// The record with what follows from its pixel code (depth, channels, storage bits, group) taken from the
// table, for hosts that fill in the code alone, and without attachments: a host's record may be a copy of one
// that has gone, or hold anything there. An unknown code leaves the rest as it is.
ZynImage ImageCompleted(const ZynImage& record);

// Frees the owned buffer and the attachments, a list of malloc blocks with the link to the next one at byte
// 32; the record stays.
void ImageFreeData(ZynImage* image);

// Frees buffer, attachments and the record itself (one made by the functions above); null is ignored, the
// pointer becomes null. A record that is held (see HeldRecords.h) goes with its last holder.
void ImageDelete(ZynImage*& image);

// Copies pixels between records of equal, non-zero size; never beyond either `imageSize`. False when sizes
// differ, and when pitches differ and the lines of one do not fit into its buffer.
bool ImageCopy(const ZynImage* source, ZynImage* target);

// Bytes of a line without its padding.
uint64_t LineBytes(const ZynImage& image);

// Whether the lines that the record speaks of lie within its `imageSize` bytes (the last one without its
// padding) and each within its `linePitch`. A picture without pixels fits.
bool LinesFit(const ZynImage& image);

}  // namespace QTD
