// The best interpolation, written plainly: whole planes, one place after the other.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "demosaicing/Method.h"

class BestModel {
 public:
  // `sample(x, y)` gives the mosaic's samples within the picture.
  BestModel(const std::function<uint32_t(size_t, size_t)>& sample, size_t width, size_t height,
            uint32_t depth, size_t redX, size_t redY)
      : columns(static_cast<int>(width)),
        lines(static_cast<int>(height)),
        redColumn(static_cast<int>(redX)),
        redLine(static_cast<int>(redY)),
        scale(static_cast<float>(1 << (depth - 8))),
        most(static_cast<float>((1 << depth) - 1) / scale) {
    const uint32_t greatest = (1u << depth) - 1;
    c = Filled(26, [&](int x, int y) {
      const uint32_t value = sample(Demosaicing::Mirrored(x, width), Demosaicing::Mirrored(y, height));
      return static_cast<float>(std::min(value, greatest)) / scale;
    });
    MakeGreen();
    MakeFits();
  }

  // Red, green and blue of a pixel.
  std::array<uint32_t, 3> Pixel(int x, int y) const {
    float red = Colour(x, y, true), blue = Colour(x, y, false);
    const float middle = IsGreen(x, y) ? c(x, y) : green(x, y);
    return {Rounded(red), Rounded(middle), Rounded(blue)};
  }

 private:
  // Values at the places of the picture and `margin` more on all sides.
  class Plane {
   public:
    Plane() = default;
    Plane(int width, int height, int margin)
        : border(margin),
          stride(width + 2 * margin),
          values(static_cast<size_t>(stride) * static_cast<size_t>(height + 2 * margin)) {}
    float& operator()(int x, int y) { return values.at(Index(x, y)); }
    float operator()(int x, int y) const { return values.at(Index(x, y)); }

   private:
    size_t Index(int x, int y) const { return static_cast<size_t>((y + border) * stride + x + border); }
    int border = 0, stride = 0;
    std::vector<float> values;
  };

  template <typename F>
  Plane Filled(int margin, const F& value, int moreLines = 0) const {
    Plane plane(columns, lines, margin + moreLines);
    for (int y = -margin - moreLines; y < lines + margin + moreLines; ++y) {
      for (int x = -margin; x < columns + margin; ++x) plane(x, y) = value(x, y);
    }
    return plane;
  }

  bool IsGreen(int x, int y) const { return ((x + redColumn + y + redLine) & 1) != 0; }
  bool IsRed(int x, int y) const { return ((x + redColumn) & 1) == 0 && ((y + redLine) & 1) == 0; }

  static float Outside(float first, float last, float middle) { return (first + last) + middle; }
  static float Outside(float a, float b, float m, float d, float e) { return ((a + e) + (b + d)) + m; }

  // Sums over 3 or 5 places that are `step` apart, along x and then along y.
  static float Along(const Plane& p, int x, int y, int dx, int dy, int count) {
    if (count == 3) return Outside(p(x - dx, y - dy), p(x + dx, y + dy), p(x, y));
    return Outside(p(x - 2 * dx, y - 2 * dy), p(x - dx, y - dy), p(x, y), p(x + dx, y + dy),
                   p(x + 2 * dx, y + 2 * dy));
  }
  Plane Window(const Plane& p, int margin, int step, int countX, int countY) const {
    const Plane rows = Filled(
        margin, [&](int x, int y) { return Along(p, x, y, step, 0, countX); }, step * (countY / 2));
    return Filled(margin, [&](int x, int y) { return Along(rows, x, y, 0, step, countY); });
  }

  struct Direction {
    Plane slope, difference, weight;
  };

