// The pixel formats that the component takes and gives.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Demosaicing {

// A Bayer format, and the place of red in its cell of 2x2 places.
struct BayerFormat {
  uint32_t pixelType;
  uint32_t depth;
  size_t redX, redY;
};

struct ColorFormat {
  uint32_t pixelType;
  uint32_t depth;
  bool blueFirst;
};

// Null for formats that are not handled.
const BayerFormat* FindBayerFormat(uint32_t pixelType);
const ColorFormat* FindColorFormat(uint32_t pixelType);

}  // namespace Demosaicing
