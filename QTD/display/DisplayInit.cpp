// Initialisation of the display: viewer, chain, format and buffers.
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <limits>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/ChainTry.h"
#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ScopedFlag.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/platform/Platform.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

// Above this many pixels an OpenGL surface may have to work in strict mode.
constexpr uint64_t kStrictPixels = 12000000;

// The widget at that address, or null when the host has deleted it or gave something else.
QWidget* LivingWidget(const void* address) {
  const QWidgetList widgets = QApplication::allWidgets();
  const auto found = std::find(widgets.begin(), widgets.end(), address);
  return found == widgets.end() ? nullptr : *found;
}

bool HasSize(const ZynImage* image) {
  return image && image->width > 0 && image->height > 0;
}

}  // namespace

uint32_t QTDDisplay::Initialize(const ZynImage* imageFormat) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  if (!HasSize(imageFormat)) return Fail(ZYN_ERR_BAD_ARGUMENT);
  if (!QCoreApplication::instance()) return Fail(ZYN_ERR_FAILED);
  QTD::PROPERTIES params;
  params.Set("inputImageFormat", QTD::ToText(static_cast<const void*>(imageFormat)));
  return Compose(RunBlockingMessage("@init.display", params));
}

// The sender's own result, not `lastError`, comes back: another thread may have written that meanwhile.
uint32_t QTDDisplay::RunBlockingMessage(const char* name, const QTD::PROPERTIES& params) {
  if (!QCoreApplication::instance()) return ZYN_ERR_FAILED;  // nobody would ever handle it
  auto message = std::make_shared<BlockingMessage>();
  message->name = name;
  message->params = params;
  if (QTD::platform::OnGuiThread()) return HandleMessage(message->name, message->params);

  {
    std::lock_guard<std::mutex> guard(messagesLock);
    messages.push_back(message);
  }
  Q_EMIT signalObjectMessage(message->name.c_str(), &message->params);
  while (!message->done) {
    if ((closing || QCoreApplication::closingDown()) && Withdraw(message)) return ZYN_ERR_NOT_READY;
    QTD::WaitABit();
  }
  return message->code;
}

// Takes a message back; false when the GUI thread is already at it, and its arguments have to stay.
bool QTDDisplay::Withdraw(const std::shared_ptr<BlockingMessage>& message) {
  std::lock_guard<std::mutex> guard(messagesLock);
  const auto found = std::find(messages.begin(), messages.end(), message);
  if (found == messages.end()) return false;
  messages.erase(found);
  return true;
}

void QTDDisplay::slotObjectMessage(const char* msgName, QTD::PROPERTIES* msgParams) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  // A sender that gave up has taken its arguments along: only the messages in the list are good.
  std::shared_ptr<BlockingMessage> message;
  {
    std::lock_guard<std::mutex> guard(messagesLock);
    const auto found = std::find_if(messages.begin(), messages.end(), [&](const auto& candidate) {
      return &candidate->params == msgParams && candidate->name.c_str() == msgName;
    });
    if (found == messages.end()) return;
    message = *found;
    messages.erase(found);
  }
  message->code = HandleMessage(message->name, message->params);
  message->done = true;
}

uint32_t QTDDisplay::HandleMessage(const std::string& name, QTD::PROPERTIES& params) {
  lastError = 0;
  if (name != "@init.display") return 0;
  uint32_t code = ZYN_ERR_BAD_ARGUMENT;
  const auto* given = static_cast<const ZynImage*>(params.GetPointer("inputImageFormat"));
  if (HasSize(given)) {
    const ZynImage imageFormat = *given;  // it may be a record of the chain that goes
    try {
      code = InitDisplay(&imageFormat);
    } catch (...) {
      // A parameter that cannot be read as a number, or host code that ran meanwhile.
      code = ZYN_ERR_FAILED;
      Free();
    }
  }
  lastError = code;
  return code;
}

