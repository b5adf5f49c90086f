#include "gl/stages/StageOwner.h"

#include <strings.h>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/screen/DisplaySurface.h"
#include "ZynDisplay.h"
#include "gl/surface/QGLSurface.h"

namespace {

bool IsController(ZynDisplayProcessor* display) {
  auto* const component = display ? dynamic_cast<QTD::ComponentImpl*>(display->GetComponent()) : nullptr;
  return component && strcasecmp(component->Parameters().GetString("class").c_str(), "QTDDisplay") == 0;
}

}  // namespace

StageOwner::StageOwner(ZynDisplayProcessor* controller)
    : display(IsController(controller) ? controller : nullptr) {}

QGLSurface* StageOwner::Surface() const {
  return dynamic_cast<QGLSurface*>(DisplaySurface(display));
}
