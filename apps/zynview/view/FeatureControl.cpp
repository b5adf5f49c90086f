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
constexpr double kTypedBeyond = 100;  // numbers up to so many times the limits can be typed

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
          [this](double value) { ChooseTyped(value); });
  Show({});
}

void FeatureControl::Choose(double value) {
  if (!showing && onChosen) onChosen(value);
}

// A number beyond the limits means the limit. The box itself would take the digits that lie within and drop
// the others: 12 would become 1 where 10 is the most.
void FeatureControl::ChooseTyped(double value) {
  if (showing) return;
  const double nearest = std::clamp(value, least, most);
  if (nearest != value) {
    showing = true;
    number->setValue(nearest);
    showing = false;
  }
  Choose(nearest);
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
  least = range.least;
  most = range.most;
  const double far = kTypedBeyond * std::max(std::abs(least), std::abs(most));
  number->setRange(-far, far);
  const QString limits =
      QStringLiteral("%1 to %2%3")
          .arg(number->textFromValue(least), number->textFromValue(most), number->suffix());
  number->setToolTip(limits);
  slider->setToolTip(limits);
  number->setValue(range.value);
  // One step of the arrows is a hundredth of the value, or of the range.
  const double step = logarithmic ? range.value / 100 : (range.most - range.least) / 100;
  number->setSingleStep(std::max(step, std::pow(10, -number->decimals())));
  showing = false;
}

}  // namespace zynview
