// A pixel code in decoded form. Not shared between threads.
#pragma once

#include <cstdint>
#include <string>

#include "QTD/frame/Properties.h"

namespace QTD {

class PixelFormat {
 public:
  enum Family : uint32_t { Unknown = 0, Mono = 1, Rgb = 2, Rgba = 4, Bayer = 16, TrueSense = 32, Yuv = 160 };

  explicit PixelFormat(uint32_t code);
  ~PixelFormat();

  void Decode(uint32_t code);
  // A partial inverse of `Decode`: 0 for what has no code. The code of a Bayer format has a family byte of
  // its own and is good for its low half alone. Of the eight p formats only the two of the GR order come out
  // with their own low half: the other rows are counted up one by one from it, though the formats' rows step
  // by two.
  uint32_t Encode() const;
  int LineBytes(int width) const;           // bytes of one source line; 0 for a width below 1
  double ColorScale(int targetBits) const;  // factor from the format's depth to the target's
  bool IsBitStream() const;                 // whether samples follow each other bit by bit: the p formats
  void SetDefault();                        // monochrome, 8 bits
  void Clear();                             // unknown, 0 bits

  uint32_t family = Unknown;
  // RGB: 1 for BGR; Bayer: GR, RG, BG, GB; TrueSense: the position in the list of one depth.
  uint32_t pattern = 0;
  int32_t depth = 0;
  std::string packing;  // "usb" for bit streams, which USB3 cameras deliver; otherwise empty
  // Kept and never filled.
  PROPERTIES properties;
  std::string text;

 private:
  void DecodeBayer(int position);
  void DecodeTrueSense(uint32_t code);
  void DecodeByGroup(uint32_t code);
};

}  // namespace QTD
