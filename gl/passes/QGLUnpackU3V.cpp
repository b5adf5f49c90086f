#include "gl/passes/QGLUnpackU3V.h"

#include "QTD/image/PixelFormats.h"
#include "gl/image/QGLImage.h"

namespace RenderObjects {

bool QGLUnpackU3V::Init(const ZynImage* image, QTD::PROPERTIES* list) {
  if (!image) return false;
  const QTD::RMutexLock guard(lock);
  const uint32_t unpacked = QTD::UnpackedFormat(image->pixelType);
  return InitPass(*image, list,
                  {"unpack.u3v.v.glsl",
                   "unpack.u3v.f.glsl",
                   {"method", "outputSize", "sourceSize", "source"},
                   unpacked,
                   nullptr,
                   unpacked});
}

bool QGLUnpackU3V::Render(const ZynImage* image, QTD::PROPERTIES*) {
  const QTD::RMutexLock guard(lock);
  if (!CanRender(image)) return false;
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  const int rowBytes = parameters.GetInt("src.size.x");
  const int rows = parameters.GetInt("src.size.y");

  target->bind();
  UseProgram();
  SetInt("source", 0);
  SetSize("sourceSize", rowBytes, rows);
  SetSize("outputSize", width, height);
  SetInt("method", format.depth == 12 ? 1 : 0);
  DrawAndUnbind();
  return true;
}

}  // namespace RenderObjects
