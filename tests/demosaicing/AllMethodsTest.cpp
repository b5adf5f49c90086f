// What holds for every method, whatever it computes.
#include <cmath>

#include "tests/demosaicing/BayerScene.h"
#include "tests/support/TestData.h"

namespace {

class AllMethods : public testing::TestWithParam<int64_t> {
 protected:
  BayerPointer bayer = MakeBayer(GetParam());
};

// The format of the same depth with red at another place.
const SceneFormat& Shifted(const SceneFormat& format, size_t x, size_t y) {
  for (const SceneFormat& other : kSceneFormats) {
    if (other.depth == format.depth && other.redX == (format.redX + x) % 2 &&
        other.redY == (format.redY + y) % 2) {
      return other;
    }
  }
  throw std::logic_error("the table holds all four orders");
}

// The reach of the widest method, with something to spare: so far borders may be felt.
constexpr uint32_t kBorder = 40;

// `part` is `whole` from (x, y) on.
void ExpectSameInside(const BayerScene& whole, const BayerScene& part, uint32_t x, uint32_t y,
                      uint32_t border) {
  size_t unequal = 0;
  for (uint32_t line = border; line + border < part.source.height; ++line) {
    for (uint32_t column = border; column + border < part.source.width; ++column) {
      for (size_t channel = 0; channel < 3; ++channel) {
        if (part.Result(column, line, channel) != whole.Result(column + x, line + y, channel)) ++unequal;
      }
    }
  }
  EXPECT_EQ(unequal, 0u) << "at an offset of " << x << "," << y;
}

// Edges of all directions, fine stripes, and noise.
uint32_t SceneSample(uint32_t x, uint32_t y, uint32_t greatest) {
  const double wave =
      std::sin(x * x / 90.0) + std::sin(y * 0.7 + x * 0.2) + ((x / 9 + y / 13) % 2 == 0 ? 1.5 : -0.5);
  const uint32_t noise = (x * 7919 + y * 104729) * 2654435761u >> 24;
  const double value = (wave + 3.0) / 7.0 * greatest + noise * (greatest / 4096.0);
  return static_cast<uint32_t>(std::min<double>(std::max(value, 0.0), greatest));
}

TEST_P(AllMethods, give_the_same_picture_whatever_the_phase_of_the_pattern) {
  for (const uint32_t bayerType : {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGB12}) {
    const SceneFormat& format = FormatOf(bayerType);
    constexpr uint32_t kWidth = 181, kHeight = 140;
    BayerScene whole(format, false, kWidth, kHeight);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) whole.Put(x, y, SceneSample(x, y, (1u << format.depth) - 1));
    }
    ASSERT_EQ(whole.Run(*bayer), 0u);
    for (const auto& [x, y] : {std::pair(1u, 0u), {0u, 1u}, {1u, 1u}}) {
      BayerScene part(Shifted(format, x, y), true, kWidth - x, kHeight - y);
      for (uint32_t line = 0; line < kHeight - y; ++line) {
        for (uint32_t column = 0; column < kWidth - x; ++column) {
          part.Put(column, line, whole.Sample(column + x, line + y));
        }
      }
      ASSERT_EQ(part.Run(*bayer), 0u);
      ExpectSameInside(whole, part, x, y, kBorder);
    }
  }
}

// The scene of the two files is the same, one line apart.
TEST_P(AllMethods, give_the_same_picture_of_a_sensor_whatever_the_phase_of_the_pattern) {
  ZYN_DATA_OR_SKIP(wholeBytes, "sensor/d750_rose_768x512_rggb14.raw");
  ZYN_DATA_OR_SKIP(partBytes, "sensor/d750_rose_768x510_gbrg14.raw");
  BayerScene whole(FormatOf(ZYN_PIXEL_BAYERRG14), false, 768, 512);
  BayerScene part(FormatOf(ZYN_PIXEL_BAYERGB14), false, 768, 510);
  ASSERT_EQ(wholeBytes.size(), whole.source.imageSize);
  ASSERT_EQ(partBytes.size(), part.source.imageSize);
  std::memcpy(whole.source.imageData, wholeBytes.data(), wholeBytes.size());
  std::memcpy(part.source.imageData, partBytes.data(), partBytes.size());
  ASSERT_EQ(whole.Sample(100, 101), part.Sample(100, 100)) << "the second line is the other file's first";
  ASSERT_EQ(whole.Run(*bayer), 0u);
  ASSERT_EQ(part.Run(*bayer), 0u);
  ExpectSameInside(whole, part, 0, 1, kBorder);
}

