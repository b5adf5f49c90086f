// What each stage leaves bound on the card, after a result and after none, and where it does not run at all.
#include <thread>

#include "EveryStage.h"

namespace {

using every_stage::ExpectNothingBound;
using every_stage::Inside;
using every_stage::kHeight;
using every_stage::kWidth;

class StageStateTest : public every_stage::EveryStage {
 protected:
  // The texture on unit 0 after a run that found unit 1 selected and unit 0 empty.
  GLint BoundAfter(Inside& stage, const ZynImage* image) {
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    surface->glActiveTexture(GL_TEXTURE1);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(Run(stage.Face(), image), 0u);
    ExpectNothingBound();
    return bound();
  }
};

TEST_P(StageStateTest, a_pass_leaves_its_result_on_unit_0) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  const GLint result = static_cast<GLint>(stage->Target()->texture());
  EXPECT_EQ(BoundAfter(*stage, picture.get()), result);
  // Two runs one after the other: nothing of the first is in the way.
  EXPECT_EQ(BoundAfter(*stage, picture.get()), result);
  if (!GetParam().hasPass || QTD::IsPackedFormat(picture->pixelType)) return;  // see UnpackOnCardTest
  OnCard before(&display, picture);
  EXPECT_EQ(BoundAfter(*stage, before.record()), result);
}

TEST_P(StageStateTest, no_names_stay_of_what_goes_while_the_native_window_is_gone) {
  for (const bool onGuiThread : {true, false}) {
    SCOPED_TRACE(onGuiThread ? "released on the GUI thread" : "released on another thread");
    GLNames before = names();
    before.programs = before.shaders = 0;  // Qt deletes them when the context is current next
    auto stage = MakeStage();
    ASSERT_EQ(InitOf(*stage), 0u);
    ASSERT_EQ(RunOf(*stage), 0u);
    EXPECT_GT(names().textures, before.textures);
    surface->end(nullptr, false);
    window->destroy();
    if (!onGuiThread) {
      std::thread([&] { stage->Face().Release(); }).join();
      QCoreApplication::processEvents();
    }
    stage.reset();
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    window->create();
    ASSERT_TRUE(ShowAndWait(*window));
    ASSERT_TRUE(surface->begin(nullptr));
    GLNames after = names();
    after.programs = after.shaders = 0;
    EXPECT_EQ(after, before);
  }
}

TEST_P(StageStateTest, a_picture_in_memory_that_cannot_be_uploaded_leaves_nothing_bound) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  ZynImage lying = *picture;
  lying.imageSize = kWidth * kHeight - 1;
  EXPECT_EQ(Run(stage->Face(), &lying), Composed(1));
  ExpectNothingBound();
  EXPECT_EQ(stage->Face().Out(), nullptr);
}

TEST_P(StageStateTest, a_pass_that_cannot_run_is_told_and_leaves_nothing_bound) {
  if (!GetParam().hasPass) {
    // Here it is the copy that finds no target.
    const auto stage = MakeStage();
    ASSERT_EQ(InitOf(*stage), 0u);
    stage->Target()->done();
    EXPECT_NE(RunOf(*stage), 0u);
    ExpectNothingBound();
    return;
  }
  std::unique_ptr<QGLImage> lost;
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  lost = LoseTarget(*stage);
  EXPECT_EQ(RunOf(*stage), Composed(1));
  EXPECT_EQ(stage->LastError(), 1u);
  EXPECT_EQ(stage->Face().Out(), nullptr);
  ExpectNothingBound();
  EXPECT_EQ(InitOf(*stage), 0u);
  EXPECT_EQ(RunOf(*stage), 0u);
}

TEST_P(StageStateTest, a_parameter_that_is_no_number_ends_init_and_leaves_nothing) {
  const GLNames before = names();
  const auto stage = MakeStage();
  stage->Face().GetComponent()->SetParameterString(GetParam().initParameter, "much");
  EXPECT_EQ(InitOf(*stage), Composed(1));
  EXPECT_EQ(stage->LastError(), 1u);
  EXPECT_FALSE(stage->Ready());
  ExpectNothingBound();
  EXPECT_EQ(names(), before);
  EXPECT_EQ(RunOf(*stage), Composed(GetParam().notReady));
}

