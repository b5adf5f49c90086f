// Places on a slider for the values of a camera's feature.
#pragma once

namespace zynview {

// On a linear scale equal ways are equal differences, on a logarithmic one equal factors. A range that begins
// at 0 or below has no logarithm there: it begins a millionth below the end then, and the first place is the
// least value itself.
class FeatureScale {
 public:
  static constexpr int kPlaces = 1000;  // the last place; the first one is 0

  FeatureScale() = default;
  FeatureScale(double leastValue, double mostValue, bool isLogarithmic);

  double ValueAt(int place) const;
  int PlaceOf(double value) const;  // the nearest one

 private:
  double least = 0, most = 1, start = 0;
  bool logarithmic = false;
};

}  // namespace zynview
