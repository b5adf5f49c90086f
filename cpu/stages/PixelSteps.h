// The steps of the image stage for one pixel: what the blocks of ImageKernels.cpp do for many at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ImageKernels {

// 16-bit samples lie in the host's memory at any address.
inline uint16_t LoadWord(const uint8_t* from) {
  uint16_t word;
  std::memcpy(&word, from, sizeof(word));
  return word;
}

inline void StoreWord(uint16_t word, uint8_t* to) {
  std::memcpy(to, &word, sizeof(word));
}

//  | w | -> |b|    b = min(w >> shift, 255)
struct Reducing {
  int shift;
  uint8_t Sample(const uint8_t* from) const {
    return static_cast<uint8_t>(std::min(LoadWord(from) >> shift, 255));
  }
};

//  | w0 | w1 | ...
//  |b0|b1| ...
struct Reduce : Reducing {
  static constexpr size_t kSource = 2, kTarget = 1;
  void Pixel(const uint8_t* from, uint8_t* to) const { to[0] = Sample(from); }
};

//  | a0 | b0 | c0 | a1 | b1 | c1 | ...
//  |c0|b0|a0|c1|b1|a1| ...
struct ReduceSwap : Reducing {
  static constexpr size_t kSource = 6, kTarget = 3;
  void Pixel(const uint8_t* from, uint8_t* to) const {
    to[0] = Sample(from + 4);
    to[1] = Sample(from + 2);
    to[2] = Sample(from);
  }
};

//  | v0 | v1 | ...
//  |v0|v0|v0|v1|v1|v1| ...
struct ReduceSpread : Reducing {
  static constexpr size_t kSource = 2, kTarget = 3;
  void Pixel(const uint8_t* from, uint8_t* to) const { to[0] = to[1] = to[2] = Sample(from); }
};

//  |a0|b0|c0|a1|b1|c1| ...
//  |c0|b0|a0|c1|b1|a1| ...
struct Swap8 {
  static constexpr size_t kSource = 3, kTarget = 3;
  void Pixel(const uint8_t* from, uint8_t* to) const {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
  }
};

// The same with words.
struct Swap16 {
  static constexpr size_t kSource = 6, kTarget = 6;
  void Pixel(const uint8_t* from, uint8_t* to) const {
    for (size_t channel = 0; channel < 3; ++channel)
      StoreWord(LoadWord(from + 4 - 2 * channel), to + 2 * channel);
  }
};

//  |v0|v1| ...
//  |v0|v0|v0|v1|v1|v1| ...
struct Spread8 {
  static constexpr size_t kSource = 1, kTarget = 3;
  void Pixel(const uint8_t* from, uint8_t* to) const { to[0] = to[1] = to[2] = from[0]; }
};

// The same with words.
struct Spread16 {
  static constexpr size_t kSource = 2, kTarget = 6;
  void Pixel(const uint8_t* from, uint8_t* to) const {
    for (size_t channel = 0; channel < 3; ++channel) StoreWord(LoadWord(from), to + 2 * channel);
  }
};

//  |a|b|c| ...
//  |a|b|c| ...
struct CopyByte {
  static constexpr size_t kSource = 1, kTarget = 1;
  void Pixel(const uint8_t* from, uint8_t* to) const { to[0] = from[0]; }
};

}  // namespace ImageKernels
