// Running the image stage.
#include "cpu/stages/CPUIPImage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <future>
#include <thread>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "tests/cpu/ReadyStage.h"

#ifdef __has_feature
#define ZYN_HAS_FEATURE(feature) __has_feature(feature)
#else
#define ZYN_HAS_FEATURE(feature) 0
#endif

namespace {

TEST(CPUIPImage, reduces_mono10_to_mono8_by_two_bits) {
  StagePicture picture(ZYN_PIXEL_MONO10, 1024, 1);
  for (uint16_t value = 0; value < 1024; ++value)
    std::memcpy(picture.record.imageData + 2 * value, &value, 2);
  CPUIPImage stage(nullptr);
  stage.SetParameterInt("depth", 8);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_MONO8);
  for (size_t value = 0; value < 1024; ++value) EXPECT_EQ(stage.Out()->imageData[value], value >> 2);
}

TEST(CPUIPImage, turns_mono16_into_grey_rgb8) {
  const StagePicture picture(ZYN_PIXEL_MONO16, 16, 1);
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  for (size_t i = 0; i < 48; ++i) EXPECT_EQ(ready.stage.Out()->imageData[i], WordAt(picture, i / 3) >> 8);
}

TEST(CPUIPImage, swaps_bgr8_to_rgb8) {
  const StagePicture picture(ZYN_PIXEL_BGR8, 5, 1);
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  for (size_t pixel = 0; pixel < 5; ++pixel) {
    for (size_t channel = 0; channel < 3; ++channel) {
      EXPECT_EQ(ready.stage.Out()->imageData[3 * pixel + channel],
                picture.record.imageData[3 * pixel + 2 - channel]);
    }
  }
}

TEST(CPUIPImage, copies_rgb16_although_depth_8_was_asked_for) {
  const StagePicture picture(ZYN_PIXEL_RGB16, 7, 3);
  CPUIPImage stage(nullptr);
  stage.SetParameterInt("depth", 8);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_RGB16);
  EXPECT_EQ(PixelsOf(*stage.Out()), PixelsOf(picture.record));
  // Such a copy goes line by line between unequal pitches, but not between unequal sizes of one pitch.
  const StagePicture wide(ZYN_PIXEL_RGB16, 7, 3, 50);
  ASSERT_EQ(stage.ProcessImage(&wide.record, nullptr, nullptr), 0u);
  EXPECT_EQ(PixelsOf(*stage.Out()), PixelsOf(wide.record));
  ZynImage shorter = picture.record;
  shorter.imageSize -= 2;
  EXPECT_EQ(stage.ProcessImage(&shorter, nullptr, nullptr), kFailed);
}

TEST(CPUIPImage, grey_is_not_swapped_for_bgr) {
  const StagePicture picture(ZYN_PIXEL_MONO8, 9, 2);
  ReadyStage bgr(picture.record, ZYN_PIXEL_BGR8), rgb(picture.record, ZYN_PIXEL_RGB8);
  ASSERT_EQ(bgr.Run(picture.record), 0u);
  ASSERT_EQ(rgb.Run(picture.record), 0u);
  EXPECT_EQ(bgr.stage.Out()->pixelType, ZYN_PIXEL_BGR8);
  EXPECT_EQ(PixelsOf(*bgr.stage.Out()), PixelsOf(*rgb.stage.Out()));
}

TEST(CPUIPImage, samples_that_exceed_their_depth_saturate) {
  StagePicture picture(ZYN_PIXEL_MONO12, 4, 1);
  const uint16_t words[] = {0x0FFF, 0x1000, 0xFFFF, 0x0010};
  std::memcpy(picture.record.imageData, words, sizeof(words));
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  const uint8_t expected[] = {255, 255, 255, 1};
  EXPECT_EQ(0, std::memcmp(ready.stage.Out()->imageData, expected, 4));
}

TEST(CPUIPImage, the_image_number_travels_and_the_result_is_the_target) {
  StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  picture.record.imageID = 0x123456789A;
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out()->imageID, 0x123456789Au);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  ASSERT_EQ(ready.Run(picture.record, &output.record), 0u);
  EXPECT_EQ(ready.stage.Out(), &output.record);
  EXPECT_EQ(output.record.imageID, 0x123456789Au);
}

