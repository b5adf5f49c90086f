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

// The object is told under a call that keeps it alive; of several threads that delete it, one does.
void DeleteImplementation(ZynDisplay* display, bool checkClass) {
  ZynDisplayImpl* implementation = nullptr;
  const void* controller = nullptr;
  {
    QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
    if (!call || (checkClass && !IsOfClass(display->GetComponent(), "ZynDisplayImpl"))) return;
    implementation = static_cast<ZynDisplayImpl*>(display);
    implementation->Controller()->BeginClosing();
    // Slots, stages and menu entries are inside the controller alone.
    controller = static_cast<const ZynDisplayProcessor*>(implementation->Controller());
  }
  QTD::LiveObjects::Displays().Retire(
      display,
      [implementation] {
        implementation->Shutdown();
        delete implementation;
      },
      [controller] { return QTD::LiveObjects::Controllers().IsInside(controller); });
}

void DeleteController(ZynDisplayProcessor* display) {
  QTDDisplay* controller = nullptr;
  {
    // Only what stands in the table is touched: the pointer may be anything.
    QTD::LiveCall call(QTD::LiveObjects::Controllers(), display);
    if (!call || !IsOfClass(display->GetComponent(), "QTDDisplay")) return;
    controller = static_cast<QTDDisplay*>(display);
    controller->BeginClosing();
  }
  QTD::LiveObjects::Controllers().Retire(display, [controller] { delete controller; });
}

}  // namespace

ZynDisplay* ZynDisplay::CreateComponent() {
  return new ZynDisplayImpl;
}

void ZynDisplay::DeleteComponent(ZynDisplay* display) {
  DeleteImplementation(display, true);
}

ZynDisplayProcessor* ZynDisplayCPU::CreateComponent(QWidget* parent) {
  return new QTDDisplay(parent, false);
}

void ZynDisplayCPU::DeleteComponent(ZynDisplayProcessor* display) {
  DeleteController(display);
}

ZynDisplayProcessor* ZynDisplayQGL::CreateComponent(QWidget* parent) {
  return new QTDDisplay(parent, true);
}

void ZynDisplayQGL::DeleteComponent(ZynDisplayProcessor* display) {
  DeleteController(display);
}

ZynDisplay* ZynDisplay_CreateComponent() {
  return ZynDisplay::CreateComponent();
}

// Makes no test of the class.
void ZynDisplay_DeleteComponent(ZynDisplay* display) {
  DeleteImplementation(display, false);
}

ZynComponent* ZynDisplay_GetComponent(ZynDisplay* display) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
  return call ? display->GetComponent() : nullptr;
}

uint32_t ZynDisplay_Initialize(ZynDisplay* display, void* parent, const char* mode, const ZynImage* format) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
  return call ? display->Initialize(parent, mode, format) : kNullHandle;
}

uint32_t ZynDisplay_DisplayVideo(ZynDisplay* display, const ZynImage* image) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
  return call ? display->DisplayVideo(image) : kNullHandle;
}

uint32_t ZynDisplay_DisplayImage(ZynDisplay* display, const ZynImage* image) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
  return call ? display->DisplayImage(image) : kNullHandle;
}

uint32_t ZynDisplay_ConvertImage(ZynDisplay* display, const ZynImage* input, ZynImage* output) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), display);
  return call ? display->ConvertImage(input, output) : kNullHandle;
}
