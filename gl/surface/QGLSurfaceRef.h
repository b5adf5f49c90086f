// A second surface on the context of another one: what draws into a texture uses it, so that code that is
// written for surfaces runs with another size and leaves the window's alone.
#pragma once

#include "gl/surface/QGLSurface.h"

// Between `begin` and `end` of the surface that it refers to; its own do nothing. It owns no context.
class QGLSurfaceRef : public QGLSurface {
 public:
  explicit QGLSurfaceRef(QGLSurface* referenced);  // not owned; null: "surface" of `init`'s list
  ~QGLSurfaceRef() override;

  bool init(QTD::PROPERTIES* list) override;  // "size.x", "size.y": its size
  bool done() override;
  bool begin(QTD::PROPERTIES* list) override;  // true
  void end(QTD::PROPERTIES* list, bool flush) override;
  void flush(QTD::PROPERTIES* list) override;
  const QGLSurface* Referenced() const { return referencedSurface; }  // it may be gone

 private:
  QGLSurface* referencedSurface;  // not owned; stays over `done`
};
