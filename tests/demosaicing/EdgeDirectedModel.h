// The edge-directed method as its definition reads, one place after the other, on a picture that goes on
// mirrored at all sides.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "demosaicing/Method.h"

class EdgeDirectedModel {
 public:
  // `sample(x, y)` is called for places of the picture.
  template <typename Sample>
  EdgeDirectedModel(const Sample& sample, size_t pictureWidth, size_t pictureHeight, uint32_t depth,
                    size_t placeX, size_t placeY)
      : width(static_cast<int>(pictureWidth)),
        height(static_cast<int>(pictureHeight)),
        redX(static_cast<int>(placeX)),
        redY(static_cast<int>(placeY)),
        unit(static_cast<float>(1u << (depth - 8))),
        most((1u << depth) - 1) {
    const auto seen = [&](int x, int y) {
      const auto column = Demosaicing::Mirrored(x, pictureWidth);
      const auto line = Demosaicing::Mirrored(y, pictureHeight);
      return static_cast<float>(std::min<uint32_t>(sample(column, line), most)) / unit;
    };
    mosaic = Filled(kReach, seen);
    const Plane roughX = Filled(kReach - 3, [&](int x, int y) { return Rough(x, y, 1, 0); });
    const Plane roughY = Filled(kReach - 3, [&](int x, int y) { return Rough(x, y, 0, 1); });

    const auto cubeOfFive = [&](const Plane& rough, int x, int y) {
      const float sides = (At(rough, x - 1, y - 1) + At(rough, x - 1, y + 1)) +
                          (At(rough, x + 1, y - 1) + At(rough, x + 1, y + 1));
      const float all = (sides + At(rough, x, y)) + 4.0f;
      return all * all * all;
    };
    weight = Filled(kReach - 4, [&](int x, int y) {
      const float alongX = cubeOfFive(roughX, x, y), alongY = cubeOfFive(roughY, x, y);
      return alongY / (alongX + alongY);
    });
    const Plane bend = Filled(kReach - 4, [&](int x, int y) {
      const float twice = 2 * At(mosaic, x, y);
      const float alongX = twice - (At(mosaic, x - 2, y) + At(mosaic, x + 2, y));
      const float alongY = twice - (At(mosaic, x, y - 2) + At(mosaic, x, y + 2));
      return Mixed(At(weight, x, y), alongX, alongY) / 4;
    });
    const Plane estimate = Filled(kReach - 4, [&](int x, int y) {
      const float alongX = At(mosaic, x - 1, y) + At(mosaic, x + 1, y);
      const float alongY = At(mosaic, x, y - 1) + At(mosaic, x, y + 1);
      return Mixed(At(weight, x, y), alongX, alongY) / 2 + 0.75f * At(bend, x, y);
    });

    const Plane products = Filled(kReach - 6, [&](int x, int y) {
      return 2 * (Across(mosaic, x, y, 2, 0) * Across(estimate, x, y, 2, 0) +
                  Across(mosaic, x, y, 0, 2) * Across(estimate, x, y, 0, 2));
    });
    const Plane squares = Filled(kReach - 6, [&](int x, int y) {
      const auto both = [&](int dx, int dy) {
        const float first = Across(mosaic, x, y, dx, dy), second = Across(estimate, x, y, dx, dy);
        return first * first + second * second;
      };
      return both(2, 0) + both(0, 2);
    });
    const auto nine = [&](const Plane& plane, int x, int y) {
      const auto three = [&](int column) {
        return (At(plane, column, y - 2) + At(plane, column, y + 2)) + At(plane, column, y);
      };
      return ((three(x - 2) + three(x + 2)) + three(x)) + 600.0f;
    };
    slope = Filled(kReach - 8,
                   [&](int x, int y) { return std::max(nine(products, x, y) / nine(squares, x, y), 0.0f); });
    green = Filled(kReach - 8, [&](int x, int y) {
      return At(estimate, x, y) + (At(slope, x, y) - 0.75f) * At(bend, x, y);
    });
    offset = Filled(kReach - 8,
                    [&](int x, int y) { return At(mosaic, x, y) - At(slope, x, y) * At(green, x, y); });
    otherSlope = Filled(kReach - 9, [&](int x, int y) { return FromDiagonals(slope, x, y); });
    otherOffset = Filled(kReach - 9, [&](int x, int y) { return FromDiagonals(offset, x, y); });
  }

