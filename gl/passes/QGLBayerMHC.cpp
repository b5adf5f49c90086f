#include "gl/passes/QGLBayerMHC.h"

#include "QTD/image/PixelFormats.h"
#include "gl/image/QGLImage.h"

namespace RenderObjects {

// Without a list the pass's own target is RGB; with one that does not say "bgr", it is BGR. Kept.
bool QGLBayerMHC::Init(const ZynImage* image, QTD::PROPERTIES* list) {
  if (!image) return false;
  const QTD::RMutexLock guard(lock);
  const bool bgr = list && !list->GetBool("bgr");
  return InitPass(*image, list,
                  {"bayer.mmhc.v.glsl",
                   "bayer.mmhc.f.glsl",
                   {"colorHigh", "colorCoef", "flipVert", "firstRed", "sourceSize", "source"},
                   image->pixelType,
                   image,
                   QTD::DemosaicedFormat(image->pixelType, bgr)});
}

bool QGLBayerMHC::Render(const ZynImage* image, QTD::PROPERTIES*) {
  const QTD::RMutexLock guard(lock);
  if (!CanRender(image)) return false;
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  const int flip = parameters.GetInt("image.flip.vert");
  const double coef = ColorCoef();
  // The red sample's place in the cell of two by two, of the patterns GR, RG, BG, GB.
  const int redX = 1 - static_cast<int>(format.pattern % 2);
  const int redY = format.pattern > 1 ? 1 : 0;

  target->bind();
  UseProgram();
  SetInt("source", 0);
  SetSize("sourceSize", width, height);
  SetVec2("firstRed", redX, redY);
  SetInt("flipVert", flip);
  SetFloat("colorCoef", coef);
  SetFloat("colorHigh", 1.0);
  DrawAndUnbind();
  return true;
}

}  // namespace RenderObjects