  Direction Look(int dx, int dy) const {
    const auto next = [&](const Plane& p, int x, int y, int n) { return p(x + n * dx, y + n * dy); };
    const Plane bend = Filled(
        24, [&](int x, int y) { return (c(x, y) + c(x, y)) - (next(c, x, y, -2) + next(c, x, y, 2)); });
    const Plane other =
        Filled(22, [&](int x, int y) { return 0.5f * (next(bend, x, y, -1) + next(bend, x, y, 1)); });
    const Plane smooth = Filled(22, [&](int x, int y) {
      return 0.55f * bend(x, y) + 0.225f * (next(bend, x, y, -2) + next(bend, x, y, 2));
    });
    const auto sum = [&](const Plane& p, const Plane& q) {
      return Window(Filled(22, [&](int x, int y) { return p(x, y) * q(x, y); }), 18, 2, 3, 3);
    };
    const Plane lo = sum(bend, other), lt = sum(bend, smooth), oo = sum(other, other),
                ot = sum(other, smooth), tt = sum(smooth, smooth);
    Direction result;
    const auto fit = [](float dividend, float divisor, float what, float product, float by) {
      float slope = (dividend + 27.0f) / (std::max(divisor, 0.0f) + 27.0f);
      slope = std::min(std::max(slope, -1.0f), 2.5f);
      const float ofOne = ((what - (product + product)) + by) + 27.0f;
      const float error =
          std::max((what - (slope * product + slope * product)) + (slope * slope) * by, 0.0f) + 27.0f;
      const float better = std::max(ofOne - error, 0.0f);
      return 1.0f + ((slope - 1.0f) * better) / (better + 1.5f * error);
    };
    result.slope = Filled(17, [&](int x, int y) {
      if (!IsGreen(x, y)) return fit(lo(x, y), lt(x, y), oo(x, y), ot(x, y), tt(x, y));
      const auto mean = [&](const Plane& p) { return 0.5f * (next(p, x, y, -1) + next(p, x, y, 1)); };
      return fit(mean(lo), mean(oo), mean(tt), mean(ot), mean(oo));
    });
    result.difference = Filled(17, [&](int x, int y) {
      const float estimate =
          0.5f * (next(c, x, y, -1) + next(c, x, y, 1)) + (0.25f * result.slope(x, y)) * bend(x, y);
      return IsGreen(x, y) ? c(x, y) - estimate : estimate - c(x, y);
    });
    const Plane rough = Filled(16, [&](int x, int y) {
      return std::fabs(next(result.difference, x, y, -1) - next(result.difference, x, y, 1));
    });
    const Plane around = Window(rough, 14, 1, 5, 5);
    result.weight = Filled(14, [&](int x, int y) {
      const float value = around(x, y) + 1.0f;
      return 1.0f / (value * value * value);
    });
    return result;
  }

  void MakeGreen() {
    const Direction h = Look(1, 0), v = Look(0, 1);
    green = Filled(12, [&](int x, int y) {
      if (IsGreen(x, y)) return c(x, y);
      const auto side = [&](const Direction& d, int dx, int dy) {
        const float slope = d.slope(x, y);
        const float differences = (0.5f * d.difference(x, y) + 0.1f * d.difference(x + 2 * dx, y + 2 * dy)) +
                                  slope * (0.4f * d.difference(x + dx, y + dy));
        const float samples = (0.5f * c(x, y) + 0.1f * c(x + 2 * dx, y + 2 * dy)) + 0.4f * c(x + dx, y + dy);
        return (differences + slope * c(x, y)) + (1.0f - slope) * samples;
      };
      const float left = h.weight(x - 2, y), right = h.weight(x + 2, y);
      const float up = v.weight(x, y - 2), down = v.weight(x, y + 2);
      const float sum =
          (left * side(h, -1, 0) + right * side(h, 1, 0)) + (up * side(v, 0, -1) + down * side(v, 0, 1));
      return Limited(sum / ((left + right) + (up + down)));
    });
  }

