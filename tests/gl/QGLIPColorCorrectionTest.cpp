// The colour correction stage: its pictures against a model in double precision.
#include "gl/stages/QGLIPColorCorrection.h"

#include <atomic>
#include <thread>

#include "StageFixture.h"
#include "gl/models/ColorCorrectionModel.h"

namespace {

constexpr uint32_t kWidth = 9, kHeight = 5;

class OpenCorrection : public QGLIPColorCorrection {
 public:
  using QGLIPColorCorrection::IsReady;
  using QGLIPColorCorrection::lastError;
  using QGLIPColorCorrection::QGLIPColorCorrection;
};

class QGLIPColorCorrectionTest : public StageFixture {
 protected:
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
  std::thread host([&] {
    while (!stop) {
      QTD::ARGUMENTS args{{"gain.r", "0.5"}, {"apply", "1"}};
      stage.RunCommand("cmd.params.apply", &args);
      stage.RunCommand("cmd.params.reset", &args);
      stage.RunCommand("readGPU", nullptr);
      stage.ExecuteCommand("params.apply");
      stage.SetParameterInt("gain.g", 1);
    }
  });
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(Init(stage, picture), 0u);
    EXPECT_EQ(Run(stage, picture.get()), 0u);
    if (round % 4 == 3) stage.Release();
  }
  stop = true;
  host.join();
}

// The commands by name.

TEST_F(QGLIPColorCorrectionTest, cmd_params_apply_prefers_arguments_and_leaves_the_parameters) {
  Set("gain.g", "0.5");
  QTD::ARGUMENTS args{{"gain.r", "2"}, {"offs.b", "0.25"}, {"gamma", "2"}, {"debug.output", "1001"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 1u);
  model::CorrectionPlan plan;
  plan.gain = {2, 0.5, 1};
  plan.offs = {0, 0, 0.25};
  plan.gamma = 2;
  plan.output = 1001;
  ExpectModel(plan);
  EXPECT_EQ(stage.Parameters().GetString("gain.r"), "1.000000");
  EXPECT_EQ(stage.Parameters().GetString("gamma"), "1");
  // A later "params.apply" undoes it.
  EXPECT_EQ(Do("params.apply"), 0u);
  plan = {};
  plan.gain = {1, 0.5, 1};
  ExpectModel(plan);
  QTD::ARGUMENTS automatic{{"debug.mode", "1"}, {"gain.r", "0.5"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &automatic), 1u);
  plan.gain = {0.5, 0.5, 1};
  plan.automatic = true;
  ExpectModel(plan);
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 1u);
  plan = {};
  plan.gain = {1, 0.5, 1};
  ExpectModel(plan);
}

TEST_F(QGLIPColorCorrectionTest, each_apply_command_reads_its_own_turn) {
  Set("flip.vert", "1");
  EXPECT_EQ(Do("params.apply"), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), Turned(samples, kHeight));
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 1u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
  stage.SetParameterInt("image.flip.vert", 1);
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 1u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), Turned(samples, kHeight));
}

