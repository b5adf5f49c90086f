#include "view/HistogramPlot.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "view/ChannelColors.h"

namespace zynview {

namespace {

constexpr int kFillAlpha = 40;

double Most(const std::vector<uint32_t>& bins, int columns) {
  const std::vector<double> curve = Spread(bins, columns);
  return curve.empty() ? 0 : *std::max_element(curve.begin(), curve.end());
}

// The greatest height that the ends of the range have no part in: a clipped picture would press everything
// else down. Where there is nothing else, the ends count.
double Most(const std::vector<Histogram::Curve>& curves, int columns) {
  double inner = 0, all = 0;
  for (const Histogram::Curve& curve : curves) {
    std::vector<uint32_t> bins = curve.bins;
    all = std::max(all, Most(bins, columns));
    bins.front() = bins.back() = 0;
    inner = std::max(inner, Most(bins, columns));
  }
  return inner > 0 ? inner : all > 0 ? all : 1;
}

QString Short(double count) {
  if (count >= 1e6) return QStringLiteral("%1M").arg(count / 1e6, 0, 'g', 3);
  if (count >= 1e4) return QStringLiteral("%1k").arg(count / 1e3, 0, 'g', 3);
  return count < 100 ? QString::number(count, 'g', 3) : QString::number(std::lround(count));
}

}  // namespace

void HistogramPlot::Show(const Histogram& shown) {
  histogram = shown;
  update();
}

void HistogramPlot::SetLogarithmic(bool on) {
  logarithmic = on;
  update();
}

double HistogramPlot::Height(double count, double most) const {
  const double height = logarithmic ? std::log10(1 + count) / std::log10(1 + most) : count / most;
  return std::clamp(height, 0.0, 1.0);
}

std::vector<Plot::Tick> HistogramPlot::Heights(double most) const {
  if (!logarithmic) return {{0, QStringLiteral("0")}, {1, Short(most)}};
  std::vector<Tick> ticks{{0, QStringLiteral("0")}};
  const auto decades = static_cast<int>(std::floor(std::log10(most)));
  for (int decade = 0; decade <= decades; ++decade) {
    const double count = std::pow(10, decade);
    ticks.push_back({Height(count, most), Short(count)});
  }
  return ticks;
}

void HistogramPlot::paintEvent(QPaintEvent*) {
  const QRectF area = Area(1);
  if (area.isNull()) return;
  QPainter painter(this);
  if (histogram.Curves().empty()) {
    DrawAxes(painter, area, QStringLiteral("Histogram"), {}, {});
    return;
  }
  const int columns = Columns(painter, area);
  std::vector<std::vector<double>> curves;
  for (const Histogram::Curve& curve : histogram.Curves()) curves.push_back(Spread(curve.bins, columns));
  const double most = Most(histogram.Curves(), columns);
  DrawAxes(painter, area, QStringLiteral("Histogram"), Quarters(static_cast<int>(histogram.Bins()) - 1),
           Heights(most));
  painter.setRenderHint(QPainter::Antialiasing);
  const double step = area.width() / columns;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    QPolygonF line;
    for (std::size_t x = 0; x < curves[i].size(); ++x) {
      line << QPointF(area.left() + (static_cast<double>(x) + 0.5) * step,
                      area.bottom() - Height(curves[i][x], most) * area.height());
    }
    const QColor color = ChannelColor(histogram.Curves()[i].kind, palette());
    QColor fill = color;
    fill.setAlpha(kFillAlpha);
    QPolygonF filled = line;
    filled << QPointF(line.last().x(), area.bottom()) << QPointF(line.first().x(), area.bottom());
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPolygon(filled);
    painter.setPen(QPen(color, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(line);
  }
  DrawEnds(painter, area);
}

// How many samples are at the ends of the range, where the camera could not tell more.
void HistogramPlot::DrawEnds(QPainter& painter, const QRectF& area) const {
  uint64_t bottom = 0, top = 0;
  for (const Histogram::Curve& curve : histogram.Curves()) {
    bottom += curve.AtBottom();
    top += curve.AtTop();
  }
  const double line = painter.fontMetrics().height();
  const QRectF box(area.left(), area.bottom() + line, area.width(), line + 2);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(box, Qt::AlignLeft | Qt::AlignBottom, QStringLiteral("at 0: %1").arg(bottom));
  painter.drawText(box, Qt::AlignRight | Qt::AlignBottom,
                   QStringLiteral("at %1: %2").arg(histogram.Bins() - 1).arg(top));
}

}  // namespace zynview
