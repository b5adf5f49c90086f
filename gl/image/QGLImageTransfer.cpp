// Pixels of a QGLImage's record, up to the card and back.
#include <GL/gl.h>
#include <GL/glext.h>

#include <exception>
#include <opencv2/core.hpp>

#include "gl/image/GLPixels.h"
#include "gl/image/LineTransfer.h"
#include "gl/image/QGLImage.h"
#include "gl/surface/QGLSurface.h"

namespace {

// Left to right, in the image's own memory. One sample for each of `width` columns counts as a pixel, also
// where a pixel has several: kept.
bool MirrorLines(const ZynImage& image) {
  const bool bytes = image.bitDepth == 8;
  const uint64_t line = uint64_t{image.width} * (bytes ? 1 : 2);
  if (image.width == 0 || image.height == 0 || !LinesLieWithin(image, line, image.height)) return false;
  const bool whole = bytes || image.linePitch % 2 == 0;  // no matrix has lines of half a sample more
  const uint32_t together = whole ? image.height : 1;
  try {
    for (uint32_t first = 0; first < image.height; first += together) {
      cv::Mat lines(static_cast<int>(together), static_cast<int>(image.width), bytes ? CV_8UC1 : CV_16UC1,
                    image.imageData + uint64_t{first} * image.linePitch,
                    whole ? image.linePitch : size_t{cv::Mat::AUTO_STEP});
      cv::flip(lines, lines, 1);
    }
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

// Whether a picture of that family can be read back.
bool IsReadable(const QTD::PixelFormat& format) {
  return (format.family & (QTD::PixelFormat::Mono | QTD::PixelFormat::Rgb)) != 0;
}

// The bytes from line to line in the target's buffer: its pitch or the bare line, whichever fills the buffer
// to the byte; 0 when neither does.
uint64_t PitchThatFits(const ZynImage& target, uint64_t line, uint64_t height) {
  if (target.linePitch >= line && target.linePitch * height == target.imageSize) return target.linePitch;
  return line * height == target.imageSize ? line : 0;
}

}  // namespace

bool QGLImage::fillGPU(const ZynImage* image) {
  if (!isLive() || !record || !record->imageData) return false;
  if (image) {
    if (image->width == 0 || image->height == 0 || !image->imageData) return false;
    if (image->width != record->width || image->height != record->height) return false;
  }
  const ZynImage& source = image ? *image : *record;
  const GLPixels pixels = PixelsOf(format);
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  if (!LinesLieWithin(source, pixels.LineBytes(static_cast<uint32_t>(width)), static_cast<uint32_t>(height)))
    return false;

  const bool turn = parameters.GetInt("image.flip.vert", "0") == 1;  // may throw: nothing is bound yet
  bind();
  read = false;
  if (!turn || MirrorLines(source))
    UploadLines(*surface, pixels, width, height, source.imageData, source.linePitch);
  const bool good = checkError("QGLImage::fillGPU()") == 0;
  unbind();
  return good;
}

uint8_t* QGLImage::readGPU(ZynImage* target) {
  ZynImage* const to = target ? target : record;
  if (!isLive() || !record || !to->imageData) return nullptr;
  QTD::PixelFormat wanted(to->pixelType);
  if (to->pixelType == format.Encode()) {
    wanted.family = format.family;
    wanted.pattern = format.pattern;
    wanted.depth = format.depth;
  }
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  const GLPixels pixels = PixelsOf(wanted);
  const uint64_t pitch =
      IsReadable(wanted)
          ? PitchThatFits(*to, pixels.LineBytes(static_cast<uint32_t>(width)), static_cast<uint64_t>(height))
          : 0;

  surface->glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
  if (pitch != 0) ReadLines(*surface, pixels, width, height, to->imageData, pitch);
  const bool good = checkError("QGLImage::readGPU()") == 0;
  surface->glBindTexture(GL_TEXTURE_2D, 0);
  surface->glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  if (pitch != 0 && to == record) read = good;
  return pitch != 0 ? to->imageData : nullptr;
}
