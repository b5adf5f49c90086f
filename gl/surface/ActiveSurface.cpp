#include "gl/surface/ActiveSurface.h"

#include "gl/surface/LivingObjects.h"
#include "gl/surface/QGLSurfaceRef.h"

namespace {

// The one whose context it is.
QGLSurface* OwnerOf(QGLSurface* surface) {
  const auto* const reference = dynamic_cast<QGLSurfaceRef*>(surface);
  return reference ? LivingSurface(reference->Referenced()) : surface;
}

}  // namespace

ActiveSurface::ActiveSurface(const void* usedSurface)
    : surface(LivingSurface(usedSurface)),
      pass(surface && !surface->isActive() ? OwnerOf(surface) : nullptr, SurfacePass::kDeletion) {}
