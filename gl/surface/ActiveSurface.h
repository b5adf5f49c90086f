// The context of a surface, for what has to be deleted on it.
#pragma once

#include "QTD/screen/SurfacePass.h"
#include "gl/surface/QGLSurface.h"

// Owners delete between `begin` and `end`; where one does not, or its surface is gone, this makes the context
// current for the scope, or is false. GUI thread.
class ActiveSurface {
 public:
  // May point to where a surface was.
  explicit ActiveSurface(const void* usedSurface);

  explicit operator bool() const { return surface && surface->isActive(); }
  QGLSurface* operator->() const { return surface; }

 private:
  QGLSurface* surface;
  SurfacePass pass;
};
