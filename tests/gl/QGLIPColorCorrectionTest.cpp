// The colour correction stage: its pictures against a model in double precision.
#include <QElapsedTimer>
#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "ColorCorrectionFixture.h"

namespace {

using QGLIPColorCorrectionTest = ColorCorrectionFixture;

TEST_F(QGLIPColorCorrectionTest, changes_nothing_by_default) {
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
  EXPECT_TRUE(stage.IsReady());
}

TEST_F(QGLIPColorCorrectionTest, gain_offset_and_gamma_act_once_they_are_applied) {
  Set("gain.r", "2");
  Set("offs.r", "0.1");
  Set("gain.g", "0.5");
  Set("offs.b", "-0.2");
  ExpectModel({});
  EXPECT_EQ(Do("params.apply"), 0u);
  model::CorrectionPlan plan;
  plan.gain = {2, 0.5, 1};
  plan.offs = {0.1, 0, -0.2};
  ExpectModel(plan);
  Set("gamma", "2");
  EXPECT_EQ(Do("params.apply"), 0u);
  plan.gamma = 2;
  ExpectModel(plan);
}

// 64/255, nearly a quarter.
TEST_F(QGLIPColorCorrectionTest, a_quarter_with_gain_2_and_offset_a_tenth_is_six_tenths) {
  const Record quarter = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, Samples(samples.size(), 64));
  for (const char* name : {"gain.r", "gain.g", "gain.b"}) Set(name, "2");
  for (const char* name : {"offs.r", "offs.g", "offs.b"}) Set(name, "0.1");
  Do("params.apply");
  ASSERT_EQ(Run(stage, quarter.get()), 0u);
  EXPECT_NEAR(Texels(stage)[0], (2 * 64 / 255.0 + 0.1) * 255, 0.51);
  Set("gamma", "2");
  Do("params.apply");
  ASSERT_EQ(Run(stage, quarter.get()), 0u);
  EXPECT_NEAR(Texels(stage)[0], std::pow(2 * 64 / 255.0 + 0.1, 2) * 255, 1.01);
}

TEST_F(QGLIPColorCorrectionTest, a_gamma_next_to_1_is_not_applied) {
  Set("gamma", "1.005");
  Do("params.apply");
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
  Set("gamma", "1.02");
  Do("params.apply");
  model::CorrectionPlan plan;
  plan.gamma = 1.02;
  ExpectModel(plan);
  EXPECT_NE(Texels(stage), samples);
}

TEST_F(QGLIPColorCorrectionTest, gamma_takes_black_for_a_little_more) {
  Set("gamma", "0.5");
  Do("params.apply");
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_NEAR(Texels(stage)[0], std::pow(0.004, 0.5) * 255, 1.01);
}

TEST_F(QGLIPColorCorrectionTest, the_automatic_correction_fades_towards_white) {
  Set("debug.mode", "1");
  Set("gain.r", "1.5");
  Set("gain.g", "0.5");
  Set("offs.r", "0.1");
  Set("offs.g", "-0.1");
  Set("gamma", "3");  // has no say
  Do("params.apply");
  model::CorrectionPlan plan;
  plan.gain = {1.5, 0.5, 1};
  plan.offs = {0.1, -0.1, 0};
  plan.automatic = true;
  ExpectModel(plan);
  const Samples result = Texels(stage);
  EXPECT_NEAR(result[0], 0.1 * 255, 0.51);     // black gets the offset
  EXPECT_EQ(result[result.size() - 3], 255u);  // white keeps itself, plus the offset
  EXPECT_NEAR(result[result.size() - 2], (1 - 0.1) * 255, 0.51);
  EXPECT_EQ(result[result.size() - 1], 255u);
}

TEST_F(QGLIPColorCorrectionTest, shows_single_channels_as_grey) {
  for (const int output : {1000, 1001, 1002, 1003, 1004, 1005}) {
    stage.SetParameterInt("debug.output", output);
    Do("params.apply");
    model::CorrectionPlan plan;
    plan.output = output;
    ExpectModel(plan);
  }
}

TEST_F(QGLIPColorCorrectionTest, a_factor_comes_before_everything_and_0_counts_as_not_set) {
  for (const char* name : {"gain.r", "gain.g", "gain.b"}) Set(name, "2");
  for (const double coef : {0.5, 0.0, 1.5}) {
    stage.SetParameterDouble("image.color.coef", coef);
    Do("params.apply");
    model::CorrectionPlan plan;
    plan.gain = {2, 2, 2};
    plan.coef = model::EffectiveCoef(coef, 8);
    ExpectModel(plan);
  }
}

