// The best method against its plain model, bit for bit, and against photographs.
#include <hwy/highway.h>

#include <QImage>
#include <cmath>

#include "tests/demosaicing/BayerScene.h"
#include "tests/demosaicing/BestModel.h"
#include "tests/demosaicing/ModelTest.h"
#include "tests/support/TestData.h"

namespace {

using BestTest = ModelTest<BestModel, 3>;

constexpr size_t kFormats = std::size(kSceneFormats);

TEST_F(BestTest, follows_its_definition_in_every_width) {
  constexpr uint32_t kHeights[] = {1, 2, 3, 5, 8};
  for (uint32_t width = 1; width <= 130; ++width) {
    ExpectModelOfNoise(kSceneFormats[width % kFormats], width, kHeights[width / 4 % 5]);
  }
}

TEST_F(BestTest, follows_its_definition_in_every_height) {
  for (uint32_t height = 1; height <= 20; ++height) {
    for (const uint32_t width : {1u, 2u, 5u, 18u}) {
      ExpectModelOfNoise(kSceneFormats[(height * 3 + width) % kFormats], width, height);
    }
  }
}

TEST_F(BestTest, follows_its_definition_in_every_pattern_and_depth_on_structures_and_noise) {
  for (const SceneFormat& format : kSceneFormats) {
    ExpectModelOfNoise(format, 41, 13);
    const double greatest = (1 << format.depth) - 1;
    BayerScene scene(format, format.redX == 1, 39, 35);
    for (uint32_t y = 0; y < 35; ++y) {
      for (uint32_t x = 0; x < 39; ++x) {
        const double wave = std::sin(x * x / 30.0 + y * 0.3) + ((x + y * 2) / 14 % 2 == 0 ? 1.0 : 0.0);
        const bool green = (x + y) % 2 != (format.redX + format.redY) % 2;
        scene.Put(x, y, static_cast<uint32_t>((wave + 1) / 3 * greatest * (green ? 0.9 : 0.5)));
      }
    }
    ExpectModel(scene);
  }
}

// Bands are 1048 columns wide and at least 128 lines high, counted from a place of red.
TEST_F(BestTest, does_not_show_where_its_bands_begin) {
  for (const uint32_t bayerType : {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERBG12}) {
    ExpectModelOfNoise(FormatOf(bayerType), 2099, 4);
    ExpectModelOfNoise(FormatOf(bayerType), 7, 259);
  }
  for (const uint32_t width : {1047u, 1048u, 1049u})
    ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGR8), width, 3);
  for (const uint32_t height : {127u, 128u, 129u})
    ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGB8), 3, height);
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERBG8), 1100, 140);
  // High enough for bands of other heights.
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERRG8), 5, 3001);
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGR12), 4, 9001);
}

TEST_F(BestTest, follows_its_definition_where_results_go_past_the_caches) {
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGB12), 2049, 720);
}

TEST_F(BestTest, keeps_black_black_and_white_white) {
  for (const SceneFormat& format : kSceneFormats) {
    for (const uint32_t sample : {0u, (1u << format.depth) - 1}) {
      BayerScene scene(format, false, 21, 9);
      scene.FillWith(sample);
      ASSERT_EQ(scene.Run(*bayer), 0u);
      for (uint32_t y = 0; y < 9; ++y) {
        for (uint32_t x = 0; x < 21; ++x) {
          for (size_t channel = 0; channel < 3; ++channel) ASSERT_EQ(scene.Result(x, y, channel), sample);
        }
      }
    }
  }
}

