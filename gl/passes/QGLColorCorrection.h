// The pass that applies gain, offset and gamma.
#pragma once

#include "gl/passes/QGLRenderObject.h"

namespace RenderObjects {

// Parameters: "gamma", "image.flip.vert", "image.color.coef", "debug.mode", "debug.output". All are written
// under `Lock`, so that a picture gets all of a change or none of it.
class QGLColorCorrection : public QGLRenderObject {
 public:
  explicit QGLColorCorrection(QGLSurface* usedSurface);

  bool Init(const ZynImage* image, QTD::PROPERTIES* list) override;
  bool Render(const ZynImage* image, QTD::PROPERTIES* list) override;

  double gainR = 1, gainG = 1, gainB = 1;
  double offsR = 0, offsG = 0, offsB = 0;  // fractions of the full range
};

}  // namespace RenderObjects
