// The demosaicing pass, site by site in double precision, with its kernels as plain matrices of 5x5.
#pragma once

#include "gl/models/Texels.h"

namespace model {

enum BayerPattern { kGR, kRG, kBG, kGB };

struct BayerPlan {
  BayerPattern pattern = kGR;
  bool flip = false;
  double coef = 1;  // the effective one
};

// In sixteenths; line 0 is the line above.
using Kernel = std::array<std::array<int, 5>, 5>;

constexpr Kernel kGreenAtColor = {
    {{0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}}};
constexpr Kernel kOppositeColor = {
    {{0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}}};
constexpr Kernel kRowColorAtGreen = {
    {{0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}}};
constexpr Kernel kColumnColorAtGreen = {
    {{0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}}};

// How far the comparisons of the edge step are moved: the three of its own, and that of its green with 0. A
// card that computes in single precision may decide a near tie either way.
struct Lean {
  double vertical = 0, horizontal = 0, fit = 0, sign = 0;
};

class BayerSite {
 public:
  BayerSite(const Texels& texels, const BayerPlan& bayerPlan, int column, int line)
      : source(texels), plan(bayerPlan), x(column), y(line) {
    scale = plan.coef > 0 ? plan.coef : 1;
    neighbourScale = scale > 1.001 ? scale : 1;
  }

  Rgb color(const Lean& lean = {}) const {
    const int redColumn = plan.pattern == kRG || plan.pattern == kGB ? 0 : 1;
    const int redLine = plan.pattern == kRG || plan.pattern == kGR ? 0 : 1;
    const bool redInColumn = x % 2 == redColumn, redInLine = y % 2 == redLine;
    const double here = f(0, 0);
    Rgb rgb{};
    if (redInColumn && redInLine) {
      rgb = {here, green(lean), apply(kOppositeColor)};
    } else if (redInLine) {
      rgb = {apply(kRowColorAtGreen), here, apply(kColumnColorAtGreen)};
    } else if (redInColumn) {
      rgb = {apply(kColumnColorAtGreen), here, apply(kRowColorAtGreen)};
    } else {
      rgb = {apply(kOppositeColor), green(lean), here};
    }
    for (double& channel : rgb) channel = Clamped(channel);
    return rgb;
  }

 private:
  double f(int dx, int dy) const {
    return source.at(x + dx, y + dy) * (dx == 0 && dy == 0 ? scale : neighbourScale);
  }

  double apply(const Kernel& kernel) const {
    double sum = 0;
    for (int dy = -2; dy <= 2; ++dy) {
      for (int dx = -2; dx <= 2; ++dx) {
        sum += kernel[static_cast<size_t>(dy + 2)][static_cast<size_t>(dx + 2)] * f(dx, dy);
      }
    }
    return sum / 16;
  }

  // At a red or blue site.
  double green(const Lean& lean) const {
    const bool edges = plan.pattern == kGR || plan.pattern == kGB;  // RG and BG never take the step
    const double directed = edges ? alongEdge(lean) : -1;
    return directed + lean.sign < 0 ? apply(kGreenAtColor) : directed;
  }

  double alongEdge(const Lean& lean) const {
    const double up = f(0, -1), down = f(0, 1), left = f(-1, 0), right = f(1, 0);
    const double acrossLines = std::fabs(up - down) + lean.vertical;
    const double acrossColumns = std::fabs(left - right) + lean.horizontal;
    const double inLine = (left + right) / 2 + (2 * f(0, 0) - f(-2, 0) - f(2, 0)) / 4;
    const double inColumn = (up + down) / 2 + (2 * f(0, 0) - f(0, -2) - f(0, 2)) / 4;
    if (acrossLines <= 0.05) return acrossColumns > 0.05 ? inColumn : -1;
    if (acrossColumns < 0.05) return inLine;
    double fit = lean.fit;
    for (const double estimate : {inLine, inColumn}) {
      fit += std::fabs(left - estimate) + std::fabs(right - estimate);
      fit -= std::fabs(up - estimate) + std::fabs(down - estimate);
    }
    return fit <= -0.01 ? inLine : fit > 0.01 ? inColumn : -1;
  }

  const Texels& source;
  const BayerPlan& plan;
  int x, y;  // of the site in the source
  double scale, neighbourScale;
};

// Whether the pass may answer these codes for pixel (x, y) of its target.
inline bool BayerAllows(const Texels& source, const BayerPlan& plan, int x, int y, const uint32_t* codes,
                        int bits, double slack) {
  const BayerSite site(source, plan, x, SourceLine(y, source.height, plan.flip));
  constexpr double kTie = 4e-6;
  const auto fits = [&](const Lean& lean) {
    const Rgb rgb = site.color(lean);
    return RoundsTo(rgb[0], codes[0], bits, slack) && RoundsTo(rgb[1], codes[1], bits, slack) &&
           RoundsTo(rgb[2], codes[2], bits, slack);
  };
  if (fits({})) return true;
  for (unsigned signs = 0; signs < 16; ++signs) {
    const auto lean = [&](unsigned bit) { return signs >> bit & 1 ? kTie : -kTie; };
    if (fits({lean(0), lean(1), lean(2), lean(3)})) return true;
  }
  return false;
}

}  // namespace model
