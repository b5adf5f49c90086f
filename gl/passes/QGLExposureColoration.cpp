#include "gl/passes/QGLExposureColoration.h"

#include "gl/image/QGLImage.h"
#include "gl/surface/QGLSurface.h"

namespace RenderObjects {
namespace {

double Byte(uint32_t color, int index) {
  return (color >> (8 * index) & 0xFF) / 255.0;
}

}  // namespace

bool QGLExposureColoration::Init(const ZynImage* image, QTD::PROPERTIES* list) {
  if (!image) return false;
  const QTD::RMutexLock guard(lock);
  if (!InitPass(
          *image, list,
          {"coloration.v.glsl",
           "coloration.f.glsl",
           {"sourceMono", "colorHigh", "colorCoef", "colored", "source", "thresholds", "clrHi", "clrLo"},
           image->pixelType,
           image,
           std::nullopt})) {
    return false;
  }
  colorLo = static_cast<uint32_t>(parameters.GetInt("clrLo"));
  colorHi = static_cast<uint32_t>(parameters.GetInt("clrHi"));
  thresholdLo = parameters.GetDouble("thrLo");
  thresholdHi = parameters.GetDouble("thrHi");
  return true;
}

bool QGLExposureColoration::Render(const ZynImage* image, QTD::PROPERTIES* args) {
  const QTD::RMutexLock guard(lock);
  if (!CanRender(image) || !args) return false;
  const uint32_t judged = static_cast<uint32_t>(args->GetInt64("source"));
  const int mono = args->GetInt("mono");

  target->bind();
  surface->glActiveTexture(GL_TEXTURE1);  // stays selected: the stage goes back to unit 0
  surface->glBindTexture(GL_TEXTURE_2D, judged);
  UseProgram();
  SetInt("colored", 0);
  SetInt("source", 1);
  SetInt("sourceMono", mono);
  SetFloat("colorCoef", 1.0);
  SetFloat("colorHigh", 1.0);
  SetVec3("clrLo", Byte(colorLo, 0), Byte(colorLo, 1), Byte(colorLo, 2));
  SetVec3("clrHi", Byte(colorHi, 0), Byte(colorHi, 1), Byte(colorHi, 2));
  SetVec2("thresholds", thresholdLo, thresholdHi);
  DrawAndUnbind();
  return true;
}

}  // namespace RenderObjects
