// Drawings of the viewer over the picture: a frame round a region, with a label, and a cross at its centre.
#pragma once

#include <QRect>
#include <QString>

#include "ZynDisplay.h"

namespace zynview {

// They are given in image coordinates, so that the display moves them with the picture. The label is a
// template that the display fills in for each image. GUI thread.
class Overlays {
 public:
  explicit Overlays(ZynDisplayProcessor* target) : display(target) {}

  // After `Initialize`, for images like `format`; `name` tells the source in the label. What lies off the
  // picture is cut off the region; when nothing is left of it, it is the middle half of the picture.
  void Start(const ZynImage& format, const QString& name, const QRect& wanted);
  const QRect& Region() const { return region; }

  // False when the display takes them not all; then none is shown.
  bool Show();
  void Hide();
  bool Toggle() { return shown ? (Hide(), true) : Show(); }
  bool AreShown() const { return shown; }

 private:
  bool AddLabel(const QPoint& place);

  ZynDisplayProcessor* display;  // not owned
  QRect region;
  bool shown = false;
};

}  // namespace zynview
