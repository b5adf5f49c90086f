// What the viewer can change about the colours of the picture.
#pragma once

#include <algorithm>
#include <array>

namespace zynview {

struct ColorSettings {
  static constexpr int kMethods = 4;

  int demosaicing = 0;                      // the library's "BayerAlgType", below kMethods
  std::array<double, 3> gain{{1, 1, 1}};    // red, green, blue; a grey picture takes the first
  std::array<double, 3> offset{{0, 0, 0}};  // fractions of the full range, added after the gain
  double gamma = 1;                         // exponent, on values of 0 to 1
  bool markExposure = false;

  bool Corrects() const {
    const auto all = [](const std::array<double, 3>& values, double value) {
      return std::all_of(values.begin(), values.end(), [value](double each) { return each == value; });
    };
    return !all(gain, 1) || !all(offset, 0) || gamma != 1;
  }
};

}  // namespace zynview
