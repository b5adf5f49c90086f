// The commands of the colour correction stage.
#include <utility>
#include <vector>

#include "ColorCorrectionFixture.h"

namespace {

using QGLIPColorCorrectionCommands = ColorCorrectionFixture;

TEST_F(QGLIPColorCorrectionCommands, cmd_params_apply_prefers_arguments_and_leaves_the_parameters) {
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

TEST_F(QGLIPColorCorrectionCommands, each_apply_command_reads_its_own_turn) {
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

// Parameters of the stage that have one value.
struct Group {
  const char* value;
  std::vector<const char*> names;
};

void SetAll(QGLIPColorCorrection& stage, const std::vector<Group>& groups) {
  for (const Group& group : groups)
    for (const char* name : group.names) stage.SetParameterString(name, group.value);
}
void ExpectAll(QGLIPColorCorrection& stage, const std::vector<Group>& groups) {
  for (const Group& group : groups)
    for (const char* name : group.names) EXPECT_EQ(stage.Parameters().GetString(name), group.value) << name;
}

const std::vector<Group> kChanged = {
    {"0.5", {"gain.r", "gain.g", "gain.b", "offs.r", "offs.g", "offs.b", "image.color.high"}},
    {"3", {"gamma"}},
    {"1", {"debug.mode", "image.flip.vert"}},
    {"1002", {"debug.output"}},
    {"2", {"image.color.coef"}},
};

TEST_F(QGLIPColorCorrectionCommands, params_reset_writes_the_stage_and_not_the_pass) {
  SetAll(stage, kChanged);
  Do("params.apply");
  EXPECT_EQ(Do("params.reset"), 0u);
  ExpectAll(stage, {{"1.000000", {"gain.r", "gain.g", "gain.b", "image.color.coef", "image.color.high"}},
                    {"0", {"offs.r", "offs.g", "offs.b", "debug.mode", "debug.output"}},
                    {"1", {"gamma", "image.flip.vert"}}});  // the turn as it was
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_NE(Texels(stage), samples);
  Do("params.apply");
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

TEST_F(QGLIPColorCorrectionCommands, cmd_params_reset_leaves_the_factor_and_sets_the_turn) {
  SetAll(stage, kChanged);
  EXPECT_EQ(stage.RunCommand("cmd.params.reset", nullptr), 1u);
  ExpectAll(stage, {{"1.000000", {"gain.r", "gain.g", "gain.b"}},
                    {"0", {"offs.r", "offs.g", "offs.b", "debug.mode", "debug.output", "image.flip.vert"}},
                    {"1", {"gamma"}},
                    {"2", {"image.color.coef"}},
                    {"0.5", {"image.color.high"}}});
  Set("gain.r", "0.5");
  Set("image.color.coef", "0.5");
  QTD::ARGUMENTS apply{{"apply", "1"}, {"gain.g", "0.5"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.reset", &apply), 1u);
  model::CorrectionPlan plan;  // the arguments are not those of the apply
  plan.coef = 0.5;
  ExpectModel(plan);
}

TEST_F(QGLIPColorCorrectionCommands, cmd_enable_answers_0_and_does_it) {
  QTD::ARGUMENTS off{{"enabled", "0"}}, on{{"enabled", "1"}};
  EXPECT_EQ(stage.RunCommand("cmd.enable", &off), 0u);
  EXPECT_FALSE(stage.IsEnabled());
  EXPECT_EQ(stage.RunCommand("cmd.enable", &on), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.RunCommand("cmd.enable", nullptr), 0u);
  EXPECT_FALSE(stage.IsEnabled());
}

TEST_F(QGLIPColorCorrectionCommands, readGPU_brings_the_result_into_memory) {
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_NE(SamplesOf(*stage.Out()), samples);
  EXPECT_EQ(Do("readGPU"), 0u);
  EXPECT_EQ(SamplesOf(*stage.Out()), samples);
  EXPECT_EQ(stage.RunCommand("readGPU", nullptr), 1u);
}

TEST_F(QGLIPColorCorrectionCommands, without_a_pass_there_is_nothing_to_apply_or_read) {
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

TEST_F(QGLIPColorCorrectionCommands, other_names_do_nothing) {
  for (const char* name : {"cmd.params.apply", "cmd.enable", "Params.apply", ""}) EXPECT_EQ(Do(name), 0u);
  EXPECT_EQ(Do(nullptr), 0u);
  for (const char* name : {"params.apply", "enable", ""}) EXPECT_EQ(stage.RunCommand(name, nullptr), 0u);
  EXPECT_EQ(stage.RunCommand(nullptr, nullptr), 0u);
  EXPECT_TRUE(stage.IsEnabled());
}

TEST_F(QGLIPColorCorrectionCommands, texts_that_are_no_numbers_apply_nothing) {
  Set("gain.r", "0.5");
  Set("offs.b", "dark");
  EXPECT_EQ(Do("params.apply"), Composed(1));
  EXPECT_EQ(stage.lastError, 1u);
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 0u);  // the stage's own
  EXPECT_EQ(stage.lastError, 1u);
  Set("offs.b", "0");
  const std::pair<const char*, const char*> bad[] = {
      {"gain.r", "x"}, {"gain.r", "1e999"}, {"offs.g", "dark"}, {"gamma", "steep"}, {"debug.mode", "on"}};
  for (const auto& [name, value] : bad) {
    QTD::ARGUMENTS args{{"gain.g", "0.25"}, {name, value}};
    EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 0u) << name << " " << value;
    EXPECT_EQ(stage.lastError, 1u);
  }
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
  Set("offs.b", "0");
  Set("gamma", "steep");  // goes to the pass as it is
  EXPECT_EQ(Do("params.apply"), 0u);
  EXPECT_EQ(Run(stage, picture.get()), Composed(1));
}

TEST_F(QGLIPColorCorrectionCommands, flags_that_are_no_numbers_change_nothing) {
  Set("gain.r", "0.5");
  QTD::ARGUMENTS enabled{{"enabled", "no"}}, apply{{"apply", "99999999999"}};
  EXPECT_EQ(stage.RunCommand("cmd.enable", &enabled), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.RunCommand("cmd.params.reset", &apply), 0u);
  EXPECT_EQ(stage.Parameters().GetString("gain.r"), "0.5");
}

// Null stands for no arguments: all comes from the stage's parameters.
TEST_F(QGLIPColorCorrectionCommands, apply_works_without_arguments) {
  Set("gain.r", "0.5");
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 1u);
  model::CorrectionPlan plan;
  plan.gain[0] = 0.5;
  ExpectModel(plan);
}

}  // namespace
