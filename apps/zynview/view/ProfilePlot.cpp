#include "view/ProfilePlot.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "view/ChannelColors.h"

namespace zynview {

void ProfilePlot::Show(const LineProfile& shown) {
  profile = shown;
  update();
}

void ProfilePlot::SetHeld(bool on) {
  held = on;
  update();
}

void ProfilePlot::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && onClick) onClick();
}

void ProfilePlot::paintEvent(QPaintEvent*) {
  const QRectF area = Area();
  if (area.isNull()) return;
  QPainter painter(this);
  QString title = profile.line < 0 ? QStringLiteral("Line") : QStringLiteral("Line %1").arg(profile.line);
  if (held) title += QStringLiteral(" (held)");
  if (profile.depth == 0 || profile.width <= 0) {
    DrawAxes(painter, area, title, {}, {});
    return;
  }
  DrawAxes(painter, area, title, Quarters(profile.width - 1), Quarters((1 << profile.depth) - 1));
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setClipRect(area);
  for (const LineProfile::Curve& curve : profile.curves) DrawCurve(painter, area, curve);
}

// From column to column of the screen; where several samples fall into one, down and up its whole range.
void ProfilePlot::DrawCurve(QPainter& painter, const QRectF& area, const LineProfile::Curve& curve) const {
  const int columns = std::min(Columns(painter, area), profile.width);
  const double step = area.width() / columns, top = (1 << profile.depth) - 1;
  const auto y = [&area, top](uint16_t value) { return area.bottom() - value / top * area.height(); };
  QPolygonF line;
  const std::vector<ProfileSpan> spans = Spread(curve, profile.width, columns);
  for (std::size_t i = 0; i < spans.size(); ++i) {
    if (!spans[i].any) continue;
    const double x = area.left() + (static_cast<double>(i) + 0.5) * step;
    line << QPointF(x, y(spans[i].least));
    if (spans[i].most != spans[i].least) line << QPointF(x, y(spans[i].most));
  }
  painter.setPen(QPen(ChannelColor(curve.kind, palette()), 1));
  if (line.size() == 1) line << line.first() + QPointF(1, 0);
  painter.drawPolyline(line);
}

}  // namespace zynview
