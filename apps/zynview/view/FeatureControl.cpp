#include "view/FeatureControl.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QSlider>
#include <algorithm>
#include <cmath>

namespace zynview {

namespace {

constexpr int kMostDecimals = 3;
constexpr int kNumberWidth = 110;

// Small ranges want more of them.
int Decimals(double most) {
  return most >= 10000 ? 0 : most >= 1000 ? 1 : most >= 100 ? 2 : kMostDecimals;
}

}  // namespace

FeatureControl::FeatureControl(const QString& unit, bool isLogarithmic, QWidget* parent)
    : QWidget(parent),
      logarithmic(isLogarithmic),
      slider(new QSlider(Qt::Horizontal, this)),
      number(new QDoubleSpinBox(this)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(slider, 1);
  row->addWidget(number);
  slider->setRange(0, FeatureScale::kPlaces);
  slider->setMinimumWidth(80);
  number->setMinimumWidth(kNumberWidth);  // one below the other, all begin at the same place
  number->setSuffix(unit);
  number->setKeyboardTracking(false);  // a number that is being typed is none yet
  connect(slider, &QSlider::valueChanged, this, [this](int place) { Choose(scale.ValueAt(place)); });
  connect(number, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
          [this](double value) { Choose(value); });
  Show({});
}

void FeatureControl::Choose(double value) {
  if (!showing && onChosen) onChosen(value);
}

void FeatureControl::Show(const CameraControls::Range& range) {
  const bool good =
      range.available && std::isfinite(range.least) && std::isfinite(range.most) && range.least <= range.most;
  setEnabled(good);
  if (!good) return;
  showing = true;
  scale = FeatureScale(range.least, range.most, logarithmic);
  slider->setValue(scale.PlaceOf(range.value));
  number->setDecimals(Decimals(range.most));
  number->setRange(range.least, range.most);
  number->setValue(range.value);
  // One step of the arrows is a hundredth of the value, or of the range.
  const double step = logarithmic ? range.value / 100 : (range.most - range.least) / 100;
  number->setSingleStep(std::max(step, std::pow(10, -number->decimals())));
  showing = false;
}

}  // namespace zynview
