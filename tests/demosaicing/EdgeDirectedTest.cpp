// The edge-directed method against its plain model, bit for bit, and against photographs.
#include <hwy/highway.h>

#include <QImage>
#include <cmath>
#include <functional>

#include "tests/demosaicing/BayerScene.h"
#include "tests/demosaicing/EdgeDirectedModel.h"
#include "tests/demosaicing/ModelTest.h"
#include "tests/support/TestData.h"

namespace {

using EdgeDirectedTest = ModelTest<EdgeDirectedModel, 2>;

constexpr size_t kFormats = std::size(kSceneFormats);
constexpr size_t kOrders = 4;  // the first formats of the table are those of 8 bits

TEST_F(EdgeDirectedTest, follows_its_definition_in_every_width) {
  constexpr uint32_t kHeights[] = {1, 2, 3, 5, 8};
  for (uint32_t width = 1; width <= 130; ++width) {
    ExpectModelOfNoise(kSceneFormats[width % kOrders], width, kHeights[width / 4 % 5]);
    ExpectModelOfNoise(kSceneFormats[kOrders + width % (kFormats - kOrders)], width, kHeights[width / 3 % 5]);
  }
}

TEST_F(EdgeDirectedTest, follows_its_definition_in_every_height) {
  for (uint32_t height = 1; height <= 20; ++height) {
    for (const uint32_t width : {1u, 2u, 5u, 18u}) {
      ExpectModelOfNoise(kSceneFormats[(height + width) % kOrders], width, height);
      ExpectModelOfNoise(kSceneFormats[(height * 3 + width) % kFormats], width, height);
    }
  }
}

TEST_F(EdgeDirectedTest, follows_its_definition_in_every_pattern_and_depth_on_structures_and_noise) {
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

// Tiles are 2048 places wide and at least 128 lines high.
TEST_F(EdgeDirectedTest, does_not_show_where_its_tiles_begin) {
  for (const uint32_t bayerType :
       {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGB8, ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERBG16}) {
    for (const uint32_t width : {2047u, 2048u, 2049u, 2064u, 4099u})
      ExpectModelOfNoise(FormatOf(bayerType), width, 3);
    for (const uint32_t height : {127u, 128u, 129u, 390u}) ExpectModelOfNoise(FormatOf(bayerType), 5, height);
    ExpectModelOfNoise(FormatOf(bayerType), 2100, 140);
  }
}

// Results of more than 8 MiB are stored in another way, and have tiles of other heights.
TEST_F(EdgeDirectedTest, follows_its_definition_in_large_images) {
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGB12), 2049, 720);
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERGR8), 2081, 1400);
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERRG8), 5, 3001);
  ExpectModelOfNoise(FormatOf(ZYN_PIXEL_BAYERBG12), 4, 9001);
}

TEST_F(EdgeDirectedTest, keeps_an_area_of_one_colour) {
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

// Checks, stripes and single places of the two extremes: the roughest pictures that there are.
TEST_F(EdgeDirectedTest, follows_its_definition_at_extremes) {
  const std::function<bool(uint32_t, uint32_t)> patterns[] = {
      [](uint32_t, uint32_t) { return true; },
      [](uint32_t x, uint32_t y) { return (x + y) % 2 == 0; },
      [](uint32_t x, uint32_t) { return x % 2 == 0; },
      [](uint32_t, uint32_t y) { return y % 2 == 0; },
      [](uint32_t x, uint32_t) { return x % 4 == 0 || x % 4 == 3; },
      [](uint32_t x, uint32_t y) { return x / 2 % 2 == y / 2 % 2; },
      [](uint32_t x, uint32_t y) { return x % 7 == 3 && y % 5 == 2; },
      [](uint32_t x, uint32_t y) { return x > y; },
      [](uint32_t x, uint32_t y) { return (x * 7919 + y * 104729) * 2654435761u >> 31 != 0; },
  };
  for (const auto& pattern : patterns) {
    for (const uint32_t bayerType :
         {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGB8, ZYN_PIXEL_BAYERGB10, ZYN_PIXEL_BAYERBG16}) {
      const SceneFormat& format = FormatOf(bayerType);
      BayerScene scene(format, false, 37, 29);
      for (uint32_t y = 0; y < 29; ++y) {
        for (uint32_t x = 0; x < 37; ++x) scene.Put(x, y, pattern(x, y) ? (1u << format.depth) - 1 : 0);
      }
      ExpectModel(scene);
    }
  }
}

TEST_F(EdgeDirectedTest, counts_samples_above_the_depth_as_its_greatest) {
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

// The same light in more bits: the integers of 8 bits and the numbers of all others follow one definition.
TEST_F(EdgeDirectedTest, gives_the_same_picture_in_more_bits) {
  BayerScene narrow(FormatOf(ZYN_PIXEL_BAYERRG8), false, 97, 60),
      wide(FormatOf(ZYN_PIXEL_BAYERRG14), false, 97, 60);
  narrow.FillAtRandom(9);
  for (uint32_t y = 0; y < 60; ++y) {
    for (uint32_t x = 0; x < 97; ++x) wide.Put(x, y, narrow.Sample(x, y) * 64);
  }
  ASSERT_EQ(narrow.Run(*bayer), 0u);
  ASSERT_EQ(wide.Run(*bayer), 0u);
  for (uint32_t y = 0; y < 60; ++y) {
    for (uint32_t x = 0; x < 97; ++x) {
      for (size_t channel = 0; channel < 3; ++channel) {
        const double expected = std::min(wide.Result(x, y, channel) / 64.0, 255.0);
        ASSERT_NEAR(narrow.Result(x, y, channel), expected, 0.51) << x << "," << y;
      }
    }
  }
}

TEST_F(EdgeDirectedTest, treats_red_and_blue_alike) {
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERGR8), false, 90, 50);
  scene.FillAtRandom(2);
  BayerScene swapped(FormatOf(ZYN_PIXEL_BAYERGB8), true, 90, 50);  // blue where red was
  std::memcpy(swapped.source.imageData, scene.source.imageData, scene.source.imageSize);
  ASSERT_EQ(scene.Run(*bayer), 0u);
  ASSERT_EQ(swapped.Run(*bayer), 0u);
  EXPECT_EQ(std::memcmp(scene.output.imageData, swapped.output.imageData, scene.output.imageSize), 0);
}

