// The unpack pass, bit by bit.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

// Sample `column` of a row in which samples of `depth` bits follow each other, low bits first. Bits beyond
// the row's end come from its last byte: that is what the card reads there.
inline uint32_t UnpackedSample(const uint8_t* row, size_t rowBytes, size_t column, size_t depth) {
  uint32_t sample = 0;
  for (size_t bit = 0; bit < depth; ++bit) {
    const size_t position = column * depth + bit;
    const uint8_t byte = row[std::min(position / 8, rowBytes - 1)];
    sample |= static_cast<uint32_t>(byte >> position % 8 & 1) << bit;
  }
  return sample;
}

// All rows, directly behind each other.
inline std::vector<uint32_t> UnpackedSamples(const std::vector<uint8_t>& bytes, size_t rowBytes, size_t width,
                                             size_t height, size_t depth) {
  std::vector<uint32_t> samples;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      samples.push_back(UnpackedSample(bytes.data() + y * rowBytes, rowBytes, x, depth));
    }
  }
  return samples;
}

}  // namespace model
