#include "QTD/window/QTDViewer.h"

#include <QAbstractScrollArea>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QResizeEvent>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/platform/GuiThread.h"
#include "QTD/window/QTDWindow.h"

using QTD::ToText;

namespace {

constexpr int kFocusMilliseconds = 20;

}  // namespace

QTDViewer::QTDViewer(QWidget* parentWidget, bool opengl) : QWidget(parentWidget) {
  parameters.Set("class", "QTDViewer");
  QTD::platform::WatchForTheEnd();
  note("system.opengl", ToText(opengl));
  note("system.parentWidget", ToText(static_cast<const void*>(parentWidget)));
  if (!parentWidget) {
    lastError = kBadArgument;
    return;
  }
  makeBars();
  const bool made = makeWindow(opengl);
  layOut(parentWidget);
  if (!made) return;

  if (!window->open()) {
    delete container.data();  // and the window with it
    lastError = kNotReady;
  }
}

// The host's widget outlives this one, or is just being destroyed: what stands in it is taken out as far as
// it still exists. The window goes without `lock`, since its end may run host code.
QTDViewer::~QTDViewer() {
  EndParameterCalls();
  Q_EMIT signalClosing();
  QTDWindow* closing = nullptr;
  {
    std::lock_guard<std::recursive_mutex> hold(lock);
    closing = window;
    window = nullptr;
    image = nullptr;
    QTDViewer::releaseImages();
  }
  delete closing;
  delete container.data();
  place.Remove(this, vertBar);
  delete vertBar.data();
}

void QTDViewer::note(const char* name, const std::string& value) {
  properties.Set(name, value);
  parameters.Set(name, value);
}

void QTDViewer::makeBars() {
  horzBar = new QScrollBar(Qt::Horizontal, this);
  vertBar = new QScrollBar(Qt::Vertical, this);
  connect(horzBar, &QScrollBar::valueChanged, this, &QTDViewer::slotHorzSliderChanged);
  connect(vertBar, &QScrollBar::valueChanged, this, &QTDViewer::slotVertSliderChanged);
}

bool QTDViewer::makeWindow(bool opengl) {
  window = new QTDWindow(this, opengl);
  container = QWidget::createWindowContainer(window, this);
  if (!container) {
    delete window.data();
    lastError = kNotReady;
    return false;
  }
  container->setFocusPolicy(Qt::StrongFocus);
  container->installEventFilter(this);
  connect(window, &QTDWindow::signalClosing, this, &QTDViewer::loseWindow);
  connect(window, &QTDWindow::signalClosed, this, &QTDViewer::dropContainer);
  connect(window, &QTDWindow::signalSurfaceChanged, this, &QTDViewer::noteSurface);
  window->setScrollBars(horzBar, vertBar);
  return true;
}

// Without a native window of its own the container leaves the picture's window in the one of the whole
// top-level widget, where any widget between them that becomes native later covers it, as a native sibling
// makes them. A native window moves into theirs instead. The widgets around it stay as they are, but for the
// bar in the viewer, which is made native with its sibling; the other bar has left the viewer before.
void QTDViewer::makeNative() {
  for (QWidget* widget : {static_cast<QWidget*>(horzBar), container.data()}) {
    widget->setAttribute(Qt::WA_DontCreateNativeAncestors);
    widget->setAttribute(Qt::WA_NativeWindow);
  }
}

// A scroll area, or a MDI area, cuts off what sticks out of it only from windows inside its own.
void QTDViewer::joinScrollArea() {
  QWidget* outermost = nullptr;
  for (QWidget* widget = parentWidget(); widget; widget = widget->parentWidget()) {
    if (qobject_cast<QAbstractScrollArea*>(widget)) outermost = widget;
    if (widget->isWindow()) break;
  }
  if (!outermost) return;
  for (QWidget* widget = this; widget != outermost; widget = widget->parentWidget()) widget->winId();
  outermost->winId();
}

// The window is about to go. Threads that are inside it come out before.
void QTDViewer::loseWindow() {
  if (window) Q_EMIT signalWindowClosing();
  ForgetWindow();
}

void QTDViewer::ForgetWindow() {
  std::lock_guard<std::recursive_mutex> hold(lock);
  window = nullptr;
}