TEST(CPUIPImage, refuses_a_source_without_pixels) {
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(ready.stage.Out(), nullptr);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  ZynImage empty = picture.record;
  empty.imageData = nullptr;
  EXPECT_EQ(ready.Run(empty), kBadArgument);
  EXPECT_EQ(ready.stage.Out(), nullptr);
  CPUIPImage unprepared(nullptr);
  EXPECT_EQ(unprepared.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);  // before "not ready"
}

TEST(CPUIPImage, refuses_an_output_of_another_size) {
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 5);
  const auto before = output.Copy();
  EXPECT_EQ(ready.Run(picture.record, &output.record), kBadArgument);
  EXPECT_EQ(ready.stage.Out(), nullptr);
  EXPECT_EQ(output.Copy(), before);
  StagePicture unbuffered(ZYN_PIXEL_RGB8, 8, 4);
  unbuffered.record.imageData = nullptr;
  EXPECT_EQ(ready.Run(picture.record, &unbuffered.record), kBadArgument);
}

TEST(CPUIPImage, is_not_ready_without_a_target) {
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  StagePicture output(ZYN_PIXEL_MONO8, 8, 4);
  CPUIPImage unprepared(nullptr);
  EXPECT_EQ(unprepared.ProcessImage(&picture.record, nullptr, nullptr), kNotReady);
  EXPECT_EQ(unprepared.ProcessImage(&picture.record, &output.record, nullptr), kNotReady);
  ReadyStage external(picture.record, ZYN_PIXEL_MONO8, true);
  EXPECT_EQ(external.Run(picture.record), kNotReady);
  EXPECT_EQ(external.stage.Out(), nullptr);
  EXPECT_EQ(external.Run(picture.record, &output.record), 0u);
  EXPECT_EQ(output.Copy(), picture.Copy());
}

TEST(CPUIPImage, copies_lines_of_another_pitch_and_trailing_bytes) {
  const StagePicture usual(ZYN_PIXEL_MONO8, 10, 4), wide(ZYN_PIXEL_MONO8, 10, 4, 31),
      narrow(ZYN_PIXEL_MONO8, 10, 4, 10);
  ReadyStage ready(usual.record, ZYN_PIXEL_MONO8);
  for (const StagePicture* picture : {&usual, &wide, &narrow}) {
    ASSERT_EQ(ready.Run(picture->record), 0u);
    EXPECT_EQ(PixelsOf(*ready.stage.Out()), PixelsOf(picture->record));
  }
  // A block that ends with the last pixel.
  ZynImage cut = usual.record;
  cut.imageSize -= 2;
  ASSERT_EQ(ready.Run(cut), 0u);
  EXPECT_EQ(PixelsOf(*ready.stage.Out()), PixelsOf(usual.record));
}

TEST(CPUIPImage, a_failed_conversion_keeps_the_target_and_hands_it_out) {
  StagePicture picture(ZYN_PIXEL_RGB12, 8, 4);
  picture.record.imageID = 9;
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8);  // fewer channels than the source
  StagePicture output(ZYN_PIXEL_MONO8, 8, 4);
  const auto before = output.Copy();
  EXPECT_EQ(ready.Run(picture.record, &output.record), kFailed);
  EXPECT_EQ(ready.stage.Out(), &output.record);
  EXPECT_EQ(output.record.imageID, 9u);
  EXPECT_EQ(output.Copy(), before);
}