TEST_F(QGLIPColorCorrectionTest, params_reset_writes_the_stage_and_not_the_pass) {
  for (const char* name : {"gain.r", "gain.g", "gain.b", "offs.r", "offs.g", "offs.b"}) Set(name, "0.5");
  Set("gamma", "3");
  Set("debug.mode", "1");
  Set("debug.output", "1002");
  Set("image.color.coef", "2");
  Set("image.color.high", "0.5");
  Set("image.flip.vert", "1");
  Do("params.apply");
  EXPECT_EQ(Do("params.reset"), 0u);
  const std::pair<const char*, const char*> expected[] = {{"gain.r", "1.000000"},
                                                          {"gain.g", "1.000000"},
                                                          {"gain.b", "1.000000"},
                                                          {"offs.r", "0"},
                                                          {"offs.g", "0"},
                                                          {"offs.b", "0"},
                                                          {"gamma", "1"},
                                                          {"debug.mode", "0"},
                                                          {"debug.output", "0"},
                                                          {"image.color.coef", "1.000000"},
                                                          {"image.color.high", "1.000000"},
                                                          {"image.flip.vert", "1"}};
  for (const auto& [name, value] : expected) EXPECT_EQ(stage.Parameters().GetString(name), value) << name;
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_NE(Texels(stage), samples);
  Do("params.apply");
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

TEST_F(QGLIPColorCorrectionTest, cmd_params_reset_leaves_the_factor_and_sets_the_turn) {
  Set("gain.r", "0.5");
  Set("image.color.coef", "0.5");
  Set("image.color.high", "0.25");
  Set("image.flip.vert", "1");
  EXPECT_EQ(stage.RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_EQ(stage.Parameters().GetString("gain.r"), "1.000000");
  EXPECT_EQ(stage.Parameters().GetString("image.color.coef"), "0.5");
  EXPECT_EQ(stage.Parameters().GetString("image.color.high"), "0.25");
  EXPECT_EQ(stage.Parameters().GetString("image.flip.vert"), "0");
  Set("gain.r", "0.5");
  QTD::ARGUMENTS apply{{"apply", "1"}, {"gain.g", "0.5"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.reset", &apply), 1u);
  model::CorrectionPlan plan;  // the arguments are not those of the apply
  plan.coef = 0.5;
  ExpectModel(plan);
}

TEST_F(QGLIPColorCorrectionTest, cmd_enable_answers_0_and_does_it) {
  QTD::ARGUMENTS off{{"enabled", "0"}}, on{{"enabled", "1"}};
  EXPECT_EQ(stage.RunCommand("cmd.enable", &off), 0u);
  EXPECT_FALSE(stage.IsEnabled());
  EXPECT_EQ(stage.RunCommand("cmd.enable", &on), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.RunCommand("cmd.enable", nullptr), 0u);
  EXPECT_FALSE(stage.IsEnabled());
}

TEST_F(QGLIPColorCorrectionTest, readGPU_brings_the_result_into_memory) {
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_NE(SamplesOf(*stage.Out()), samples);
  EXPECT_EQ(Do("readGPU"), 0u);
  EXPECT_EQ(SamplesOf(*stage.Out()), samples);
  EXPECT_EQ(stage.RunCommand("readGPU", nullptr), 1u);
}

TEST_F(QGLIPColorCorrectionTest, without_a_pass_there_is_nothing_to_apply_or_read) {
  OpenCorrection fresh(&display);
  EXPECT_EQ(fresh.ExecuteCommand("params.apply"), Composed(8));
  EXPECT_EQ(fresh.lastError, 8u);
  EXPECT_EQ(fresh.ExecuteCommand("params.reset"), 0u);
  EXPECT_EQ(fresh.lastError, 0u);
  EXPECT_EQ(fresh.RunCommand("cmd.params.apply", nullptr), 0u);
  EXPECT_EQ(fresh.lastError, 8u);
  QTD::ARGUMENTS apply{{"apply", "1"}};
  EXPECT_EQ(fresh.RunCommand("cmd.params.reset", &apply), 0u);
  EXPECT_EQ(fresh.RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_EQ(fresh.ExecuteCommand("readGPU"), Composed(1));
  EXPECT_EQ(fresh.RunCommand("readGPU", nullptr), 0u);
}

TEST_F(QGLIPColorCorrectionTest, other_names_do_nothing) {
  for (const char* name : {"cmd.params.apply", "cmd.enable", "Params.apply", ""}) EXPECT_EQ(Do(name), 0u);
  EXPECT_EQ(Do(nullptr), 0u);
  for (const char* name : {"params.apply", "enable", ""}) EXPECT_EQ(stage.RunCommand(name, nullptr), 0u);
  EXPECT_EQ(stage.RunCommand(nullptr, nullptr), 0u);
  EXPECT_TRUE(stage.IsEnabled());
}

TEST_F(QGLIPColorCorrectionTest, texts_that_are_no_numbers_apply_nothing) {
  Set("gain.r", "0.5");
  Set("offs.b", "dark");
  EXPECT_ANY_THROW(Do("params.apply"));
  QTD::ARGUMENTS args{{"gamma", "steep"}};
  EXPECT_ANY_THROW(stage.RunCommand("cmd.params.apply", &args));
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
  Set("offs.b", "0");
  Set("gamma", "steep");  // goes to the pass as it is
  EXPECT_EQ(Do("params.apply"), 0u);
  EXPECT_EQ(Run(stage, picture.get()), Composed(1));
}

}  // namespace
