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

// Whether `EncodePicture` knows the format: monochrome, Bayer, RGB and BGR, plain or packed, and UYVY.
bool CanEncode(uint32_t pixelType);

// Lines without padding.
std::vector<uint8_t> EncodePicture(const ColourPicture& picture, uint32_t pixelType);

}  // namespace zynview