  // Red, green and blue.
  std::array<uint32_t, 3> Pixel(int x, int y) const {
    const bool redLine = (y & 1) == redY;
    const bool site = ((x & 1) == redX) == redLine;
    const size_t own = redLine ? 0 : 2;
    std::array<uint32_t, 3> pixel{};
    if (site) {
      const float here = At(green, x, y);
      pixel[own] = Rounded(At(mosaic, x, y));
      pixel[1] = Rounded(here);
      pixel[2 - own] = Rounded(At(otherSlope, x, y) * here + At(otherOffset, x, y));
    } else {
      const float here = At(mosaic, x, y);
      pixel[1] = Rounded(here);
      pixel[own] = Rounded((Around(slope, otherSlope, x, y) * here + Around(offset, otherOffset, x, y)) / 2);
      pixel[2 - own] =
          Rounded((Around(otherSlope, slope, x, y) * here + Around(otherOffset, offset, x, y)) / 2);
    }
    return pixel;
  }

 private:
  using Plane = std::vector<float>;
  static constexpr int kReach = 12;

  float At(const Plane& plane, int x, int y) const {
    return plane[static_cast<size_t>(y + kReach) * static_cast<size_t>(width + 2 * kReach) +
                 static_cast<size_t>(x + kReach)];
  }

  // The values of all places of the picture and of `margin` more at its sides.
  template <typename Value>
  Plane Filled(int margin, const Value& value) const {
    Plane plane(static_cast<size_t>(height + 2 * kReach) * static_cast<size_t>(width + 2 * kReach));
    for (int y = -margin; y < height + margin; ++y) {
      for (int x = -margin; x < width + margin; ++x) {
        plane[static_cast<size_t>(y + kReach) * static_cast<size_t>(width + 2 * kReach) +
              static_cast<size_t>(x + kReach)] = value(x, y);
      }
    }
    return plane;
  }

  static float Mixed(float share, float first, float second) { return second + share * (first - second); }

  float Across(const Plane& plane, int x, int y, int dx, int dy) const {
    return At(plane, x + dx, y + dy) - At(plane, x - dx, y - dy);
  }

  float Rough(int x, int y, int dx, int dy) const {
    const auto pair = [&](int far) {
      return At(mosaic, x - far * dx, y - far * dy) + At(mosaic, x + far * dx, y + far * dy);
    };
    return std::fabs((pair(3) - pair(1)) + 3 * (2 * At(mosaic, x, y) - pair(2)));
  }

  float FromDiagonals(const Plane& plane, int x, int y) const {
    const auto change = [&](int side) {
      const float colours = std::fabs(At(mosaic, x - side, y - 1) - At(mosaic, x + side, y + 1));
      const float greens =
          std::fabs(2 * At(green, x, y) - (At(green, x - side, y - 1) + At(green, x + side, y + 1)));
      const float all = (colours + greens) + 1.0f;
      return all * all * all;
    };
    const float falling = change(1), rising = change(-1);
    return Mixed(rising / (falling + rising), At(plane, x - 1, y - 1) + At(plane, x + 1, y + 1),
                 At(plane, x + 1, y - 1) + At(plane, x - 1, y + 1)) /
           2;
  }

  // Twice the mean of the neighbours beside a green, from the first plane, and above and below, from the
  // second.
  float Around(const Plane& beside, const Plane& upright, int x, int y) const {
    return Mixed((At(weight, x - 1, y) + At(weight, x + 1, y)) / 2,
                 At(beside, x - 1, y) + At(beside, x + 1, y), At(upright, x, y - 1) + At(upright, x, y + 1));
  }

  // To the nearest sample, halves to the even one.
  uint32_t Rounded(float value) const {
    const float limited = std::min(std::max(value * unit, 0.0f), static_cast<float>(most));
    return static_cast<uint32_t>(std::lrint(limited));
  }

  int width, height, redX, redY;
  float unit;
  uint32_t most;
  // Of sites (red and blue) but for the first two, whose other values are not used.
  Plane mosaic, weight, slope, green, offset, otherSlope, otherOffset;
};
