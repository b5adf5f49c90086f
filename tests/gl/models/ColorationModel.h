// The exposure coloration pass in double precision.
#pragma once

#include "gl/models/Texels.h"

namespace model {

struct ColorationPlan {
  uint32_t colorLo = 0, colorHi = 0;  // 0x00BBGGRR
  double thresholdLo = 0, thresholdHi = 0;
  bool mono = false;
};

inline Rgb MarkerColor(uint32_t color) {
  return {(color & 0xFF) / 255.0, (color >> 8 & 0xFF) / 255.0, (color >> 16 & 0xFF) / 255.0};
}

// `judged` lies with its first line at the other end.
inline Rgb ColoredPixel(const Texels& picture, const Texels& judged, const ColorationPlan& plan, int x,
                        int y) {
  const Rgb sample = judged.rgb(x, judged.height - 1 - y);
  const double value = plan.mono ? sample[0] : sample[0] + sample[1] + sample[2];
  if (value < plan.thresholdLo) return MarkerColor(plan.colorLo);
  if (value > plan.thresholdHi) return MarkerColor(plan.colorHi);
  return picture.rgb(x, y);
}

}  // namespace model
