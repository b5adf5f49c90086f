// The colour correction pass against a model in double precision. Gain and offset: the half that rounding
// leaves and what single precision adds. A card's power and sine are less exact, and no bound is promised for
// them: one code value at 8 bits, 16 at 16.
#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "PassFixture.h"
#include "gl/models/ColorCorrectionModel.h"
#include "gl/passes/QGLColorCorrection.h"

namespace {

struct Kind {
  uint32_t code;
  int channels, depth;
};

constexpr Kind kMono8 = {ZYN_PIXEL_MONO8, 1, 8};
constexpr Kind kRgb8 = {ZYN_PIXEL_RGB8, 3, 8};
constexpr Kind kRgb16 = {ZYN_PIXEL_RGB16, 3, 16};

constexpr Kind kKinds[] = {
    kMono8,
    {ZYN_PIXEL_MONO10, 1, 10},
    {ZYN_PIXEL_MONO16, 1, 16},
    kRgb8,
    {ZYN_PIXEL_BGR8, 3, 8},
    {ZYN_PIXEL_RGB12, 3, 12},
    {ZYN_PIXEL_BGR14, 3, 14},
    kRgb16,
};

int Bits(const Kind& kind) {
  return kind.depth == 8 ? 8 : 16;
}

// How far from rounding a code may lie.
double Slack(const Kind& kind, const model::CorrectionPlan& plan) {
  const bool plain = !plan.automatic && std::fabs(plan.gamma - 1) <= 0.01;
  if (kind.depth == 8) return plain ? 1.0 / 1024 : 0.5;
  return plain ? 1.0 / 16 : 15.5;
}

class ColorCorrectionPass : public PassFixture {
 protected:
  // `coef`: the text of "image.color.coef", empty for none.
  Samples correct(const Kind& kind, int width, int height, const Samples& samples,
                  const model::CorrectionPlan& plan, const std::string& coef = "1.") {
    makeTarget(width, height, kind.code);
    RenderObjects::QGLColorCorrection pass(surface.get());
    EXPECT_TRUE(init(pass, width, height, kind.code));
    std::tie(pass.gainR, pass.gainG, pass.gainB) = std::tie(plan.gain[0], plan.gain[1], plan.gain[2]);
    std::tie(pass.offsR, pass.offsG, pass.offsB) = std::tie(plan.offs[0], plan.offs[1], plan.offs[2]);
    pass.Parameters().Set("gamma", QTD::ToText(plan.gamma));
    pass.Parameters().Set("image.flip.vert", plan.flip ? "1" : "0");
    pass.Parameters().Set("debug.mode", plan.automatic ? "1" : "0");
    pass.Parameters().Set("debug.output", QTD::ToText(plan.output));
    if (!coef.empty()) pass.Parameters().Set("image.color.coef", coef);
    return render(pass, upload(width, height, kind.channels, Bits(kind), samples), kind.channels, Bits(kind));
  }

  void expectModel(const Kind& kind, int width, int height, model::CorrectionPlan plan,
                   const std::string& coef = "1.") {
    const size_t count = static_cast<size_t>(width * height * kind.channels);
    const Samples samples = Scattered(count, (1u << kind.depth) - 1, static_cast<uint32_t>(width));
    const Samples codes = correct(kind, width, height, samples, plan, coef);
    plan.coef = model::EffectiveCoef(coef.empty() ? 0 : std::stod(coef), kind.depth);
    const model::Texels texels(width, height, kind.channels, samples, Bits(kind));
    ASSERT_EQ(codes.size(), count);
    for (size_t i = 0; i < count; ++i) {
      const int pixel = static_cast<int>(i) / kind.channels;
      const int x = pixel % width, y = pixel / width;
      const double exact = model::CorrectedPixel(texels, plan, x, y)[i % static_cast<size_t>(kind.channels)];
      ASSERT_TRUE(model::RoundsTo(exact, codes[i], Bits(kind), Slack(kind, plan)))
          << std::hex << kind.code << std::dec << ", " << width << "x" << height << " at " << x << ", " << y
          << ": " << codes[i] << ", the model has " << exact;
    }
  }

  // One texel of three channels in 16 bits, corrected; values from 0 to 1.
  model::Rgb corrected(const model::Rgb& rgb, const model::CorrectionPlan& plan) {
    Samples samples;
    for (const double c : rgb) samples.push_back(static_cast<uint32_t>(std::lround(c * 65535)));
    const Samples codes = correct(kRgb16, 1, 1, samples, plan);
    return {codes[0] / 65535.0, codes[1] / 65535.0, codes[2] / 65535.0};
  }
};

void ExpectNear(const model::Rgb& rgb, const model::Rgb& expected, double bound = 16.0 / 65535) {
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(rgb[i], expected[i], bound) << "channel " << i;
}

const model::CorrectionPlan kColored = {{1.5, 0.75, 2.25}, {0.013, -0.041, 0.107}};

model::CorrectionPlan WithGamma(double gamma) {
  model::CorrectionPlan plan;
  plan.gamma = gamma;
  return plan;
}

}  // namespace

