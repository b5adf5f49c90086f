// Draws a histogram: a curve for each colour.
#pragma once

#include "analysis/Histogram.h"
#include "view/Plot.h"

namespace zynview {

class HistogramPlot : public Plot {
 public:
  explicit HistogramPlot(QWidget* parent = nullptr) : Plot(parent) {}

  // Copied.
  void Show(const Histogram& shown);
  void SetLogarithmic(bool on);
  bool IsLogarithmic() const { return logarithmic; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::vector<Tick> Heights(double most) const;
  double Height(double count, double most) const;
  void DrawEnds(QPainter& painter, const QRectF& area) const;

  Histogram histogram;
  bool logarithmic = false;
};

}  // namespace zynview
