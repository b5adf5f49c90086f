// The exposure coloration pass against its model. It copies and compares: all codes are exact.
#include <gtest/gtest.h>

#include "PassFixture.h"
#include "gl/models/ColorationModel.h"
#include "gl/passes/QGLExposureColoration.h"

namespace {

constexpr uint32_t kGreen = 0x00FF00, kRed = 0x0000FF;

// The samples that are judged.
struct Judged {
  int channels, depth;
};

constexpr Judged kJudged[] = {{1, 8}, {1, 10}, {1, 12}, {1, 14}, {1, 16}, {3, 8}, {3, 10}, {3, 16}};

int Bits(const Judged& judged) {
  return judged.depth == 8 ? 8 : 16;
}

class ColorationPass : public PassFixture {
 protected:
  static Samples Picture(int width, int height, uint32_t seed = 3) {
    return Scattered(static_cast<size_t>(width * height * 3), 255, seed);
  }

  // An 8-bit RGB picture with the marks of the plan.
  Samples mark(const Judged& judged, int width, int height, const Samples& picture, const Samples& samples,
               const model::ColorationPlan& plan) {
    makeTarget(width, height, ZYN_PIXEL_RGB8);
    RenderObjects::QGLExposureColoration pass(surface.get());
    EXPECT_TRUE(init(pass, width, height, ZYN_PIXEL_RGB8));
    pass.colorLo = plan.colorLo;
    pass.colorHi = plan.colorHi;
    pass.thresholdLo = plan.thresholdLo;
    pass.thresholdHi = plan.thresholdHi;
    QTD::PROPERTIES arguments;
    arguments.Set("source", QTD::ToText(upload(width, height, judged.channels, Bits(judged), samples)));
    arguments.Set("mono", plan.mono ? "1" : "0");
    return render(pass, upload(width, height, 3, 8, picture), 3, 8, &arguments);
  }

  void expectModel(const Judged& judged, int width, int height, const model::ColorationPlan& plan,
                   const Samples& samples) {
    const Samples picture = Picture(width, height);
    const Samples codes = mark(judged, width, height, picture, samples, plan);
    const model::Texels pictureTexels(width, height, 3, picture, 8);
    const model::Texels judgedTexels(width, height, judged.channels, samples, Bits(judged));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const model::Rgb exact = model::ColoredPixel(pictureTexels, judgedTexels, plan, x, y);
        for (size_t i = 0; i < 3; ++i) {
          ASSERT_EQ(codes[static_cast<size_t>((y * width + x) * 3) + i], std::lround(exact[i] * 255))
              << judged.channels << " channels, " << judged.depth << " bits, " << width << "x" << height
              << " at " << x << ", " << y;
        }
      }
    }
  }

  // The thresholds that a stage takes for samples of that depth where it was given none.
  static model::ColorationPlan DefaultPlan(const Judged& judged) {
    const double scale = judged.depth == 8 ? 256 : 65536;
    const double top = (1 << judged.depth) - 1;
    return {kGreen, kRed, 1 / scale, (judged.channels * top - 1) / scale, judged.channels == 1};
  }
};

}  // namespace

TEST_F(ColorationPass, is_the_model_for_every_depth_with_the_default_thresholds) {
  for (const Judged& judged : kJudged) {
    const uint32_t top = (1u << judged.depth) - 1;
    Samples samples = Scattered(static_cast<size_t>(30 * 20 * judged.channels), top, 5);
    // Mostly the values next to the thresholds.
    for (size_t i = 0; i < samples.size(); ++i) {
      if (i % 8 < 3) samples[i] = static_cast<uint32_t>(i % 4);
      if (i % 8 > 4) samples[i] = top - static_cast<uint32_t>(i % 4);
    }
    expectModel(judged, 30, 20, DefaultPlan(judged), samples);
  }
}