TEST_F(BestTest, keeps_an_area_of_one_colour) {
  for (const SceneFormat& format : kSceneFormats) {
    const uint32_t unit = 1u << (format.depth - 8), colours[] = {200 * unit, 17 * unit, 90 * unit};
    BayerScene scene(format, true, 30, 31);
    for (uint32_t y = 0; y < 31; ++y) {
      for (uint32_t x = 0; x < 30; ++x) {
        const bool redX = x % 2 == format.redX, redY = y % 2 == format.redY;
        scene.Put(x, y, colours[redX != redY ? 1 : redX ? 0 : 2]);
      }
    }
    ASSERT_EQ(scene.Run(*bayer), 0u);
    for (uint32_t y = 0; y < 31; ++y) {
      for (uint32_t x = 0; x < 30; ++x) {
        for (size_t channel = 0; channel < 3; ++channel) {
          ASSERT_EQ(scene.Result(x, y, channel), colours[channel]) << format.bayer << " at " << x << "," << y;
        }
      }
    }
  }
}

// Checks, stripes and single places of the two extremes; slopes and fits run into all of their limits.
TEST_F(BestTest, follows_its_definition_at_extremes) {
  const std::function<bool(uint32_t, uint32_t)> patterns[] = {
      [](uint32_t x, uint32_t y) { return (x + y) % 2 == 0; },
      [](uint32_t x, uint32_t) { return x % 2 == 0; },
      [](uint32_t, uint32_t y) { return y % 2 == 0; },
      [](uint32_t x, uint32_t y) { return x / 2 % 2 == y / 2 % 2; },
      [](uint32_t x, uint32_t y) { return x % 7 == 3 && y % 5 == 2; },
      [](uint32_t x, uint32_t y) { return x > y; },
      [](uint32_t x, uint32_t y) { return (x * 7919 + y * 104729) * 2654435761u >> 31 != 0; },
  };
  for (const auto& pattern : patterns) {
    for (const uint32_t bayerType : {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGB10, ZYN_PIXEL_BAYERBG16}) {
      const SceneFormat& format = FormatOf(bayerType);
      BayerScene scene(format, false, 37, 19);
      for (uint32_t y = 0; y < 19; ++y) {
        for (uint32_t x = 0; x < 37; ++x) scene.Put(x, y, pattern(x, y) ? (1u << format.depth) - 1 : 0);
      }
      ExpectModel(scene);
    }
  }
}

TEST_F(BestTest, counts_samples_above_the_depth_as_its_greatest) {
  for (const uint32_t bayerType : {ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERBG14}) {
    const SceneFormat& format = FormatOf(bayerType);
    const uint32_t greatest = (1u << format.depth) - 1;
    BayerScene lying(format, false, 48, 20), honest(format, false, 48, 20);
    lying.FillAtRandom(5);
    for (uint32_t y = 0; y < 20; ++y) {
      for (uint32_t x = 0; x < 48; ++x) honest.Put(x, y, std::min(lying.Sample(x, y), greatest));
    }
    ASSERT_EQ(lying.Run(*bayer), 0u);
    ASSERT_EQ(honest.Run(*bayer), 0u);
    EXPECT_EQ(std::memcmp(lying.output.imageData, honest.output.imageData, lying.output.imageSize), 0);
  }
}

// Mirrored scenes of even size have red at another place.
TEST_F(BestTest, gives_the_mirrored_picture_of_a_mirrored_scene) {
  constexpr uint32_t kWidth = 70, kHeight = 44;
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERRG12), false, kWidth, kHeight);
  scene.FillAtRandom(1);
  ASSERT_EQ(scene.Run(*bayer), 0u);
  for (const bool sideways : {true, false}) {
    const auto place = [&](uint32_t x, uint32_t y) {
      return sideways ? std::pair(kWidth - 1 - x, y) : std::pair(x, kHeight - 1 - y);
    };
    BayerScene mirrored(FormatOf(sideways ? ZYN_PIXEL_BAYERGR12 : ZYN_PIXEL_BAYERGB12), true, kWidth,
                        kHeight);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const auto [column, line] = place(x, y);
        mirrored.Put(x, y, scene.Sample(column, line));
      }
    }
    ASSERT_EQ(mirrored.Run(*bayer), 0u);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const auto [column, line] = place(x, y);
        for (size_t channel = 0; channel < 3; ++channel) {
          ASSERT_EQ(mirrored.Result(x, y, channel), scene.Result(column, line, channel));
        }
      }
    }
  }
}

