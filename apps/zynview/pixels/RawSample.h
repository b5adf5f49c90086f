// One pixel of a camera image as the camera delivered it: before unpacking, demosaicing, correction.
#pragma once

#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>

#include "ZynImage.h"

namespace zynview {

// Its samples in the depth of the camera. A mosaic has one, of the colour that this place sees.
struct RawSample {
  struct Part {
    char kind;  // a letter of `PixelRow::samples`
    uint32_t value;
  };
  std::array<Part, 4> parts{};
  std::size_t count = 0;
  int depth = 0;

  // Such as "G 812 of 1023" or "R 12  G 30  B 255 of 255".
  QString Text() const;
};

// False off the picture, for an unknown format, and where the bytes are not all within `imageSize`. Reads
// nothing else than these bytes. Line 0 of the picture is its top line, whatever the image's origin.
bool ReadSample(const ZynImage& image, uint32_t x, uint32_t y, RawSample* sample);

}  // namespace zynview