TEST_F(EdgeDirectedTest, gives_the_same_with_every_instruction_set) {
  for (int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
    const int64_t target = left & -left;
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::GetChosenTarget().Update(target);
    for (const uint32_t bayerType : {ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERBG14}) {
      for (const uint32_t width : {1u, 3u, 16u, 77u}) ExpectModelOfNoise(FormatOf(bayerType), width, 30);
      ExpectModelOfNoise(FormatOf(bayerType), 2060, 3);
    }
  }
}

// What an earlier picture left in the workspaces must not be felt.
TEST_F(EdgeDirectedTest, forgets_the_picture_before) {
  const SceneFormat& format = FormatOf(ZYN_PIXEL_BAYERRG16);
  BayerScene first(format, false, 150, 60), second(format, false, 150, 60);
  first.FillAtRandom(3);
  second.FillAtRandom(4);
  ASSERT_EQ(first.Run(*bayer), 0u);
  ASSERT_EQ(bayer->ProcessImage(&second.source, &second.output) & 0xFFFF, 0u);
  const std::vector<uint8_t> after(second.output.imageData,
                                   second.output.imageData + second.output.imageSize);
  ASSERT_EQ(second.Run(*MakeBayer(2)), 0u);
  EXPECT_EQ(std::memcmp(after.data(), second.output.imageData, after.size()), 0);
}

// Samples of a photograph, or of one halved in size, where cameras have left no trace of their own
// interpolation, with its colours `saturation` times as strong.
class Photo {
 public:
  Photo(const std::string& path, bool halved, double strength)
      : image(QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_RGB888)),
        scale(halved ? 2 : 1),
        saturation(strength) {}

  uint32_t Width() const { return static_cast<uint32_t>(image.width() / scale); }
  uint32_t Height() const { return static_cast<uint32_t>(image.height() / scale); }
  std::array<uint32_t, 3> Pixel(uint32_t x, uint32_t y) const {
    std::array<double, 3> mean{};
    for (int place = 0; place < scale * scale; ++place) {
      const int line = static_cast<int>(y) * scale + place / scale,
                column = static_cast<int>(x) * scale + place % scale;
      for (size_t channel = 0; channel < 3; ++channel) {
        mean[channel] +=
            double(image.constScanLine(line)[3 * static_cast<size_t>(column) + channel]) / (scale * scale);
      }
    }
    const double grey = 0.299 * mean[0] + 0.587 * mean[1] + 0.114 * mean[2];
    std::array<uint32_t, 3> pixel{};
    for (size_t channel = 0; channel < 3; ++channel) {
      const double value = grey + saturation * (mean[channel] - grey);
      pixel[channel] = static_cast<uint32_t>(std::lround(std::min(std::max(value, 0.0), 255.0)));
    }
    return pixel;
  }

 private:
  QImage image;
  int scale;
  double saturation;
};

// Peak signal to noise over all samples but those of the outer four pixels, in dB.
double Quality(const Photo& photo, ZynBayer& bayer) {
  const uint32_t width = photo.Width(), height = photo.Height();
  BayerScene scene(FormatOf(ZYN_PIXEL_BAYERRG8), false, width, height);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) scene.Put(x, y, photo.Pixel(x, y)[x % 2 + y % 2]);
  }
  EXPECT_EQ(scene.Run(bayer), 0u);
  double sum = 0, count = 0;
  for (uint32_t y = 4; y + 4 < height; ++y) {
    for (uint32_t x = 4; x + 4 < width; ++x) {
      const auto expected = photo.Pixel(x, y);
      for (size_t channel = 0; channel < 3; ++channel, ++count) {
        const double error = double(scene.Result(x, y, channel)) - expected[channel];
        sum += error * error;
      }
    }
  }
  return 10 * std::log10(255 * 255 * count / sum);
}

// `gain`: how much better than method 0 it is at least.
struct Expectation {
  const char* name;
  bool halved;
  double saturation;
  double least, gain;
};

TEST_F(EdgeDirectedTest, reaches_its_quality_on_photographs) {
  const Expectation expectations[] = {
      {"photos/kodim01.png", false, 1.0, 35.3, 3.3},    {"photos/kodim08.png", false, 1.0, 33.9, 4.6},
      {"photos/cc0_tulips.png", false, 1.0, 45.3, 2.1}, {"photos/cc0_coffee.png", true, 1.6, 31.0, 1.0},
      {"photos/bsd_flower.png", true, 2.2, 37.4, 2.9},
  };
  const BayerPointer linear = MakeBayer(0);
  for (const Expectation& expected : expectations) {
    const auto path = TestDataPath(expected.name);
    if (!path) GTEST_SKIP() << "there is no test data " << expected.name;
    const Photo photo(*path, expected.halved, expected.saturation);
    const double quality = Quality(photo, *bayer);
    EXPECT_GE(quality, expected.least) << expected.name;
    EXPECT_GE(quality - Quality(photo, *linear), expected.gain) << expected.name;
  }
}

}  // namespace