TEST_F(ColorCorrectionPass, leaves_neutral_settings_exact) {
  for (const Kind& kind : kKinds) {
    const Samples samples = Scattered(static_cast<size_t>(31 * 9 * kind.channels), (1u << kind.depth) - 1);
    EXPECT_EQ(correct(kind, 31, 9, samples, {}), samples);
  }
}

TEST_F(ColorCorrectionPass, is_the_model_for_every_format) {
  for (const Kind& kind : kKinds) {
    for (const bool flip : {false, true}) {
      model::CorrectionPlan plan = kColored;
      plan.flip = flip;
      expectModel(kind, 23, 17, plan);
      plan.gamma = 0.45;
      expectModel(kind, 23, 17, plan);
      plan.gamma = 2.2;
      expectModel(kind, 23, 17, plan);
      plan.automatic = true;
      expectModel(kind, 23, 17, plan);
    }
  }
}

TEST_F(ColorCorrectionPass, is_the_model_for_every_small_size) {
  for (int width = 1; width <= 6; ++width) {
    for (int height = 1; height <= 6; ++height) {
      model::CorrectionPlan plan = kColored;
      plan.flip = width % 2 == 0;
      expectModel(kMono8, width, height, plan);
      expectModel(kRgb8, width, height, plan);
      expectModel(kRgb16, width, height, plan);
    }
  }
}

TEST_F(ColorCorrectionPass, keeps_every_pixel_of_the_longest_lines_in_its_place) {
  const int limit = surface->properties.GetInt("gl.renderbuffer");
  model::CorrectionPlan turned;
  turned.flip = true;
  expectModel(kMono8, limit, 2, {});
  expectModel(kMono8, 2, limit, turned);
  expectModel(kMono8, 2, limit - 1, turned);
}

TEST_F(ColorCorrectionPass, multiplies_by_the_factor_first) {
  for (const char* const coef : {"0.5", "3.7"}) {
    expectModel(kRgb8, 9, 9, kColored, coef);
    expectModel(kRgb16, 9, 9, kColored, coef);
  }
}

TEST_F(ColorCorrectionPass, takes_a_factor_below_0_for_none) {
  expectModel(kRgb8, 9, 9, kColored, "-2");
}

TEST_F(ColorCorrectionPass, takes_a_factor_of_0_or_none_for_the_full_range) {
  for (const char* const coef : {"0", "0.00000001", ""}) {
    expectModel({ZYN_PIXEL_MONO10, 1, 10}, 9, 9, kColored, coef);
    expectModel({ZYN_PIXEL_RGB12, 3, 12}, 9, 9, kColored, coef);
    expectModel(kRgb8, 9, 9, kColored, coef);
  }
}

TEST_F(ColorCorrectionPass, adds_the_offset_after_the_gain_and_gamma_after_both) {
  model::CorrectionPlan plan = {{2, 2, 2}, {0.1, 0.1, 0.1}};
  ExpectNear(corrected({0.25, 0.25, 0.25}, plan), {0.6, 0.6, 0.6}, 2.0 / 65535);
  plan.gamma = 2;
  ExpectNear(corrected({0.25, 0.25, 0.25}, plan), {0.36, 0.36, 0.36});
}

TEST_F(ColorCorrectionPass, applies_no_gamma_close_to_1) {
  const model::Rgb grey = {0.5, 0.25, 0.75};
  EXPECT_EQ(corrected(grey, WithGamma(1.005)), corrected(grey, WithGamma(1)));
  EXPECT_EQ(corrected(grey, WithGamma(0.995)), corrected(grey, WithGamma(1)));
  ExpectNear(corrected(grey, WithGamma(1.02)),
             {std::pow(0.5, 1.02), std::pow(0.25, 1.02), std::pow(0.75, 1.02)});
  ExpectNear(corrected(grey, WithGamma(0.98)),
             {std::pow(0.5, 0.98), std::pow(0.25, 0.98), std::pow(0.75, 0.98)});
}

TEST_F(ColorCorrectionPass, takes_black_and_below_for_0_004_under_gamma) {
  model::CorrectionPlan plan = WithGamma(0.5);
  const double black = std::sqrt(0.004);
  ExpectNear(corrected({0, 0, 0}, plan), {black, black, black});
  plan.offs = {-0.5, 0, -0.3};
  ExpectNear(corrected({0.25, 0.25, 0.25}, plan), {black, 0.5, black});
  // A small value above 0 stays what it is.
  ExpectNear(corrected({0.001, 0.001, 0.001}, WithGamma(0.5)),
             {std::sqrt(66 / 65535.0), std::sqrt(66 / 65535.0), std::sqrt(66 / 65535.0)});
}

TEST_F(ColorCorrectionPass, clamps_to_0_and_1) {
  const model::CorrectionPlan plan = {{3, 1, 1}, {0, -0.9, 0.9}};
  EXPECT_EQ(corrected({0.5, 0.5, 0.5}, plan), (model::Rgb{1, 0, 1}));
}

