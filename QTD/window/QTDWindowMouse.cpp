// The window's own handler: pan, zoom rectangle, double click, wheel, and the notifications that tell the
// host about the mouse.
#include <QCursor>
#include <QGuiApplication>
#include <cstdlib>

#include "QTD/frame/Messenger.h"
#include "QTD/frame/Text.h"
#include "QTD/window/QTDWindow.h"
#include "QTD/window/QTDZoom.h"

using QTD::MouseNotice;
using QTD::ToText;

namespace {

constexpr int kWheelStep = 120;  // delta of one notch
constexpr double kWheelCoefficient = 1.1;
constexpr int64_t kStillClick = 4;  // pixels that the mouse may move during a right click

int64_t SquaredDistance(const QPoint& one, const QPoint& other) {
  const int64_t x = static_cast<int64_t>(one.x()) - other.x();
  const int64_t y = static_cast<int64_t>(one.y()) - other.y();
  return x * x + y * y;
}

}  // namespace

bool QTDWindow::wantsNotice(MouseNotice notice) const {
  return messenger && (notificationFlags & QTD::MouseNoticeFlag(notice)) != 0;
}

// Tells the host, if it wants to know, with `hold` released meanwhile. `Gone` means that the window was
// closed or deleted: `hold` stays released and nothing of the window may be touched.
QTDWindow::Told QTDWindow::tellHost(MouseNotice notice, const QPoint& position,
                                    std::unique_lock<std::recursive_mutex>& hold) {
  QTD::Messenger* receiver = messenger;
  if (!receiver || !wantsNotice(notice)) return Told::GoOn;
  QPoint global = position;
  mapToGlobal(global);
  QTD::ARGUMENTS arguments = QTD::MouseNoticeArguments(notice, position, global, screen.get());

  const QPointer<QTDWindow> self(this);
  const bool wasOpen = isOpen();
  hold.unlock();
  uint32_t answer = 0;
  try {
    if (QTD::MouseNoticeWaits(notice)) {
      answer = receiver->Send(QTD::kMouseNotification, &arguments);
    } else {
      receiver->Post(QTD::kMouseNotification, &arguments);
    }
  } catch (...) {
    // A receiver that fails has not taken the event.
  }
  if (!self) return Told::Gone;
  hold.lock();
  if (wasOpen && !isOpen()) {
    hold.unlock();
    return Told::Gone;
  }
  return answer != 0 ? Told::Taken : Told::GoOn;
}

void QTDWindow::grabMouse() {
  setMouseGrabEnabled(true);
  grabbed = true;
}

void QTDWindow::releaseMouse() {
  if (grabbed) setMouseGrabEnabled(false);
  grabbed = false;
}

void QTDWindow::showCursor(Qt::CursorShape shape) {
  if (cursor().shape() != shape) setCursor(shape);
}

bool QTDWindow::mouseDown(int x, int y, bool left, bool) {
  std::unique_lock<std::recursive_mutex> hold(inputLock);
  if (!isOpen() || !hasImage()) return false;
  parameters.Set("mouse.win.x", ToText(x));
  parameters.Set("mouse.win.y", ToText(y));
  if (!left) {
    // The host hears of the right button at its release: a movement may turn the press into something else.
    rightPressed = true;
    pressPos = QPoint(x, y);
    mapToGlobal(pressPos);
    return false;
  }
  // A receiver may run the event loop, and the release or the loss of focus come before it answers.
  const uint32_t press = ++presses;
  if (tellHost(MouseNotice::LeftDown, QPoint(x, y), hold) != Told::GoOn || !hasImage()) return false;
  if (press != presses) return false;

  grabMouse();
  mouseMode = kPan;
  rightPressed = false;  // its place is overwritten here: no rectangle may begin there
  pressPos = QPoint(x, y);
  screen->setFit(0, false);
  if (screen->isReady()) screen->dragStart(x, y);
  return true;
}

bool QTDWindow::mouseMove(int x, int y, bool) {
  std::unique_lock<std::recursive_mutex> hold(inputLock);
  if (!isOpen() || mouseMode == kHeldByHost) return false;
  if (tellHost(MouseNotice::Move, QPoint(x, y), hold) == Told::Gone) return false;
  if (mouseMode == kPan) {
    screen->dragMove(x, y);
    update();
    showCursor(Qt::OpenHandCursor);
    return true;
  }
  if (zoom && (mouseMode == kZoomRectangle || rightPressed)) return trackRectangle(QPoint(x, y));
  showCursor(Qt::ArrowCursor);
  return false;
}

