#include "gl/image/LineTransfer.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <limits>

#include "gl/surface/QGLSurface.h"

namespace {

// How the driver steps from line to line: lines are aligned, or counted in whole pixels, or neither says it
// and they go one by one.
struct Stepping {
  GLint alignment = 1;
  GLint rowLength = 0;  // pixels; 0: the picture's width
  bool oneByOne = false;
};

Stepping SteppingOf(const GLPixels& pixels, int width, uint64_t pitch) {
  Stepping stepping;
  const uint64_t line = pixels.LineBytes(static_cast<uint32_t>(width));
  const uint64_t pixel = pixels.LineBytes(1);
  if (pixel == 0) return stepping;
  for (const uint64_t alignment : {1u, 2u, 4u, 8u}) {
    if ((line + alignment - 1) / alignment * alignment != pitch) continue;
    stepping.alignment = static_cast<GLint>(alignment);
    return stepping;
  }
  if (pitch % pixel == 0 && pitch <= static_cast<uint64_t>(std::numeric_limits<GLint>::max())) {
    stepping.rowLength = static_cast<GLint>(pitch / pixel);
  } else {
    stepping.oneByOne = true;
  }
  return stepping;
}

}  // namespace

bool LinesLieWithin(const ZynImage& image, uint64_t lineBytes, uint32_t height) {
  if (height == 0) return true;
  return lineBytes <= image.linePitch &&
         uint64_t{height - 1} * image.linePitch + lineBytes <= image.imageSize;
}

void UploadLines(QGLSurface& surface, const GLPixels& pixels, int width, int height, const uint8_t* data,
                 uint32_t pitch) {
  // One line has no other to step to.
  if (height == 1) pitch = static_cast<uint32_t>(pixels.LineBytes(static_cast<uint32_t>(width)));
  const Stepping stepping = SteppingOf(pixels, width, pitch);
  surface.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);  // a host's stage may have left one: `data` is an address
  surface.glPixelStorei(GL_UNPACK_ALIGNMENT, stepping.alignment);
  surface.glPixelStorei(GL_UNPACK_ROW_LENGTH, stepping.rowLength);
  if (stepping.oneByOne) {
    for (int y = 0; y < height; ++y) {
      surface.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, y, width, 1, pixels.format, pixels.type,
                              data + static_cast<size_t>(y) * pitch);
    }
  } else {
    surface.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, pixels.format, pixels.type, data);
  }
  surface.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  surface.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
}

void ReadLines(QGLSurface& surface, const GLPixels& pixels, int width, int height, uint8_t* data,
               uint64_t pitch) {
  const Stepping stepping = SteppingOf(pixels, width, pitch);
  surface.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  surface.glPixelStorei(GL_PACK_ALIGNMENT, stepping.alignment);
  surface.glPixelStorei(GL_PACK_ROW_LENGTH, stepping.rowLength);
  if (stepping.oneByOne) {
    for (int y = 0; y < height; ++y) {
      surface.glReadPixels(0, y, width, 1, pixels.format, pixels.type, data + static_cast<size_t>(y) * pitch);
    }
  } else {
    surface.glReadPixels(0, 0, width, height, pixels.format, pixels.type, data);
  }
  surface.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  surface.glPixelStorei(GL_PACK_ALIGNMENT, 1);
}
