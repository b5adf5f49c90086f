// The demosaicing pass against a model in double precision. A code value may differ from the model's value
// by the half that rounding leaves and by what single precision adds: 1/16 at 16 bits, nothing to speak of
// at 8.
#include <gtest/gtest.h>

#include "PassFixture.h"
#include "gl/models/BayerModel.h"
#include "gl/passes/QGLBayerMHC.h"
#include "gl/passes/ShaderSources.h"

namespace {

constexpr double kSlack8 = 1.0 / 1024;
constexpr double kSlack16 = 1.0 / 16;

constexpr int kDepths[] = {8, 10, 12, 14, 16};

// By pattern: GR, RG, BG, GB.
constexpr uint32_t kBayerCodes[][4] = {
    {ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERBG8, ZYN_PIXEL_BAYERGB8},
    {ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERBG10, ZYN_PIXEL_BAYERGB10},
    {ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BAYERBG12, ZYN_PIXEL_BAYERGB12},
    {ZYN_PIXEL_BAYERGR14, ZYN_PIXEL_BAYERRG14, ZYN_PIXEL_BAYERBG14, ZYN_PIXEL_BAYERGB14},
    {ZYN_PIXEL_BAYERGR16, ZYN_PIXEL_BAYERRG16, ZYN_PIXEL_BAYERBG16, ZYN_PIXEL_BAYERGB16},
};
constexpr uint32_t kRgbCodes[] = {ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB10, ZYN_PIXEL_RGB12, ZYN_PIXEL_RGB14,
                                  ZYN_PIXEL_RGB16};

constexpr model::BayerPattern kPatterns[] = {model::kGR, model::kRG, model::kBG, model::kGB};

int Bits(int depth) {
  return depth == 8 ? 8 : 16;
}

struct Mosaic {
  int width, height;
  Samples samples;
};

class BayerPass : public PassFixture {
 protected:
  // `coef` is the text of "image.color.coef", empty for none.
  Samples demosaic(const Mosaic& mosaic, model::BayerPattern pattern, size_t depthIndex, bool flip,
                   const std::string& coef) {
    const int bits = Bits(kDepths[depthIndex]);
    makeTarget(mosaic.width, mosaic.height, kRgbCodes[depthIndex]);
    RenderObjects::QGLBayerMHC pass(surface.get());
    EXPECT_TRUE(init(pass, mosaic.width, mosaic.height, kBayerCodes[depthIndex][pattern],
                     {{"image.flip.vert", flip ? "1" : "0"}}));
    if (!coef.empty()) pass.Parameters().Set("image.color.coef", coef);
    return render(pass, upload(mosaic.width, mosaic.height, 1, bits, mosaic.samples), 3, bits);
  }

  void expectModel(const Mosaic& mosaic, model::BayerPattern pattern, size_t depthIndex, bool flip,
                   const std::string& coef) {
    const int depth = kDepths[depthIndex];
    const model::Texels texels(mosaic.width, mosaic.height, 1, mosaic.samples, Bits(depth));
    const model::BayerPlan plan = {pattern, flip,
                                   model::EffectiveCoef(coef.empty() ? 0 : std::stod(coef), depth)};
    const Samples codes = demosaic(mosaic, pattern, depthIndex, flip, coef);
    for (int y = 0; y < mosaic.height; ++y) {
      for (int x = 0; x < mosaic.width; ++x) {
        const uint32_t* const rgb = &codes[static_cast<size_t>((y * mosaic.width + x) * 3)];
        const model::BayerSite site(texels, plan, x, model::SourceLine(y, mosaic.height, flip));
        ASSERT_TRUE(model::BayerAllows(texels, plan, x, y, rgb, Bits(depth), depth == 8 ? kSlack8 : kSlack16))
            << "pattern " << pattern << ", depth " << depth << ", flip " << flip << ", factor " << coef
            << ", " << mosaic.width << "x" << mosaic.height << " at " << x << ", " << y << ": " << rgb[0]
            << " " << rgb[1] << " " << rgb[2] << ", the model has " << site.color()[0] << " "
            << site.color()[1] << " " << site.color()[2];
      }
    }
  }

  static Mosaic Noise(int width, int height, int depth, uint32_t seed = 1) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    return {width, height, Scattered(count, (1u << depth) - 1, seed)};
  }

