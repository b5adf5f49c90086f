#include "view/Plot.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace zynview {

namespace {

constexpr int kWidth = 300, kHeight = 150, kLeastWidth = 180, kLeastHeight = 110;
constexpr int kGap = 4;
constexpr int kGridAlpha = 50;

}  // namespace

Plot::Plot(QWidget* parent) : QWidget(parent) {
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setSizePolicy(policy);
}

QSize Plot::sizeHint() const {
  return {kWidth, kHeight};
}

QSize Plot::minimumSizeHint() const {
  return {kLeastWidth, kLeastHeight};
}

std::vector<Plot::Tick> Plot::Quarters(int top) {
  std::vector<Tick> ticks;
  int last = -1;
  for (int i = 0; i <= 4; ++i) {
    const int value = i == 4 ? top : static_cast<int>((int64_t{top} + 1) * i / 4);
    if (value == last || value > top) continue;
    ticks.push_back({top > 0 ? static_cast<double>(value) / top : 0, QString::number(value)});
    last = value;
  }
  return ticks;
}

QRectF Plot::Area(int linesBelow) const {
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height(), left = metrics.horizontalAdvance(QStringLiteral("0000000")) + kGap;
  const QRectF area =
      QRectF(rect()).adjusted(left, line + kGap, -3 * kGap, -(line * (1 + linesBelow) + kGap));
  return area.width() > 1 && area.height() > 1 ? area : QRectF();
}

int Plot::Columns(const QPainter& painter, const QRectF& area) {
  return std::max(1, static_cast<int>(std::lround(area.width() * painter.device()->devicePixelRatioF())));
}

void Plot::DrawAxes(QPainter& painter, const QRectF& area, const QString& title,
                    const std::vector<Tick>& horizontal, const std::vector<Tick>& vertical) const {
  const QColor text = palette().color(QPalette::WindowText);
  QColor grid = palette().color(QPalette::Text);
  grid.setAlpha(kGridAlpha);
  painter.fillRect(area, palette().color(QPalette::Base));
  painter.setPen(text);
  const double line = painter.fontMetrics().height();
  painter.drawText(QRectF(area.left(), 0, area.width(), line), Qt::AlignLeft | Qt::AlignVCenter, title);
  // The ends have their texts always, the others where there is room.
  std::vector<QRectF> taken;
  for (std::size_t i = 0; i < horizontal.size(); ++i) {
    const Tick& tick = horizontal[i == 0 ? horizontal.size() - 1 : i - 1];
    const double x = area.left() + tick.place * area.width();
    painter.setPen(grid);
    painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
    // Pushed inwards at the ends.
    const double width = painter.fontMetrics().horizontalAdvance(tick.text);
    const double left = std::clamp(x - width / 2, area.left(), std::max(area.left(), area.right() - width));
    const QRectF box(left, area.bottom() + kGap / 2.0, width + 1, line);
    const QRectF apart = box.adjusted(-kGap, 0, kGap, 0);
    if (std::any_of(taken.begin(), taken.end(),
                    [&apart](const QRectF& each) { return each.intersects(apart); }))
      continue;
    painter.setPen(text);
    painter.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, tick.text);
    taken.push_back(box);
  }
  double free = area.bottom() + line;
  for (const Tick& tick : vertical) {
    const double y = area.bottom() - tick.place * area.height();
    painter.setPen(grid);
    painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    if (y + line / 2 > free) continue;
    painter.setPen(text);
    painter.drawText(QRectF(0, y - line / 2, area.left() - kGap, line), Qt::AlignRight | Qt::AlignVCenter,
                     tick.text);
    free = y - line / 2;
  }
}

}  // namespace zynview