  // Red and blue sites alike: their own colour by green.
  void MakeFits() {
    const auto bend = [&](const Plane& p) {
      return Filled(10, [&](int x, int y) {
        if (IsGreen(x, y)) return 0.0f;
        return 4.0f * p(x, y) - ((p(x - 2, y) + p(x + 2, y)) + (p(x, y - 2) + p(x, y + 2)));
      });
    };
    const auto sum = [&](const Plane& p, const Plane& q) {
      return Window(Filled(10, [&](int x, int y) { return p(x, y) * q(x, y); }), 6, 2, 3, 3);
    };
    const Plane bg = bend(green), bc = bend(c);
    const Plane xx = sum(bg, bg), xy = sum(bg, bc), yy = sum(bc, bc);
    const Plane slopes = Filled(6, [&](int x, int y) {
      const float a = xx(x, y) + 9.0f, b = xy(x, y) + 9.0f;
      const float error = std::max((yy(x, y) + 9.0f) - (b / a) * b, 0.0f);
      const float beyond = b / a - 1.0f;
      const float better = a * (beyond * beyond);
      const float slope = 1.0f + (beyond * better) / ((better + 0.1f * error) + 0.001f);
      return std::min(std::max(slope, -3.0f), 3.0f);
    });
    const Plane weights = Filled(6, [&](int x, int y) {
      const float twice = slopes(x, y) * xy(x, y) + slopes(x, y) * xy(x, y);
      const float left = (yy(x, y) - twice) + (slopes(x, y) * slopes(x, y)) * xx(x, y);
      return 1.0f / (std::max(left, 0.0f) + 9.0f);
    });
    const Plane all = Window(weights, 2, 2, 3, 3);
    const Plane weighted =
        Window(Filled(6, [&](int x, int y) { return slopes(x, y) * weights(x, y); }), 2, 2, 3, 3);
    colourSlope = Filled(2, [&](int x, int y) { return weighted(x, y) / all(x, y); });
    // The other of red and blue, at the sites.
    third = Filled(1, [&](int x, int y) {
      if (IsGreen(x, y)) return 0.0f;
      const float slope = 0.25f * ((colourSlope(x - 1, y - 1) + colourSlope(x + 1, y + 1)) +
                                   (colourSlope(x + 1, y - 1) + colourSlope(x - 1, y + 1)));
      return Mixed(x, y, slope, c, {{{-1, -1}, {1, 1}}}, c, {{{1, -1}, {-1, 1}}});
    });
  }

  using TwoPlaces = std::array<std::array<int, 2>, 2>;

  // The colour by green and what the slope leaves at two and two places, which are looked up in a plane each.
  float Mixed(int x, int y, float slope, const Plane& first, const TwoPlaces& one, const Plane& second,
              const TwoPlaces& two) const {
    const auto rest = [&](const Plane& p, const std::array<int, 2>& at) {
      return p(x + at[0], y + at[1]) - slope * green(x + at[0], y + at[1]);
    };
    const auto rough = [&](const Plane& p, const TwoPlaces& at) {
      const float change = std::fabs(green(x, y) - green(x + at[0][0], y + at[0][1])) +
                           std::fabs(green(x, y) - green(x + at[1][0], y + at[1][1]));
      return (std::fabs(rest(p, at[0]) - rest(p, at[1])) + change) + 4.0f;
    };
    const float roughOne = rough(first, one), roughTwo = rough(second, two);
    const float weightOne = roughTwo * roughTwo, weightTwo = roughOne * roughOne;
    const float restOne = rest(first, one[0]) + rest(first, one[1]);
    const float restTwo = rest(second, two[0]) + rest(second, two[1]);
    return slope * green(x, y) +
           (0.5f * (weightOne * restOne + weightTwo * restTwo)) / (weightOne + weightTwo);
  }

  float Colour(int x, int y, bool red) const {
    if (!IsGreen(x, y)) return IsRed(x, y) == red ? c(x, y) : Limited(third(x, y));
    const bool beside = IsRed(x - 1, y) == red;  // sites of this colour lie to the left and right
    const float slope = 0.5f * (beside ? colourSlope(x - 1, y) + colourSlope(x + 1, y)
                                       : colourSlope(x, y - 1) + colourSlope(x, y + 1));
    return Limited(
        Mixed(x, y, slope, beside ? c : third, {{{-1, 0}, {1, 0}}}, beside ? third : c, {{{0, -1}, {0, 1}}}));
  }

  float Limited(float value) const { return std::min(std::max(value, 0.0f), most); }
  uint32_t Rounded(float value) const { return static_cast<uint32_t>(value * scale + 0.5f); }

  const int columns, lines, redColumn, redLine;
  const float scale, most;
  Plane c;      // the samples
  Plane green;  // everywhere
  Plane colourSlope, third;
};
