#include "QTD/display/ZynDisplayImpl.h"

#include <QApplication>
#include <QWidget>
#include <atomic>
#include <exception>
#include <memory>

#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Text.h"

namespace {

constexpr uint32_t kFailure = 0x80000000;

// A window id names the widget; anything else is taken as the widget itself.
QWidget* FindParent(void* parent) {
  if (!parent) return nullptr;
  if (QWidget* widget = QWidget::find(reinterpret_cast<WId>(parent))) return widget;
  return static_cast<QWidget*>(parent);
}

}  // namespace

ZynDisplayImpl::ZynDisplayImpl() : controller(std::make_unique<QTDDisplay>(nullptr, false)) {
  parameters.Set("class", "ZynDisplayImpl");
  SetParameterHandlers(this, this);
  controller->AddNotification(this);
  parameters.Set("system.signature", QTD::ToText(static_cast<long long>(reinterpret_cast<intptr_t>(this))));
  // Last: an address is known only when nothing can go wrong any more.
  QTD::LiveObjects::Displays().Add(static_cast<ZynDisplay*>(this));
}

ZynDisplayImpl::~ZynDisplayImpl() {
  controller->BeginClosing();
  QTD::LiveObjects::Displays().Remove(static_cast<ZynDisplay*>(this));
  EndParameterCalls();
  // No notification comes in any more once this object is only half there.
  controller->DelNotification(this);
  controller.reset();
}

ZynComponent* ZynDisplayImpl::GetComponent() {
  return this;
}

bool ZynDisplayImpl::IsReserved() {
  return false;
}

void ZynDisplayImpl::Shutdown() {}

uint32_t ZynDisplayImpl::Initialize(void* parent, const char* mode, const ZynImage* format) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  const void* widget = parent;
  if (parent && QCoreApplication::instance()) {
    // Windows are looked up on the GUI thread, and waited for like the initialisation itself: a window's id
    // must never pass for the address of a widget because that thread was busy.
    const auto found = std::make_shared<std::atomic<QWidget*>>(nullptr);
    const bool looked = QTD::RunOnGuiThread([found, parent] { *found = FindParent(parent); },
                                            [this] { return controller->IsClosing(); });
    if (!looked) return Compose(ZYN_ERR_NOT_READY);
    widget = *found;
  }
  controller->Parameters().Set("system.parentWidget", QTD::ToText(widget));
  return Initialize(format, mode);
}

uint32_t ZynDisplayImpl::Initialize(const ZynImage* format, const char* mode) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  const bool opengl = mode && std::string(mode) == "opengl";
  controller->Parameters().Set("system.opengl", QTD::ToText(opengl));
  return Compose(QTD::BareCode(controller->Initialize(format)));
}

// A failing image is offered a second time, and the second answer counts.
uint32_t ZynDisplayImpl::DisplayVideo(const ZynImage* image) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  if (controller->DisplayVideo(image) == 0) return 0;
  return kFailure | (uint32_t{GetComponentID()} << 16) | controller->DisplayVideo(image);
}

uint32_t ZynDisplayImpl::DisplayImage(const ZynImage* image) {
  (void)image;
  return Compose(ZYN_ERR_NOT_IMPLEMENTED);
}

uint32_t ZynDisplayImpl::ConvertImage(const ZynImage* input, ZynImage* output) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  const uint32_t code = QTD::BareCode(controller->ConvertImageAnew(input, output));
  if (code != 0) return Compose(code);
  output->timestamp = input->timestamp;
  output->imageID = input->imageID;
  return 0;
}

uint32_t ZynDisplayImpl::TranslatePosition(uint32_t* x, uint32_t* y, int direction) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  const bool toImage = direction == 1;
  QTD::ARGUMENTS args;
  QTD::ArgumentView view(&args);
  view.Set("pos.x", QTD::ToText(x ? static_cast<int>(*x) : 0))
      .Set("pos.y", QTD::ToText(y ? static_cast<int>(*y) : 0));
  view.Set("cs.dst", toImage ? "img" : "win").Set("cs.src", toImage ? "win" : "img");
  const uint32_t result = controller->RunCommand("cmd.display.view.translate", &args);
  // The command answers "%f" text: reading it as an integer cuts the fraction off.
  try {
    const int newX = view.GetInt("pos.x");
    const int newY = view.GetInt("pos.y");
    if (x) *x = static_cast<uint32_t>(newX);
    if (y) *y = static_cast<uint32_t>(newY);
  } catch (const std::exception&) {
    return Compose(ZYN_ERR_FAILED);  // too large for an integer: the position stays
  }
  return result == 0 ? Compose(ZYN_ERR_FAILED) : 0;
}
