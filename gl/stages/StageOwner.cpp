#include "gl/stages/StageOwner.h"

#include <strings.h>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/screen/DisplaySurface.h"
#include "ZynDisplay.h"
#include "gl/surface/QGLSurface.h"

namespace {

// On any thread: the controller does not go while it is looked at.
bool IsController(ZynDisplayProcessor* display) {
  bool accepted = false;
  QTD::LivePointers<ZynDisplayProcessor>::Instance().Visit(display, [&](ZynDisplayProcessor& found) {
    auto* const component = dynamic_cast<QTD::ComponentImpl*>(found.GetComponent());
    accepted = component && strcasecmp(component->Parameters().GetString("class").c_str(), "QTDDisplay") == 0;
  });
  return accepted;
}

}  // namespace

StageOwner::StageOwner(ZynDisplayProcessor* controller)
    : display(IsController(controller) ? controller : nullptr) {}

QGLSurface* StageOwner::Surface() const {
  if (!QTD::LivePointers<ZynDisplayProcessor>::Instance().Find(display)) return nullptr;
  return dynamic_cast<QGLSurface*>(DisplaySurface(display));
}
