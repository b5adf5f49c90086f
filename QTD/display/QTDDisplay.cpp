#include "QTD/display/QTDDisplay.h"

#include <QCoreApplication>
#include <QMetaType>
#include <QTimer>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/platform/GuiThread.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

struct Default {
  const char* name;
  const char* value;
};

// The display's parameters after creation, in the order of the list.
constexpr Default kDefaults[] = {
    {"system.silent", "1"},
    {"system.timer", "1000"},
    {"display.init.view.fit", "1"},
    {"display.init.view.at.x", "0.500000"},
    {"display.init.view.at.y", "0.500000"},
    {"display.view.fit", "3"},
    {"display.view.bgcolor", "12632256"},
    {"display.overlay.text.font", "default"},
    {"display.overlay.text.clr", "0"},
    {"display.overlay.status.font", "medium"},
    {"display.overlay.status.clr", "15480"},
    {"processing.image.downscale", "0"},
    {"processor", "0"},
    {"display.view.status", "0"},
};

void RegisterSignalTypes() {
  qRegisterMetaType<const char*>("const char*");
  qRegisterMetaType<QTD::PROPERTIES*>("QTD::PROPERTIES*");
  qRegisterMetaType<ZynImage*>("ZynImage*");
}

}  // namespace

QTDDisplay::QTDDisplay(QWidget* parentWidget, bool opengl) {
  RegisterSignalTypes();

  parameters.Set("class", "QTDDisplay");
  parameters.Set("system.opengl", QTD::ToText(opengl));
  parameters.Set("system.parentWidget", QTD::ToText(static_cast<const void*>(parentWidget)));
  parameters.Set("system.objectID", QTD::ToText(Key()));
  for (const Default& entry : kDefaults) parameters.Set(entry.name, entry.value);

  connect(this, &QTDDisplay::signalObjectMessage, this, &QTDDisplay::slotObjectMessage, Qt::QueuedConnection);
  connect(this, &QTDDisplay::signalImageReceived, this, &QTDDisplay::slotCheckIncomingBuffer,
          Qt::QueuedConnection);
  connect(this, &QTDDisplay::signalImageProcessed, this, &QTDDisplay::slotImageProcessed,
          Qt::DirectConnection);
  connect(this, &QTDDisplay::signalConvertImage, this, &QTDDisplay::slotConvertImage, Qt::QueuedConnection);
  connect(this, &QTDDisplay::signalRebuildImage, this, &QTDDisplay::slotRebuildImage, Qt::QueuedConnection);
  connect(this, &QTDDisplay::signalCheckIncomingBuffer, this, &QTDDisplay::slotCheckIncomingBuffer,
          Qt::QueuedConnection);

  SetParameterHandlers(this, this);
  messenger.GetCommonProperties()->Set("from", QTD::ToText(Key()));
  messenger.AddReceiver(this);
  // Last: an address is known only when nothing can go wrong any more.
  QTD::LivePointers<ZynDisplayProcessor>::Instance().Add(this);
  QTD::LiveObjects::Controllers().Add(Key());
}

QTDDisplay::~QTDDisplay() {
  BeginClosing();
  QTD::LiveObjects::Controllers().Remove(Key());
  EndParameterCalls();
  std::unique_ptr<QTDProcessor> leaving;
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    leaving = FreeAll();
  }
  // While the viewer, on whose surface they may live, is there.
  leaving.reset();
  TakeEnding().clear();
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    const QTD::HostCodeUnderLocks scope;
    QTDViewer* closed = viewer;
    viewer = nullptr;
    if (QCoreApplication::instance()) delete closed;  // no widget can be deleted behind the application's end
  }
  // The messenger's thread may still be inside a receiver, which may itself be waiting for this thread.
  while (messenger.IsRunning()) QTD::WaitABit();
  QTD::LivePointers<ZynDisplayProcessor>::Instance().Remove(this);
}

void QTDDisplay::BeginClosing() {
  closing = true;
  messenger.Close();
  if (QTD::platform::HasEnded()) {
    // It is left behind, but calls no receiver any more.
    while (messenger.IsRunning() && !QTD::Messenger::IsDelivering()) QTD::WaitABit();
    return;
  }
  QMetaObject::invokeMethod(
      this, [this] { CloseMenus(); }, Qt::QueuedConnection);
}

ZynComponent* QTDDisplay::GetComponent() {
  return this;
}

ZynImgProcessingChain* QTDDisplay::GetProcessor() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return nullptr;
  std::lock_guard<std::recursive_mutex> guard(handlerLock);
  return processor.get();
}

uint32_t QTDDisplay::Fail(uint32_t code) {
  lastError = code;
  return Compose(code);
}

QTDWindow* QTDDisplay::Window() const {
  return viewer ? viewer->Window() : nullptr;
}

QTDScreen* QTDDisplay::Screen() const {
  QTDWindow* window = Window();
  return window ? window->Screen() : nullptr;
}

// The host deleted its widget, and the viewer goes with it: the display is closed until the next
// `Initialize`. A stage of the host's may have done it: then the chain, in which that stage stands, forgets
// the viewer at once and goes when it has run.
void QTDDisplay::slotViewerClosing() {
  // The end of a host's stage may delete the display. Refused on the way out of it, which needs the rest too.
  const QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  std::unique_ptr<QTDProcessor> leaving;
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    if (walking > 0) {
      viewerLost = true;
      TakePictureAway();
      if (processor) processor->SetStagesLeaving(nullptr);
    } else {
      leaving = FreeAll();
    }
    viewer = nullptr;
  }
  EndChain(std::move(leaving));
  std::scoped_lock guard(viewLock, convertLock, handlerLock);
  if (!viewer) parameters.Set("surface", QTD::ToText(nullptr));
}

// Without images the rates decay, since each tick looks at their window anew.
void QTDDisplay::slotTimer() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  outputRate.Tick(false);
  outputRateHistory.Push(outputRate.Rate());
  inputRate.Tick(false);
  try {
    UpdateStatus();
  } catch (...) {
    // A parameter that cannot be read; nothing may leave an event handler.
  }
}
