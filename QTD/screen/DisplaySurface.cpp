#include "QTD/screen/DisplaySurface.h"

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/QTDSurface.h"
#include "ZynDisplay.h"

void* DisplayPointer(ZynDisplayProcessor* display, const char* name) {
  ZynComponent* const component = display ? display->GetComponent() : nullptr;
  if (!component) return nullptr;
  if (auto* const own = dynamic_cast<QTD::ComponentImpl*>(component))
    return own->Parameters().GetPointer(name);
  // A component that a host made.
  char text[64] = "";
  uint32_t size = sizeof text;
  return component->GetParameterString(name, text, &size) == 0 ? QTD::ParsePointer(text) : nullptr;
}

QTDSurface* DisplaySurface(ZynDisplayProcessor* display) {
  return QTD::LivePointers<QTDSurface>::Instance().Find(DisplayPointer(display, "surface"));
}
