#include "QTD/screen/SurfacePass.h"

#include "QTD/frame/LivePointers.h"
#include "QTD/screen/QTDSurface.h"

// A surface that cannot be prepared is not ended either: the pass of another thread may be under way on it.
// The stages report what then fails.
SurfacePass::SurfacePass(QTDSurface* usedSurface) : surface(usedSurface) {
  try {
    if (surface && !surface->begin(nullptr)) surface = nullptr;
  } catch (...) {
  }
}

// Code of the host's that ran meanwhile may have closed the window that the surface belongs to.
SurfacePass::~SurfacePass() {
  try {
    QTDSurface* const living = QTD::LivePointers<QTDSurface>::Instance().Find(surface);
    if (living) living->end(nullptr, false);
  } catch (...) {
  }
}
