// The exposure coloration stage, against a model.
#include "gl/stages/QGLIPExposureColoration.h"

#include "StageFixture.h"
#include "gl/models/ColorationModel.h"

namespace {

constexpr uint32_t kWidth = 16, kHeight = 16;

class OpenColoration : public QGLIPExposureColoration {
 public:
  using QGLIPExposureColoration::lastError;
  using QGLIPExposureColoration::QGLIPExposureColoration;
  using QGLIPExposureColoration::ready;
};

// `shown` is the chain's picture, `camera` what "image.unpacked" holds: both on the card.
class QGLIPExposureColorationTest : public StageFixture {
 protected:
  void TearDown() override {
    stage.reset();
    shown.reset();
    unpacked.reset();
    StageFixture::TearDown();
  }

  void Prepare(uint32_t cameraCode, const Samples& camera) {
    cameraSamples = camera;
    cameraRecord = MakeRecord(kWidth, kHeight, cameraCode, camera);
    unpacked = std::make_unique<OnCard>(&display, cameraRecord);
    shown = std::make_unique<OnCard>(&display, picture);
    chain.unpacked = &unpacked->stage;
    stage = std::make_unique<OpenColoration>(&display, &chain);
  }
  void ExpectModel(const model::ColorationPlan& plan) {
    ASSERT_EQ(Run(*stage, shown->record()), 0u);
    const int channels = plan.mono ? 1 : 3;
    const int bits = cameraRecord->bitDepth == 8 ? 8 : 16;
    const model::Texels colours(kWidth, kHeight, 3, pictureSamples, 8);
    const model::Texels values(kWidth, kHeight, channels, cameraSamples, bits);
    const Samples result = Texels(*stage);
    ASSERT_EQ(result.size(), pictureSamples.size());
    for (int y = 0; y < static_cast<int>(kHeight); ++y) {
      for (int x = 0; x < static_cast<int>(kWidth); ++x) {
        const model::Rgb exact = model::ColoredPixel(colours, values, plan, x, y);
        for (size_t c = 0; c < 3; ++c) {
          const size_t at = (static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)) * 3 + c;
          ASSERT_EQ(result[at], static_cast<uint32_t>(std::lround(exact[c] * 255))) << x << "," << y;
        }
      }
    }
  }

  const Samples pictureSamples = Scattered(kWidth * kHeight * 3, 255, 9);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, pictureSamples);
  Samples cameraSamples;
  Record cameraRecord;
  FakeChain chain;
  std::unique_ptr<OnCard> unpacked, shown;
  std::unique_ptr<OpenColoration> stage;
};

// Every value of a byte once.
Samples Bytes() {
  Samples values;
  for (uint32_t value = 0; value < 256; ++value) values.push_back(value);
  return values;
}

// Around both thresholds of a depth.
Samples Deep(uint32_t top) {
  Samples values = Scattered(kWidth * kHeight, top);
  for (uint32_t i = 0; i < 4; ++i) {
    values[i] = i;
    values[i + 4] = top - i;
  }
  return values;
}

model::ColorationPlan Defaults(double hi, double levels, bool mono) {
  return {65280, 255, 1.0 / levels, hi / levels, mono};
}

TEST_F(QGLIPExposureColorationTest, mono8_marks_0_green_and_254_and_255_red) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  // A byte is 1/255 of the range on the card and 1/256 of it in a threshold.
  ExpectModel(Defaults(254, 256, true));
  const Samples result = Texels(*stage);
  // The camera's line 0 lies at the other end.
  const uint32_t last = kHeight - 1;
  EXPECT_EQ(Pixel(result, kWidth, 0, last), (std::vector<uint32_t>{0, 255, 0}));
  EXPECT_EQ(Pixel(result, kWidth, 14, 0), (std::vector<uint32_t>{255, 0, 0}));
  EXPECT_EQ(Pixel(result, kWidth, 15, 0), (std::vector<uint32_t>{255, 0, 0}));
  EXPECT_EQ(Pixel(result, kWidth, 1, last), Pixel(pictureSamples, kWidth, 1, last));
  EXPECT_EQ(Pixel(result, kWidth, 13, 0), Pixel(pictureSamples, kWidth, 13, 0));
}

TEST_F(QGLIPExposureColorationTest, mono10_is_judged_on_the_raw_scale) {
  Prepare(ZYN_PIXEL_MONO10, Deep(1023));
  ASSERT_EQ(Init(*stage, picture), 0u);
  ExpectModel(Defaults(1022, 65536, true));
}

