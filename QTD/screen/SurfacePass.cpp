#include "QTD/screen/SurfacePass.h"

#include "QTD/frame/LivePointers.h"
#include "QTD/screen/QTDSurface.h"

namespace {

bool BeginFor(SurfacePass::Purpose purpose, QTDSurface& surface) {
  if (purpose == SurfacePass::kDrawing) return surface.begin(nullptr);
  QTD::PROPERTIES list;
  list.Set("deletion", "1");
  return surface.begin(&list);
}

}  // namespace

// A surface that cannot be prepared is not ended either: the pass of another thread may be under way on it.
SurfacePass::SurfacePass(QTDSurface* usedSurface, Purpose purpose)
    : surface(usedSurface), begun(!usedSurface) {
  if (!surface) return;
  serial = surface->Serial();
  try {
    begun = BeginFor(purpose, *surface);
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