TEST_F(ColorationPass, is_the_model_for_every_value_of_a_byte) {
  Samples samples;
  for (uint32_t value = 0; value < 256; ++value) samples.push_back(value);
  for (const double low : {0.0, 10.0, 128.0, 255.0}) {
    for (const double high : {0.0, 20.0, 128.0, 254.0}) {
      expectModel({1, 8}, 256, 1, {0x123456, 0x789ABC, low / 256, high / 256, true}, samples);
      expectModel({1, 8}, 1, 256, {0x123456, 0x789ABC, low / 256, high / 256, true}, samples);
    }
  }
}

// A threshold t is t / 65536, a texel k / 65535: near the top two such numbers may lie closer together than
// single precision can tell.
TEST_F(ColorationPass, is_the_model_for_every_value_of_a_word_around_a_threshold) {
  for (const uint32_t threshold : {1u, 300u, 1022u, 32768u, 49152u}) {
    Samples samples;
    for (uint32_t value = threshold < 20 ? 0 : threshold - 20; value <= std::min(65535u, threshold + 20);
         ++value) {
      samples.push_back(value);
    }
    const int count = static_cast<int>(samples.size());
    expectModel({1, 16}, count, 1, {kGreen, kRed, threshold / 65536.0, 1, true}, samples);
    expectModel({1, 16}, count, 1, {kGreen, kRed, 0, threshold / 65536.0, true}, samples);
  }
}

TEST_F(ColorationPass, is_the_model_for_every_small_size) {
  for (int width = 1; width <= 6; ++width) {
    for (int height = 1; height <= 6; ++height) {
      for (const Judged& judged : {Judged{1, 8}, Judged{3, 8}}) {
        const Samples samples = Scattered(static_cast<size_t>(width * height * judged.channels), 255, 4);
        expectModel(judged, width, height,
                    {kGreen, kRed, 60 / 256.0, judged.channels * 180 / 256.0, judged.channels == 1}, samples);
      }
    }
  }
}

TEST_F(ColorationPass, keeps_every_pixel_of_the_longest_lines_in_its_place) {
  const int limit = surface->properties.GetInt("gl.renderbuffer");
  for (const int length : {limit, limit - 1}) {
    const Samples samples = Scattered(static_cast<size_t>(length), 255, 4);
    const model::ColorationPlan plan = {kGreen, kRed, 60 / 256.0, 180 / 256.0, true};
    expectModel({1, 8}, length, 1, plan, samples);
    expectModel({1, 8}, 1, length, plan, samples);
  }
}

TEST_F(ColorationPass, marks_0_and_254_and_255_of_a_byte_by_default) {
  const Samples picture(6 * 3, 100);
  const Samples codes =
      mark({1, 8}, 6, 1, picture, {0, 1, 2, 253, 254, 255}, {kGreen, kRed, 1 / 256.0, 254 / 256.0, true});
  EXPECT_EQ(codes, (Samples{0, 255, 0, 100, 100, 100, 100, 100, 100,  //
                            100, 100, 100, 255, 0, 0, 255, 0, 0}));
}

TEST_F(ColorationPass, judges_the_sum_of_three_channels_unless_told_mono) {
  const Samples picture(2 * 3, 100);
  const Samples samples = {200, 0, 0, 255, 255, 255};
  const model::ColorationPlan sum = {kGreen, kRed, 1 / 256.0, 764 / 256.0, false};
  EXPECT_EQ(mark({3, 8}, 2, 1, picture, samples, sum), (Samples{100, 100, 100, 255, 0, 0}));
  model::ColorationPlan red = sum;
  red.mono = true;  // red alone never passes 1
  EXPECT_EQ(mark({3, 8}, 2, 1, picture, samples, red), picture);
  red.thresholdHi = 0.5;
  EXPECT_EQ(mark({3, 8}, 2, 1, picture, samples, red), (Samples{255, 0, 0, 255, 0, 0}));
}