TEST_F(QGLIPExposureColorationTest, mono16_has_the_same_scale) {
  Prepare(ZYN_PIXEL_MONO16, Deep(65535));
  ASSERT_EQ(Init(*stage, picture), 0u);
  ExpectModel(Defaults(65534, 65536, true));
}

TEST_F(QGLIPExposureColorationTest, rgb8_compares_the_sum_of_three_with_764) {
  Samples sums = Scattered(kWidth * kHeight * 3, 255, 3);
  const uint32_t special[][3] = {{0, 0, 0},       {0, 1, 0},       {1, 0, 0},       {255, 255, 255},
                                 {255, 255, 254}, {255, 254, 254}, {254, 254, 254}, {254, 254, 253}};
  for (size_t i = 0; i < std::size(special); ++i)
    for (size_t c = 0; c < 3; ++c) sums[3 * i + c] = special[i][c];
  Prepare(ZYN_PIXEL_RGB8, sums);
  ASSERT_EQ(Init(*stage, picture), 0u);
  ExpectModel(Defaults(764, 256, false));
  // 764 of 256 is 761.02 of 255: the least sum that is marked is 762.
  const Samples result = Texels(*stage);
  const uint32_t last = kHeight - 1;
  EXPECT_EQ(Pixel(result, kWidth, 6, last), (std::vector<uint32_t>{255, 0, 0}));
  EXPECT_EQ(Pixel(result, kWidth, 7, last), Pixel(pictureSamples, kWidth, 7, last));
}

TEST_F(QGLIPExposureColorationTest, thresholds_and_colours_are_parameters) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  stage->SetParameterDouble("thres.lo", 20.5);
  stage->SetParameterInt("thres.hi", 200);
  stage->SetParameterInt("color.lo", 0x0000FF);
  stage->SetParameterInt("color.hi", 0x804020);
  ASSERT_EQ(Init(*stage, picture), 0u);
  ExpectModel({0x0000FF, 0x804020, 20.5 / 256, 200.0 / 256, true});
  EXPECT_EQ(Pixel(Texels(*stage), kWidth, 0, kHeight - 1), (std::vector<uint32_t>{255, 0, 0}));
  EXPECT_EQ(Pixel(Texels(*stage), kWidth, 15, 0), (std::vector<uint32_t>{0x20, 0x40, 0x80}));
}

TEST_F(QGLIPExposureColorationTest, a_threshold_that_is_applied_changes_nothing_until_the_next_init) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  stage->SetParameterInt("thres.lo", 100);
  EXPECT_EQ(stage->ExecuteCommand("params.apply"), 0u);
  EXPECT_EQ(stage->RunCommand("cmd.params.apply", nullptr), 1u);
  QTD::ARGUMENTS apply{{"apply", "1"}};
  EXPECT_EQ(stage->RunCommand("cmd.params.reset", &apply), 1u);
  EXPECT_EQ(stage->Parameters().GetString("thres.lo"), "100");
  ExpectModel(Defaults(254, 256, true));
  ASSERT_EQ(Init(*stage, picture), 0u);
  ExpectModel({65280, 255, 100.0 / 256, 254.0 / 256, true});
}

TEST_F(QGLIPExposureColorationTest, reads_its_parameters_also_when_it_is_not_ready) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  stage->ready = false;
  stage->SetParameterInt("thres.lo", 50);
  ExpectModel({65280, 255, 50.0 / 256, 254.0 / 256, true});
  EXPECT_TRUE(stage->ready);
}

TEST_F(QGLIPExposureColorationTest, disabled_it_copies) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(stage->ExecuteCommand("disable"), 0u);
  ASSERT_EQ(Run(*stage, shown->record()), 0u);
  EXPECT_EQ(Texels(*stage), pictureSamples);
  EXPECT_NE(stage->Out(), shown->record());
  EXPECT_EQ(stage->ExecuteCommand("enable"), 0u);
  ExpectModel(Defaults(254, 256, true));
}

TEST_F(QGLIPExposureColorationTest, without_the_cameras_picture_it_is_not_ready) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  ZynImgProcessor* const kept = chain.unpacked;
  chain.unpacked = nullptr;
  EXPECT_EQ(Run(*stage, shown->record()), Composed(8));
  stage->Enable(false);
  EXPECT_EQ(Run(*stage, shown->record()), Composed(8));
  stage->Enable(true);
  QGLIPImage empty(&display);  // has no result
  chain.unpacked = &empty;
  EXPECT_EQ(Run(*stage, shown->record()), Composed(8));
  chain.unpacked = kept;
  EXPECT_EQ(Run(*stage, shown->record()), 0u);
  // Without a chain at all; a parent that is none.
  for (ZynComponent* const parent : std::initializer_list<ZynComponent*>{nullptr, &display}) {
    OpenColoration lonely(&display, parent);
    EXPECT_EQ(Init(lonely, picture), 0u);
    EXPECT_EQ(Run(lonely, shown->record()), Composed(8));
  }
}

