// The colour correction pass in double precision.
#pragma once

#include "gl/models/Texels.h"

namespace model {

struct CorrectionPlan {
  Rgb gain{1, 1, 1};
  Rgb offs{0, 0, 0};
  double gamma = 1;
  double coef = 1;  // the effective one
  bool flip = false;
  bool automatic = false;  // "debug.mode" 1
  int output = 0;          // "debug.output"
};

inline Rgb Corrected(Rgb rgb, const CorrectionPlan& plan) {
  if (plan.coef > 0) {
    for (double& c : rgb) c *= plan.coef;
  }
  const double missing = 3 - (rgb[0] + rgb[1] + rgb[2]);
  const double share = missing > 1.57 ? 1 : std::sin(missing);
  for (size_t i = 0; i < 3; ++i) {
    const double full = plan.gain[i] * rgb[i];
    if (plan.automatic) {
      rgb[i] = rgb[i] + plan.offs[i] + share * (full - rgb[i]);
    } else {
      rgb[i] = full + plan.offs[i];
      if (std::fabs(plan.gamma - 1) > 0.01) rgb[i] = std::pow(rgb[i] > 0 ? rgb[i] : 0.004, plan.gamma);
    }
    rgb[i] = Clamped(rgb[i]);
  }
  switch (plan.output) {
    case 1001:
      return {rgb[0], rgb[0], rgb[0]};
    case 1002:
      return {rgb[1], rgb[1], rgb[1]};
    case 1003:
      return {rgb[2], rgb[2], rgb[2]};
    case 1004: {
      const double grey = std::fmin(0.30 * rgb[0] + 0.59 * rgb[1] + 0.11 * rgb[2], 1);
      return {grey, grey, grey};
    }
    default:
      return rgb;
  }
}

inline Rgb CorrectedPixel(const Texels& source, const CorrectionPlan& plan, int x, int y) {
  return Corrected(source.rgb(x, SourceLine(y, source.height, plan.flip)), plan);
}

}  // namespace model
