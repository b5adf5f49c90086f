// The pixel loop of the exposure coloration.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ColorationKernels {

// What is compared with the thresholds. Samples are bytes, or little-endian 16-bit words at any address.
enum class Values {
  kByte,     // one byte
  kWord,     // one word
  kByteSum,  // three bytes, added up
  kWordSum,  // three words, added up
};

size_t BytesOf(Values values);  // of one pixel

// Nothing is checked here: both images hold `width` pixels in each of `height` lines. Only the marked pixels
// of the picture change. The two images may be the same one, not otherwise overlap.
struct Job {
  Values values;
  const uint8_t* source;
  size_t sourcePitch;
  uint8_t* picture;  // three bytes a pixel
  size_t picturePitch;
  size_t width;
  size_t height;
  int32_t low;   // values below it take the first colour
  int32_t high;  // values above it, and not below `low`, the second one
  uint8_t lowColor[3];
  uint8_t highColor[3];
};

// Any thread; uses several of its own for large images.
void RunJob(const Job& job);

}  // namespace ColorationKernels
