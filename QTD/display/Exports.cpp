// The exported functions of the display and of the controller.
#include <strings.h>

#include <array>

#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "ZynDisplay.h"

namespace {

// The answer for a display that is null or gone.
constexpr uint32_t kNullHandle = 0x80070007;

// Whether the component says that it is of that class; case does not count.
bool IsOfClass(ZynComponent* component, const char* className) {
  if (!component) return false;
  std::array<char, 1024> text{};
  auto size = static_cast<uint32_t>(text.size());
  return component->GetParameterString("class", text.data(), &size) == 0 &&
         strcasecmp(text.data(), className) == 0;
}

void DeleteImplementation(ZynDisplay* display) {
  auto* implementation = static_cast<ZynDisplayImpl*>(display);
  implementation->Controller()->BeginClosing();
  QTD::LiveObjects::Instance().Retire(display, [implementation] {
    implementation->Shutdown();
    delete implementation;
  });
}

void DeleteController(ZynDisplayProcessor* display) {
  // Addresses in the table are those of the controllers, not of this base of theirs.
  auto* controller = static_cast<QTDDisplay*>(display);
  {
    QTD::LiveCall call(controller);
    if (!call || !IsOfClass(controller->GetComponent(), "QTDDisplay")) return;
    controller->BeginClosing();
  }
  QTD::LiveObjects::Instance().Retire(controller, [controller] { delete controller; });
}

}  // namespace

ZynDisplay* ZynDisplay::CreateComponent() {
  return new ZynDisplayImpl;
}

void ZynDisplay::DeleteComponent(ZynDisplay* display) {
  {
    QTD::LiveCall call(display);
    if (!call || !IsOfClass(display->GetComponent(), "ZynDisplayImpl")) return;
  }
  DeleteImplementation(display);
}

ZynDisplayProcessor* ZynDisplayCPU::CreateComponent(QWidget* parent) {
  return new QTDDisplay(parent, false);
}

void ZynDisplayCPU::DeleteComponent(ZynDisplayProcessor* display) {
  DeleteController(display);
}

ZynDisplay* ZynDisplay_CreateComponent() {
  return ZynDisplay::CreateComponent();
}

// Makes no test of the class.
void ZynDisplay_DeleteComponent(ZynDisplay* display) {
  {
    QTD::LiveCall call(display);
    if (!call) return;
  }
  DeleteImplementation(display);
}

ZynComponent* ZynDisplay_GetComponent(ZynDisplay* display) {
  QTD::LiveCall call(display);
  return call ? display->GetComponent() : nullptr;
}

uint32_t ZynDisplay_Initialize(ZynDisplay* display, void* parent, const char* mode, const ZynImage* format) {
  QTD::LiveCall call(display);
  return call ? display->Initialize(parent, mode, format) : kNullHandle;
}

uint32_t ZynDisplay_DisplayVideo(ZynDisplay* display, const ZynImage* image) {
  QTD::LiveCall call(display);
  return call ? display->DisplayVideo(image) : kNullHandle;
}

uint32_t ZynDisplay_DisplayImage(ZynDisplay* display, const ZynImage* image) {
  QTD::LiveCall call(display);
  return call ? display->DisplayImage(image) : kNullHandle;
}

uint32_t ZynDisplay_ConvertImage(ZynDisplay* display, const ZynImage* input, ZynImage* output) {
  QTD::LiveCall call(display);
  return call ? display->ConvertImage(input, output) : kNullHandle;
}
