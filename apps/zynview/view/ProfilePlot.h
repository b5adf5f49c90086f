// Draws the samples along a line of the picture: a curve for each colour.
#pragma once

#include <functional>

#include "analysis/LineProfile.h"
#include "view/Plot.h"

namespace zynview {

class ProfilePlot : public Plot {
 public:
  explicit ProfilePlot(QWidget* parent = nullptr) : Plot(parent) {}

  std::function<void()> onClick;

  // Copied. A held one says so.
  void Show(const LineProfile& shown);
  void SetHeld(bool on);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void DrawCurve(QPainter& painter, const QRectF& area, const LineProfile::Curve& curve) const;

  LineProfile profile;
  bool held = false;
};

}  // namespace zynview
