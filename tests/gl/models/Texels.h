// What a shader sees of a picture: values from 0 to 1, and the texel at the edge for any place beyond it.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

using Rgb = std::array<double, 3>;

struct Texels {
  int width = 0, height = 0, channels = 1;
  std::vector<double> values;  // line 0 first, channels next to each other

  // `samples` as they lie in the texture, 1 or 3 channels, of 8 or 16 bits.
  Texels(int pictureWidth, int pictureHeight, int channelCount, const std::vector<uint32_t>& samples,
         int bits)
      : width(pictureWidth), height(pictureHeight), channels(channelCount) {
    const double top = bits == 8 ? 255 : 65535;
    for (const uint32_t sample : samples) values.push_back(sample / top);
  }

  double at(int x, int y, int channel = 0) const {
    const int column = std::clamp(x, 0, width - 1), line = std::clamp(y, 0, height - 1);
    return values[static_cast<size_t>((line * width + column) * channels + channel)];
  }
  // A texture of one channel has no green and no blue.
  Rgb rgb(int x, int y) const {
    if (channels == 1) return {at(x, y), 0, 0};
    return {at(x, y, 0), at(x, y, 1), at(x, y, 2)};
  }
};

// The line that a pass reads for line `y` of its target.
inline int SourceLine(int y, int height, bool flip) {
  return flip ? height - 1 - y : y;
}

// What "image.color.coef" means to a pass of that depth: a factor near zero counts as not set.
inline double EffectiveCoef(double coef, int depth) {
  if (std::fabs(coef) >= 1e-7) return coef;
  return depth == 8 ? 1 : std::pow(2, 16 - depth);
}

inline double Clamped(double value) {
  return value < 0 ? 0 : value > 1 ? 1 : value;
}

// Whether `code` is a code value that `exact` rounds to. `slack`, in code values, is what the card's single
// precision may add: halves may go either way.
inline bool RoundsTo(double exact, uint32_t code, int bits, double slack) {
  const double top = bits == 8 ? 255 : 65535;
  return std::fabs(code - exact * top) <= 0.5 + slack;
}

}  // namespace model
