#include "QTD/screen/SurfacePass.h"

#include "QTD/screen/QTDSurface.h"

// A surface that cannot be prepared is not ended either: the pass of another thread may be under way on it.
// The stages report what then fails.
SurfacePass::SurfacePass(QTDSurface* usedSurface) : surface(usedSurface) {
  try {
    if (surface && !surface->begin(nullptr)) surface = nullptr;
  } catch (...) {
  }
}

SurfacePass::~SurfacePass() {
  try {
    if (surface) surface->end(nullptr, false);
  } catch (...) {
  }
}
