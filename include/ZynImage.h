/// @file
/// The image record that travels between the host and the library.
#pragma once

#include <cstdint>

/// Describes one image and points at its pixels. The layout (96 bytes, little-endian) is part of the binary
/// contract; a record is plain data and may be copied freely.
///
/// Ownership: the library never frees a host's pixels. `imageData` may point into memory that the record does
/// not own; `ownedData` is the block that belongs to the record that made it, or null. A copy of a record
/// does not own the block: clear `ownedData` and `attachments` in a copy.
///
/// Line 0 starts at `imageData`; line n starts at `imageData + n * linePitch`.
///
/// A host's record needs `pixelType`, `width`, `height`, `linePitch`, `imageSize` and, with pixels,
/// `imageData`; for a single stage also `bitDepth` and `channels`, which a display takes from the pixel code.
/// The rest may be 0.
///
/// Threads: a record has no lock. The library reads a host's record and pixels during the call that hands
/// them over, and not afterwards.
struct ZynImage {
  uint32_t structSize;    ///< 96 in every record that the library builds
  uint32_t version;       ///< carried along, not interpreted
  uint32_t pixelType;     ///< pixel code, see ZynPixelFormat.h; 0 means "no format"
  uint32_t bitDepth;      ///< significant bits of one sample, 8 to 16
  uint32_t reserved;      ///< 0
  uint32_t pixelGroup;    ///< `pixelType & 0xFF00`: depth and packing
  uint32_t channels;      ///< samples of one pixel: 1, 3 or 4
  uint32_t bitsPerPixel;  ///< storage bits of one pixel: `(pixelType >> 16) & 0xFF`
  /// 1 when line 0 is the bottom line of the picture, else 0. Conversions turn the lines of such an image;
  /// the window shows line 0 at the top whatever stands here.
  uint32_t origin;
  uint32_t width;      ///< pixels of a line
  uint32_t height;     ///< lines
  uint32_t imageSize;  ///< bytes of the pixel buffer
  uint32_t linePitch;  ///< bytes from one line to the next
  uint32_t padding;    ///< keeps the 64-bit fields aligned
  /// Capture time in the camera's own unit: not interpreted, and not kept with a shown image. A conversion by
  /// `ZynDisplay` copies it to its output.
  uint64_t timestamp;
  uint64_t imageID;    ///< running number of the image
  void* attachments;   ///< blocks that the library attached; null in a host's record
  uint8_t* imageData;  ///< first byte of line 0
  uint8_t* ownedData;  ///< the block that this record owns, or null
};

static_assert(sizeof(void*) != 8 || sizeof(ZynImage) == 96, "the image record is 96 bytes");
