#include "QTD/chain/QTDConverter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "chain/TraceCapture.h"
#include "cpu/stages/CPUIPImage.h"

using chain_test::FakeDisplay;
using chain_test::FakeStage;
using chain_test::FakeSurface;
using chain_test::Journal;
using chain_test::Picture;
using chain_test::TraceCapture;

namespace {

constexpr uint32_t kFailed = 0x80FF0001, kBadArgument = 0x80FF0007, kNotReady = 0x80FF0008,
                   kNoMemory = 0x80FF0009;

// A display with a chain for 4x3 pictures, and a converter on it.
struct QTDConverterTest : testing::Test {
  Journal journal;
  FakeDisplay display;
  QTDProcessor chain{&display, false};
  QTDConverter converter{&display, false};

  void Prepare(uint32_t from, uint32_t to) {
    const Picture source(4, 3, from), output(4, 3, to);
    ASSERT_EQ(chain.Init(source), 0u);
    Publish(&chain);
    ASSERT_EQ(converter.Init(source, output), 0u);
  }
  void Publish(ZynImgProcessingChain* published) { display.Publish("processor", published); }
  FakeStage* Insert(const char* before, const char* name) {
    auto* const stage = new FakeStage(name, &journal);
    EXPECT_EQ(chain.InsertProcessor(before, name, stage), 0u);
    return stage;
  }
};

void FillMono8(const Picture& picture) {
  for (uint32_t y = 0; y < picture->height; ++y) {
    for (uint32_t x = 0; x < picture->width; ++x) picture.Byte(x, y) = static_cast<uint8_t>(16 * y + x + 1);
  }
}

}  // namespace

TEST_F(QTDConverterTest, has_its_parameters_from_the_start) {
  QTD::PROPERTIES& list = converter.Parameters();
  EXPECT_EQ(list.GetString("class"), "QTDConverter");
  EXPECT_EQ(list.GetPointer("parent"), static_cast<ZynDisplayProcessor*>(&display));
  EXPECT_EQ(list.GetString("opengl"), "0");
  for (const char* later : {"@src", "@out", "@data"}) EXPECT_FALSE(list.Has(later)) << later;
  EXPECT_EQ(QTDConverter(nullptr, true).Parameters().GetString("opengl"), "1");
}

TEST_F(QTDConverterTest, starts_idle_and_closed) {
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_FALSE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_EQ(converter.Out(), nullptr);
}

TEST_F(QTDConverterTest, is_never_enabled) {
  EXPECT_FALSE(converter.Enable(true));
  EXPECT_FALSE(converter.IsEnabled());
  EXPECT_FALSE(converter.Enable(false));
}

// Preparing.

TEST_F(QTDConverterTest, prepares_for_the_picture_of_the_chain) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.GetState(), 1u);
  EXPECT_TRUE(converter.IsReady());
  ASSERT_NE(converter.GetImageInfo(true), nullptr);
  EXPECT_EQ(converter.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.GetImageInfo(true)->width, 4u);
  EXPECT_EQ(converter.GetImageInfo(true)->height, 3u);
  ASSERT_NE(converter.GetImageInfo(false), nullptr);
  EXPECT_EQ(converter.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QTDConverterTest, keeps_the_code_that_the_chain_ends_with_as_its_source) {
  chain.Parameters().Set("image.downscale", "1");
  Prepare(ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
}

TEST_F(QTDConverterTest, refuses_to_prepare_for_null) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  const Picture output(4, 3, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.Init(nullptr, output), kBadArgument);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_EQ(converter.GetImageInfo(true), nullptr);
}

TEST_F(QTDConverterTest, cannot_prepare_without_an_output_format) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  EXPECT_EQ(converter.Init(source, nullptr), kNoMemory);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, cannot_prepare_for_an_output_code_that_does_not_exist) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  output->pixelType = 0x010801FF;
  EXPECT_NE(converter.Init(source, output), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, needs_a_parent_and_a_chain) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  QTDConverter orphan(nullptr, false);
  EXPECT_EQ(orphan.Init(source, output), kNotReady);
  EXPECT_EQ(converter.Init(source, output), kNotReady);  // "processor" is absent
  Publish(nullptr);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  display.Publish("processor", &source);  // a text that a host has overwritten
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  Publish(&chain);
  converter.Parameters().Set("parent", "0");
  EXPECT_EQ(converter.Init(source, output), kNotReady);
}

TEST_F(QTDConverterTest, does_not_follow_the_pointer_of_a_chain_that_is_gone) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  {
    QTDProcessor gone(nullptr, false);
    ASSERT_EQ(gone.Init(source), 0u);
    Publish(&gone);
    ASSERT_EQ(converter.Init(source, output), 0u);
  }
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
}