// Nothing says how a byte would be scaled to a deeper sample, and half of each line would stay unwritten.
TEST(CPUIPImage, bytes_are_not_made_into_deep_samples) {
  struct Kind {
    uint32_t source, target;
  };
  for (const Kind kind : {Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB16}, Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_BGR10},
                          Kind{ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR12}, Kind{ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB10}}) {
    const StagePicture picture(kind.source, 8, 4);
    ReadyStage ready(picture.record, kind.target);
    for (const uint32_t depth : {0u, 8u, 16u}) {  // whatever the caller's record says
      StagePicture output(kind.target, 8, 4);
      output.record.bitDepth = depth;
      const auto before = output.Copy();
      EXPECT_EQ(ready.Run(picture.record, &output.record), kFailed);
      EXPECT_EQ(ready.stage.Out(), &output.record);
      EXPECT_EQ(output.Copy(), before);
    }
  }
  // The same with a reduction before: a record that calls the deep target one of bytes.
  const StagePicture words(ZYN_PIXEL_MONO12, 8, 4);
  ReadyStage ready(words.record, ZYN_PIXEL_RGB16);
  StagePicture output(ZYN_PIXEL_RGB16, 8, 4);
  output.record.bitDepth = 8;
  EXPECT_EQ(ready.Run(words.record, &output.record), kFailed);
}

double ResidentMegabytes() {
  std::ifstream status("/proc/self/statm");
  double total = 0, resident = 0;
  status >> total >> resident;
  return resident * 4096 / 1e6;
}

TEST(CPUIPImage, an_output_image_that_is_never_used_costs_no_memory) {
#if defined(__SANITIZE_THREAD__) || ZYN_HAS_FEATURE(thread_sanitizer)
  GTEST_SKIP() << "the thread sanitizer's allocator writes to fresh memory";
#endif
  ZynImage source{};
  ASSERT_TRUE(QTD::ImageCreateHeader(&source, 8192, 8192, ZYN_PIXEL_MONO12));  // 134 MB
  uint8_t pixel = 0;
  source.imageData = &pixel;  // a source that is handed on is not read
  const double before = ResidentMegabytes();
  CPUIPImage stage(nullptr);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  stage.Enable(false);
  ASSERT_EQ(stage.ProcessImage(&source, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &source);
  EXPECT_LT(ResidentMegabytes() - before, 40);
}

TEST(CPUIPImage, any_thread_may_call_anything) {
  const StagePicture picture(ZYN_PIXEL_MONO12, 64, 48), other(ZYN_PIXEL_BGR8, 31, 7);
  const ZynImage output = Header(ZYN_PIXEL_RGB8, 64, 48);
  CPUIPImage stage(nullptr);
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0};
  const auto repeat = [&](auto work) {
    return std::thread([&stop, work] {
      while (!stop) work();
    });
  };
  std::thread threads[] = {
      repeat([&] {
        stage.Init(&picture.record, &output);
        stage.Init(&other.record, &output);
      }),
      repeat([&] {
        const uint32_t code = stage.ProcessImage(&picture.record, nullptr, nullptr);
        failures += code != 0 && code != kFailed && code != kNotReady;
      }),
      repeat([&] {
        StagePicture target(ZYN_PIXEL_RGB8, 64, 48);
        const uint32_t code = stage.ProcessImage(&picture.record, &target.record, nullptr);
        failures += code != 0 && code != kFailed && code != kNotReady && code != kBadArgument;
      }),
      repeat([&] {
        stage.Release();
        stage.Out();
        stage.GetImageInfo(false);
        stage.Enable(false);
        stage.SetParameterInt("depth", 8);
        stage.IsReady();
      }),
  };
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

// A handler that waits for a frame, while the frame is processed on another thread.
TEST(CPUIPImage, a_parameter_handler_may_wait_for_a_frame) {
  struct Waiting : ZynDisplayCommand {
    explicit Waiting(std::function<uint32_t()> frame) : work(std::move(frame)) {}
    uint32_t RunCommand(const char*, QTD::ARGUMENTS*) override {
      auto result = std::async(std::launch::async, work);
      finished = result.wait_for(std::chrono::seconds(20)) == std::future_status::ready && result.get() == 0;
      return 0;
    }
    std::function<uint32_t()> work;
    bool finished = false;
  };
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  Waiting handler([&] { return ready.Run(picture.record); });
  ready.stage.SetParameterHandlers(&handler, nullptr);
  ready.stage.SetParameterInt("depth", 8);
  EXPECT_TRUE(handler.finished);
}

}  // namespace
