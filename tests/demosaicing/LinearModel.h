// The linear methods one pixel at a time, straight from their definitions.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tests/demosaicing/BayerScene.h"

class LinearModel {
 public:
  explicit LinearModel(const BayerScene& modelledScene) : scene(modelledScene) {}

  // The sample of a channel (0 red, 1 green, 2 blue) of a pixel.
  int64_t GradientCorrected(int64_t x, int64_t y, int channel) const {
    if (Colour(x, y) == channel) return At(x, y);
    // Weights in 16ths for the 5x5 places around.
    static constexpr int kGreen[5][5] = {
        {0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}};
    static constexpr int kBeside[5][5] = {
        {0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}};
    static constexpr int kOpposite[5][5] = {
        {0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}};
    int64_t sum = 8;
    for (int dy = -2; dy <= 2; ++dy) {
      for (int dx = -2; dx <= 2; ++dx) {
        int weight;
        if (channel == 1) {
          weight = kGreen[dy + 2][dx + 2];
        } else if (Colour(x, y) != 1) {
          weight = kOpposite[dy + 2][dx + 2];
        } else if (IsBeside(x, y, channel)) {
          weight = kBeside[dy + 2][dx + 2];
        } else {
          weight = kBeside[dx + 2][dy + 2];
        }
        sum += weight * At(x + dx, y + dy);
      }
    }
    // Rounded down, of negative sums too.
    const int64_t value = sum >= 0 ? sum / 16 : -((-sum + 15) / 16);
    return std::clamp<int64_t>(value, 0, Greatest());
  }

  // The rounded mean of the nearest places of the channel: those at a distance of 1, or at the corners.
  int64_t Bilinear(int64_t x, int64_t y, int channel) const {
    if (Colour(x, y) == channel) return At(x, y);
    if (channel == 1) return (At(x - 1, y) + At(x + 1, y) + At(x, y - 1) + At(x, y + 1) + 2) / 4;
    if (Colour(x, y) != 1) {
      return (At(x - 1, y - 1) + At(x + 1, y - 1) + At(x - 1, y + 1) + At(x + 1, y + 1) + 2) / 4;
    }
    if (IsBeside(x, y, channel)) return (At(x - 1, y) + At(x + 1, y) + 1) / 2;
    return (At(x, y - 1) + At(x, y + 1) + 1) / 2;
  }

 private:
  int64_t Greatest() const { return (int64_t{1} << scene.format.depth) - 1; }

  // The channel that the sensor sees at a place.
  int Colour(int64_t x, int64_t y) const {
    const bool redX = (x & 1) == static_cast<int64_t>(scene.format.redX);
    const bool redY = (y & 1) == static_cast<int64_t>(scene.format.redY);
    return redX == redY ? (redX ? 0 : 2) : 1;
  }
  // Whether a green place has the channel to its left and right, and not above and below.
  bool IsBeside(int64_t x, int64_t y, int channel) const { return Colour(x + 1, y) == channel; }

  // Mirrored at the first and the last place; samples above the depth count as its greatest.
  int64_t At(int64_t x, int64_t y) const {
    const auto column = static_cast<size_t>(Inside(x, scene.source.width));
    const auto line = static_cast<size_t>(Inside(y, scene.source.height));
    return std::min<int64_t>(scene.Sample(column, line), Greatest());
  }
  static int64_t Inside(int64_t index, int64_t count) {
    if (count == 1) return 0;
    const int64_t period = 2 * (count - 1);
    const int64_t in = ((index % period) + period) % period;
    return in < count ? in : period - in;
  }

  const BayerScene& scene;
};

// The first difference between the result of a linear method and its definition, or nothing.
inline testing::AssertionResult FollowsModel(const BayerScene& scene, int64_t method) {
  const LinearModel model(scene);
  for (uint32_t y = 0; y < scene.source.height; ++y) {
    for (uint32_t x = 0; x < scene.source.width; ++x) {
      for (int channel = 0; channel < 3; ++channel) {
        const int64_t expected =
            method == 0 ? model.GradientCorrected(x, y, channel) : model.Bilinear(x, y, channel);
        const int64_t found = scene.Result(x, y, static_cast<size_t>(channel));
        if (found == expected) continue;
        return testing::AssertionFailure()
               << "method " << method << ", depth " << scene.format.depth << ", red at " << scene.format.redX
               << "," << scene.format.redY << ", " << scene.source.width << "x" << scene.source.height
               << ": channel " << channel << " at " << x << "," << y << " is " << found << ", not "
               << expected;
      }
    }
  }
  if (!scene.GapsAreUntouched()) return testing::AssertionFailure() << "bytes between lines were written";
  return testing::AssertionSuccess();
}