TEST_P(StageStateTest, on_another_thread_a_run_fails_with_1_and_no_surface_is_to_be_had) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  uint32_t run = 0, fresh = 0, none = 0, init = 77;
  std::thread([&] {
    run = RunOf(*stage);
    none = Run(stage->Face(), nullptr);
    init = InitOf(*stage);
    fresh = RunOf(*stage);
  }).join();
  EXPECT_EQ(run, Composed(1));
  EXPECT_EQ(none, Composed(1));
  EXPECT_EQ(init, Composed(GetParam().noSurface));
  EXPECT_EQ(fresh, Composed(1));
  EXPECT_EQ(stage->Face().Out(), nullptr);
  EXPECT_TRUE(surface->isActive());
  QCoreApplication::sendPostedEvents();  // what the thread gave up is freed here
  EXPECT_EQ(RunOf(*stage), Composed(GetParam().notReady));
  EXPECT_EQ(InitOf(*stage), 0u);
  EXPECT_EQ(RunOf(*stage), 0u);
}

// The stage itself refuses: what the coloration judges by lies in memory and outlives the surface.
TEST_P(StageStateTest, without_its_surface_a_run_is_not_ready) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  ASSERT_EQ(RunOf(*stage), 0u);
  surface->end(nullptr, false);
  surface.reset();
  EXPECT_EQ(RunOf(*stage), Composed(GetParam().notReady));
  EXPECT_EQ(InitOf(*stage), Composed(GetParam().noSurface));
  EXPECT_EQ(RunOf(*stage), Composed(GetParam().notReady));
}

TEST_P(StageStateTest, on_a_new_context_a_run_is_not_ready_until_the_next_init) {
  const auto stage = MakeStage();
  ASSERT_EQ(InitOf(*stage), 0u);
  ASSERT_EQ(RunOf(*stage), 0u);
  surface->end(nullptr, false);
  surface->done();
  ASSERT_TRUE(surface->init(&list));
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(RunOf(*stage), Composed(GetParam().notReady));
  EXPECT_EQ(InitOf(*stage), 0u);
  EXPECT_EQ(RunOf(*stage), 0u);
}

INSTANTIATE_TEST_SUITE_P(Stages, StageStateTest, testing::ValuesIn(every_stage::Sorts()),
                         every_stage::NameOf);

// Those whose runs read a number of the host's; for the correction it is the pass that does.
class StageTextTest : public every_stage::EveryStage {};

TEST_P(StageTextTest, a_parameter_that_is_no_number_ends_a_run_and_leaves_nothing_bound) {
  const auto stage = MakeStage();
  ZynComponent& component = *stage->Face().GetComponent();
  OnCard before(&display, picture);
  const bool early = GetParam().make != &every_stage::Make<QGLIPImage>;  // `Init` hands it on
  if (early) component.SetParameterString(GetParam().parameter, "much");
  ASSERT_EQ(InitOf(*stage), 0u);
  if (!early) component.SetParameterString(GetParam().parameter, "much");
  // The coloration's copy alone reads it.
  if (GetParam().make == &every_stage::MakeColoration) stage->Face().Enable(false);
  EXPECT_EQ(Run(stage->Face(), before.record()), Composed(1));
  EXPECT_EQ(stage->LastError(), 1u);
  EXPECT_EQ(stage->Face().Out(), nullptr);
  ExpectNothingBound();
}

TEST_P(StageTextTest, the_next_init_without_it_runs) {
  const auto stage = MakeStage();
  ZynComponent& component = *stage->Face().GetComponent();
  component.SetParameterString(GetParam().parameter, "much");
  InitOf(*stage);
  RunOf(*stage);
  component.SetParameterString(GetParam().parameter, "0");
  EXPECT_EQ(InitOf(*stage), 0u);
  EXPECT_EQ(RunOf(*stage), 0u);
}

INSTANTIATE_TEST_SUITE_P(Stages, StageTextTest, testing::ValuesIn(every_stage::WithText()),
                         every_stage::NameOf);

using CorrectionTextTest = StageFixture;

TEST_F(CorrectionTextTest, a_gamma_that_is_no_number_ends_a_run_and_leaves_nothing_bound) {
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8);
  OnCard before(&display, picture);
  QGLIPColorCorrection stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  stage.SetParameterString("gamma", "steep");
  ASSERT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_EQ(Run(stage, before.record()), Composed(1));
  EXPECT_EQ(stage.Out(), nullptr);
  ExpectNothingBound();
}

}  // namespace
