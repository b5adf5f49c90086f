#include "QTD/screen/ColorValue.h"

#include <algorithm>

#include "QTD/screen/Numbers.h"

namespace {

// The widest samples for which a range still fits its field.
constexpr int kMaxDepth = 30;

int DepthOfRange(int32_t range) {
  switch (range) {
    case 1024:
      return 10;
    case 4096:
      return 12;
    case 16384:
      return 14;
    case 65536:
      return 16;
    default:
      return 8;
  }
}

// The last value of a range counts as full: of 256, 128 is 0.5 and 255 is 1.0.
double PartOf(int32_t value, int32_t range) {
  if (value >= static_cast<int64_t>(range) - 1) return 1.0;
  return std::clamp(static_cast<double>(value) / range, 0.0, 1.0);
}

int32_t ValueOf(double part, int32_t range) {
  return std::clamp(QTD::Round(part * range), 0, std::max(range, 1) - 1);
}

}  // namespace

ColorValue::ColorValue(uint32_t number, int32_t colorRange)
    : ColorValue(static_cast<int>(number & 0xFF), static_cast<int>(number >> 8 & 0xFF),
                 static_cast<int>(number >> 16 & 0xFF), colorRange) {}

ColorValue::ColorValue(int redValue, int greenValue, int blueValue, int32_t colorRange)
    : range(colorRange),
      red(redValue),
      green(greenValue),
      blue(blueValue),
      depth(DepthOfRange(colorRange)),
      redPart(PartOf(redValue, colorRange)),
      greenPart(PartOf(greenValue, colorRange)),
      bluePart(PartOf(blueValue, colorRange)) {}

ColorValue ColorValue::AtDepth(int bits) const {
  ColorValue result = *this;
  result.depth = std::clamp(bits, 0, kMaxDepth);
  result.range = 1 << result.depth;
  result.red = ValueOf(redPart, result.range);
  result.green = ValueOf(greenPart, result.range);
  result.blue = ValueOf(bluePart, result.range);
  return result;
}

ColorValue ColorValue::Grey() const {
  const double luminance = redWeight * redPart + greenWeight * greenPart + blueWeight * bluePart;
  ColorValue result = *this;
  result.red = result.green = result.blue = ValueOf(luminance, range);
  result.redPart = result.greenPart = result.bluePart = std::clamp(luminance, 0.0, 1.0);
  return result;
}
