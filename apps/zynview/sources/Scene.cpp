#include "sources/Scene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zynview {

namespace {

struct Colour {
  double red, green, blue;  // 0..1
};

constexpr Colour kPatches[] = {
    {0.45, 0.32, 0.27}, {0.76, 0.58, 0.51}, {0.38, 0.48, 0.61}, {0.34, 0.42, 0.26}, {0.51, 0.50, 0.69},
    {0.40, 0.74, 0.67}, {0.84, 0.49, 0.17}, {0.31, 0.36, 0.65}, {0.76, 0.35, 0.39}, {0.37, 0.24, 0.42},
    {0.62, 0.74, 0.25}, {0.88, 0.64, 0.18}, {1.00, 0.00, 0.00}, {0.00, 1.00, 0.00}, {0.00, 0.00, 1.00},
    {1.00, 1.00, 0.00}, {0.00, 1.00, 1.00}, {1.00, 0.00, 1.00}, {1.00, 1.00, 1.00}, {0.00, 0.00, 0.00},
};
constexpr int kPatchColumns = 10;

constexpr double kPi = 3.14159265358979323846;

Colour Grey(double level) {
  return {level, level, level};
}

// Two rows of colour patches.
Colour Patch(double x, double y) {
  const int column = std::min(static_cast<int>(x * kPatchColumns), kPatchColumns - 1);
  const int row = y < 0.5 ? 0 : 1;
  return kPatches[row * kPatchColumns + column];
}

// A wedge whose lines come closer and closer, up to one line a pixel at the right edge.
Colour Wedge(double x, double pixels) {
  // The local frequency grows in proportion to x, so the phase with its square.
  return Grey(0.5 + 0.5 * std::cos(kPi * pixels * x * x * 0.5));
}

// Four ramps below each other: grey, red, green, blue.
Colour Ramp(double x, double y) {
  const int kind = std::min(static_cast<int>(y * 4), 3);
  const Colour pure[] = {{1, 1, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  return {pure[kind].red * x, pure[kind].green * x, pure[kind].blue * x};
}

// Rings, finer towards the edge.
Colour Zone(double x, double y, double pixels) {
  const double radius = (x - 0.5) * (x - 0.5) + (y - 0.5) * (y - 0.5);
  return Grey(0.5 + 0.5 * std::cos(kPi * pixels * radius));
}

Colour SceneAt(double x, double y, double width, double height) {
  if (y < 0.30) return Patch(x, y / 0.30);
  if (y < 0.45) return Wedge(x, width);
  if (y < 0.60) return Ramp(x, (y - 0.45) / 0.15);
  return x < 0.5 ? Zone(x * 2, (y - 0.60) / 0.40, std::min(width, height) * 0.4) : Grey(0.35);
}

uint16_t Sample(double level) {
  return static_cast<uint16_t>(std::lround(std::clamp(level, 0.0, 1.0) * 65535));
}

}  // namespace

ColourPicture DrawBackground(uint32_t width, uint32_t height) {
  ColourPicture picture{width, height, std::vector<uint16_t>(static_cast<std::size_t>(width) * height * 3)};
  uint16_t* sample = picture.samples.data();
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const Colour colour = SceneAt((x + 0.5) / width, (y + 0.5) / height, width, height);
      *sample++ = Sample(colour.red);
      *sample++ = Sample(colour.green);
      *sample++ = Sample(colour.blue);
    }
  }
  return picture;
}

// A bright disc with a dark cross, on its way round in the grey corner.
Lines DrawPart(ColourPicture& picture, double phase) {
  const double width = picture.width, height = picture.height;
  const double radius = 0.07 * std::min(width, height);
  const double centreX = width * (0.75 + 0.17 * std::cos(2 * kPi * phase));
  const double centreY = height * (0.80 + 0.11 * std::sin(2 * kPi * phase));
  const auto first = [](double edge) { return static_cast<uint32_t>(std::max(0.0, edge)); };
  const Lines lines{first(centreY - radius), first(std::min(height, std::ceil(centreY + radius)))};
  for (uint32_t y = lines.first; y < lines.end; ++y) {
    for (uint32_t x = first(centreX - radius); x < std::min<double>(width, centreX + radius); ++x) {
      const double dx = x - centreX, dy = y - centreY;
      if (dx * dx + dy * dy > radius * radius) continue;
      const bool cross = std::fabs(dx) < radius * 0.15 || std::fabs(dy) < radius * 0.15;
      const Colour colour = cross ? Colour{0.05, 0.05, 0.10} : Colour{0.95, 0.75, 0.20};
      uint16_t* pixel = picture.samples.data() + (static_cast<std::size_t>(y) * picture.width + x) * 3;
      pixel[0] = Sample(colour.red);
      pixel[1] = Sample(colour.green);
      pixel[2] = Sample(colour.blue);
    }
  }
  return lines;
}

}  // namespace zynview