// A movement with the right button down. The mode follows the movement even where no band can be shown.
bool QTDWindow::trackRectangle(QPoint position) {
  mapToGlobal(position);
  if (rightPressed && SquaredDistance(position, pressPos) > kStillClick * kStillClick) {
    const bool control = QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier);
    zoom->begin(this, &pressPos, control);
    mouseMode = kZoomRectangle;
    rightPressed = false;
    return true;
  }
  zoom->trackTo(nullptr);
  return true;
}

// Zooms on the band as it is now; one that is too small changes nothing in the view. `asShown` keeps a band
// between two corners to what the cursor shows, which knows of a Shift key that no event of the mouse has
// told of.
void QTDWindow::endRectangle(bool asShown) {
  if (screen) screen->setFit(0, false);
  const uint32_t shown = zoom->ShownMode();
  QTD::RectI band;
  zoom->finish(&band);
  uint32_t asked = zoom->CurrentMode();
  if (asShown && !zoom->IsCentred() && asked != QTDZoom::kNoZoom && shown != QTDZoom::kNoZoom) asked = shown;
  if (!screen || asked == QTDZoom::kNoZoom) return;
  QPoint corner(band.x, band.y);
  mapFromGlobal(corner);
  screen->zoomToRect({corner.x(), corner.y(), band.width, band.height}, asked == QTDZoom::kZoomIn);
}

bool QTDWindow::mouseUp(int x, int y, bool left, bool) {
  std::unique_lock<std::recursive_mutex> hold(inputLock);
  if (!isOpen()) return false;
  bool handled = false;
  if (left) {
    const uint32_t release = ++presses;
    if (mouseMode == kHeldByHost && wantsNotice(MouseNotice::LeftUp)) {
      releaseMouse();
      mouseMode = kIdle;
    }
    // A host that takes the release leaves a pan running.
    if (tellHost(MouseNotice::LeftUp, QPoint(x, y), hold) != Told::GoOn) return false;
    if (release != presses) return false;  // another press came before the answer: what runs now is its own
    // `grabbed` alone: another button has ended the pan's mode meanwhile, and the grab must not outlive it.
    if (mouseMode == kPan || grabbed) {
      mouseMode = kIdle;
      releaseMouse();
      rightPressed = false;  // its place goes with the pan's
      pressPos = QPoint();
      if (screen->isReady()) screen->dragEnd();
      handled = true;
    }
  } else {
    pressPos = QPoint();
    rightPressed = false;
    mouseMode = kIdle;
    if (zoom && zoom->IsActive()) {
      endRectangle(false);
    } else {
      if (zoom) zoom->finish(nullptr);  // takes away what a parent that went has left of one
      if (tellHost(MouseNotice::RightClick, QPoint(x, y), hold) == Told::Gone) return false;
    }
    update();
    handled = true;
  }
  showCursor(Qt::ArrowCursor);
  return handled;
}

bool QTDWindow::mouseDouble(int x, int y, bool left) {
  std::lock_guard<std::recursive_mutex> hold(inputLock);
  if (!screen || !left) return false;
  // Without a picture there is nothing to centre, and a centre that waits for the first one stays.
  if (hasImage()) screen->moveTo(x, y, "win");
  return true;
}

// Whole notches count for the coefficient; less than one gives the screen's own step.
bool QTDWindow::wheel(int delta) {
  std::lock_guard<std::recursive_mutex> hold(inputLock);
  if (!screen || delta == 0) return false;
  screen->zoom(delta > 0, std::abs(delta / kWheelStep) * kWheelCoefficient, false);
  update();
  return true;
}

bool QTDWindow::focusLost() {
  std::unique_lock<std::recursive_mutex> hold(inputLock);
  const uint32_t loss = ++presses;
  if (mouseMode == kHeldByHost && wantsNotice(MouseNotice::Free)) {
    releaseMouse();
    mouseMode = kIdle;
  }
  if (tellHost(MouseNotice::Free, pressPos, hold) != Told::GoOn || loss != presses) return false;
  rightPressed = false;  // also one that came during a pan
  if (mouseMode == kPan || grabbed) {
    releaseMouse();
    pressPos = QPoint();
    if (screen && screen->isReady()) {
      screen->dragCancel();
      followView();
      update();
    }
  }
  // Also one whose mode another button has ended meanwhile: it must not outlive the focus.
  if (zoom && zoom->IsActive()) {
    endRectangle(true);
    update();
  } else if (zoom) {
    zoom->finish(nullptr);
  }
  mouseMode = kIdle;
  showCursor(Qt::ArrowCursor);
  return false;
}
