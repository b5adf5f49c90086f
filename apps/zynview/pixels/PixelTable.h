// The library's pixel formats: the names that cameras use, and how each one stores its samples.
#pragma once

#include <QString>
#include <cstdint>
#include <string_view>

namespace zynview {

struct PixelRow {
  const char* name;
  uint32_t code;

  // What the stored samples are, in the order of the bytes:
  //   R G B  the colours           L  luminance, 0 to the top of the range   A  opaque
  //   Y U V  BT.601 of a camera: Y from 16 to 235, U and V around 128 (of 255)
  //   W      what a sensor's place without a colour filter sees
  // With slashes it is a mosaic: each pixel has one sample, by its place in these lines, repeated. Without,
  // it is one pixel, or two where it has two Y.
  const char* samples;
  int depth;  // significant bits of a sample
  int slot;   // bits that a sample takes, the lowest first; kPaired: two samples share three bytes
  int phase;  // the mosaic begins at column `phase & 1` of line `phase >> 1`

  bool IsMosaic() const { return std::string_view(samples).find('/') != std::string_view::npos; }
  // One, or three colours, in whole bytes or words: what is left when a display has read its format.
  bool IsPlain() const;
  uint32_t StorageBits() const { return (code >> 16) & 0xFF; }  // of a pixel
  // 2 where two pixels share samples, else 1.
  uint32_t PixelsTogether() const;
  // Of a mosaic alone: columns after which a line repeats, and what a place sees.
  uint32_t MosaicColumns() const;
  char MosaicKind(uint32_t x, uint32_t y) const;
};

constexpr int kPaired = 0;

const PixelRow* FindPixel(uint32_t code);    // null: unknown
uint32_t PixelCode(const QString& name);     // 0: unknown; case does not count
QString PixelNameOf(uint32_t code);          // the code itself where it is unknown
const PixelRow* PixelRowAt(uint32_t index);  // 0 and up; null behind the last row

}  // namespace zynview
