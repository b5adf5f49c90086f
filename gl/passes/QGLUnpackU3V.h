// The pass that takes samples of 10 and 12 bits out of a stream of bytes.
#pragma once

#include "gl/passes/QGLRenderObject.h"

namespace RenderObjects {

// Parameters: "src.size.x", "src.size.y": bytes of a packed row, rows.
class QGLUnpackU3V : public QGLRenderObject {
 public:
  using QGLRenderObject::QGLRenderObject;

  bool Init(const ZynImage* image, QTD::PROPERTIES* list) override;
  bool Render(const ZynImage* image, QTD::PROPERTIES* list) override;
};

}  // namespace RenderObjects
