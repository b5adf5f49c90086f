// Turns a colour picture into the bytes that a camera of some pixel format would deliver.
#pragma once

#include <cstdint>
#include <vector>

namespace zynview {

// Samples of 16 bits, red, green, blue for each pixel, lines without padding.
struct ColourPicture {
  uint32_t width = 0, height = 0;
  std::vector<uint16_t> samples;

  const uint16_t* Pixel(uint32_t x, uint32_t y) const {
    return samples.data() + (static_cast<std::size_t>(y) * width + x) * 3;
  }
};

// Lines of a format end at whole bytes, and pixels that share samples stand together, where the width is a
// multiple of this. 0 for an unknown format.
uint32_t WidthStep(uint32_t pixelType);

// Lines without padding. Empty for an unknown format and for a width that is no multiple of `WidthStep`.
std::vector<uint8_t> EncodePicture(const ColourPicture& picture, uint32_t pixelType);

// The lines from `first` up to, but without, `end` alone, into the bytes of a picture encoded before.
void EncodeLines(const ColourPicture& picture, uint32_t pixelType, uint32_t first, uint32_t end,
                 std::vector<uint8_t>* bytes);

}  // namespace zynview