  // Differences around the thresholds of the edge step: soft ramps with noise on them.
  static Mosaic Soft(int width, int height, int depth) {
    Mosaic mosaic = Noise(width, height, depth, 9);
    const uint32_t top = (1u << depth) - 1;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        uint32_t& sample = mosaic.samples[static_cast<size_t>(y * width + x)];
        const uint32_t ramp = top / 4 + static_cast<uint32_t>(x * x + 3 * y) * top / 2000;
        sample = std::min(top, ramp + sample / 14);
      }
    }
    return mosaic;
  }

  // 7x7 of one value, with one other at some places.
  static Mosaic Flat(uint32_t value) { return {7, 7, Samples(49, value)}; }
  static uint32_t& At(Mosaic& mosaic, int x, int y) {
    return mosaic.samples[static_cast<size_t>(y * mosaic.width + x)];
  }
};

}  // namespace

TEST_F(BayerPass, is_the_model_for_every_pattern_and_depth_in_scattered_samples) {
  for (size_t depth = 0; depth < std::size(kDepths); ++depth) {
    for (const auto pattern : kPatterns) {
      for (const bool flip : {false, true}) {
        expectModel(Noise(21, 14, kDepths[depth]), pattern, depth, flip, "1.");
        expectModel(Noise(14, 21, kDepths[depth], 5), pattern, depth, flip, "");
      }
    }
  }
}

TEST_F(BayerPass, is_the_model_around_the_thresholds_of_edges) {
  for (size_t depth = 0; depth < std::size(kDepths); ++depth) {
    for (const auto pattern : kPatterns) {
      expectModel(Soft(40, 30, kDepths[depth]), pattern, depth, false, "");
      expectModel(Soft(40, 30, kDepths[depth]), pattern, depth, true, "1.7");
    }
  }
}

TEST_F(BayerPass, is_the_model_for_every_small_size) {
  for (int width = 1; width <= 7; ++width) {
    for (int height = 1; height <= 7; ++height) {
      for (const auto pattern : kPatterns) {
        expectModel(Noise(width, height, 8, 3), pattern, 0, height % 2 == 0, "1.");
        expectModel(Noise(width, height, 12, 4), pattern, 2, height % 2 != 0, "");
      }
    }
  }
}

TEST_F(BayerPass, is_the_model_for_extreme_samples) {
  for (const auto pattern : kPatterns) {
    Mosaic mosaic = Noise(16, 16, 8, 11);
    for (uint32_t& sample : mosaic.samples) sample = sample > 127 ? 255 : 0;
    expectModel(mosaic, pattern, 0, false, "1.");
    for (uint32_t& sample : mosaic.samples) sample = sample ? 65535 : 0;
    expectModel(mosaic, pattern, 4, true, "1.");
  }
}

TEST_F(BayerPass, hits_every_site_of_the_longest_lines) {
  const int limit = surface->properties.GetInt("gl.renderbuffer");
  for (const auto pattern : {model::kGR, model::kBG}) {
    expectModel(Noise(limit, 3, 8), pattern, 0, false, "1.");
    expectModel(Noise(3, limit, 8), pattern, 0, true, "1.");
    expectModel(Noise(limit - 1, 3, 8), pattern, 0, true, "1.");
    expectModel(Noise(3, limit - 1, 8), pattern, 0, true, "1.");
  }
}

TEST_F(BayerPass, scales_the_centre_alone_by_a_factor_up_to_1_001) {
  for (const auto pattern : kPatterns) {
    for (const char* const coef : {"0.5", "1.0008", "1.0012", "3.25"}) {
      expectModel(Soft(15, 15, 8), pattern, 0, false, coef);
      expectModel(Noise(15, 15, 16), pattern, 4, false, coef);
    }
  }
  // By hand: grey 200 at a red site of RG, factor 0.5; the site is 100, its neighbours are 200 each.
  const Samples codes = demosaic(Flat(200), model::kRG, 0, false, "0.5");
  const uint32_t* const red = &codes[(2 * 7 + 2) * 3];
  EXPECT_EQ(red[0], 100u);
  EXPECT_EQ(red[1], (4 * 100 + 2 * 400 + 2 * 400 - 400 - 400) / 8u);
  EXPECT_EQ(red[2], (6 * 100 + 2 * 800 - 600 - 600) / 8u);
}

TEST_F(BayerPass, takes_a_factor_below_0_for_none) {
  const Mosaic mosaic = Noise(9, 9, 8);
  EXPECT_EQ(demosaic(mosaic, model::kGR, 0, false, "-2"), demosaic(mosaic, model::kGR, 0, false, "1."));
}

TEST_F(BayerPass, takes_a_factor_of_0_or_none_for_the_full_range) {
  Mosaic mosaic = Flat(1023);
  const Samples white = Samples(7 * 7 * 3, 1023 * 64);
  EXPECT_EQ(demosaic(mosaic, model::kRG, 1, false, "0"), white);
  EXPECT_EQ(demosaic(mosaic, model::kRG, 1, false, ""), white);
  EXPECT_EQ(demosaic(mosaic, model::kRG, 1, false, "1."), Samples(7 * 7 * 3, 1023));
}