// A window may be closed and opened again; each opening makes a surface.
void QTDViewer::noteSurface() {
  const QTDSurface* const surface = window ? window->Surface() : nullptr;
  if (surface || properties.Has("surface")) note("surface", ToText(static_cast<const void*>(surface)));
}

// The window is being deleted. Qt's container does not bear to be moved without one, so it leaves at
// once.
void QTDViewer::dropContainer() {
  if (!container || QCoreApplication::closingDown()) return;  // the application deletes all widgets itself
  container->setParent(nullptr);
  container->deleteLater();
}

// The horizontal bar lies under the picture, inside the viewer, the vertical one beside the viewer, in the
// host's widget.
void QTDViewer::layOut(QWidget* parentWidget) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  if (container) column->addWidget(container, 1);
  column->addWidget(horzBar);
  place.Add(parentWidget, this, vertBar);
  if (container) makeNative();

  horzBar->show();
  vertBar->show();
  if (container) container->show();
  show();
  activateWindow();
}

const ZynImage* QTDViewer::Picture() {
  std::lock_guard<std::recursive_mutex> hold(lock);
  return image;
}

void QTDViewer::setImage(const ZynImage* picture, bool forceUpdate) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  if (!window) return;
  image = picture;
  window->setImage(picture, false);
  if (forceUpdate) {
    window->update();
    return;
  }
  const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
  ZYN_TRACE(log, "QTDViewer::setImage: post UpdateRequest, sys timestamp %lld ns, image id %llu",
            static_cast<long long>(now.count()),
            static_cast<unsigned long long>(picture ? picture->imageID : 0));
  QTD::UpdateEvent::Post(this, posted);
}

// A repaint that is asked of the viewer is one of the window, which paints all there is to see.
bool QTDViewer::event(QEvent* event) {
  try {
    if (QTD::UpdateEvent::Take(event, posted) && window) window->update();
    return QWidget::event(event);
  } catch (...) {
    // Nothing may leave an event handler.
  }
  return true;
}

// The container is shown anew wherever the host moves its widget.
//
// Qt's container asks for the window's activation at once when its top-level window becomes the active one.
// On X such a request makes the top-level window active anew, so that displays in windows of their own would
// take the focus from each other for ever: each request is answered when that of another one is already under
// way. Here the window of the one that is still the active one a moment later asks.
bool QTDViewer::eventFilter(QObject* watched, QEvent* event) {
  if (watched == container && event->type() == QEvent::Show) joinScrollArea();
  if (watched != container || event->type() != QEvent::FocusIn ||
      static_cast<QFocusEvent*>(event)->reason() != Qt::ActiveWindowFocusReason) {
    return QWidget::eventFilter(watched, event);
  }
  QTimer::singleShot(kFocusMilliseconds, this, [this] {
    const bool active = container && container->hasFocus() && isActiveWindow();
    if (active && window && QGuiApplication::focusWindow() != window) window->requestActivate();
  });
  return true;
}

void QTDViewer::resizeEvent(QResizeEvent* event) {
  if (window) QWidget::resize(event->size());
}

void QTDViewer::redraw() {
  const std::unique_lock<std::recursive_mutex> hold(lock, std::try_to_lock);
  if (hold && window) window->update();
}

void QTDViewer::setMessenger(QTD::Messenger* receiver) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  messenger = receiver;
  if (window) window->setMessenger(messenger);
}

void QTDViewer::setDisplay(ZynDisplayProcessor* controller) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  display = controller;
}

QTDWindow* QTDViewer::Window() const {
  return window;
}

bool QTDViewer::IsOpenGL() {
  return properties.GetBool("system.opengl");
}

void QTDViewer::slotDisplayImage(ZynImage* picture, bool forceUpdate) {
  setImage(picture, forceUpdate);
}

void QTDViewer::slotDisplayImage(ZynImage* picture) {
  setImage(picture, false);
}

void QTDViewer::slotHorzSliderChanged(int value) {
  scroll(value, -1);
}

void QTDViewer::slotVertSliderChanged(int value) {
  scroll(-1, value);
}

// Runs inside an event handler of the bar, which no exception may leave. The lock is that of the viewer's own
// component, not the controller's of the same name.
void QTDViewer::scroll(int x, int y) {
  std::lock_guard<std::recursive_mutex> hold(handlerLock);
  try {
    if (window) window->scrollTo(x, y);
  } catch (...) {
    // Nothing may leave an event handler.
  }
}
