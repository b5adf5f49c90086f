// The packed layouts, group by group: the smallest runs of bytes that hold whole samples.
#pragma once

#include <cstddef>
#include <cstdint>

namespace UnpackKernels {

// A straight stream of bits, lowest first, as the formats "...p" have it.
//
//  10 bits: |b0      |b1      |b2      |b3      |b4      |     12 bits: |b0      |b1      |b2      |
//           |p0 0..7 |89|p1 0..5 |6..9|p2 0..3 |4..9  |p3 ..|           |p0 0..7 |8..B|p1 0..3|4..B|
template <size_t kSampleBits>
struct Stream {
  static constexpr size_t kBits = kSampleBits;
  static constexpr size_t kGroupBytes = kBits == 10 ? 5 : 3;
  static constexpr size_t kGroupSamples = kBits == 10 ? 4 : 2;

  static void Group(const uint8_t* bytes, uint16_t* samples) {
    for (size_t n = 0; n < kGroupSamples; ++n) {
      const size_t bit = n * kBits;
      const uint32_t word = bytes[bit / 8] | uint32_t{bytes[bit / 8 + 1]} << 8;
      samples[n] = static_cast<uint16_t>((word >> bit % 8) & ((1u << kBits) - 1));
    }
  }
};

// The high bits in bytes of their own, the low bits of both samples in the byte between, as the formats
// "...Packed" have it.
//
//  10 bits: |b0      |b1      |b2      |     12 bits: |b0      |b1      |b2      |
//           |p0 2..9 |01--01--|p1 2..9 |              |p0 4..B |0..30..3|p1 4..B |
//                     p0  p1                                    p0  p1
template <size_t kSampleBits>
struct Grouped {
  static constexpr size_t kBits = kSampleBits;
  static constexpr size_t kGroupBytes = 3;
  static constexpr size_t kGroupSamples = 2;
  static constexpr uint32_t kLowMask = (1u << (kBits - 8)) - 1;

  static void Group(const uint8_t* bytes, uint16_t* samples) {
    samples[0] = static_cast<uint16_t>(uint32_t{bytes[0]} << (kBits - 8) | (bytes[1] & kLowMask));
    samples[1] = static_cast<uint16_t>(uint32_t{bytes[2]} << (kBits - 8) | ((bytes[1] >> 4) & kLowMask));
  }
};

}  // namespace UnpackKernels
