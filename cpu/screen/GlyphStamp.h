// Putting a glyph on the pixels of an image.
#pragma once

#include <cstddef>
#include <cstdint>

#include "QTD/screen/ColorValue.h"
#include "ZynImage.h"

// The pixels to stamp into: checked against the record once, so that the loops behind it are bare.
class StampTarget {
 public:
  // Not valid when the record's lines don't lie in its `imageSize` bytes, or its pixels aren't whole samples,
  // one for a monochrome format and at least three for any other.
  explicit StampTarget(const ZynImage& image);

  bool isValid() const { return firstRow != nullptr; }

  uint8_t* firstRow = nullptr;  // the picture's top row
  ptrdiff_t rowStep = 0;        // bytes down to the next; negative in a bottom-up image
  int width = 0, height = 0;
  int pixelBytes = 0;
  int sampleBytes = 0;  // 1 or 2
  int channels = 0;     // that are stamped: 1 or 3
  int depth = 0;        // significant bits of a sample
  bool blueFirst = false;
};

// A colour in the samples of a target.
struct StampColor {
  StampColor(const ColorValue& color, const StampTarget& target);

  int mode;        // 1 blends, 2 turns the background over, 3 takes black or white against it, others put the
                   // colour
  int range;       // of a sample
  int channel[3];  // in the order of the samples
};

// How much of each pixel a glyph covers, 0 to 255: the first byte of every 24-bit pixel of a sheet.
struct GlyphView {
  const uint8_t* coverage = nullptr;
  ptrdiff_t stride = 0;
  int width = 0, height = 0;
};

// Stamps with the glyph's corner at x, y; what lies outside the image on any side is cut.
void StampGlyph(const StampTarget& target, const StampColor& color, const GlyphView& glyph, int64_t x,
                int64_t y);
