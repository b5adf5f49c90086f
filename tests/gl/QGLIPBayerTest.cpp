// The Bayer stage, against a model of its filter in double precision.
#include "gl/stages/QGLIPBayer.h"

#include "StageFixture.h"
#include "gl/models/BayerModel.h"

namespace {

// What single precision may add to the rounding, in code values.
constexpr double kSlack8 = 1.0 / 1024, kSlack16 = 1.0 / 16;

struct Mosaic {
  const char* name;
  uint32_t code, rgb, bgr, depth;
  model::BayerPattern pattern;
};

constexpr Mosaic kMosaics[] = {
    {"BayerGR8", ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8, 8, model::kGR},
    {"BayerRG8", ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8, 8, model::kRG},
    {"BayerBG10", ZYN_PIXEL_BAYERBG10, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10, 10, model::kBG},
    {"BayerGB12", ZYN_PIXEL_BAYERGB12, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12, 12, model::kGB},
    {"BayerGR14", ZYN_PIXEL_BAYERGR14, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14, 14, model::kGR},
    {"BayerRG16", ZYN_PIXEL_BAYERRG16, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16, 16, model::kRG},
};

class QGLIPBayerTest : public StageFixture, public testing::WithParamInterface<Mosaic> {
 protected:
  void ExpectModel(QGLIPBayer& stage, uint32_t width, uint32_t height, const Samples& samples,
                   const model::BayerPlan& plan) {
    const int bits = GetParam().depth == 8 ? 8 : 16;
    const model::Texels texels(static_cast<int>(width), static_cast<int>(height), 1, samples, bits);
    const Samples result = Texels(stage);
    ASSERT_EQ(result.size(), size_t{width} * height * 3);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        ASSERT_TRUE(model::BayerAllows(texels, plan, static_cast<int>(x), static_cast<int>(y),
                                       &result[(size_t{y} * width + x) * 3], bits,
                                       bits == 8 ? kSlack8 : kSlack16))
            << x << "," << y;
      }
    }
  }
};

TEST_P(QGLIPBayerTest, interpolates_as_its_model_says) {
  const Mosaic& kind = GetParam();
  for (const auto& [width, height] : {std::pair{16u, 12u}, {7u, 5u}, {1u, 1u}, {2u, 3u}}) {
    for (const bool flip : {false, true}) {
      SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + (flip ? " turned" : ""));
      const Samples samples = Scattered(width * height, (1u << kind.depth) - 1, width);
      const Record record = MakeRecord(width, height, kind.code, samples);
      QGLIPBayer stage(&display);
      stage.SetParameterInt("image.flip.vert", flip);
      ASSERT_EQ(Init(stage, record), 0u);
      ASSERT_EQ(Run(stage, record.get()), 0u);
      ExpectModel(stage, width, height, samples, {kind.pattern, flip, 1.0});
    }
  }
}

TEST_P(QGLIPBayerTest, the_colour_factor_brings_samples_to_the_full_range) {
  const Mosaic& kind = GetParam();
  const Samples samples = Scattered(8 * 6, (1u << kind.depth) - 1);
  const Record record = MakeRecord(8, 6, kind.code, samples);
  for (const double coef : {0.0, 2.0, 0.5}) {
    QGLIPBayer stage(&display);
    stage.SetParameterDouble("image.color.coef", coef);
    ASSERT_EQ(Init(stage, record), 0u);
    ASSERT_EQ(Run(stage, record.get()), 0u);
    const double used = model::EffectiveCoef(coef, static_cast<int>(kind.depth));
    ExpectModel(stage, 8, 6, samples, {kind.pattern, false, used});
  }
}

TEST_P(QGLIPBayerTest, a_flat_grey_stays_the_same_grey) {
  const Mosaic& kind = GetParam();
  const uint32_t grey = (1u << kind.depth) / 3;
  const Record record = MakeRecord(9, 7, kind.code, Samples(9 * 7, grey));
  QGLIPBayer stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage), Samples(9 * 7 * 3, grey));
}

