#include "gl/image/GLPixels.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

struct FamilyRow {
  uint32_t family;
  GLenum format;          // pattern 0
  GLenum reversedFormat;  // other patterns
  GLint internal8;        // depth 8
  GLint internal16;       // other depths
  int channels;
};

constexpr FamilyRow kFamilies[] = {
    {QTD::PixelFormat::Mono, GL_RED, GL_RED, GL_R8, GL_R16, 1},
    {QTD::PixelFormat::Rgb, GL_RGB, GL_BGR, GL_RGB8, GL_RGB16, 3},
    {QTD::PixelFormat::Rgba, GL_RGBA, GL_BGRA, GL_RGBA8, GL_RGBA16, 4},
    {QTD::PixelFormat::Bayer, GL_RED, GL_RED, GL_R8, GL_R16, 1},
    {QTD::PixelFormat::TrueSense, GL_RED, GL_RED, GL_R8, GL_R16, 1},
};

}  // namespace

GLPixels PixelsOf(const QTD::PixelFormat& format) {
  GLPixels pixels;
  const bool bytes = format.depth < 9;
  pixels.type = bytes ? GL_UNSIGNED_BYTE : GL_UNSIGNED_SHORT;
  for (const FamilyRow& row : kFamilies) {
    if (row.family != format.family) continue;
    pixels.format = format.pattern == 0 ? row.format : row.reversedFormat;
    pixels.internalFormat = format.depth == 8 ? row.internal8 : row.internal16;
    pixels.channels = row.channels;
    pixels.sampleBytes = bytes ? 1 : 2;
  }
  return pixels;
}

double DefaultColorCoef(const QTD::PixelFormat& format) {
  return format.ColorScale(format.depth == 8 ? 8 : 16);
}
