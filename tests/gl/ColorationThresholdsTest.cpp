// The thresholds that the exposure coloration takes for each kind of camera picture.
#include <algorithm>
#include <cmath>

#include "StageFixture.h"
#include "gl/models/ColorationModel.h"
#include "gl/stages/QGLIPExposureColoration.h"

namespace {

constexpr uint32_t kWidth = 16, kHeight = 12;

struct Camera {
  const char* name;
  uint32_t code;
  int depth, channels;
};

class ColorationThresholdsTest : public StageFixture, public testing::WithParamInterface<Camera> {
 protected:
  double Top() const { return (1 << GetParam().depth) - 1; }
  double Levels() const { return GetParam().depth == 8 ? 256 : 65536; }

  // The plan of the defaults: 1, and the largest value, of all channels together, less 1.
  model::ColorationPlan Defaults() const {
    return {65280, 255, 1 / Levels(), (GetParam().channels * Top() - 1) / Levels(), GetParam().channels == 1};
  }

  // Mostly the darkest and the brightest pixels there are, a step or a few apart from each other.
  Samples AroundTheThresholds() const {
    const auto top = static_cast<uint32_t>(Top());
    const auto channels = static_cast<size_t>(GetParam().channels);
    Samples samples = Scattered(kWidth * kHeight * channels, top, 3);
    for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
      const bool dark = pixel % 3 == 0, bright = pixel % 3 == 1;
      for (size_t channel = 0; channel < channels; ++channel) {
        uint32_t& sample = samples[pixel * channels + channel];
        const bool off = channel < pixel % (channels + 1);
        if (dark) sample = off ? 1 : 0;
        if (bright) sample = off ? top - 1 - static_cast<uint32_t>(pixel % 5) : top;
      }
    }
    return samples;
  }

  void ExpectModel(QGLIPExposureColoration& stage, const Samples& camera, const model::ColorationPlan& plan) {
    const Record cameraRecord = MakeRecord(kWidth, kHeight, GetParam().code, camera);
    OnCard unpacked(&display, cameraRecord), shown(&display, picture);
    chain.unpacked = &unpacked.stage;
    ASSERT_EQ(Init(stage, picture), 0u);
    ASSERT_EQ(Run(stage, shown.record()), 0u);
    const Samples result = Texels(stage);
    ASSERT_EQ(result.size(), colours.size());
    const model::Texels pictureTexels(kWidth, kHeight, 3, colours, 8);
    const model::Texels values(kWidth, kHeight, GetParam().channels, camera, GetParam().depth == 8 ? 8 : 16);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const int column = static_cast<int>(x), line = static_cast<int>(y);
        if (IsNearATie(values, plan, column, line)) continue;
        const model::Rgb exact = model::ColoredPixel(pictureTexels, values, plan, column, line);
        for (size_t c = 0; c < 3; ++c) {
          ASSERT_EQ(result[(size_t{y} * kWidth + x) * 3 + c],
                    static_cast<uint32_t>(std::lround(exact[c] * 255)))
              << x << "," << y;
        }
      }
    }
    chain.unpacked = nullptr;
    stage.Release();
  }

  // Single precision tells sums that lie closer to a threshold than this as it likes.
  static bool IsNearATie(const model::Texels& values, const model::ColorationPlan& plan, int x, int y) {
    const model::Rgb sample = values.rgb(x, values.height - 1 - y);
    const double value = plan.mono ? sample[0] : sample[0] + sample[1] + sample[2];
    constexpr double kTie = 4e-7;
    const auto isTie = [&](double threshold) { return std::fabs(value - threshold) < kTie * threshold; };
    return isTie(plan.thresholdLo) || isTie(plan.thresholdHi);
  }

  const Samples colours = Scattered(kWidth * kHeight * 3, 200, 9);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, colours);
  FakeChain chain;
};

TEST_P(ColorationThresholdsTest, are_one_and_one_below_the_top_of_all_channels_together) {
  QGLIPExposureColoration stage(&display, &chain);
  ExpectModel(stage, AroundTheThresholds(), Defaults());
}

// Three channels count together, in either order: the top of one alone marks nothing.
TEST_P(ColorationThresholdsTest, judge_a_pixel_by_all_its_channels) {
  const auto top = static_cast<uint32_t>(Top());
  const auto channels = static_cast<size_t>(GetParam().channels);
  Samples camera(kWidth * kHeight * channels, 0);
  for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) camera[pixel * channels] = top;
  QGLIPExposureColoration stage(&display, &chain);
  const Record cameraRecord = MakeRecord(kWidth, kHeight, GetParam().code, camera);
  OnCard unpacked(&display, cameraRecord), shown(&display, picture);
  chain.unpacked = &unpacked.stage;
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, shown.record()), 0u);
  Samples red;
  for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) red.insert(red.end(), {255, 0, 0});
  EXPECT_EQ(Texels(stage), channels == 1 ? red : colours);
}

TEST_P(ColorationThresholdsTest, that_are_negative_count_as_absent) {
  for (const char* const negative : {"-5", "-0.5", "-1e9"}) {
    QGLIPExposureColoration stage(&display, &chain);
    stage.SetParameterString("thres.lo", negative);
    stage.SetParameterString("thres.hi", negative);
    ExpectModel(stage, AroundTheThresholds(), Defaults());
  }
}

TEST_P(ColorationThresholdsTest, of_0_are_thresholds) {
  QGLIPExposureColoration stage(&display, &chain);
  stage.SetParameterString("thres.lo", "0");
  stage.SetParameterString("thres.hi", "0");
  model::ColorationPlan plan = Defaults();
  plan.thresholdLo = plan.thresholdHi = 0;
  // Black alone is neither below 0 nor above it.
  Samples camera =
      Scattered(kWidth * kHeight * static_cast<size_t>(GetParam().channels), static_cast<uint32_t>(Top()), 5);
  for (size_t i = 0; i < camera.size() / 2; ++i) camera[i] = 0;
  const model::Texels values(kWidth, kHeight, GetParam().channels, camera, GetParam().depth == 8 ? 8 : 16);
  const Record cameraRecord = MakeRecord(kWidth, kHeight, GetParam().code, camera);
  OnCard unpacked(&display, cameraRecord), shown(&display, picture);
  chain.unpacked = &unpacked.stage;
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, shown.record()), 0u);
  const Samples result = Texels(stage);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      const model::Rgb sample = values.rgb(static_cast<int>(x), static_cast<int>(kHeight - 1 - y));
      const bool black = sample[0] + sample[1] + sample[2] == 0;
      EXPECT_EQ(Pixel(result, kWidth, x, y),
                black ? Pixel(colours, kWidth, x, y) : (std::vector<uint32_t>{255, 0, 0}));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cameras, ColorationThresholdsTest,
    testing::Values(Camera{"Mono8", ZYN_PIXEL_MONO8, 8, 1}, Camera{"Mono12", ZYN_PIXEL_MONO12, 12, 1},
                    Camera{"RGB8", ZYN_PIXEL_RGB8, 8, 3}, Camera{"RGB10", ZYN_PIXEL_RGB10, 10, 3},
                    Camera{"RGB12", ZYN_PIXEL_RGB12, 12, 3}, Camera{"RGB16", ZYN_PIXEL_RGB16, 16, 3},
                    Camera{"BGR8", ZYN_PIXEL_BGR8, 8, 3}, Camera{"BGR14", ZYN_PIXEL_BGR14, 14, 3}),
    [](const testing::TestParamInfo<Camera>& camera) { return camera.param.name; });

}  // namespace
