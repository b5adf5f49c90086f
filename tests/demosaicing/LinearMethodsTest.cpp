// The methods 0 and 1 against their definitions, bit by bit.
#include <hwy/targets.h>

#include "demosaicing/Lines.h"
#include "tests/demosaicing/LinearModel.h"

namespace {

class LinearMethods : public testing::TestWithParam<int64_t> {
 protected:
  void Check(BayerScene& scene) {
    ASSERT_EQ(scene.Run(*bayer), 0u);
    ASSERT_TRUE(FollowsModel(scene, GetParam()));
  }

  const BayerPointer bayer = MakeBayer(GetParam());
};

TEST_P(LinearMethods, follow_their_definition_in_every_small_size_pattern_depth_and_order) {
  uint32_t turn = 0;
  for (uint32_t width = 1; width <= 130; ++width) {
    for (uint32_t height = 1; height <= 6; ++height) {
      for (const SceneFormat& format : kSceneFormats) {
        ++turn;
        const auto border = turn / 2 % 2 == 0 ? GuardedBytes::kAtEnd : GuardedBytes::kAtStart;
        BayerScene scene(format, turn % 2 == 0, width, height, turn % 5, border);
        scene.FillAtRandom(turn);
        ASSERT_NO_FATAL_FAILURE(Check(scene));
      }
    }
  }
}

// Several slices of lines and several tiles of columns, with a seam in the middle of both.
TEST_P(LinearMethods, follow_their_definition_in_large_pictures_of_odd_sizes) {
  for (const uint32_t bayerType : {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGB12, ZYN_PIXEL_BAYERBG16}) {
    BayerScene scene(FormatOf(bayerType), false, 4099, 131, 1);
    scene.FillAtRandom(bayerType);
    ASSERT_NO_FATAL_FAILURE(Check(scene));
  }
}

// Results that are large enough to be stored past the caches.
TEST_P(LinearMethods, follow_their_definition_where_results_go_past_the_caches) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERGR12), true, 2051, 701, 7);
  ASSERT_GE(scene.output.imageSize, Demosaicing::kPastCachesBytes);
  scene.FillAtRandom(1);
  ASSERT_NO_FATAL_FAILURE(Check(scene));
}

TEST_P(LinearMethods, keep_black_black_and_white_white) {
  for (const SceneFormat& format : kSceneFormats) {
    const uint32_t greatest = (1u << format.depth) - 1;
    for (const uint32_t sample : {0u, greatest}) {
      BayerScene scene(format, false, 37, 5);
      scene.FillWith(sample);
      ASSERT_NO_FATAL_FAILURE(Check(scene));
      EXPECT_EQ(scene.Result(36, 4, 0), sample);
      EXPECT_EQ(scene.Result(17, 2, 1), sample);
      EXPECT_EQ(scene.Result(0, 0, 2), sample);
    }
  }
}

// Samples that are 0 or the greatest take the filters to the ends of their range, where results are clamped.
TEST_P(LinearMethods, clamp_what_over_and_undershoots) {
  for (const SceneFormat& format : kSceneFormats) {
    const uint32_t greatest = (1u << format.depth) - 1;
    for (uint32_t seed = 0; seed < 8; ++seed) {
      BayerScene scene(format, false, 131, 9);
      std::minstd_rand random(seed + 1);
      for (uint32_t y = 0; y < 9; ++y) {
        for (uint32_t x = 0; x < 131; ++x) scene.Put(x, y, (random() >> 12) % 2 == 0 ? 0 : greatest);
      }
      ASSERT_NO_FATAL_FAILURE(Check(scene));
    }
    // The worst of all: each place once high among low ones of its filter's negative weights, and the
    // reverse.
    for (const uint32_t high : {0u, greatest}) {
      BayerScene scene(format, false, 66, 8);
      for (uint32_t y = 0; y < 8; ++y) {
        for (uint32_t x = 0; x < 66; ++x) {
          scene.Put(x, y, (x / 2 + y / 2) % 2 == 0 ? high : greatest - high);
        }
      }
      ASSERT_NO_FATAL_FAILURE(Check(scene));
    }
  }
}

TEST_P(LinearMethods, count_samples_above_the_depth_as_its_greatest) {
  for (const SceneFormat& format : kSceneFormats) {
    if (format.depth == 8 || format.depth == 16) continue;
    BayerScene scene(format, false, 70, 6);
    scene.FillWith(0xFFFF);
    ASSERT_NO_FATAL_FAILURE(Check(scene));
    EXPECT_EQ(scene.Result(33, 3, 0), (1u << format.depth) - 1);
    EXPECT_EQ(scene.Result(33, 3, 1), (1u << format.depth) - 1);
  }
}

TEST_P(LinearMethods, give_the_same_with_every_instruction_set) {
  for (int64_t targets = hwy::SupportedTargets(); targets != 0; targets &= targets - 1) {
    const int64_t one = targets & -targets;
    hwy::DisableTargets(~one);
    for (const SceneFormat& format : kSceneFormats) {
      for (const uint32_t width : {1u, 2u, 15u, 64u, 131u}) {
        BayerScene scene(format, width % 3 == 0, width, 5, width % 2);
        scene.FillAtRandom(width);
        ASSERT_NO_FATAL_FAILURE(Check(scene)) << hwy::TargetName(one);
      }
    }
    hwy::DisableTargets(0);
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, LinearMethods, testing::Values(0, 1));

// One bright place among dark ones: what each of its neighbours gets of it, counted by hand.
TEST(GradientCorrected, spreads_one_bright_place_by_the_published_weights) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERRG8), false, 9, 9);
  scene.FillWith(0);
  scene.Put(4, 4, 160);  // a red place
  ASSERT_EQ(scene.Run(*MakeBayer(0)), 0u);
  EXPECT_EQ(scene.Result(4, 4, 0), 160u);
  EXPECT_EQ(scene.Result(4, 4, 1), 80u);   // 8/16
  EXPECT_EQ(scene.Result(4, 4, 2), 120u);  // 12/16
  EXPECT_EQ(scene.Result(5, 4, 0), 80u);   // 8/16 beside
  EXPECT_EQ(scene.Result(4, 3, 0), 80u);   // 8/16 above
  EXPECT_EQ(scene.Result(5, 5, 0), 40u);   // 4/16 at the blue place across
  EXPECT_EQ(scene.Result(6, 4, 1), 0u);    // -2/16, clamped
}

TEST(Bilinear, spreads_one_bright_place_over_its_neighbours) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERRG8), true, 9, 9);
  scene.FillWith(0);
  scene.Put(4, 4, 161);
  ASSERT_EQ(scene.Run(*MakeBayer(1)), 0u);
  EXPECT_EQ(scene.Stored(4, 4, 2), 161u) << "BGR: red is the third sample";
  EXPECT_EQ(scene.Stored(4, 4, 0), 0u);
  EXPECT_EQ(scene.Stored(5, 4, 2), 81u);  // half, rounded up
  EXPECT_EQ(scene.Stored(4, 3, 2), 81u);
  EXPECT_EQ(scene.Stored(3, 3, 2), 40u);  // a quarter, rounded
  EXPECT_EQ(scene.Stored(6, 4, 2), 0u);
}

}  // namespace