// The chain's pictures are on the card. What comes in memory is uploaded, but not bound again.
TEST_F(QGLIPExposureColorationTest, a_picture_in_memory_turns_black_where_it_is_not_marked) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  const Samples result = Texels(*stage);
  EXPECT_EQ(Pixel(result, kWidth, 0, kHeight - 1), (std::vector<uint32_t>{0, 255, 0}));
  EXPECT_EQ(Pixel(result, kWidth, 5, 5), (std::vector<uint32_t>{0, 0, 0}));
  // Disabled it has nothing to copy and keeps what it has.
  stage->Enable(false);
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  EXPECT_EQ(Texels(*stage), result);
}

TEST_F(QGLIPExposureColorationTest, has_one_record_without_a_mark) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  const Record bottomUp = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, true);
  ASSERT_EQ(Init(*stage, bottomUp), 0u);
  EXPECT_EQ(stage->GetImageInfo(true), stage->GetImageInfo(false));
  EXPECT_EQ(stage->GetImageInfo(true)->origin, 0u);
  EXPECT_EQ(stage->GetImageInfo(true)->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QGLIPExposureColorationTest, commands_answer_as_their_table_says) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  EXPECT_EQ(stage->ExecuteCommand("params.apply"), Composed(8));
  EXPECT_EQ(stage->lastError, 8u);
  EXPECT_EQ(stage->ExecuteCommand("params.reset"), 0u);
  EXPECT_EQ(stage->lastError, 0u);
  EXPECT_EQ(stage->RunCommand("cmd.params.apply", nullptr), 0u);
  QTD::ARGUMENTS apply{{"apply", "1"}}, off{{"enabled", "0"}}, on{{"enabled", "1"}};
  EXPECT_EQ(stage->RunCommand("cmd.params.reset", &apply), 0u);
  EXPECT_EQ(stage->RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_EQ(stage->ExecuteCommand("readGPU"), Composed(1));
  EXPECT_EQ(stage->RunCommand("readGPU", nullptr), 0u);
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(stage->RunCommand("cmd.enable", &off), 0u);
  EXPECT_FALSE(stage->IsEnabled());
  ASSERT_EQ(Run(*stage, shown->record()), 0u);
  EXPECT_EQ(stage->ExecuteCommand("readGPU"), 0u);
  EXPECT_EQ(SamplesOf(*stage->Out()), pictureSamples);
  EXPECT_EQ(stage->RunCommand("readGPU", nullptr), 1u);
  EXPECT_EQ(stage->RunCommand("cmd.enable", &on), 0u);
  EXPECT_TRUE(stage->IsEnabled());
  EXPECT_EQ(stage->ExecuteCommand("cmd.enable"), 0u);
  EXPECT_EQ(stage->ExecuteCommand(nullptr), 0u);
  EXPECT_EQ(stage->RunCommand("enable", nullptr), 0u);
  EXPECT_EQ(stage->RunCommand(nullptr, nullptr), 0u);
}

TEST_F(QGLIPExposureColorationTest, flags_that_are_no_numbers_change_nothing) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  ASSERT_EQ(Init(*stage, picture), 0u);
  QTD::ARGUMENTS enabled{{"enabled", "no"}}, apply{{"apply", "99999999999"}}, low{{"thres.lo", "x"}};
  EXPECT_EQ(stage->RunCommand("cmd.enable", &enabled), 0u);
  EXPECT_TRUE(stage->IsEnabled());
  EXPECT_EQ(stage->RunCommand("cmd.params.reset", &apply), 0u);
  EXPECT_EQ(stage->lastError, 1u);
  EXPECT_EQ(stage->RunCommand("cmd.params.apply", &low), 1u);  // reads no thresholds
}

TEST_F(QGLIPExposureColorationTest, a_threshold_that_is_no_number_ends_init_with_1) {
  Prepare(ZYN_PIXEL_MONO8, Bytes());
  stage->SetParameterString("thres.hi", "bright");
  EXPECT_EQ(Init(*stage, picture), Composed(1));
  EXPECT_EQ(Run(*stage, shown->record()), Composed(8));
}

}  // namespace
