#include "QTD/screen/SurfacePass.h"

#include "QTD/frame/LivePointers.h"
#include "QTD/screen/QTDSurface.h"

// A surface that cannot be prepared is not ended either: the pass of another thread may be under way on it.
SurfacePass::SurfacePass(QTDSurface* usedSurface, Purpose purpose)
    : surface(usedSurface), begun(!usedSurface) {
  if (!surface) return;
  serial = surface->Serial();
  try {
    QTD::PROPERTIES list;
    if (purpose == kDeletion) list.Set("deletion", "1");
    begun = surface->begin(purpose == kDeletion ? &list : nullptr);
    if (!begun) surface = nullptr;
  } catch (...) {  // ended all the same: the context may be current
  }
}

// Code of the host's that ran meanwhile may have closed the window that the surface belongs to, and another
// one may have got its place.
SurfacePass::~SurfacePass() {
  try {
    QTDSurface* const living = QTD::LivePointers<QTDSurface>::Instance().Find(surface);
    if (living && living->Serial() == serial) living->end(nullptr, false);
  } catch (...) {
  }
}
