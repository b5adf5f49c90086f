// Lines of a mosaic in, lines of a picture out: what all methods share. Any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "demosaicing/Method.h"

namespace Demosaicing {

inline size_t SampleBytes(uint32_t depth) {
  return depth > 8 ? 2 : 1;
}

// The greatest sample of a depth.
inline uint32_t Greatest(uint32_t depth) {
  return (1u << depth) - 1;
}

// The sample at a column of a line; one above the depth counts as its greatest.
inline uint16_t SampleAt(const uint8_t* line, uint32_t depth, size_t column) {
  if (depth == 8) return line[column];
  uint16_t word;
  std::memcpy(&word, line + 2 * column, 2);
  return static_cast<uint16_t>(std::min<uint32_t>(word, Greatest(depth)));
}

// Reads `count` places of a line from `column` on. Lines and columns outside the mosaic, of any distance, are
// mirrored; samples above the depth count as its greatest.
//
//   columns  -2 -1 |  0  1  2  3 ...
//   source         |  a  b  c  d ...
//   to        c  b |  a  b  c  d ...
void ReadLine(const Mosaic& mosaic, ptrdiff_t line, ptrdiff_t column, size_t count, uint16_t* to);

// Results of at least so many bytes are stored past the caches, which could not keep them until somebody
// reads them; their lines are then not read before they are written.
constexpr size_t kPastCachesBytes = size_t{8} << 20;

// Whether the results for this mosaic should be stored past the caches.
inline bool GoesPastCaches(const Mosaic& mosaic) {
  return mosaic.width * mosaic.height * 3 * SampleBytes(mosaic.depth) >= kPastCachesBytes;
}

// Copies finished bytes into a picture. After the last of those that went past the caches, each thread calls
// `EndWrites`.
void WriteBytes(uint8_t* to, const uint8_t* from, size_t count, bool pastCaches);
void EndWrites(bool pastCaches);

// Writes `count` pixels of a picture of samples of `depth` bits, in its order of channels, from `column` of
// `line` on. Samples above the depth become its greatest.
//
//   red    r0 r1 r2 ...
//   green  g0 g1 g2 ...   ->   r0 g0 b0 r1 g1 b1 r2 ...   or   b0 g0 r0 b1 g1 r1 b2 ...
//   blue   b0 b1 b2 ...
void WritePixels(const Picture& picture, uint32_t depth, size_t line, size_t column, size_t count,
                 const uint16_t* red, const uint16_t* green, const uint16_t* blue, bool pastCaches);

}  // namespace Demosaicing
