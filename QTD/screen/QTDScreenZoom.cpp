// Zoom steps, and the rectangle that fills or joins the window.
#include <cstdint>
#include <mutex>
#include <utility>

#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/screen/ZoomLadder.h"

using QTD::CoordinateSystem;
using QTD::GuardedDivide;

namespace {

int Percent(double scale, double pixelRatio) {
  return QTD::Round(GuardedDivide(100 * pixelRatio, scale));
}

double LadderScale(double scale, double pixelRatio, bool in) {
  const int percent = QTD::NextZoomPercent(Percent(scale, pixelRatio), in);
  // Below the ladder there is no further step out; a division by it would give the greatest magnification.
  if (percent == 0) return scale;
  return GuardedDivide(pixelRatio, percent / 100.0);
}

double CoefficientScale(double scale, bool in, double coef) {
  return scale * (in ? GuardedDivide(1, coef) : coef);
}

// Clears a flag for the length of a scope, and puts back what it was before.
class Cleared {
 public:
  explicit Cleared(bool& clearedFlag) : flag(clearedFlag), before(std::exchange(clearedFlag, false)) {}
  ~Cleared() { flag = before; }
  Cleared(const Cleared&) = delete;
  Cleared& operator=(const Cleared&) = delete;

 private:
  bool& flag;
  const bool before;
};

}  // namespace

bool QTDScreen::zoom(bool in, double coef, bool probe) {
  bool differs = false;
  perform([&] {
    if (!isReady()) return;
    const double present = properties.GetDouble("scale");
    const int align = properties.GetInt("zoom.align");
    if (QTD::IsNearZero(present)) return;
    QTD::PROPERTIES record;
    if (!probe) savePosition(record);
    const double step = coef > 0 ? coef : properties.GetDouble("zoom.coef");
    double wanted = align == 1 ? LadderScale(present, pixelRatio, in) : CoefficientScale(present, in, step);
    if (probe) {
      wanted = QTD::HeldScale(wanted, properties.GetDouble("scale.min", "0"),
                              properties.GetDouble("scale.max", "0"));
    } else {
      properties.Set("fit", QTD::ToText(QTD::kFitFree));
      setScale(wanted);
      notifyChanged(record);
    }
    // The scale that was asked for: a step against a limit answers true, only the probe knows of the limits.
    differs = !QTD::IsNearZero(present - wanted);
  });
  return differs;
}

void QTDScreen::zoomToRect(const QTD::RectI& rect, bool in) {
  perform([&] {
    if (!isReady()) return;
    const double ratio = GuardedDivide(windowWidth, rect.width);  // the height has no say in the zoom
    const int64_t centerX = static_cast<int64_t>(rect.x) + rect.width / 2;
    const int64_t centerY = static_cast<int64_t>(rect.y) + rect.height / 2;
    const double fx = axisX().ToFraction(static_cast<double>(centerX), CoordinateSystem::kWindow, true);
    const double fy = axisY().ToFraction(static_cast<double>(centerY), CoordinateSystem::kWindow, true);
    QTD::PROPERTIES record;
    savePosition(record);
    {
      const Cleared silent(notify);
      properties.Set("fit", QTD::ToText(QTD::kFitFree));
      setScale(scale * (in ? GuardedDivide(1, ratio) : ratio));
      centerAt(fx, fy);
    }
    notifyChanged(record);
  });
}

int QTDScreen::zoomPercent() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return isReady() ? Percent(scale, pixelRatio) : 0;
}
