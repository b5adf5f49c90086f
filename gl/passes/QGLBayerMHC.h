// The pass that interpolates a Bayer mosaic: gradient-corrected linear interpolation on 5x5 (Malvar, He and
// Cutler, ICASSP 2004), with an edge-directed green for two of the patterns.
#pragma once

#include "gl/passes/QGLRenderObject.h"

namespace RenderObjects {

// Parameters: "image.flip.vert", "image.color.coef"; "bgr" for a target that the pass makes.
class QGLBayerMHC : public QGLRenderObject {
 public:
  using QGLRenderObject::QGLRenderObject;

  bool Init(const ZynImage* image, QTD::PROPERTIES* list) override;
  bool Render(const ZynImage* image, QTD::PROPERTIES* list) override;
};

}  // namespace RenderObjects
