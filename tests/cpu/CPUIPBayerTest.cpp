// Running the demosaicing stage: how it drives its component, its commands and its end.
#include "cpu/stages/CPUIPBayer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "ZynPixelFormat.h"
#include "tests/chain/TraceCapture.h"
#include "tests/cpu/BayerPlan.h"

namespace {

TEST(CPUIPBayer, the_component_fills_the_result) {
  FakeBayerStage stage;
  StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  picture.record.imageID = 0x1234567890;
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  const ZynImage* const own = stage.Out();
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out(), own);
  EXPECT_EQ(own->imageID, 0x1234567890u);
  EXPECT_EQ(own->imageData[own->imageSize - 1], 0x90);

  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  ASSERT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &output.record);
  EXPECT_EQ(output.record.imageID, 0x1234567890u);
  EXPECT_EQ(output.record.imageData[0], 0x90);
}

TEST(CPUIPBayer, a_failing_component_is_reported_as_9) {
  FakeBayerStage stage;
  StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  picture.record.imageID = 5;
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ThePlan().processCode = 0x80FF0003;
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNoMemory);
  EXPECT_EQ(stage.LastError(), 9u);
  EXPECT_EQ(stage.Out(), nullptr);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  EXPECT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), kNoMemory);
  EXPECT_EQ(output.record.imageID, 0u);

  ThePlan().processCode = 0;
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);  // the stage goes on
  EXPECT_EQ(stage.LastError(), 0u);
  ThePlan().throwsAtProcess = true;
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNoMemory);
  EXPECT_EQ(stage.Out(), nullptr);
}

TEST(CPUIPBayer, without_a_source_the_component_is_not_called) {
  FakeBayerStage stage;
  StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kNotReady);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kNoMemory);
  EXPECT_EQ(stage.Out(), nullptr);
  picture.record.imageData = nullptr;
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNoMemory);
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init"}));
}

TEST(CPUIPBayer, an_output_of_another_size_or_without_a_buffer_is_refused) {
  FakeBayerStage stage;
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  for (const uint32_t size : {0u, 95u, 97u, 0xFFFFFFFFu}) {
    ZynImage lying = output.record;
    lying.imageSize = size;
    EXPECT_EQ(stage.ProcessImage(&picture.record, &lying, nullptr), kBadArgument) << size;
    EXPECT_EQ(stage.Out(), nullptr);
  }
  ZynImage empty = output.record;
  empty.imageData = nullptr;
  EXPECT_EQ(stage.ProcessImage(&picture.record, &empty, nullptr), kBadArgument);
  EXPECT_EQ(stage.ProcessImage(nullptr, &empty, nullptr), kBadArgument);  // the output comes first
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init"}));
  EXPECT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), 0u);
}

// The component's buffers are those that were prepared, whatever a record says.
TEST(CPUIPBayer, images_unlike_the_prepared_ones_do_not_reach_the_component) {
  FakeBayerStage stage;
  const StagePicture picture(ZYN_PIXEL_BAYERRG12, 8, 4), usual(ZYN_PIXEL_RGB12, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  const auto refuses = [&](ZynImage source, ZynImage output) {
    EXPECT_EQ(stage.ProcessImage(&source, &output, nullptr), kNoMemory);
    EXPECT_EQ(stage.Out(), nullptr);
  };
  const std::pair<uint32_t ZynImage::*, std::vector<uint32_t>> lies[] = {
      {&ZynImage::pixelType, {0, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_RGB8, 0xFFFFFFFF}},
      {&ZynImage::width, {0, 7, 9, 0xFFFFFFFF}},
      {&ZynImage::height, {0, 3, 5, 0xFFFFFFFF}},
      {&ZynImage::linePitch, {0, 1, 15, 1000, 0xFFFFFFFF}},
  };
  for (const auto& [field, values] : lies) {
    for (const uint32_t value : values) {
      ZynImage source = picture.record, output = usual.record;
      source.*field = value;
      refuses(source, output);
      source = picture.record;
      output.*field = value;
      refuses(source, output);
    }
  }
  for (const uint32_t size : {0u, 1u, 63u}) {
    ZynImage source = picture.record;
    source.imageSize = size;
    refuses(source, usual.record);
  }
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init"}));

  // Lines of a wider pitch are as good as prepared ones.
  const StagePicture padded(ZYN_PIXEL_BAYERRG12, 8, 4, 100);
  EXPECT_EQ(stage.ProcessImage(&padded.record, nullptr, nullptr), 0u);
}

TEST(CPUIPBayer, commands_tell_whether_the_stage_is_ready) {
  FakeBayerStage stage;
  for (const char* command : {"params.apply", "params.reset"}) {
    stage.Release();
    EXPECT_EQ(stage.ExecuteCommand(command), kFailed);
    EXPECT_EQ(stage.LastError(), 1u);
    const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
    ASSERT_EQ(stage.Init(&source, nullptr), 0u);
    EXPECT_EQ(stage.ExecuteCommand(command), 0u);
    EXPECT_EQ(stage.LastError(), 0u);
    for (const char* other : {"", "params", "cmd.params.apply", "params.applyy"}) {
      EXPECT_EQ(stage.ExecuteCommand(other), kNotSupported) << other;
    }
    EXPECT_EQ(stage.ExecuteCommand(nullptr), kNotSupported);
    EXPECT_TRUE(stage.IsReady());
  }
}

TEST(CPUIPBayer, release_brings_back_the_constructed_state) {
  FakeBayerStage stage;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_FALSE(stage.Enable(false));
  stage.Release();
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete"}));
  ExpectReleased(stage);
  stage.Release();
  EXPECT_EQ(ThePlan().calls.size(), 4u);
}

TEST(CPUIPBayer, a_second_init_rebuilds_and_may_take_the_stages_own_records) {
  FakeBayerStage stage;
  ZynImage source = Header(ZYN_PIXEL_BAYERRG8), order = Header(ZYN_PIXEL_BGR8);
  ASSERT_EQ(stage.Init(&source, &order), 0u);
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), stage.Out()), 0u);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_BGR8);
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete", "create", "init"}));
}

TEST(CPUIPBayer, the_destructor_gives_the_component_back) {
  {
    FakeBayerStage stage;
    const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
    ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  }
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete"}));
}

TEST(CPUIPBayer, any_thread_may_call_it) {
  FakeBayerStage stage;
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 64, 48);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  std::atomic<bool> stop{false};
  std::thread host([&] {
    for (int round = 0; round < 100; ++round) {
      stage.SetParameterInt("BayerAlgType", round % 4);
      stage.ExecuteCommand("params.apply");
      stage.Init(&picture.record, nullptr);
      if (round % 10 == 0) stage.Release();
    }
    stop = true;
  });
  int others = 0;
  do {
    const uint32_t code = stage.ProcessImage(&picture.record, nullptr, nullptr);
    others += code != 0 && code != kNotReady;
    stage.IsReady();
    stage.Out();
  } while (!stop);
  host.join();
  EXPECT_EQ(others, 0);
  EXPECT_EQ(stage.Init(&picture.record, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
}

TEST(CPUIPBayer, each_image_leaves_a_line_in_the_trace) {
  FakeBayerStage stage;
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  chain_test::TraceCapture trace;
  stage.ProcessImage(&picture.record, nullptr, nullptr);
  stage.ProcessImage(nullptr, nullptr, nullptr);
  EXPECT_EQ(trace.lines, std::vector<std::string>(2, "CPUIPBayer::ProcessImage()"));
}

}  // namespace
