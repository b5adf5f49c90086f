// How pixels of a format travel to the card and lie there.
#pragma once

#include <qopengl.h>

#include <cstdint>

#include "QTD/image/PixelFormat.h"

// One row of the table of formats; 0 but for `type` for a family that the card does not hold.
struct GLPixels {
  GLenum format = 0;         // order of the channels in memory
  GLint internalFormat = 0;  // on the card
  GLenum type = 0;           // of one sample in memory
  int channels = 0;
  int sampleBytes = 0;

  uint64_t LineBytes(uint32_t width) const {
    return uint64_t{width} * static_cast<uint64_t>(channels * sampleBytes);
  }
};

GLPixels PixelsOf(const QTD::PixelFormat& format);

// The factor that brings the format's samples to the full range of a texture of 8 bits, for 8 bits, else
// of 16.
double DefaultColorCoef(const QTD::PixelFormat& format);
