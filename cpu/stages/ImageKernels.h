// The pixel loops of the image stage.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ImageKernels {

// What happens to each pixel. Samples are bytes, or little-endian 16-bit words at any address.
//
//                  source pixel       target pixel
enum class Step {
  kReduce,        // one word           one byte: min(word >> shift, 255)
  kReduceSwap,    // words a b c        bytes c b a, reduced
  kReduceSpread,  // one word v         bytes v v v, reduced
  kSwap8,         // bytes a b c        bytes c b a
  kSwap16,        // words a b c        words c b a
  kSpread8,       // one byte v         bytes v v v
  kSpread16,      // one word v         words v v v
  kCopy,          // a byte             the byte
};

// Bytes of one pixel before and after a step.
struct PixelBytes {
  uint32_t source;
  uint32_t target;
};

PixelBytes BytesOf(Step step);

// One step over all lines of an image. Nothing is checked here: both images hold `width` pixels in each of
// `height` lines, and they do not overlap. Bytes behind the pixels of a line are neither read nor written.
struct Job {
  Step step;
  const uint8_t* source;
  size_t sourcePitch;
  uint8_t* target;
  size_t targetPitch;
  size_t width;
  size_t height;
  uint32_t shift;  // of the reducing steps, 0 to 15
};

// Any thread; uses several of its own for large images.
void RunJob(const Job& job);

// Copies a block; source and target do not overlap. Any thread, like `RunJob`.
void CopyBlock(const uint8_t* source, uint8_t* target, size_t bytes);

}  // namespace ImageKernels
