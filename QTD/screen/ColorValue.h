// The colour record that all drawing operations take.
#pragma once

#include <cstdint>

struct ColorValue {
  // From a number with red in the lowest byte, then green, then blue.
  explicit ColorValue(uint32_t number = 0, int32_t colorRange = 256);
  ColorValue(int redPart, int greenPart, int bluePart, int32_t colorRange = 256);

  // The same colour for samples of `bits` bits: the doubles stay (white stays 1.0), the integers are rescaled
  // to 0..2^bits - 1.
  ColorValue AtDepth(int bits) const;
  // The luminance in all three components, rounded and held in 0..range - 1.
  ColorValue Grey() const;
  bool IsBlack() const { return red == 0 && green == 0 && blue == 0; }

  int32_t range = 256;
  int32_t mode = 0;  // how text is put on a memory image: see MEMSurfaceText
  int32_t red = 0, green = 0, blue = 0, alpha = 0;
  int32_t depth = 8;                                               // bits of a component
  double redPart = 0, greenPart = 0, bluePart = 0, alphaPart = 0;  // the components in 0..1
  double redWeight = 0.3086, greenWeight = 0.6094, blueWeight = 0.082;
};
