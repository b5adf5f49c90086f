// The exposure coloration and the chain that it asks: one that throws or waits.
#include <atomic>
#include <stdexcept>
#include <thread>

#include "StageFixture.h"
#include "gl/stages/QGLIPExposureColoration.h"

namespace {

constexpr uint32_t kWidth = 8, kHeight = 6;

class ThrowingChain : public FakeChain {
 public:
  ZynImgProcessor* FindProcessor(const char*) override { throw std::runtime_error("no chain today"); }
};

// Answers each question only when another thread has had its turn.
class WaitingStage : public QGLIPImage {
 public:
  using QGLIPImage::QGLIPImage;
  ZynImage* Out() override {
    Wait();
    return QGLIPImage::Out();
  }
  ZynImage* GetImageInfo(bool source) override {
    Wait();
    return QGLIPImage::GetImageInfo(source);
  }
  QGLIPExposureColoration* other = nullptr;

 private:
  void Wait() {
    if (other) std::thread([this] { other->ExecuteCommand("enable"); }).join();
  }
};

class ColorationChainTest : public StageFixture {
 protected:
  const Record camera = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, Scattered(kWidth* kHeight, 255));
  const Samples colours = Scattered(kWidth * kHeight * 3, 255, 4);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, colours);
};

TEST_F(ColorationChainTest, a_chain_that_throws_has_no_stage) {
  ThrowingChain chain;
  QGLIPExposureColoration stage(&display, &chain);
  EXPECT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(Run(stage, picture.get()), Composed(8));
}

TEST_F(ColorationChainTest, a_coloration_under_the_name_of_the_values_is_none) {
  FakeChain chain;
  QGLIPExposureColoration stage(&display, &chain);
  chain.unpacked = &stage;
  EXPECT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(Run(stage, picture.get()), Composed(8));
}

TEST_F(ColorationChainTest, a_stage_that_waits_for_a_command_to_the_coloration_gets_it) {
  FakeChain chain;
  WaitingStage unpacked(&display);
  ASSERT_EQ(Init(unpacked, camera), 0u);
  ASSERT_EQ(Run(unpacked, camera.get()), 0u);
  chain.unpacked = &unpacked;
  QGLIPExposureColoration stage(&display, &chain);
  unpacked.other = &stage;
  ASSERT_EQ(Init(stage, picture), 0u);
  OnCard shown(&display, picture);
  EXPECT_EQ(Run(stage, shown.record()), 0u);
  unpacked.other = nullptr;
}

// The factor that brings a depth to the full range is not for a copy.
TEST_F(ColorationChainTest, a_disabled_stage_copies_deep_pictures_unchanged) {
  FakeChain chain;
  OnCard unpacked(&display, camera);
  chain.unpacked = &unpacked.stage;
  const Samples deep = Scattered(kWidth * kHeight * 3, 4095);
  const Record rgb12 = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB12, deep);
  OnCard shown(&display, rgb12);
  QGLIPExposureColoration stage(&display, &chain);
  ASSERT_EQ(Init(stage, rgb12), 0u);
  stage.Enable(false);
  ASSERT_EQ(Run(stage, shown.record()), 0u);
  EXPECT_EQ(Texels(stage), deep);
}

TEST_F(ColorationChainTest, off_the_gui_thread_a_run_fails_and_touches_nothing) {
  FakeChain chain;
  OnCard unpacked(&display, camera);
  chain.unpacked = &unpacked.stage;
  QGLIPExposureColoration stage(&display, &chain);
  ASSERT_EQ(Init(stage, picture), 0u);
  uint32_t run = 0, read = 0, init = 0;
  std::thread([&] {
    run = Run(stage, picture.get());
    read = stage.ExecuteCommand("readGPU");
    init = Init(stage, picture);
  }).join();
  EXPECT_EQ(run, Composed(1));
  EXPECT_EQ(read, Composed(1));
  EXPECT_EQ(init, Composed(8));
  QCoreApplication::processEvents();  // what the thread gave up is freed here
}

}  // namespace
