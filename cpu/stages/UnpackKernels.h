// The loops of the unpack stage: packed samples to 16-bit words.
#pragma once

#include <cstddef>
#include <cstdint>

namespace UnpackKernels {

// The layouts, drawn in PackedGroups.h.
enum class Packing {
  kMono10g,  // 3 bytes hold 2 samples of 10 bits, their low bits in the middle byte
  kMono12g,  // the same with 12 bits
  kMono10p,  // a stream of bits, 5 bytes hold 4 samples
  kMono12p,  // a stream of bits, 3 bytes hold 2 samples
};

// Bytes from one source line's start to the next. Where the last group of a line is cut off, what it lacks is
// taken from the next line.
size_t LineBytes(Packing packing, size_t width);

// Lines of 12-bit streams whose width is no multiple of 4 follow each other without regard to bytes.
bool IsOneStream(Packing packing, size_t width);

// All lines of an image. Exactly `width` words are written in each of `height` lines, and nothing between
// them; no more than `sourceBytes` are read, and what lies behind them counts as 0. Nothing is checked here;
// source and target do not overlap.
struct Job {
  Packing packing;
  const uint8_t* source;
  size_t sourceBytes;
  uint16_t* target;
  size_t targetPitch;  // in words
  size_t width;
  size_t height;
};

// Any thread; uses several of its own for large images, but one only for an image that is one stream. Such an
// image leaves the target alone when its source has not even one group of 3 bytes.
void RunJob(const Job& job);

}  // namespace UnpackKernels