TEST_F(QGLIPColorCorrectionTest, deep_and_monochrome_pictures_keep_every_value) {
  for (const uint32_t code :
       {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR16}) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(code);
    const Samples values = Scattered(8 * 4 * row->channels, (1u << row->bitDepth) - 1);
    const Record source = MakeRecord(8, 4, code, values);
    QGLIPColorCorrection other(&display);
    ASSERT_EQ(Init(other, source), 0u);
    ASSERT_EQ(Run(other, source.get()), 0u);
    ASSERT_EQ(other.ExecuteCommand("readGPU"), 0u);
    EXPECT_EQ(SamplesOf(*other.Out()), values) << row->name;
  }
}

TEST_F(QGLIPColorCorrectionTest, init_forgets_what_was_set_before) {
  Set("gain.r", "3");
  stage.SetParameterDouble("image.color.coef", 4);
  ASSERT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(stage.Parameters().GetString("gain.r"), "1.000000");
  EXPECT_EQ(stage.Parameters().GetString("image.color.coef"), "1.000000");
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

TEST_F(QGLIPColorCorrectionTest, disabled_it_copies_into_its_own_record) {
  Set("gain.r", "2");
  Do("params.apply");
  EXPECT_EQ(Do("disable"), 0u);
  EXPECT_FALSE(stage.IsEnabled());
  OnCard unpacked(&display, picture);
  ASSERT_EQ(Run(stage, unpacked.record()), 0u);
  EXPECT_NE(stage.Out(), unpacked.record());
  EXPECT_EQ(Texels(stage), samples);
  EXPECT_EQ(Do("enable"), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  ASSERT_EQ(Run(stage, unpacked.record()), 0u);
  EXPECT_NE(Texels(stage), samples);
}

TEST_F(QGLIPColorCorrectionTest, a_turn_at_init_acts_through_the_copy_only) {
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);  // "params.apply" reads another name
  stage.Enable(false);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), Turned(samples, kHeight));
}

TEST_F(QGLIPColorCorrectionTest, has_one_record_for_source_and_result) {
  for (const bool bottomUp : {false, true}) {
    const Record source = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, bottomUp);
    ASSERT_EQ(Init(stage, source), 0u);
    EXPECT_EQ(stage.GetImageInfo(true), stage.GetImageInfo(false));
    EXPECT_EQ(stage.GetImageInfo(true)->origin, bottomUp ? 1u : 0u);
    EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_RGB8);
  }
}

TEST_F(QGLIPColorCorrectionTest, a_picture_gets_all_of_a_change_or_none) {
  const Record grey = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, Samples(samples.size(), 204));
  std::atomic<bool> stop{false};
  std::atomic<int> applied{0};
  std::thread host([&] {
    for (int round = 0; !stop; ++round) {
      const std::string gain = round % 2 ? "0.25" : "0.75";
      QTD::ARGUMENTS args{{"gain.r", gain}, {"gain.g", gain}, {"gain.b", gain}};
      if (stage.RunCommand("cmd.params.apply", &args) != 1) break;
      ++applied;
    }
  });
  while (applied < 2) std::this_thread::yield();
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(Run(stage, grey.get()), 0u);
    const Samples result = Texels(stage);
    ASSERT_TRUE(result[0] == 51 || result[0] == 153) << result[0];
    ASSERT_EQ(result, Samples(samples.size(), result[0]));
  }
  stop = true;
  host.join();
  EXPECT_GT(applied, 2);
}

TEST_F(QGLIPColorCorrectionTest, hosts_on_other_threads_meet_a_stage_that_is_prepared_anew) {
  std::atomic<bool> stop{false};
  std::atomic<int> rounds[2] = {};
  const auto commands = [&](std::atomic<int>& round) {
    while (!stop) {
      QTD::ARGUMENTS args{{"gain.r", "0.5"}, {"apply", "1"}};
      stage.RunCommand("cmd.params.apply", &args);
      stage.RunCommand("cmd.params.reset", &args);
      stage.RunCommand("readGPU", nullptr);
      stage.ExecuteCommand("params.apply");
      stage.SetParameterInt("gain.g", 1);
      ++round;
    }
  };
  std::thread first(commands, std::ref(rounds[0])), second(commands, std::ref(rounds[1]));
  QElapsedTimer timer;
  timer.start();
  const auto all = [&] { return rounds[0] >= 2 && rounds[1] >= 2; };
  for (int round = 0; round < 20 || (!all() && timer.elapsed() < 20000); ++round) {
    EXPECT_EQ(Init(stage, picture), 0u);
    EXPECT_EQ(Run(stage, picture.get()), 0u);
    if (round % 4 == 3) stage.Release();
  }
  stop = true;
  first.join();
  second.join();
  EXPECT_TRUE(all()) << rounds[0] << " and " << rounds[1] << " rounds";
}

}  // namespace
