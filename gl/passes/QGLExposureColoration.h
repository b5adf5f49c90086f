// The pass that marks pixels which are too dark or too bright.
#pragma once

#include "gl/passes/QGLRenderObject.h"

namespace RenderObjects {

// The picture to mark is bound to texture unit 0; `Render` takes "source", the texture to judge by, and
// "mono" from its list. Members are written under `Lock`.
class QGLExposureColoration : public QGLRenderObject {
 public:
  using QGLRenderObject::QGLRenderObject;

  bool Init(const ZynImage* image, QTD::PROPERTIES* list) override;
  bool Render(const ZynImage* image, QTD::PROPERTIES* args) override;

  uint32_t colorLo = 0, colorHi = 0;        // 0x00BBGGRR
  double thresholdLo = 0, thresholdHi = 0;  // texture values
};

}  // namespace RenderObjects