TEST_F(ColorationPass, reads_the_judged_samples_upside_down) {
  const Samples picture = {10, 10, 10, 20, 20, 20};
  EXPECT_EQ(mark({1, 8}, 1, 2, picture, {0, 128}, {kGreen, kRed, 1 / 256.0, 254 / 256.0, true}),
            (Samples{10, 10, 10, 0, 255, 0}));
}

TEST_F(ColorationPass, takes_red_from_the_lowest_byte_of_a_colour) {
  const auto marker = [&](uint32_t color) {
    return mark({1, 8}, 1, 1, {7, 7, 7}, {0}, {color, 0, 0.5, 1, true});
  };
  EXPECT_EQ(marker(0x0000FF), (Samples{255, 0, 0}));
  EXPECT_EQ(marker(0x00FF00), (Samples{0, 255, 0}));
  EXPECT_EQ(marker(0xFF0000), (Samples{0, 0, 255}));
  EXPECT_EQ(marker(0xAB563412), (Samples{0x12, 0x34, 0x56}));
}

TEST_F(ColorationPass, takes_its_members_from_the_parameters_at_init) {
  makeTarget(2, 2, ZYN_PIXEL_RGB8);
  RenderObjects::QGLExposureColoration pass(surface.get());
  ASSERT_TRUE(init(pass, 2, 2, ZYN_PIXEL_RGB8));
  EXPECT_EQ(pass.colorLo, 0u);
  EXPECT_EQ(pass.colorHi, 0u);
  EXPECT_EQ(pass.thresholdLo, 0);
  EXPECT_EQ(pass.thresholdHi, 0);
  ASSERT_TRUE(init(pass, 2, 2, ZYN_PIXEL_RGB8,
                   {{"clrLo", "65280"}, {"clrHi", "255"}, {"thrLo", "0.25"}, {"thrHi", "0.5"}}));
  EXPECT_EQ(pass.colorLo, 65280u);
  EXPECT_EQ(pass.colorHi, 255u);
  EXPECT_EQ(pass.thresholdLo, 0.25);
  EXPECT_EQ(pass.thresholdHi, 0.5);
}

TEST_F(ColorationPass, needs_arguments_to_render) {
  makeTarget(2, 2, ZYN_PIXEL_RGB8);
  RenderObjects::QGLExposureColoration pass(surface.get());
  ASSERT_TRUE(init(pass, 2, 2, ZYN_PIXEL_RGB8));
  QTD::PROPERTIES arguments;
  EXPECT_FALSE(pass.Render(source.get(), nullptr));
  EXPECT_FALSE(pass.Render(nullptr, &arguments));
  EXPECT_TRUE(pass.Render(source.get(), &arguments));
  surface->glActiveTexture(GL_TEXTURE0);
}

// The stage goes back to unit 0 itself.
TEST_F(ColorationPass, leaves_the_second_unit_selected_with_the_judged_texture) {
  makeTarget(1, 1, ZYN_PIXEL_RGB8);
  RenderObjects::QGLExposureColoration pass(surface.get());
  ASSERT_TRUE(init(pass, 1, 1, ZYN_PIXEL_RGB8));
  const uint32_t texture = upload(1, 1, 1, 8, {5});
  QTD::PROPERTIES arguments;
  arguments.Set("source", QTD::ToText(texture));
  EXPECT_TRUE(pass.Render(source.get(), &arguments));
  GLint unit = 0, bound = 0;
  glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(unit, GL_TEXTURE1);
  EXPECT_EQ(bound, static_cast<GLint>(texture));
  surface->glBindTexture(GL_TEXTURE_2D, 0);
  surface->glActiveTexture(GL_TEXTURE0);
}

TEST_F(ColorationPass, makes_its_own_target_like_the_image) {
  RenderObjects::QGLExposureColoration pass(surface.get());
  const Record image = MakeHeader(6, 4, ZYN_PIXEL_BGR8);
  ASSERT_TRUE(pass.Init(image.get(), nullptr));
  ASSERT_TRUE(pass.Out());
  EXPECT_EQ(pass.Out()->pixelType, ZYN_PIXEL_BGR8);
}
