#include "QTD/window/QTDZoom.h"

#include <QGuiApplication>
#include <QRect>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <limits>

#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/window/QTDWindow.h"

using QTD::RectI;
using QTD::ToText;

namespace {

constexpr int kTick = 200;  // milliseconds between two looks at the Shift key

struct Default {
  const char* name;
  const char* value;
};

constexpr Default kDefaults[] = {
    {"adjust", "1"},       // a band around its centre keeps the window's aspect ratio
    {"color", "32768"},    // red in the lowest byte
    {"skip.track", "20"},  // the smallest extent in pixels that counts as a zoom
    {"rect.width", "5"},   // read by nothing
};

int Held(int64_t value) {
  return static_cast<int>(
      std::clamp<int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int64_t Distance(int one, int other) {
  return std::abs(static_cast<int64_t>(one) - other);
}

uint32_t ModeBy(Qt::KeyboardModifiers held) {
  return held.testFlag(Qt::ShiftModifier) ? QTDZoom::kZoomOut : QTDZoom::kZoomIn;
}

}  // namespace

QTDZoom::QTDZoom(QTDWindow* owner)
    : window(owner),
      timer(std::make_unique<QTimer>()),
      // The pointer's own text has a "0x" already; the second one is part of the name.
      objectID("zoom.0x" + ToText(static_cast<const void*>(this))) {
  for (const Default& entry : kDefaults) properties.Set(entry.name, entry.value);
}

QTDZoom::~QTDZoom() {
  QTDZoom::finish(nullptr);
}

bool QTDZoom::begin(QTDWindow* target, const QPoint* pressPos, bool growFromCenter) {
  if (target && target != window) {
    finish(nullptr);  // a band in the window before
    window = target;
  }
  QWidget* const parent = window ? window->ParentWidget() : nullptr;
  fromCenter = growFromCenter;
  if (!parent || window->QWindow::geometry().isEmpty()) {
    finish(nullptr);
    return false;
  }
  active = parent;
  begun = true;
  rect = RectI();
  mode = lastMode = kNoZoom;  // what the round before showed is over
  start = pressPos ? *pressPos : window->cursorPos(true);
  window->setMouseGrabEnabled(true);
  timer->setInterval(kTick);
  timer->start();
  // Made anew each time: after some rounds the slot runs several times in one tick. It can be run any number
  // of times, so this is kept.
  connect(timer.get(), &QTimer::timeout, this, &QTDZoom::slotTimer);
  return true;
}

void QTDZoom::trackTo(RectI* result) {
  if (!IsActive()) return;
  const QPoint position = window->cursorPos(true);
  const int smallest = properties.GetInt("skip.track");
  const RectI band = fromCenter ? centredBand(position, smallest) : corneredBand(position, smallest);
  if (result) {
    *result = band;
    return;
  }
  // The band of the last call is drawn, so that the drawing is one movement behind the mouse; this is kept.
  drawBand(&rect);
  rect = band;
  showMode(mode);
  window->update();
}

// The horizontal distance alone sets the mode: to the right the drag zooms in, to the left it zooms out.
RectI QTDZoom::centredBand(const QPoint& position, int smallest) {
  const int64_t dx = Distance(position.x(), start.x());
  int64_t dy = Distance(position.y(), start.y());
  if (properties.GetBool("adjust")) {
    const QRect inner = window->geometry(false);
    // The product comes first: a quotient cannot always be written as a double.
    dy =
        QTD::Round(QTD::GuardedDivide(static_cast<double>(dx) * std::abs(static_cast<double>(inner.height())),
                                      std::abs(static_cast<double>(inner.width()))));
  }
  mode = dx < smallest ? kNoZoom : position.x() >= start.x() ? kZoomIn : kZoomOut;
  return {Held(start.x() - dx), Held(start.y() - dy), Held(2 * dx), Held(2 * dy)};
}

RectI QTDZoom::corneredBand(const QPoint& position, int smallest) {
  const int64_t width = Distance(position.x(), start.x());
  const int64_t height = Distance(position.y(), start.y());
  const bool counts = width >= smallest && height >= smallest;
  mode = counts ? ModeBy(QGuiApplication::keyboardModifiers()) : static_cast<uint32_t>(kNoZoom);
  return {std::min(start.x(), position.x()), std::min(start.y(), position.y()), Held(width), Held(height)};
}

void QTDZoom::showMode(uint32_t shown) {
  lastMode = shown;
  window->setCursor(cursors[shown]);
}

void QTDZoom::drawBand(const RectI* band) {
  if (!IsActive() || !band) return;
  QPoint corner(band->x, band->y);
  window->mapFromGlobal(corner);
  QTD::PROPERTIES list;
  list.Set("line.clr", ToText(static_cast<unsigned>(properties.GetInt64("color"))));
  list.Set("update", ToText(1));
  list.Set("objectID", objectID);
  window->overlayRect(objectID.c_str(), corner.x(), corner.y(), band->width, band->height, &list);
}

// The parent may have gone meanwhile: the window keeps nothing of the band all the same.
void QTDZoom::finish(RectI* result) {
  timer->stop();
  if (!begun) return;
  begun = false;
  if (result && IsActive()) {
    try {
      trackTo(result);
      drawBand(&rect);
    } catch (const std::exception&) {  // an attribute of the band that cannot be read
      mode = kNoZoom;
    }
  }
  active = nullptr;
  if (!window) return;
  window->Objects().remove(objectID);
  window->setMouseGrabEnabled(false);
  window->setCursor(Qt::ArrowCursor);
  window->update();
}

void QTDZoom::slotTimer() {
  // Once in a tick, however many connections there are: the question goes to the X server and back.
  const auto now = std::chrono::steady_clock::now();
  if (now - lastTick < std::chrono::milliseconds(kTick / 2)) return;
  lastTick = now;
  refreshMode();
}

// The keyboard itself is asked: no event tells of Shift while the mouse stands still, since that of the key
// itself still has the state before.
void QTDZoom::refreshMode() {
  if (!IsActive() || mode == kNoZoom || fromCenter) return;
  mode = ModeBy(QGuiApplication::queryKeyboardModifiers());
  if (mode != lastMode) showMode(mode);
}

bool QTDZoom::key(int) {
  if (!IsActive()) return false;
  refreshMode();
  return true;
}
