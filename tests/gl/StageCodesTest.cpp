// What the correction and the coloration answer after they have been released, and when they count as ready.
#include "EveryStage.h"

namespace {

using every_stage::Inside;
using every_stage::kHeight;
using every_stage::kWidth;

class StageCodesTest : public every_stage::EveryStage {
 protected:
  static uint32_t Do(Inside& stage, const char* command) {
    return stage.Face().GetComponent()->ExecuteCommand(command);
  }
  static uint32_t Send(Inside& stage, const char* command, QTD::ARGUMENTS* args = nullptr) {
    if (auto* const correction = dynamic_cast<QGLIPColorCorrection*>(&stage))
      return correction->RunCommand(command, args);
    return dynamic_cast<QGLIPExposureColoration&>(stage).RunCommand(command, args);
  }
};

TEST_P(StageCodesTest, a_released_stage_has_nothing_to_apply_or_read) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  ASSERT_EQ(RunOf(*stage), 0u);
  EXPECT_EQ(Do(*stage, "params.apply"), 0u);
  EXPECT_EQ(Do(*stage, "readGPU"), 0u);
  EXPECT_EQ(Send(*stage, "readGPU"), 1u);
  stage->Face().Release();
  EXPECT_EQ(Do(*stage, "params.apply"), Composed(8));
  EXPECT_EQ(stage->LastError(), 8u);
  EXPECT_EQ(Do(*stage, "params.reset"), 0u);
  EXPECT_EQ(stage->LastError(), 0u);
  EXPECT_EQ(Send(*stage, "cmd.params.apply"), 0u);
  EXPECT_EQ(stage->LastError(), 8u);
  QTD::ARGUMENTS apply{{"apply", "1"}};
  EXPECT_EQ(Send(*stage, "cmd.params.reset"), 1u);
  EXPECT_EQ(stage->LastError(), 0u);
  EXPECT_EQ(Send(*stage, "cmd.params.reset", &apply), 0u);
  EXPECT_EQ(stage->LastError(), 8u);
  EXPECT_EQ(Do(*stage, "readGPU"), Composed(1));
  EXPECT_EQ(stage->LastError(), 1u);
  EXPECT_EQ(Do(*stage, "no.command"), 0u);
  EXPECT_EQ(stage->LastError(), 0u);
  EXPECT_EQ(Send(*stage, "readGPU"), 0u);
  EXPECT_EQ(stage->LastError(), 1u);
  EXPECT_FALSE(stage->Ready());
}

TEST_P(StageCodesTest, stays_ready_whatever_becomes_of_a_picture_or_a_command) {
  const auto stage = MakeStage();
  EXPECT_FALSE(stage->Ready());
  ASSERT_EQ(InitOf(*stage), 0u);
  EXPECT_TRUE(stage->Ready());

  const Record larger = MakeRecord(kWidth + 1, kHeight, GetParam().code);
  EXPECT_EQ(Run(stage->Face(), larger.get()), Composed(7));
  EXPECT_TRUE(stage->Ready()) << "after another size";
  EXPECT_EQ(Run(stage->Face(), nullptr), Composed(7));
  EXPECT_TRUE(stage->Ready()) << "after no picture";
  ZynImage lying = *picture;
  lying.imageSize = 1;
  EXPECT_EQ(Run(stage->Face(), &lying), Composed(1));
  EXPECT_TRUE(stage->Ready()) << "after an upload that failed";
  for (const char* const command : {"params.apply", "params.reset", "disable", "enable", "readGPU"}) {
    Do(*stage, command);
    EXPECT_TRUE(stage->Ready()) << command;
  }
  QTD::ARGUMENTS apply{{"apply", "1"}};
  for (const char* const command : {"cmd.params.apply", "cmd.params.reset", "cmd.enable", "readGPU"}) {
    Send(*stage, command, &apply);
    EXPECT_TRUE(stage->Ready()) << command;
  }
  stage->Face().Enable(true);
  EXPECT_EQ(RunOf(*stage), 0u);
  EXPECT_TRUE(stage->Ready());
}

INSTANTIATE_TEST_SUITE_P(Commanded, StageCodesTest,
                         testing::Values(every_stage::Sorts()[2], every_stage::Sorts()[3]),
                         every_stage::NameOf);

}  // namespace
