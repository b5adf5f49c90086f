#include "gl/passes/QGLColorCorrection.h"

#include "QTD/frame/Text.h"
#include "gl/image/QGLImage.h"

namespace RenderObjects {

QGLColorCorrection::QGLColorCorrection(QGLSurface* usedSurface) : QGLRenderObject(usedSurface) {
  parameters.Set("mode", "0");
  parameters.Set("gamma", QTD::ToText(1.0));
}

bool QGLColorCorrection::Init(const ZynImage* image, QTD::PROPERTIES* list) {
  if (!image) return false;
  const QTD::RMutexLock guard(lock);
  return InitPass(
      *image, list,
      {"corr.color.v.glsl",
       "corr.color.f.glsl",
       {"debugOutput", "debugMode", "colorHigh", "colorCoef", "flipVert", "source", "gamma", "gain", "offs"},
       image->pixelType,
       image,
       std::nullopt});
}

bool QGLColorCorrection::Render(const ZynImage* image, QTD::PROPERTIES*) {
  const QTD::RMutexLock guard(lock);
  if (!CanRender(image)) return false;
  const int flip = parameters.GetInt("image.flip.vert");
  const double coef = ColorCoef();
  const int debugOutput = parameters.GetInt("debug.output");
  const int debugMode = parameters.GetInt("debug.mode");
  const double gamma = parameters.GetDouble("gamma");

  target->bind();
  UseProgram();
  SetInt("source", 0);
  SetInt("flipVert", flip);
  SetFloat("colorCoef", coef);
  SetFloat("colorHigh", 1.0);
  SetInt("debugOutput", debugOutput);
  SetInt("debugMode", debugMode);
  SetVec3("offs", offsR, offsG, offsB);
  SetVec3("gain", gainR, gainG, gainB);
  SetFloat("gamma", gamma);
  DrawAndUnbind();
  return true;
}

}  // namespace RenderObjects