TEST_F(ColorCorrectionPass, fades_the_automatic_correction_out_towards_white) {
  model::CorrectionPlan plan = {{2, 2, 2}, {0.125, 0.125, 0.125}};
  plan.automatic = true;
  ExpectNear(corrected({0, 0, 0}, plan), {0.125, 0.125, 0.125}, 2.0 / 65535);
  // The whole correction below a sum of 1.43.
  ExpectNear(corrected({0.25, 0.375, 0.125}, plan), {0.625, 0.875, 0.375}, 2.0 / 65535);
  // A share of it above: sum 2.25, sin(0.75) of a gain that adds the value again.
  plan.gain = {0.5, 0.5, 0.5};
  const double share = std::sin(0.75);
  ExpectNear(corrected({0.75, 0.75, 0.75}, plan),
             {0.875 - 0.375 * share, 0.875 - 0.375 * share, 0.875 - 0.375 * share});
  // White keeps its value and gets the offset.
  plan.offs = {-0.25, 0, 0.25};
  ExpectNear(corrected({1, 1, 1}, plan), {0.75, 1, 1});
}

TEST_F(ColorCorrectionPass, ignores_gamma_in_the_automatic_mode) {
  model::CorrectionPlan plan = kColored;
  plan.automatic = true;
  const model::Rgb without = corrected({0.25, 0.5, 0.125}, plan);
  plan.gamma = 3;
  EXPECT_EQ(corrected({0.25, 0.5, 0.125}, plan), without);
}

TEST_F(ColorCorrectionPass, shows_a_channel_or_the_intensity_as_grey) {
  const model::Rgb rgb = {0.25, 0.5, 0.75};
  model::CorrectionPlan plan;
  const model::Rgb plain = corrected(rgb, plan);
  for (const int output : {0, 4, 999, 1000, 1005, -1001}) {
    plan.output = output;
    EXPECT_EQ(corrected(rgb, plan), plain) << output;
  }
  for (size_t i = 0; i < 3; ++i) {
    plan.output = 1001 + static_cast<int>(i);
    EXPECT_EQ(corrected(rgb, plan), (model::Rgb{plain[i], plain[i], plain[i]})) << plan.output;
  }
  plan.output = 1004;
  ExpectNear(corrected(rgb, plan), {0.4525, 0.4525, 0.4525}, 2.0 / 65535);
  ExpectNear(corrected({1, 1, 1}, plan), {1, 1, 1}, 2.0 / 65535);
}

TEST_F(ColorCorrectionPass, has_gains_of_1_no_offsets_and_gamma_1_when_made) {
  RenderObjects::QGLColorCorrection pass(surface.get());
  EXPECT_EQ((model::Rgb{pass.gainR, pass.gainG, pass.gainB}), (model::Rgb{1, 1, 1}));
  EXPECT_EQ((model::Rgb{pass.offsR, pass.offsG, pass.offsB}), (model::Rgb{0, 0, 0}));
  EXPECT_EQ(pass.Parameters().GetString("mode"), "0");
  EXPECT_EQ(pass.Parameters().GetString("gamma"), "1.000000");
}

// A stage that never set "gamma" hands on an empty text, which is 0: every channel becomes white.
TEST_F(ColorCorrectionPass, takes_an_empty_gamma_for_0) {
  makeTarget(1, 1, kRgb8.code);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, 1, 1, kRgb8.code, {{"gamma", ""}}));
  EXPECT_EQ(render(pass, upload(1, 1, 3, 8, {10, 0, 200}), 3, 8), Samples(3, 255));
}

TEST_F(ColorCorrectionPass, makes_its_own_target_like_the_image) {
  for (const Kind& kind : kKinds) {
    RenderObjects::QGLColorCorrection pass(surface.get());
    const Record image(QTD::ImageCreateHeader(nullptr, 6, -4, kind.code));
    ASSERT_TRUE(pass.Init(image.get(), nullptr));
    ASSERT_TRUE(pass.Out());
    EXPECT_EQ(pass.Out()->pixelType, kind.code);
    EXPECT_EQ(pass.Out()->width, 6u);
    EXPECT_EQ(pass.Out()->height, 4u);
    EXPECT_EQ(pass.Out()->origin, 1u);
  }
}

TEST_F(ColorCorrectionPass, raises_for_a_text_that_is_no_number_and_leaves_nothing_bound) {
  makeTarget(2, 2, kRgb8.code);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, 2, 2, kRgb8.code));
  for (const char* const name :
       {"gamma", "image.color.coef", "image.flip.vert", "debug.mode", "debug.output"}) {
    pass.Parameters().Set(name, "much");
    EXPECT_THROW(pass.Render(source.get(), nullptr), std::invalid_argument) << name;
    pass.Parameters().Set(name, "1");
    GLint bound = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &bound);
    EXPECT_EQ(bound, 0);
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(bound, 0);
  }
  EXPECT_TRUE(pass.Render(source.get(), nullptr));
}
