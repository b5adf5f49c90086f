#include "view/RegionMarker.h"

#include <QCoreApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "view/Commands.h"

namespace zynview {

namespace {

constexpr char kMark[] = "zynview.region";
constexpr uint32_t kColour = 0x00FFFF;  // yellow
constexpr int kPen = 2;
constexpr double kLeastDrag = 4;  // pixels of the window, in any direction

int Held(uint32_t pixels) {
  return static_cast<int>(std::min<uint32_t>(pixels, std::numeric_limits<int>::max()));
}

// The display does not hand out its window: it is the one that no widget of the program has for itself.
bool IsDisplayWindow(const QObject* object) {
  return object->isWindowType() && !object->inherits("QWidgetWindow");
}

QPointF PlaceOf(const QMouseEvent& event) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
  return event.localPos();
#else
  return event.position();
#endif
}

}  // namespace

RegionMarker::RegionMarker(ZynDisplayProcessor* target) : display(target) {}

RegionMarker::~RegionMarker() {
  onChange = nullptr;
  onMarking = nullptr;
  End();
}

void RegionMarker::SetPicture(const ZynImage& format) {
  picture = QRect(0, 0, Held(format.width), Held(format.height));
  if (!picture.contains(region)) return Mark(QRect());
  Draw();
}

void RegionMarker::Toggle() {
  if (marking) return End();
  if (!region.isEmpty()) return Mark(QRect());
  Begin();
}

void RegionMarker::Begin() {
  if (marking) return;
  marking = true;
  QCoreApplication::instance()->installEventFilter(this);
  QGuiApplication::setOverrideCursor(Qt::CrossCursor);
  if (onMarking) onMarking(true);
}

void RegionMarker::End() {
  if (!marking) return;
  if (pressed && dragged) Mark(before);
  marking = taken = pressed = dragged = false;
  QCoreApplication::instance()->removeEventFilter(this);
  QGuiApplication::restoreOverrideCursor();
  if (onMarking) onMarking(false);
}

void RegionMarker::Mark(const QRect& wanted) {
  const QRect cut = wanted.intersected(picture);
  const QRect now = cut.isEmpty() ? QRect() : cut;
  if (now == region) return;
  region = now;
  Draw();
  if (onChange) onChange(region);
}

void RegionMarker::Draw() {
  if (region.isEmpty()) {
    Run(display, "cmd.display.overlay.del", {{"objectID", kMark}});
  } else {
    DrawImageRect(display, kMark, region, kPen, kColour);
  }
}

bool RegionMarker::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress && object->isWindowType() &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    End();
    return true;
  }
  if (!IsDisplayWindow(object)) return false;
  auto* mouse = dynamic_cast<QMouseEvent*>(event);
  if (!mouse) return false;
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      if (mouse->button() != Qt::LeftButton) return false;
      Press(*mouse);
      return true;
    case QEvent::MouseMove:
      // The display hears of it as well, for those who ask it where the mouse is.
      if (pressed) mouse->buttons() & Qt::LeftButton ? DragTo(*mouse) : Drop();
      return false;
    case QEvent::MouseButtonRelease:
      if (mouse->button() != Qt::LeftButton || !taken) return false;
      taken = false;
      if (pressed) {
        DragTo(*mouse);
        Drop();
      }
      return true;
    default:
      return false;
  }
}

void RegionMarker::Press(const QMouseEvent& event) {
  dragged = false;
  taken = true;
  pressedAt = PlaceOf(event);
  before = region;
  pressed = PixelAt(pressedAt, &first);
}

void RegionMarker::DragTo(const QMouseEvent& event) {
  const QPointF moved = PlaceOf(event) - pressedAt;
  dragged = dragged || std::max(std::abs(moved.x()), std::abs(moved.y())) >= kLeastDrag;
  QPoint last;
  if (!dragged || !PixelAt(PlaceOf(event), &last)) return;
  const QPoint topLeft(std::min(first.x(), last.x()), std::min(first.y(), last.y()));
  const QPoint bottomRight(std::max(first.x(), last.x()), std::max(first.y(), last.y()));
  Mark(QRect(topLeft, bottomRight));
}

// A click alone marks nothing, and the marking goes on.
void RegionMarker::Drop() {
  pressed = false;
  if (dragged) End();
}

// Off the picture it is the pixel at the edge.
bool RegionMarker::PixelAt(const QPointF& inWindow, QPoint* pixel) const {
  // The middle of the window's pixel, as for the readout of what is under the mouse.
  const std::optional<ImagePoint> point = WindowToImage(display, inWindow.x() + 0.5, inWindow.y() + 0.5);
  if (!point || picture.isEmpty()) return false;
  const auto held = [](double value, int most) {
    return value < most ? value > 0 ? static_cast<int>(value) : 0 : most;
  };
  *pixel = QPoint(held(point->x, picture.right()), held(point->y, picture.bottom()));
  return true;
}

}  // namespace zynview
