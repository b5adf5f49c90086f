#include "view/FeatureScale.h"

#include <algorithm>
#include <cmath>

namespace zynview {

namespace {

constexpr double kDecades = 1e-6;

}  // namespace

FeatureScale::FeatureScale(double leastValue, double mostValue, bool isLogarithmic)
    : least(leastValue),
      most(std::max(leastValue, mostValue)),
      start(std::max(leastValue, most * kDecades)),
      logarithmic(isLogarithmic && most > 0) {}

double FeatureScale::ValueAt(int place) const {
  if (place <= 0) return least;
  if (place >= kPlaces) return most;
  const double part = static_cast<double>(place) / kPlaces;
  return logarithmic ? start * std::pow(most / start, part) : least + (most - least) * part;
}

int FeatureScale::PlaceOf(double value) const {
  if (!(value > least) || most <= least) return 0;
  if (value >= most) return kPlaces;
  const double part = !logarithmic     ? (value - least) / (most - least)
                      : value <= start ? 0
                                       : std::log(value / start) / std::log(most / start);
  return static_cast<int>(std::lround(part * kPlaces));
}

}  // namespace zynview
