// Everything that moves the picture under the window: centre, keys, scroll bars, pans.
#include <cmath>
#include <cstring>
#include <mutex>
#include <tuple>

#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDScreen.h"

using QTD::CoordinateSystem;
using QTD::GuardedDivide;

namespace {

constexpr int kNoPan = -1;  // in `dragX`

double HeldOr(double fraction, double present) {
  return std::isnan(fraction) ? present : std::fmax(0.0, std::fmin(fraction, 1.0));
}

}  // namespace

void QTDScreen::setCenter(double fx, double fy) {
  perform([&] {
    const bool keep = fx == -1 && fy == -1;
    const QTD::PairD wanted{HeldOr(fx, centerFractionX), HeldOr(fy, centerFractionY)};
    centerAt(fx, fy);
    if (keep || (isReady() && hasPicture())) return;
    initialCenter = wanted;
    if (!isReady()) std::tie(centerFractionX, centerFractionY) = wanted;
  });
}

// What all moves come down to: the picture point at the window's centre. A centre that was asked for before
// is void then.
void QTDScreen::centerAt(double fx, double fy) {
  perform([&] {
    if (!isReady()) return;
    QTD::PROPERTIES record;
    savePosition(record);
    if (fx != -1 || fy != -1) {
      initialCenter.reset();
      if (!std::isnan(fx)) centerFractionX = fx;
      if (!std::isnan(fy)) centerFractionY = fy;
    }
    update();
    notifyChanged(record);
  });
}

bool QTDScreen::moveBy(bool horizontal, int steps) {
  bool moved = false;
  perform([&] {
    if (!isReady() || dragX != kNoPan) return;
    const double share = properties.GetDouble("move.by");
    // The factor `scale` makes one step longer at low zoom than its share of a window; this is kept.
    if (horizontal) {
      centerAt(share * GuardedDivide(windowWidth * scale * steps, pictureWidth) + centerFractionX,
               centerFractionY);
    } else {
      centerAt(centerFractionX,
               share * GuardedDivide(windowHeight * scale * steps, pictureHeight) + centerFractionY);
    }
    moved = true;
  });
  return moved;
}

void QTDScreen::moveTo(int x, int y, const char* cs) {
  perform([&] {
    const bool inWindow = cs && std::strcmp(cs, "win") == 0;
    const CoordinateSystem system = inWindow ? CoordinateSystem::kWindow : CoordinateSystem::kScreen;
    centerAt(axisX().ToFraction(x, system, true), axisY().ToFraction(y, system, true));
  });
}

void QTDScreen::setScrollPos(int x, int y) {
  perform([&] {
    const QTD::PairD before{centerFractionX, centerFractionY};
    QTD::PROPERTIES record;
    savePosition(record);
    // The units are read as text: the fold of the scroll range travels through the list.
    const double unitX = properties.GetDouble("scroll.horz");
    const double unitY = properties.GetDouble("scroll.vert");
    if (x >= 0 || y >= 0) initialCenter.reset();
    if (x >= 0)
      centerFractionX = axisX().ToFraction(unitX * x + windowCenterX, CoordinateSystem::kScreen, true);
    if (y >= 0)
      centerFractionY = axisY().ToFraction(unitY * y + windowCenterY, CoordinateSystem::kScreen, true);
    if (before == QTD::PairD(centerFractionX, centerFractionY)) return;
    update();
    notifyChanged(record);
  });
}

QTD::PairI QTDScreen::scrollPage() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return {QTD::Round(GuardedDivide(windowWidth, properties.GetDouble("scroll.horz"))),
          QTD::Round(GuardedDivide(windowHeight, properties.GetDouble("scroll.vert")))};
}

void QTDScreen::dragStart(int x, int y) {
  std::lock_guard<QTD::RMutex> guard(lock);
  if (!isReady()) return;
  dragFractionX = centerFractionX;
  dragFractionY = centerFractionY;
  dragX = x;
  dragY = y;
}

bool QTDScreen::dragMove(int x, int y) {
  bool moved = false;
  perform([&] {
    if (!isReady() || dragX == kNoPan) return;
    const double byX = static_cast<double>(dragX) - x;
    const double byY = static_cast<double>(dragY) - y;
    centerAt(axisX().ToFraction(byX, CoordinateSystem::kWindow, false) + dragFractionX,
             axisY().ToFraction(byY, CoordinateSystem::kWindow, false) + dragFractionY);
    moved = true;
  });
  return moved;
}

void QTDScreen::dragEnd() {
  std::lock_guard<QTD::RMutex> guard(lock);
  if (isReady()) dragX = dragY = kNoPan;
}

void QTDScreen::dragCancel() {
  std::lock_guard<QTD::RMutex> guard(lock);
  if (!isReady() || dragX == kNoPan) return;
  centerFractionX = dragFractionX;
  centerFractionY = dragFractionY;
  update();
  dragX = kNoPan;
}
