#include "QTD/screen/DisplaySurface.h"

#include <stdexcept>
#include <string>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/QTDSurface.h"
#include "ZynDisplay.h"

namespace {

std::string DisplayText(ZynDisplayProcessor* display, const char* name) {
  ZynComponent* const component = display ? display->GetComponent() : nullptr;
  if (!component) return {};
  if (auto* const own = dynamic_cast<QTD::ComponentImpl*>(component))
    return own->Parameters().GetString(name);
  // A component that a host made.
  char text[64] = "";
  uint32_t size = sizeof text;
  return component->GetParameterString(name, text, &size) == 0 ? text : std::string();
}

}  // namespace

void* DisplayPointer(ZynDisplayProcessor* display, const char* name) {
  return QTD::ParsePointer(DisplayText(display, name));
}

int DisplayNumber(ZynDisplayProcessor* display, const char* name) {
  try {
    return QTD::ParseInt(DisplayText(display, name));
  } catch (const std::logic_error&) {
    return 0;
  }
}

QTDSurface* DisplaySurface(ZynDisplayProcessor* display) {
  return QTD::LivePointers<QTDSurface>::Instance().Find(DisplayPointer(display, "surface"));
}