TEST_F(BestTest, treats_red_and_blue_alike) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERGR8), false, 90, 50);
  scene.FillAtRandom(2);
  BayerScene swapped(FormatOf(ZYN_PIXEL_BAYERGB8), true, 90, 50);  // blue where red was
  std::memcpy(swapped.source.imageData, scene.source.imageData, scene.source.imageSize);
  ASSERT_EQ(scene.Run(*bayer), 0u);
  ASSERT_EQ(swapped.Run(*bayer), 0u);
  EXPECT_EQ(std::memcmp(scene.output.imageData, swapped.output.imageData, scene.output.imageSize), 0);
}

TEST_F(BestTest, gives_the_same_with_every_instruction_set) {
  for (int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
    const int64_t target = left & -left;
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::GetChosenTarget().Update(target);
    for (const uint32_t bayerType : {ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERBG14}) {
      ExpectModelOfNoise(FormatOf(bayerType), 77, 30);
      ExpectModelOfNoise(FormatOf(bayerType), 1050, 3);
    }
  }
}

// What an earlier picture left in the workspaces must not be felt.
TEST_F(BestTest, forgets_the_picture_before) {
  const SceneFormat& format = FormatOf(ZYN_PIXEL_BAYERRG16);
  BayerScene first(format, false, 150, 60), second(format, false, 150, 60);
  first.FillAtRandom(3);
  second.FillAtRandom(4);
  ASSERT_EQ(first.Run(*bayer), 0u);
  ASSERT_EQ(bayer->ProcessImage(&second.source, &second.output) & 0xFFFF, 0u);
  const std::vector<uint8_t> after(second.output.imageData,
                                   second.output.imageData + second.output.imageSize);
  ASSERT_EQ(second.Run(*MakeBayer(3)), 0u);
  EXPECT_EQ(std::memcmp(after.data(), second.output.imageData, after.size()), 0);
}

// Peak signal to noise over all samples but those of the outer four pixels, in dB.
double Quality(const std::string& path, ZynBayer& bayer) {
  const QImage photo = QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_RGB888);
  const auto width = static_cast<uint32_t>(photo.width()), height = static_cast<uint32_t>(photo.height());
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERRG8), false, width, height);
  const auto sample = [&](uint32_t x, uint32_t y, size_t channel) {
    return photo.constScanLine(static_cast<int>(y))[3 * x + channel];
  };
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) scene.Put(x, y, sample(x, y, x % 2 + y % 2));
  }
  EXPECT_EQ(scene.Run(bayer), 0u);
  double sum = 0, count = 0;
  for (uint32_t y = 4; y + 4 < height; ++y) {
    for (uint32_t x = 4; x + 4 < width; ++x) {
      for (size_t channel = 0; channel < 3; ++channel, ++count) {
        const double error = double(scene.Result(x, y, channel)) - sample(x, y, channel);
        sum += error * error;
      }
    }
  }
  return 10 * std::log10(255 * 255 * count / sum);
}

// Two pictures with fine structures and two with strong colours.
TEST_F(BestTest, reaches_its_quality_on_photographs) {
  const std::pair<const char*, double> photos[] = {{"photos/kodim01.png", 36.8},
                                                   {"photos/kodim08.png", 34.9},
                                                   {"photos/cc0_tulips.png", 45.6},
                                                   {"photos/pd_astronaut.png", 37.7}};
  for (const auto& [name, least] : photos) {
    const auto path = TestDataPath(name);
    if (!path) GTEST_SKIP() << "there is no test data " << name;
    EXPECT_GE(Quality(*path, *bayer), least) << name;
  }
}

}  // namespace