uint32_t QTDDisplay::InitDisplay(const ZynImage* imageFormat) {
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return ZYN_ERR_FAILED;
  // Host code that runs while the chain goes or the viewer is made or replaced, or a host's stage, may ask
  // for another initialisation.
  if (initialising || walking > 0) return ZYN_ERR_NOT_READY;
  QTD::ScopedFlag flag(initialising);
  const bool opengl = parameters.GetInt("system.opengl") != 0;
  Free();
  EndChains();  // also those that were put off: while the viewer is there
  bool success = false;
  std::unique_ptr<QTDProcessor> leaving;
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    const QTD::HostCodeUnderLocks scope;
    lastError = 0;
    checkQueued = 0;
    rebuildQueued = 0;
    StartTimer();

    success = PrepareViewer(opengl);
    if (success) {
      success = BuildProcessor(imageFormat) && processor && format;
      // By default a format that cannot be processed shows only at the first image.
      if (parameters.GetBool("system.silent")) success = true;
    }
    if (!success) leaving = FreeAll();

    outputRateHistory.Reset(0.0);
    inputRate.Reset();
    outputRate.Reset();
  }
  EndChain(std::move(leaving));
  return success ? 0 : static_cast<uint32_t>(ZYN_ERR_FAILED);
}

void QTDDisplay::StartTimer() {
  delete timer;
  timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &QTDDisplay::slotTimer);
  timer->start(std::max(0, parameters.GetInt("system.timer", "1000")));
}

// The viewer of the wanted variant with its screen at the initial view; false when there is no screen.
bool QTDDisplay::PrepareViewer(bool opengl) {
  if (viewer && viewer->Window() && viewer->IsOpenGL() == opengl) {
    viewer->setImage(nullptr, false);
  } else {
    QTDViewer* replaced = viewer;
    viewer = nullptr;
    if (replaced) replaced->disconnect(this);
    delete replaced;
    viewer = new QTDViewer(LivingWidget(parameters.GetPointer("system.parentWidget")), opengl);
    connect(viewer, &QTDViewer::signalClosing, this, &QTDDisplay::slotViewerClosing, Qt::DirectConnection);
    // A host may delete the window alone, while commands are at it on other threads.
    const auto forget = [this, lost = viewer] {
      std::scoped_lock guard(viewLock, convertLock, handlerLock);
      lost->ForgetWindow();
      if (viewer == lost) parameters.Set("surface", QTD::ToText(nullptr));
    };
    const auto follow = [this, changed = viewer] {
      if (viewer == changed) NoteSurface();
    };
    connect(viewer, &QTDViewer::signalWindowClosing, this, forget, Qt::DirectConnection);
    if (QTDWindow* const window = Window()) {
      // A host may close the window, while commands are at its screen on other threads.
      const auto drop = [this, window] {
        std::scoped_lock guard(viewLock, convertLock, handlerLock);
        window->DropSurface();
      };
      connect(window, &QTDWindow::signalSurfaceClosing, this, drop, Qt::DirectConnection);
      // Behind the viewer's own note of it.
      connect(window, &QTDWindow::signalSurfaceChanged, this, follow, Qt::DirectConnection);
    }
    viewer->setMessenger(&messenger);
    viewer->setDisplay(this);
  }
  NoteSurface();

  QTDScreen* screen = Screen();
  if (!screen) return false;
  screen->setFit(parameters.GetInt("display.init.view.fit"), true);
  screen->setCenter(parameters.GetDouble("display.init.view.at.x"),
                    parameters.GetDouble("display.init.view.at.y"));
  return true;
}

// For chain and stages.
void QTDDisplay::NoteSurface() {
  parameters.Set("surface", viewer->Parameters().GetString("surface", QTD::ToText(nullptr)));
}

// `FreeAll` has run, and the three locks are held.
bool QTDDisplay::BuildProcessor(const ZynImage* imageFormat) {
  processor = std::make_unique<QTDProcessor>(this, viewer->IsOpenGL());  // chain and viewer go together
  // A host may remove stages on any thread. The viewer lives longer than the chain that was built for it, or
  // is taken out of this handler.
  processor->SetStagesLeaving([shown = viewer] { shown->setImage(nullptr, false); });
  processor->Parameters().Set("image.downscale",
                              QTD::ToText(parameters.GetInt("processing.image.downscale", "0")));
  if (PrepareFormat(imageFormat)) return true;
  ReleaseFormat();
  incoming.Free();
  return false;
}