TEST_P(AllMethods, keep_the_samples_of_the_sensor) {
  for (const SceneFormat& format : kSceneFormats) {
    BayerScene scene(format, format.redY == 1, 33, 18);
    for (uint32_t y = 0; y < 18; ++y) {
      for (uint32_t x = 0; x < 33; ++x) scene.Put(x, y, SceneSample(x, y, (1u << format.depth) - 1));
    }
    ASSERT_EQ(scene.Run(*bayer), 0u);
    size_t changed = 0;
    for (uint32_t y = 0; y < 18; ++y) {
      for (uint32_t x = 0; x < 33; ++x) {
        const bool redX = x % 2 == format.redX, redY = y % 2 == format.redY;
        const size_t seen = redX != redY ? 1 : redX ? 0 : 2;
        if (scene.Result(x, y, seen) != scene.Sample(x, y)) ++changed;
      }
    }
    EXPECT_EQ(changed, 0u) << format.bayer;
  }
}

// The guarded pages around the images end the test when something outside is touched.
TEST_P(AllMethods, stay_within_both_images_and_within_the_depth) {
  uint32_t turn = 0;
  for (const uint32_t width : {1u, 2u, 3u, 5u, 16u, 17u, 63u, 64u, 65u, 130u}) {
    for (const uint32_t height : {1u, 2u, 3u, 4u, 7u, 33u}) {
      for (const SceneFormat& format : kSceneFormats) {
        ++turn;
        const auto border = turn / 2 % 2 == 0 ? GuardedBytes::kAtEnd : GuardedBytes::kAtStart;
        BayerScene scene(format, turn % 2 == 0, width, height, turn % 3, border);
        scene.FillAtRandom(turn);
        ASSERT_EQ(scene.Run(*bayer), 0u);
        ASSERT_TRUE(scene.GapsAreUntouched());
        uint32_t greatest = 0;
        for (uint32_t y = 0; y < height; ++y) {
          for (uint32_t x = 0; x < width; ++x) {
            for (size_t place = 0; place < 3; ++place)
              greatest = std::max(greatest, scene.Stored(x, y, place));
          }
        }
        ASSERT_LT(greatest, 1u << format.depth) << width << "x" << height;
      }
    }
  }
}

TEST_P(AllMethods, keep_a_grey_area_grey) {
  for (const SceneFormat& format : kSceneFormats) {
    for (const uint32_t sample : {0u, (1u << format.depth) / 3, (1u << format.depth) - 1}) {
      BayerScene scene(format, false, 50, 31);
      scene.FillWith(sample);
      ASSERT_EQ(scene.Run(*bayer), 0u);
      for (uint32_t y = 0; y < 31; ++y) {
        for (uint32_t x = 0; x < 50; ++x) {
          for (size_t place = 0; place < 3; ++place) ASSERT_EQ(scene.Stored(x, y, place), sample);
        }
      }
    }
  }
}

TEST_P(AllMethods, refuse_lying_records_and_give_the_same_again_afterwards) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERBG10), false, 40, 30);
  scene.FillAtRandom(5);
  ASSERT_EQ(scene.Run(*bayer), 0u);
  const std::vector<uint8_t> before(scene.output.imageData, scene.output.imageData + scene.output.imageSize);
  ZynImage lying = scene.source;
  lying.imageSize = 100;
  EXPECT_EQ(bayer->ProcessImage(&lying, &scene.output) & 0xFFFF, 7u);
  lying = scene.output;
  lying.linePitch += 1;
  EXPECT_EQ(bayer->ProcessImage(&scene.source, &lying) & 0xFFFF, 7u);
  ASSERT_EQ(bayer->ProcessImage(&scene.source, &scene.output), 0u);
  EXPECT_EQ(std::memcmp(before.data(), scene.output.imageData, before.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(Methods, AllMethods, testing::Values(0, 1, 2, 3));

}  // namespace
