// A slider and a number for one feature of a camera.
#pragma once

#include <QWidget>
#include <functional>

#include "sources/CameraControls.h"
#include "view/FeatureScale.h"

class QDoubleSpinBox;
class QSlider;

namespace zynview {

// GUI thread.
class FeatureControl : public QWidget {
 public:
  FeatureControl(const QString& unit, bool isLogarithmic, QWidget* parent);

  // The user has chosen a value; not called for `Show`.
  std::function<void(double value)> onChosen;

  // What the camera says. Disabled where it has no such feature.
  void Show(const CameraControls::Range& range);

 private:
  void Choose(double value);
  void ChooseTyped(double value);

  const bool logarithmic;
  bool showing = false;
  FeatureScale scale;
  double least = 0, most = 0;
  QSlider* slider;
  QDoubleSpinBox* number;
};

}  // namespace zynview