TEST_F(QTDConverterTest, needs_a_chain_with_an_output_stage) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  ASSERT_EQ(chain.RemoveProcessor("image.output"), 0u);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  Insert(nullptr, "image.output");  // one that is not prepared
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, needs_a_source_of_the_size_of_the_chains_picture) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  const Picture wide(5, 3, ZYN_PIXEL_MONO8), high(4, 4, ZYN_PIXEL_MONO8);
  const ZynImage empty{};
  EXPECT_EQ(converter.Init(wide, output), kNotReady);
  EXPECT_EQ(converter.Init(high, output), kNotReady);
  EXPECT_EQ(converter.Init(&empty, output), kNotReady);
}

TEST_F(QTDConverterTest, takes_its_own_records_to_prepare_anew) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.Init(converter.GetImageInfo(true), converter.GetImageInfo(false)), 0u);
  EXPECT_EQ(converter.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QTDConverterTest, is_back_at_its_start_after_a_release) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  converter.Release();
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.Out(), nullptr);
  EXPECT_EQ(converter.GetImageInfo(true), nullptr);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kBadArgument);
}

// The gate.

TEST_F(QTDConverterTest, grants_itself_to_one_caller_at_a_time) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_TRUE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 2u);
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 2u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
  EXPECT_TRUE(converter.OpenGate());
}

TEST_F(QTDConverterTest, keeps_a_finished_run_until_its_caller_closes_the_gate) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_TRUE(converter.OpenGate());
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
}

TEST_F(QTDConverterTest, grants_itself_once_when_many_threads_ask) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::future<int>> askers;
    for (int thread = 0; thread < 4; ++thread) {
      askers.push_back(std::async(std::launch::async, [this] {
        int granted = 0;
        for (int attempt = 0; attempt < 20; ++attempt) granted += converter.OpenGate() ? 1 : 0;
        return granted;
      }));
    }
    int granted = 0;
    for (auto& asker : askers) granted += asker.get();
    EXPECT_EQ(granted, 1);
    converter.CloseGate();
  }
}

TEST_F(QTDConverterTest, answers_at_the_gate_without_waiting_for_a_run) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [this] {
    EXPECT_EQ(converter.GetState(), 4u);
    EXPECT_FALSE(std::async(std::launch::async, [this] { return converter.OpenGate(); }).get());
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
}

TEST_F(QTDConverterTest, can_be_failed_from_outside) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  ASSERT_TRUE(converter.OpenGate());
  converter.Fail();
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
}

// Running.

TEST_F(QTDConverterTest, writes_the_picture_in_the_wanted_format) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  FillMono8(source);
  source->imageID = 11;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_EQ(converter.Out(), static_cast<ZynImage*>(output));
  EXPECT_EQ(output->imageID, 11u);
  for (uint32_t y = 0; y < 3; ++y) {
    for (uint32_t x = 0; x < 4; ++x) {
      for (uint32_t channel = 0; channel < 3; ++channel) {
        EXPECT_EQ(output.Byte(3 * x + channel, y), 16 * y + x + 1) << x << "," << y;
      }
    }
  }
}

TEST_F(QTDConverterTest, reduces_depth_and_order_of_channels) {
  Prepare(ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB8);
  const Picture source(4, 3, ZYN_PIXEL_BGR8), output(4, 3, ZYN_PIXEL_RGB8);
  source.Byte(9, 2) = 1;
  source.Byte(10, 2) = 2;
  source.Byte(11, 2) = 3;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_EQ(output.Byte(9, 2), 3);
  EXPECT_EQ(output.Byte(10, 2), 2);
  EXPECT_EQ(output.Byte(11, 2), 1);

  const Picture deep(4, 3, ZYN_PIXEL_MONO12), flat(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(deep), 0u);
  ASSERT_EQ(converter.Init(deep, flat), 0u);
  deep.SetWord(3, 2, 0xABC);
  EXPECT_EQ(converter.ProcessImage(deep, flat, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_EQ(flat.Byte(3, 2), 0xAB);
}

TEST_F(QTDConverterTest, refuses_images_that_it_is_not_prepared_for_and_keeps_its_state) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  const Picture wideSource(5, 3, ZYN_PIXEL_MONO8), highOutput(4, 4, ZYN_PIXEL_RGB8);
  const Picture deepSource(4, 3, ZYN_PIXEL_MONO10), swappedOutput(4, 3, ZYN_PIXEL_BGR8);
  ASSERT_TRUE(converter.OpenGate());
  EXPECT_EQ(converter.ProcessImage(nullptr, output, nullptr), kBadArgument);
  EXPECT_EQ(converter.ProcessImage(source, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(converter.ProcessImage(wideSource, output, nullptr), kBadArgument);
  EXPECT_EQ(converter.ProcessImage(source, highOutput, nullptr), kBadArgument);
  EXPECT_EQ(converter.ProcessImage(deepSource, output, nullptr), kBadArgument);
  EXPECT_EQ(converter.ProcessImage(source, swappedOutput, nullptr), kBadArgument);
  EXPECT_EQ(converter.GetState(), 2u);
  EXPECT_FALSE(converter.Parameters().Has("@src"));
}

TEST_F(QTDConverterTest, keeps_the_last_result_over_a_refused_image_and_drops_it_with_the_next) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.ProcessImage(nullptr, output, nullptr), kBadArgument);
  EXPECT_EQ(converter.Out(), static_cast<ZynImage*>(output));
  Insert("image.output", "host")->runCode = 5;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.Out(), nullptr);
}

