// Qt's input events on their way to the handlers.
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>
#include <algorithm>

#include "QTD/window/QTDWindow.h"

namespace {

bool IsLeft(const QMouseEvent& event) {
  return event.button() == Qt::LeftButton;
}

}  // namespace

std::vector<QTDInput*> QTDWindow::currentHandlers() {
  std::lock_guard<std::recursive_mutex> hold(handlersLock);
  return handlers;
}

bool QTDWindow::isHandler(const QTDInput* handler) {
  std::lock_guard<std::recursive_mutex> hold(handlersLock);
  return std::find(handlers.begin(), handlers.end(), handler) != handlers.end();
}

// The handlers are asked without a lock. One of them may run host code that closes or deletes the window; the
// others are gone then.
template <typename Ask>
void QTDWindow::dispatch(Ask ask) {
  const QPointer<QTDWindow> self(this);
  for (QTDInput* handler : currentHandlers()) {
    if (!isHandler(handler)) continue;
    const bool handled = ask(*handler);
    if (!self) return;
    if (!handled) continue;
    update();
    return;
  }
}

// An open menu, of this window or of the host's menu bar, has the keys. Qt sees to that in windows of widgets
// alone.
void QTDWindow::keyPressEvent(QKeyEvent* event) {
  if (QWidget* const popup = QApplication::activePopupWidget()) {
    QWidget* const focused = popup->focusWidget();
    QCoreApplication::sendEvent(focused ? focused : popup, event);
    return;
  }
  const int code = event->key();
  dispatch([code](QTDInput& handler) { return handler.key(code); });
}

void QTDWindow::mousePressEvent(QMouseEvent* event) {
  const QPoint at = event->pos();
  const bool left = IsLeft(*event);
  dispatch([at, left](QTDInput& handler) { return handler.mouseDown(at.x(), at.y(), left, false); });
}

void QTDWindow::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint at = event->pos();
  const bool left = IsLeft(*event);
  dispatch([at, left](QTDInput& handler) { return handler.mouseUp(at.x(), at.y(), left, false); });
}

void QTDWindow::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint at = event->pos();
  const bool left = IsLeft(*event);
  dispatch([at, left](QTDInput& handler) { return handler.mouseDouble(at.x(), at.y(), left); });
}

void QTDWindow::mouseMoveEvent(QMouseEvent* event) {
  const QPoint at = event->pos();
  const bool left = IsLeft(*event);
  dispatch([at, left](QTDInput& handler) { return handler.mouseMove(at.x(), at.y(), left); });
}

// A touchpad may deliver pixels only: such an event turns no wheel.
void QTDWindow::wheelEvent(QWheelEvent* event) {
  const int delta = event->angleDelta().y();
  if (delta == 0) return;
  dispatch([delta](QTDInput& handler) { return handler.wheel(delta); });
}

void QTDWindow::focusOutEvent(QFocusEvent*) {
  const QPointer<QTDWindow> self(this);
  for (QTDInput* handler : currentHandlers()) {
    if (!isHandler(handler)) continue;
    handler->focusLost();
    if (!self) return;
  }
}
