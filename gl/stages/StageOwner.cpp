#include "gl/stages/StageOwner.h"

#include <strings.h>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/screen/DisplaySurface.h"
#include "ZynDisplay.h"
#include "gl/surface/QGLSurface.h"

namespace {

bool IsController(ZynDisplayProcessor* display) {
  if (!QTD::LivePointers<ZynDisplayProcessor>::Instance().Find(display)) return false;
  auto* const component = dynamic_cast<QTD::ComponentImpl*>(display->GetComponent());
  return component && strcasecmp(component->Parameters().GetString("class").c_str(), "QTDDisplay") == 0;
}

}  // namespace

StageOwner::StageOwner(ZynDisplayProcessor* controller)
    : display(IsController(controller) ? controller : nullptr) {}

QGLSurface* StageOwner::Surface() const {
  if (!QTD::LivePointers<ZynDisplayProcessor>::Instance().Find(display)) return nullptr;
  return dynamic_cast<QGLSurface*>(DisplaySurface(display));
}