TEST_F(QTDConverterTest, takes_the_code_of_the_camera_where_the_chain_changes_it) {
  chain.Parameters().Set("image.downscale", "1");
  Prepare(ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO12), output(4, 3, ZYN_PIXEL_MONO8);
  source.SetWord(1, 1, 0x7F0);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_EQ(output.Byte(1, 1), 0x7F);
}

TEST_F(QTDConverterTest, fails_when_the_parent_or_the_chain_is_missing) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Publish(nullptr);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
  Publish(&chain);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  converter.Parameters().Set("parent", "0");
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterTest, is_not_ready_in_state_0_whatever_else_stands) {
  struct Unready : QTDConverter {
    using QTDConverter::QTDConverter;
    void Forget(bool stateToo) {
      ready = false;
      if (stateToo) state = kIdle;
    }
  } unready(&display, false);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  ASSERT_EQ(unready.Init(source, output), 0u);
  unready.Forget(false);
  EXPECT_EQ(unready.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(unready.GetState(), 32u);
  unready.Forget(true);
  EXPECT_EQ(unready.ProcessImage(source, output, nullptr), kNotReady);
  EXPECT_EQ(unready.GetState(), 0u);
}

TEST_F(QTDConverterTest, walks_the_chain_up_to_the_output_stage) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8), replaced(4, 3, ZYN_PIXEL_MONO8);
  replaced.Byte(2, 1) = 77;
  FakeStage* const before = Insert("image.output", "before");
  Insert(nullptr, "image.display");
  before->out = replaced;
  int data = 0;
  EXPECT_EQ(converter.ProcessImage(source, output, &data), 0u);
  EXPECT_EQ(journal, (Journal{"before.run"}));
  EXPECT_EQ(before->seenSource, static_cast<ZynImage*>(source));  // the disabled first stage hands it on
  EXPECT_EQ(before->seenOutput, nullptr);
  EXPECT_EQ(before->seenData, &data);
  EXPECT_EQ(output.Byte(2, 1), 77);
}

TEST_F(QTDConverterTest, writes_the_pointers_of_its_arguments) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  int data = 0;
  ASSERT_EQ(converter.ProcessImage(source, output, &data), 0u);
  EXPECT_EQ(converter.Parameters().GetPointer("@src"), static_cast<ZynImage*>(source));
  EXPECT_EQ(converter.Parameters().GetPointer("@out"), static_cast<ZynImage*>(output));
  EXPECT_EQ(converter.Parameters().GetPointer("@data"), &data);
}

TEST_F(QTDConverterTest, fails_with_a_failing_stage) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  FakeStage* const stage = Insert("image.output", "host");
  Insert("image.output", "later");
  stage->runCode = 0x80FF0003;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_EQ(journal, (Journal{"host.run"}));
}

TEST_F(QTDConverterTest, fails_with_a_stage_that_throws) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [] { throw 1; };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterTest, fails_with_a_parameter_that_is_no_number) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  converter.Parameters().Set("opengl", "abc");
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterTest, fails_when_a_stage_takes_stages_out_of_the_chain) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [this] { chain.RemoveProcessor("image.unpacked"); };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterTest, fails_for_a_source_without_pixels) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  ZynImage source{};
  QTD::ImageCreateHeader(&source, 4, 3, ZYN_PIXEL_MONO8);
  const Picture output(4, 3, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.ProcessImage(&source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterTest, tells_a_failed_writing_by_its_state_alone) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  output->imageSize = 11;  // one byte short
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 16u);
  EXPECT_EQ(converter.Out(), nullptr);
  ZynImage bare{};
  QTD::ImageCreateHeader(&bare, 4, 3, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.ProcessImage(source, &bare, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 16u);
}

TEST_F(QTDConverterTest, never_writes_outside_a_lying_output) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8);
  for (const uint32_t pitch : {0u, 1u, 11u, 13u, 24u, 0xFFFFFFFFu}) {
    const Picture output(4, 3, ZYN_PIXEL_RGB8);  // 36 bytes; the sanitizer watches their end
    output->linePitch = pitch;
    EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
    EXPECT_TRUE(converter.GetState() == 8u || converter.GetState() == 16u) << pitch;
  }
}