TEST_F(BayerPass, keeps_grey_grey_at_every_site) {
  for (const auto pattern : kPatterns) {
    for (const uint32_t grey : {0u, 1u, 77u, 254u, 255u}) {
      EXPECT_EQ(demosaic(Flat(grey), pattern, 0, false, "1."), Samples(7 * 7 * 3, grey));
    }
    EXPECT_EQ(demosaic(Flat(4095), pattern, 2, true, "16."), Samples(7 * 7 * 3, 4095 * 16));
  }
}

// The first red site of a pattern, in a mosaic where only that one is lit.
TEST_F(BayerPass, finds_red_where_the_pattern_has_it) {
  const struct {
    model::BayerPattern pattern;
    int x, y;
  } kRows[] = {{model::kGR, 3, 2}, {model::kRG, 2, 2}, {model::kBG, 3, 3}, {model::kGB, 2, 3}};
  for (const auto& row : kRows) {
    Mosaic mosaic = Flat(0);
    At(mosaic, row.x, row.y) = 200;
    const Samples codes = demosaic(mosaic, row.pattern, 0, false, "1.");
    for (int y = 0; y < 7; ++y) {
      for (int x = 0; x < 7; ++x) {
        // Taken for another colour's site, it would give less.
        EXPECT_EQ(codes[static_cast<size_t>((y * 7 + x) * 3)] == 200, x == row.x && y == row.y)
            << row.pattern << " at " << x << ", " << y;
      }
    }
  }
}

TEST_F(BayerPass, takes_green_along_an_edge_in_GR_and_the_kernel_in_RG) {
  // A red site: above 40, below 60, left and right 100; red 80, at distance 2 in the line 60.
  const auto cross = [](int x, int y) {
    Mosaic mosaic = Flat(100);
    At(mosaic, x, y) = 80;
    At(mosaic, x, y - 1) = 40;
    At(mosaic, x, y + 1) = 60;
    At(mosaic, x - 2, y) = 60;
    At(mosaic, x + 2, y) = 60;
    return mosaic;
  };
  // In the line: (100 + 100 + (160 - 120) / 2) / 2 = 110.
  const Samples edge = demosaic(cross(3, 2), model::kGR, 0, false, "1.");
  EXPECT_EQ(edge[(2 * 7 + 3) * 3 + 1], 110u);
  // The kernel: (4 * 80 + 2 * (40 + 60 + 100 + 100) - (60 + 60) - (100 + 100)) / 8 = 75.
  const Samples plain = demosaic(cross(2, 2), model::kRG, 0, false, "1.");
  EXPECT_EQ(plain[(2 * 7 + 2) * 3 + 1], 75u);
}

// Green at a red site of GR whose neighbours above, below, left and right are given; the site and those at
// distance 2 are 100. So the estimate in the line is the mean of left and right, that in the column the mean
// of the other two, and the kernel's green the mean of all four. The threshold of an edge lies between 12 and
// 13, that of the fit between 2 and 3.
TEST_F(BayerPass, chooses_the_direction_of_green_by_the_edge_step) {
  const struct {
    const char* what;
    uint32_t up, down, left, right, green;
  } kRows[] = {
      {"no edge: kernel", 112, 100, 80, 88, 95},
      {"lines differ alone: in the line", 140, 100, 90, 82, 86},
      {"columns differ alone: in the column", 82, 90, 100, 140, 86},
      {"columns differ just so, lines not quite: in the column", 100, 112, 80, 93, 106},
      {"lines differ just so, columns not quite: in the line", 100, 113, 80, 92, 86},
      {"both differ just so, the line fits by 2: kernel", 100, 115, 80, 93, 97},
      {"the line fits by 20: in the line", 50, 90, 100, 120, 110},
      {"the line fits by 3: in the line", 58, 81, 100, 120, 110},
      {"both fit alike: kernel", 100, 120, 60, 80, 90},
      {"the column fits by 2: kernel", 100, 120, 59, 81, 90},
      {"the column fits by 3: in the column", 100, 120, 58, 81, 110},
      {"the column fits by 20: in the column", 100, 120, 50, 90, 110},
  };
  for (const auto& row : kRows) {
    Mosaic mosaic = Flat(100);
    At(mosaic, 3, 1) = row.up;
    At(mosaic, 3, 3) = row.down;
    At(mosaic, 2, 2) = row.left;
    At(mosaic, 4, 2) = row.right;
    const Samples codes = demosaic(mosaic, model::kGR, 0, false, "1.");
    EXPECT_EQ(codes[(2 * 7 + 3) * 3 + 1], row.green) << row.what;
  }
}

