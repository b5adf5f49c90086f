// Points and lengths from one coordinate system to another, and the bounds that hold them.
#include <cmath>
#include <mutex>

#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDScreen.h"

using QTD::CoordinateSystem;

namespace {

double Hold(double value, double low, double high) {
  if (!(value >= low)) return low;  // NaN too
  return value > high ? high : value;
}

// Holds the value; true when it moved.
bool HoldAndTell(double& value, double low, double high) {
  const double before = value;
  value = Hold(value, low, high);
  return !(std::fabs(value - before) < QTD::kNearZero);
}

}  // namespace

bool QTDScreen::transform(double* x, double* y, const char* csSrc, const char* csDst, bool position,
                          bool clamp) {
  std::lock_guard<QTD::RMutex> guard(lock);
  CoordinateSystem source, target;
  if (!QTD::FindCoordinateSystem(csSrc, &source) || source == CoordinateSystem::kBase) return false;

  const auto toFraction = [&](double* value, const QTD::ViewAxis& axis) {
    if (!value) return true;
    const bool number = std::isfinite(*value);
    *value = axis.ToFraction(*value, source, position);
    return number && *value >= 0 && *value <= 1;
  };
  const bool insideX = toFraction(x, axisX());
  const bool insideY = toFraction(y, axisY());
  if (!QTD::FindCoordinateSystem(csDst, &target) || target == CoordinateSystem::kBase) return false;

  if (x) *x = axisX().FromFraction(*x, target, position);
  if (y) *y = axisY().FromFraction(*y, target, position);
  if (clamp) {
    double boundX = pictureWidth;
    double boundY = pictureHeight;
    bool bounded = true;
    if (target == CoordinateSystem::kWindow) {
      boundX = windowWidth;
      boundY = windowHeight;
      bounded = position || (windowWidth > pictureWidth && windowHeight > pictureHeight);
    } else if (target == CoordinateSystem::kImage) {
      boundX = imageWidth;
      boundY = imageHeight;
    }
    if (x && bounded) *x = Hold(*x, 0, boundX);
    if (y && bounded) *y = Hold(*y, 0, boundY);
  }
  return insideX && insideY;
}

bool QTDScreen::clampPoint(QTD::PairD* point, QTD::PairD* size) {
  std::lock_guard<QTD::RMutex> guard(lock);
  bool moved = false;
  double roomX = pictureWidth;
  double roomY = pictureHeight;
  if (point) {
    const bool movedX = HoldAndTell(point->first, pictureX, pictureX + pictureWidth);
    const bool movedY = HoldAndTell(point->second, pictureY, pictureY + pictureHeight);
    moved = movedX || movedY;
    // Summed in this order the room at the far edge is exactly 0, never a rounding below it.
    roomX = (pictureWidth + pictureX) - point->first;
    roomY = (pictureHeight + pictureY) - point->second;
  }
  if (!size) return moved;
  // With a size the answer is the size's alone, whatever happened to the point.
  const bool movedWidth = HoldAndTell(size->first, 0, roomX);
  const bool movedHeight = HoldAndTell(size->second, 0, roomY);
  return movedWidth || movedHeight;
}
