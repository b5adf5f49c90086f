// A colour correction stage that is ready for a picture of its own, and the model of what it makes of it.
#pragma once

#include "StageFixture.h"
#include "gl/models/ColorCorrectionModel.h"
#include "gl/stages/QGLIPColorCorrection.h"

class OpenCorrection : public QGLIPColorCorrection {
 public:
  using QGLIPColorCorrection::IsReady;
  using QGLIPColorCorrection::lastError;
  using QGLIPColorCorrection::QGLIPColorCorrection;
};

class ColorCorrectionFixture : public StageFixture {
 protected:
  static constexpr uint32_t kWidth = 9, kHeight = 5;

  void SetUp() override {
    StageFixture::SetUp();
    if (HasFatalFailure()) return;
    ASSERT_EQ(Init(stage, picture), 0u);
  }
  void TearDown() override {
    stage.Release();
    StageFixture::TearDown();
  }
  void Set(const char* name, const char* value) { stage.SetParameterString(name, value); }
  uint32_t Do(const char* command) { return stage.ExecuteCommand(command); }

  // Exact values round to the result; a gamma or a sine may miss by half a code value more.
  void ExpectModel(const model::CorrectionPlan& plan) {
    ASSERT_EQ(Run(stage, picture.get()), 0u);
    const model::Texels texels(kWidth, kHeight, 3, samples, 8);
    const Samples result = Texels(stage);
    ASSERT_EQ(result.size(), samples.size());
    const double slack = plan.automatic || plan.gamma != 1 ? 0.5 : 1.0 / 1024;
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const model::Rgb exact =
            model::CorrectedPixel(texels, plan, static_cast<int>(x), static_cast<int>(y));
        for (size_t c = 0; c < 3; ++c) {
          const size_t at = (size_t{y} * kWidth + x) * 3 + c;
          ASSERT_TRUE(model::RoundsTo(exact[c], result[at], 8, slack))
              << x << "," << y << " channel " << c << ": " << exact[c] * 255 << " became " << result[at];
        }
      }
    }
  }

  // The first pixel is black, the last one white.
  static Samples Colours() {
    Samples colours = Scattered(kWidth * kHeight * 3, 255);
    for (size_t i = 0; i < 3; ++i) colours[i] = 0;
    for (size_t i = colours.size() - 3; i < colours.size(); ++i) colours[i] = 255;
    return colours;
  }

  const Samples samples = Colours();
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, samples);
  OpenCorrection stage{&display};
};