// The texel at the edge stands in for what lies beyond it.
TEST_F(BayerPass, reads_the_edge_texel_beyond_the_border) {
  // One line of two samples, red 80 and green 160: at the red site all columns to the left are 80, all lines
  // alike.
  const Samples codes = demosaic({2, 1, {80, 160}}, model::kRG, 0, false, "1.");
  // Green: (4 * 80 + 2 * (80 + 80 + 80 + 160) - (80 + 80) - (80 + 160)) / 8.
  EXPECT_EQ(codes[1], (320u + 800 - 160 - 240) / 8);
}

// Seen in a target three times as wide as the source: each of its pixels reads a quarter of a source pixel
// further on.
TEST_F(BayerPass, reads_a_quarter_of_a_pixel_past_the_middle) {
  Mosaic mosaic = {6, 1, Samples(6, 0)};
  At(mosaic, 2, 0) = 200;
  makeTarget(18, 1, ZYN_PIXEL_RGB8);
  RenderObjects::QGLBayerMHC pass(surface.get());
  ASSERT_TRUE(init(pass, 6, 1, ZYN_PIXEL_BAYERRG8));
  const Samples codes = render(pass, upload(6, 1, 1, 8, mosaic.samples), 3, 8);
  for (int x = 0; x < 18; ++x) {
    const double place = (x + 0.5) / 3 + 0.25;
    EXPECT_EQ(codes[static_cast<size_t>(3 * x)] == 200, place >= 2 && place < 3) << x;
  }
}

TEST_F(BayerPass, makes_its_own_target_in_the_order_of_the_list) {
  const Record image = MakeHeader(6, 4, ZYN_PIXEL_BAYERGR12);
  const auto targetCode = [&](QTD::PROPERTIES* parameters) {
    RenderObjects::QGLBayerMHC pass(surface.get());
    EXPECT_TRUE(pass.Init(image.get(), parameters));
    return pass.Out() ? pass.Out()->pixelType : 0;
  };
  QTD::PROPERTIES parameters;
  EXPECT_EQ(targetCode(nullptr), ZYN_PIXEL_RGB12);
  EXPECT_EQ(targetCode(&parameters), ZYN_PIXEL_BGR12);
  parameters.Set("bgr", "0");
  EXPECT_EQ(targetCode(&parameters), ZYN_PIXEL_BGR12);
  parameters.Set("bgr", "1");
  EXPECT_EQ(targetCode(&parameters), ZYN_PIXEL_RGB12);
}

TEST_F(BayerPass, has_a_picture_for_each_debug_mode_of_its_shader) {
  const Mosaic mosaic = Noise(8, 6, 8, 21);
  const Samples plain = demosaic(mosaic, model::kRG, 0, false, "1.");
  QOpenGLShaderProgram program;
  program.addShaderFromSourceCode(QOpenGLShader::Vertex, FindShaderSource("bayer.mmhc.v.glsl"));
  program.addShaderFromSourceCode(QOpenGLShader::Fragment, FindShaderSource("bayer.mmhc.f.glsl"));
  ASSERT_TRUE(program.link()) << program.log().toStdString();
  const uint32_t texture = upload(8, 6, 1, 8, mosaic.samples);
  const auto picture = [&](int debug) {
    surface->glBindTexture(GL_TEXTURE_2D, texture);
    target->bind();
    program.bind();
    program.setUniformValue("source", 0);
    program.setUniformValue("sourceSize", 8.0F, 6.0F, 1.0F / 8, 1.0F / 6);
    program.setUniformValue("firstRed", 0.0F, 0.0F);
    program.setUniformValue("colorCoef", 1.0F);
    program.setUniformValue("colorHigh", 1.0F);
    program.setUniformValue("debug", debug);
    target->render();
    program.release();
    target->unbind();
    return ReadTexture(target->texture(), 3, 8);
  };
  for (const int same : {0, 999, 1005, 2000}) EXPECT_EQ(picture(same), plain) << same;
  const Samples raw = picture(1000), red = picture(1001), green = picture(1002), blue = picture(1003);
  const Samples grey = picture(1004);
  for (size_t i = 0; i < plain.size(); ++i) {
    const size_t pixel = i / 3 * 3;
    EXPECT_EQ(raw[i], mosaic.samples[i / 3]);
    EXPECT_EQ(red[i], plain[pixel]);
    EXPECT_EQ(green[i], plain[pixel + 1]);
    EXPECT_EQ(blue[i], plain[pixel + 2]);
    // The weights act before the rounding of the channels.
    EXPECT_NEAR(grey[i], 0.30 * plain[pixel] + 0.59 * plain[pixel + 1] + 0.11 * plain[pixel + 2], 1.001);
  }
}