TEST_F(QTDConverterTest, goes_through_the_writers_conversion_from_mono_to_bgr) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_BGR8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_BGR8), expected(4, 3, ZYN_PIXEL_BGR8);
  FillMono8(source);
  // The combination is not useful; whatever an image stage makes of it is the result.
  CPUIPImage stage(nullptr);
  stage.SetParameterBool("external", 1);
  ASSERT_EQ(stage.Init(source, output), 0u);
  const bool works = stage.ProcessImage(source, expected, nullptr) == 0;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), works ? 8u : 16u);
  EXPECT_EQ(std::memcmp(output->imageData, expected->imageData, expected->imageSize), 0);
}

TEST_F(QTDConverterTest, puts_line_0_at_the_top) {
  const Picture source(4, -3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(source->origin, 1u);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  ASSERT_EQ(converter.Init(source, output), 0u);
  FillMono8(source);
  for (const uint32_t origin : {1u, 0u}) {
    source->origin = origin;
    output->origin = 1;
    ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
    EXPECT_EQ(converter.GetState(), 8u);
    EXPECT_EQ(output->origin, 0u);
    for (uint32_t y = 0; y < 3; ++y) {
      for (uint32_t x = 0; x < 4; ++x) EXPECT_EQ(output.Byte(x, y), source.Byte(x, origin ? 2 - y : y));
    }
  }
}

TEST_F(QTDConverterTest, leaves_the_surface_of_a_processor_chain_alone) {
  FakeSurface surface(&journal);
  display.Publish("surface", static_cast<QTDSurface*>(&surface));
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_TRUE(journal.empty());
}

TEST_F(QTDConverterTest, writes_its_trace_line) {
  TraceCapture trace;
  converter.ProcessImage(nullptr, nullptr, nullptr);
  EXPECT_EQ(trace.lines, (std::vector<std::string>{"QTDConverter::ProcessImage()"}));
}

TEST_F(QTDConverterTest, excludes_the_chains_own_runs_while_it_walks) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8), other(4, 3, ZYN_PIXEL_MONO8);
  std::future<uint32_t> run;
  bool first = true;
  Insert("image.output", "host")->onRun = [&] {
    if (!first) return;
    first = false;
    run = std::async(std::launch::async, [&] { return chain.ProcessImage(other, nullptr, nullptr); });
    EXPECT_EQ(run.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(run.get(), 0u);
}

// A chain of OpenGL stages, as a converter meets it.
namespace {

struct OpenGLConversion : QTDConverterTest {
  FakeSurface surface{&journal};
  QTDConverter onCard{&display, true};
  Picture source{4, 3, ZYN_PIXEL_MONO8}, output{4, 3, ZYN_PIXEL_MONO8}, result{4, 3, ZYN_PIXEL_MONO8};
  FakeStage* stage = nullptr;

  OpenGLConversion() {
    display.Publish("surface", static_cast<QTDSurface*>(&surface));
    stage = Insert(nullptr, "image.output");
    stage->sourceInfo = stage->outputInfo = stage->out = result;
    Publish(&chain);
    EXPECT_EQ(onCard.Init(source, output), 0u);
  }
};

}  // namespace

TEST_F(OpenGLConversion, reads_the_picture_back_between_begin_and_end) {
  stage->SetParameterBool("readGPU", 0);
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(onCard.GetState(), 8u);
  EXPECT_EQ(journal, (Journal{"begin", "image.output.run", "image.output.readGPU", "end"}));
}

TEST_F(OpenGLConversion, leaves_reading_to_a_stage_that_does_it_itself) {
  stage->SetParameterBool("readGPU", 1);
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"begin", "image.output.run", "end"}));
}

TEST_F(OpenGLConversion, fails_when_the_picture_cannot_be_read_back) {
  stage->SetParameterBool("readGPU", 0);
  stage->commandCode = 0x80FF000A;
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(onCard.GetState(), 32u);
  EXPECT_EQ(journal, (Journal{"begin", "image.output.run", "image.output.readGPU", "end"}));
}

TEST_F(OpenGLConversion, ends_its_use_of_the_surface_after_a_failure) {
  stage->runCode = 1;
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(onCard.GetState(), 32u);
  EXPECT_EQ(journal, (Journal{"begin", "image.output.run", "end"}));
  journal.clear();
  stage->runCode = 0;
  stage->SetParameterBool("readGPU", 1);
  output->imageSize = 1;
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(onCard.GetState(), 16u);
  EXPECT_EQ(journal, (Journal{"begin", "image.output.run", "end"}));
}
