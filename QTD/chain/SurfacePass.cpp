#include "QTD/chain/SurfacePass.h"

#include "QTD/screen/QTDSurface.h"

// Whether the surface could be prepared is not asked: the stages report what then fails.
SurfacePass::SurfacePass(QTDSurface* usedSurface) : surface(usedSurface) {
  try {
    if (surface) surface->begin(nullptr);
  } catch (...) {
  }
}

SurfacePass::~SurfacePass() {
  try {
    if (surface) surface->end(nullptr, false);
  } catch (...) {
  }
}
