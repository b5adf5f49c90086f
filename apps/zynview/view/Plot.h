// A drawing with two axes: what histogram and profile have in common.
#pragma once

#include <QRectF>
#include <QString>
#include <QWidget>
#include <vector>

namespace zynview {

class Plot : public QWidget {
 public:
  explicit Plot(QWidget* parent);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  struct Tick {
    double place;  // 0 to 1 along the axis
    QString text;
  };
  // Quarters of a range of whole numbers, from 0 to `top`.
  static std::vector<Tick> Quarters(int top);

  // Leaves room for the texts: one line above for `title`, one below for the axis and `linesBelow` more.
  QRectF Area(int linesBelow = 0) const;
  void DrawAxes(QPainter& painter, const QRectF& area, const QString& title,
                const std::vector<Tick>& horizontal, const std::vector<Tick>& vertical) const;
  // Columns of the screen's own pixels, which are finer than those of the widget on some screens.
  static int Columns(const QPainter& painter, const QRectF& area);
};

}  // namespace zynview