// The order of the channels is the output's, the depth is the mosaic's own.
TEST_P(QGLIPBayerTest, becomes_rgb_or_the_bgr_that_the_output_asks_for) {
  const Mosaic& kind = GetParam();
  const Record record = MakeRecord(8, 6, kind.code);
  QGLIPBayer stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  EXPECT_EQ(stage.Out()->pixelType, kind.rgb);
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGRA8}) {
    const Record other = MakeRecord(8, 6, code);
    ASSERT_EQ(Init(stage, record, other.get()), 0u);
    EXPECT_EQ(stage.Out()->pixelType, kind.rgb) << std::hex << code;
  }
  for (const uint32_t code :
       {ZYN_PIXEL_BGR8, ZYN_PIXEL_BGR10, ZYN_PIXEL_BGR12, ZYN_PIXEL_BGR14, ZYN_PIXEL_BGR16}) {
    const Record bgr = MakeRecord(8, 6, code);
    ASSERT_EQ(Init(stage, record, bgr.get()), 0u);
    EXPECT_EQ(stage.Out()->pixelType, kind.bgr) << std::hex << code;
    EXPECT_EQ(stage.GetImageInfo(false)->pixelType, kind.bgr);
    EXPECT_EQ(stage.GetImageInfo(true)->pixelType, kind.code);
  }
}

TEST_P(QGLIPBayerTest, marks_its_result_by_origin_and_turn) {
  for (const bool bottomUp : {false, true}) {
    for (const bool flip : {false, true}) {
      const Record record = MakeRecord(8, 6, GetParam().code, bottomUp);
      QGLIPBayer stage(&display);
      stage.SetParameterInt("image.flip.vert", flip);
      ASSERT_EQ(Init(stage, record), 0u);
      EXPECT_EQ(stage.GetImageInfo(true)->origin, bottomUp ? 1u : 0u);
      EXPECT_EQ(stage.GetImageInfo(false)->origin, bottomUp != flip ? 1u : 0u);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Mosaics, QGLIPBayerTest, testing::ValuesIn(kMosaics),
                         [](const testing::TestParamInfo<Mosaic>& kind) { return kind.param.name; });

using QGLIPBayerLife = StageFixture;

TEST_F(QGLIPBayerLife, stores_what_it_works_with) {
  QGLIPBayer stage(&display);
  const Record record = MakeRecord(8, 6, ZYN_PIXEL_BAYERGR8);
  ASSERT_EQ(Init(stage, record), 0u);
  EXPECT_EQ(stage.Parameters().GetString("image.flip.vert"), "0");
  EXPECT_EQ(stage.Parameters().GetString("image.color.coef"), "1.");
}

TEST_F(QGLIPBayerLife, does_not_become_ready_for_packed_pixels) {
  QGLIPBayer stage(&display);
  const Record record = MakeRecord(8, 6, ZYN_PIXEL_BAYERGR12P);
  EXPECT_EQ(Init(stage, record), 0u);
  EXPECT_EQ(Run(stage, record.get()), Composed(8));
  EXPECT_EQ(stage.Out(), nullptr);
}

TEST_F(QGLIPBayerLife, runs_although_it_is_disabled) {
  QGLIPBayer stage(&display);
  const Record record = MakeRecord(8, 6, ZYN_PIXEL_BAYERGR8, Samples(48, 77));
  ASSERT_EQ(Init(stage, record), 0u);
  stage.Enable(false);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage), Samples(48 * 3, 77));
}

TEST_F(QGLIPBayerLife, takes_a_texture_as_it_is) {
  const Record record = MakeRecord(8, 6, ZYN_PIXEL_BAYERGR8, Samples(48, 77));
  OnCard unpacked(&display, record);
  QGLIPBayer stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, unpacked.record()), 0u);
  EXPECT_EQ(Texels(stage), Samples(48 * 3, 77));
  EXPECT_EQ(unpacked.record()->imageData[0], 0);  // the record's own pixels are stale, and were not read
}

TEST_F(QGLIPBayerLife, fails_where_a_parameter_is_no_number) {
  QGLIPBayer stage(&display);
  const Record record = MakeRecord(8, 6, ZYN_PIXEL_BAYERGR8);
  stage.SetParameterString("image.color.coef", "much");
  ASSERT_EQ(Init(stage, record), 0u);
  EXPECT_EQ(Run(stage, record.get()), Composed(1));
}

}  // namespace