bool QTDDisplay::PrepareFormat(const ZynImage* imageFormat) {
  if (!HasSize(imageFormat)) return false;
  // Taken apart for the sign: a record's height is unsigned, a helper's negative height means bottom-up.
  if (imageFormat->height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return false;
  format = QTD::ImageCreateHeader(nullptr, imageFormat->width, static_cast<int32_t>(imageFormat->height),
                                  imageFormat->pixelType);
  if (!format) return false;

  if (QTDSurface* surface = Window() ? Window()->Surface() : nullptr) {
    const uint64_t pixels = uint64_t{format->width} * format->height;
    const bool strict = pixels > kStrictPixels && surface->properties.GetInt("gl.strict", "0") != 0;
    parameters.Set("strict", QTD::ToText(strict));
  }

  const uint64_t bytes = uint64_t{format->imageSize} + QTD::kRecordSize;
  if (bytes > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) return false;
  if (!incoming.Allocate(static_cast<int32_t>(bytes))) return false;
  ZynImage header = QTD::ImageCompleted(*imageFormat);
  // On the processor frames run, and are shown, in the order of their lines, without a mark: no stage may
  // count on one. A conversion follows the mark of its own image.
  if (!viewer->IsOpenGL()) header.origin = 0;
  if (processor->Init(&header) != 0) return false;
  {
    // The chain's lock comes before the viewer's, as where a stage leaves.
    std::lock_guard<QTD::RMutex> chain(processor->ChainLock());
    if (viewer->attachProcessor(&header, processor.get()) != 0) return false;
  }

  parameters.Set("processor",
                 QTD::ToText(static_cast<const void*>(static_cast<ZynImgProcessingChain*>(processor.get()))));
  SetPrepared({true, format->width, format->height, format->pixelType, format->imageSize, format->linePitch});
  return true;
}

void QTDDisplay::ReleaseFormat() {
  SetPrepared({});
  lastImageID = 0;
  QTD::ImageDelete(format);
}

// The picture belongs to the chain: window and text templates let go of it before the chain does.
void QTDDisplay::TakePictureAway() {
  if (viewer) viewer->setImage(nullptr, false);
}

void QTDDisplay::Uninitialize() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  std::unique_ptr<QTDProcessor> leaving;
  for (bool done = false; !done;) {
    {
      std::scoped_lock guard(viewLock, convertLock, handlerLock);
      // A stage that asks for it stands in the chain that would go. Host code that asks for it while the
      // viewer is made would take the timer from a display that is ready a moment later; another thread has
      // waited for the locks until that is over.
      const bool nested = initialising && QTD::platform::OnGuiThread();
      const QTD::ChainTry chain(processor.get());
      done = walking > 0 || nested || chain;
      if (walking == 0 && !nested && chain) leaving = FreeAll();
    }
    if (!done) QTD::WaitABit();
  }
  EndChain(std::move(leaving));
}

// As `Uninitialize`, without its questions; GUI thread.
void QTDDisplay::Free() {
  std::unique_ptr<QTDProcessor> leaving;
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    leaving = FreeAll();
  }
  EndChain(std::move(leaving));
}

// What `Uninitialize` frees; the three locks are held. The chain itself is handed out: its end runs code of
// the host's stages, which may wait for another thread, so it goes when the locks have been given up.
std::unique_ptr<QTDProcessor> QTDDisplay::FreeAll() {
  TakePictureAway();
  viewerLost = false;
  std::unique_ptr<QTDProcessor> leaving = std::move(processor);
  if (leaving) leaving->LeaveDisplay();  // viewer and surface may go before it
  ++builds;
  converter.reset();
  ReleaseFormat();
  if (timer && QTD::platform::OnGuiThread()) {
    delete timer;
  } else if (timer) {
    timer->deleteLater();
  }
  timer = nullptr;
  incoming.Free();
  parameters.Set("processor", "0");
  return leaving;
}
