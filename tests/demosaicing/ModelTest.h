// A method against its plain model, bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <hwy/highway.h>

#include <cstdint>

#include "tests/demosaicing/BayerScene.h"

// `Model` is made from a function of the samples, the size, the depth and the place of red, and answers
// pixels.
template <typename Model, int64_t kMethod>
class ModelTest : public testing::Test {
 protected:
  // A test may have chosen an instruction set.
  ~ModelTest() override { hwy::GetChosenTarget().Update(hwy::SupportedTargets()); }

  // Runs the method and compares all pixels.
  void ExpectModel(BayerScene& scene) {
    const uint32_t width = scene.source.width, height = scene.source.height;
    SCOPED_TRACE(testing::Message() << width << "x" << height << " in format " << scene.format.bayer);
    ASSERT_EQ(scene.Run(*bayer), 0u);
    const Model model([&](size_t x, size_t y) { return scene.Sample(x, y); }, width, height,
                      scene.format.depth, scene.format.redX, scene.format.redY);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        const auto expected = model.Pixel(static_cast<int>(x), static_cast<int>(y));
        for (size_t channel = 0; channel < 3; ++channel) {
          ASSERT_EQ(scene.Result(x, y, channel), expected[channel])
              << "channel " << channel << " at " << x << "," << y;
        }
      }
    }
    EXPECT_TRUE(scene.GapsAreUntouched());
  }

  // All bytes at random, words above the depth among them; both images lie at forbidden memory.
  void ExpectModelOfNoise(const SceneFormat& format, uint32_t width, uint32_t height) {
    const uint32_t turn = width + 3 * height;
    BayerScene scene(format, turn % 2 == 0, width, height, turn % 5,
                     turn % 3 == 0 ? GuardedBytes::kAtStart : GuardedBytes::kAtEnd);
    scene.FillAtRandom(turn);
    ExpectModel(scene);
  }

  BayerPointer bayer = MakeBayer(kMethod);
};
