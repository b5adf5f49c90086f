#include "PixelReadout.h"

#include <cmath>

#include "Commands.h"
#include "RawSample.h"

namespace zynview {

void PixelReadout::MoveTo(double x, double y) {
  windowX = x;
  windowY = y;
  pointing = true;
}

QString PixelReadout::Text() {
  if (!pointing) return {};
  // The middle of the window's pixel.
  QTD::ARGUMENTS position{{"pos.x", Number(windowX + 0.5)},
                          {"pos.y", Number(windowY + 0.5)},
                          {"cs.src", "win"},
                          {"cs.dst", "img"}};
  if (display->RunCommand("cmd.display.view.translate", &position) == 0 || position["result"] != "1")
    return {};
  const double x = std::floor(Number(position["pos.x"])), y = std::floor(Number(position["pos.y"]));
  if (!(x >= 0 && y >= 0 && x < 65536 && y < 65536)) return {};
  const auto column = static_cast<uint32_t>(x), line = static_cast<uint32_t>(y);
  QString text = QStringLiteral("x %1  y %2").arg(column).arg(line);
  keeper->Want();
  keeper->Look([&](const ZynImage& frame) {
    RawSample sample;
    if (ReadSample(frame, column, line, &sample)) text += QStringLiteral("   ") + sample.Text();
  });
  return text;
}

}  // namespace zynview
