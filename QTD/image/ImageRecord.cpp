#include "QTD/image/ImageRecord.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "QTD/image/HeldRecords.h"
#include "QTD/image/PixelFormats.h"

namespace QTD {
namespace {

constexpr uint32_t kRecordVersion = 0x20000;
constexpr size_t kAttachmentLink = 32;  // where a block holds the pointer to the next one
constexpr uint64_t kMaxBytes = std::numeric_limits<uint32_t>::max();

uint64_t PitchOf(uint64_t width, uint64_t bitsPerPixel) {
  return ((bitsPerPixel * width + 31) >> 3) & ~uint64_t{3};
}

ZynImage* AllocateRecord() {
  return static_cast<ZynImage*>(std::calloc(1, sizeof(ZynImage)));
}

void FreeAttachments(ZynImage* image) {
  void* block = image->attachments;
  image->attachments = nullptr;
  while (block != nullptr) {
    void* next;
    std::memcpy(&next, static_cast<uint8_t*>(block) + kAttachmentLink, sizeof(next));
    std::free(block);
    block = next;
  }
}

}  // namespace

// A code may name less storage than its row of the table: stages work by the row, so the wider of both
// counts. A code without storage says nothing, and the whole pitch counts.
uint64_t LineBytes(const ZynImage& image) {
  uint64_t bits = BitsPerPixel(image.pixelType);
  if (const PixelRow* row = FindPixelRow(image.pixelType)) {
    bits = std::max<uint64_t>(bits, BitsPerPixel(row->code));
  }
  return bits == 0 ? image.linePitch : (bits * image.width + 7) / 8;
}

uint32_t LinePitch(uint32_t width, uint32_t bitsPerPixel) {
  const uint64_t pitch = PitchOf(width, bitsPerPixel);
  return pitch <= kMaxBytes ? static_cast<uint32_t>(pitch) : 0;
}

ZynImage* ImageCreateHeader(ZynImage* existing, uint32_t width, int32_t signedHeight, uint32_t pixelType) {
  if (existing != nullptr) *existing = ZynImage{};
  const PixelRow* row = FindPixelRow(pixelType);
  if (row == nullptr) return nullptr;

  const int64_t lines = signedHeight;
  const uint64_t height = static_cast<uint64_t>(lines < 0 ? -lines : lines);
  const uint64_t pitch = PitchOf(width, BitsPerPixel(pixelType));
  // A pitch has at most 38 bits, a height 32: test the pitch first, so that the product stays within 64.
  if (pitch > kMaxBytes || pitch * height > kMaxBytes) return nullptr;

  ZynImage* image = existing != nullptr ? existing : AllocateRecord();
  if (image == nullptr) return nullptr;
  image->structSize = kRecordSize;
  image->pixelType = pixelType;
  image->bitDepth = row->bitDepth;
  image->pixelGroup = PixelGroup(pixelType);
  image->channels = row->channels;
  image->bitsPerPixel = BitsPerPixel(pixelType);
  image->origin = signedHeight < 0 ? 1 : 0;
  image->width = width;
  image->height = static_cast<uint32_t>(height);
  image->linePitch = static_cast<uint32_t>(pitch);
  image->imageSize = static_cast<uint32_t>(pitch * height);
  return image;
}

ZynImage* ImageCreate(ZynImage* existing, uint32_t width, int32_t signedHeight, uint32_t pixelType) {
  ZynImage* image = ImageCreateHeader(existing, width, signedHeight, pixelType);
  if (image == nullptr || image->imageSize == 0) return image;
  image->ownedData = static_cast<uint8_t*>(std::calloc(image->imageSize, 1));
  image->imageData = image->ownedData;
  if (image->ownedData != nullptr) return image;
  *image = ZynImage{};
  if (existing == nullptr) std::free(image);
  return nullptr;
}

ZynImage* ImageCloneHeader(ZynImage* existing, const ZynImage* source) {
  ZynImage* image = existing != nullptr ? existing : AllocateRecord();
  if (image == nullptr) return nullptr;
  ZynImage header{};
  header.version = kRecordVersion;
  if (source != nullptr) header = *source;
  header.structSize = kRecordSize;
  header.attachments = nullptr;  // only the record that made a block frees it
  header.imageData = nullptr;
  header.ownedData = nullptr;
  *image = header;
  return image;
}

ZynImage ImageCompleted(const ZynImage& record) {
  ZynImage completed = record;
  completed.attachments = nullptr;  // nothing says that the blocks of a host's record are any, or still there
  const PixelRow* row = FindPixelRow(record.pixelType);
  if (!row) return completed;
  completed.structSize = kRecordSize;
  completed.bitDepth = row->bitDepth;
  completed.channels = row->channels;
  completed.pixelGroup = PixelGroup(record.pixelType);
  completed.bitsPerPixel = BitsPerPixel(record.pixelType);
  return completed;
}

void ImageFreeData(ZynImage* image) {
  if (image == nullptr) return;
  std::free(image->ownedData);
  image->ownedData = nullptr;
  image->imageData = nullptr;
  FreeAttachments(image);
}

void ImageDelete(ZynImage*& image) {
  ZynImage* const going = image;
  image = nullptr;
  if (going == nullptr) return;
  // First, since the last holder may let go at any moment; and not touched where there is none, since holders
  // read the record meanwhile.
  if (going->attachments != nullptr) FreeAttachments(going);
  if (LeaveToHolders(going)) return;
  ImageFreeData(going);
  std::free(going);
}

bool ImageCopy(const ZynImage* source, ZynImage* target) {
  if (source == nullptr || target == nullptr) return false;
  if (source->imageData == nullptr || target->imageData == nullptr) return false;
  if (source->width == 0 || source->width != target->width) return false;
  if (source->height == 0 || source->height != target->height) return false;

  if (source->linePitch == target->linePitch) {
    std::memmove(target->imageData, source->imageData, std::min(source->imageSize, target->imageSize));
    return true;
  }
  if (!LinesFit(*source) || !LinesFit(*target)) return false;
  const size_t pitch = std::min(source->linePitch, target->linePitch);
  const size_t last = source->height - 1;
  for (size_t line = 0; line <= last; ++line) {
    const size_t from = line * source->linePitch;
    const size_t to = line * target->linePitch;
    // A buffer may end with the last line's pixels instead of its padding.
    const size_t rest = std::min(source->imageSize - from, target->imageSize - to);
    std::memmove(target->imageData + to, source->imageData + from, std::min(pitch, rest));
  }
  return true;
}

bool LinesFit(const ZynImage& image) {
  if (image.width == 0 || image.height == 0) return true;
  const uint64_t line = LineBytes(image);
  return line <= image.linePitch && uint64_t{image.height - 1} * image.linePitch + line <= image.imageSize;
}

}  // namespace QTD
