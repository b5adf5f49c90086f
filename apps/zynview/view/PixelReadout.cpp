#include "view/PixelReadout.h"

#include <cmath>

#include "pixels/RawSample.h"
#include "view/Commands.h"

namespace zynview {

void PixelReadout::MoveTo(double x, double y) {
  windowX = x;
  windowY = y;
  pointing = true;
}

std::optional<QPoint> PixelReadout::Place() const {
  if (!pointing) return {};
  // The middle of the window's pixel.
  const std::optional<ImagePoint> point = WindowToImage(display, windowX + 0.5, windowY + 0.5);
  if (!point || !point->isOnPicture) return {};
  const double x = std::floor(point->x), y = std::floor(point->y);
  if (!(x >= 0 && y >= 0 && x < 65536 && y < 65536)) return {};
  return QPoint(static_cast<int>(x), static_cast<int>(y));
}

QString PixelReadout::Text() {
  const std::optional<QPoint> place = Place();
  if (!place) return {};
  const auto column = static_cast<uint32_t>(place->x()), line = static_cast<uint32_t>(place->y());
  QString text = QStringLiteral("x %1  y %2").arg(column).arg(line);
  keeper->Want();
  keeper->Look([&](const ZynImage& frame) {
    RawSample sample;
    if (ReadSample(frame, column, line, &sample)) text += QStringLiteral("   ") + sample.Text();
  });
  return text;
}

}  // namespace zynview
