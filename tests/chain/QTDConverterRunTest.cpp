// The run of a converter.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "chain/ConverterFixture.h"
#include "chain/TraceCapture.h"

using namespace chain_test;
using QTDConverterRun = ConverterFixture;

TEST_F(QTDConverterRun, writes_the_picture_in_the_wanted_format) {
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

TEST_F(QTDConverterRun, reduces_depth_and_order_of_channels) {
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

TEST_F(QTDConverterRun, refuses_images_that_it_is_not_prepared_for_and_keeps_its_state) {
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

TEST_F(QTDConverterRun, keeps_the_last_result_over_a_refused_image_and_drops_it_with_the_next) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.ProcessImage(nullptr, output, nullptr), kBadArgument);
  EXPECT_EQ(converter.Out(), static_cast<ZynImage*>(output));
  Insert("image.output", "host")->runCode = 5;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.Out(), nullptr);
}

TEST_F(QTDConverterRun, takes_the_code_of_the_camera_where_the_chain_changes_it) {
  chain.Parameters().Set("image.downscale", "1");
  Prepare(ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO12), output(4, 3, ZYN_PIXEL_MONO8);
  source.SetWord(1, 1, 0x7F0);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_EQ(output.Byte(1, 1), 0x7F);
}

TEST_F(QTDConverterRun, fails_when_the_parent_or_the_chain_is_missing) {
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

TEST_F(QTDConverterRun, is_not_ready_in_state_0_whatever_else_stands) {
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

TEST_F(QTDConverterRun, walks_the_chain_up_to_the_output_stage) {
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

TEST_F(QTDConverterRun, writes_the_pointers_of_its_arguments) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  int data = 0;
  ASSERT_EQ(converter.ProcessImage(source, output, &data), 0u);
  EXPECT_EQ(converter.Parameters().GetPointer("@src"), static_cast<ZynImage*>(source));
  EXPECT_EQ(converter.Parameters().GetPointer("@out"), static_cast<ZynImage*>(output));
  EXPECT_EQ(converter.Parameters().GetPointer("@data"), &data);
}

TEST_F(QTDConverterRun, fails_with_a_failing_stage) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  FakeStage* const stage = Insert("image.output", "host");
  Insert("image.output", "later");
  stage->runCode = 0x80FF0003;
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_EQ(journal, (Journal{"host.run"}));
}

TEST_F(QTDConverterRun, fails_with_a_stage_that_throws) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [] { throw 1; };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterRun, fails_with_a_parameter_that_is_no_number) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  converter.Parameters().Set("opengl", "abc");
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterRun, fails_when_a_stage_takes_stages_out_of_the_chain) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [this] { chain.RemoveProcessor("image.unpacked"); };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterRun, fails_for_a_source_without_pixels) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  ZynImage source{};
  QTD::ImageCreateHeader(&source, 4, 3, ZYN_PIXEL_MONO8);
  const Picture output(4, 3, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.ProcessImage(&source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterRun, tells_a_failed_writing_by_its_state_alone) {
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

// Lines of 15 bytes of pixels, in a buffer of 48: three of them lie in it with a pitch of 15 or 16. A smaller
// pitch lets them run into each other, with a larger one the last of them ends outside.
TEST_F(QTDConverterRun, writes_only_where_the_outputs_lines_lie_within_its_buffer) {
  const Picture source(5, 3, ZYN_PIXEL_MONO8), prepared(5, 3, ZYN_PIXEL_RGB8);
  FillMono8(source);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  ASSERT_EQ(converter.Init(source, prepared), 0u);
  struct Row {
    uint32_t pitch;
    bool fits;
  };
  for (const Row& row : {Row{0, false}, Row{1, false}, Row{14, false}, Row{15, true}, Row{16, true},
                         Row{17, false}, Row{24, false}, Row{0x80000000, false}, Row{0xFFFFFFFF, false}}) {
    SCOPED_TRACE(row.pitch);
    const Picture output(5, 3, ZYN_PIXEL_RGB8);  // the sanitizer watches its end
    ASSERT_EQ(output->imageSize, 48u);
    std::memset(output->imageData, 0xA5, output->imageSize);
    output->linePitch = row.pitch;
    EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
    EXPECT_EQ(converter.GetState(), row.fits ? 8u : 16u);
    std::vector<uint8_t> expected(48, 0xA5);
    for (uint32_t y = 0; row.fits && y < 3; ++y) {
      for (uint32_t i = 0; i < 15; ++i) expected[y * row.pitch + i] = source.Byte(i / 3, y);
    }
    EXPECT_EQ(std::vector<uint8_t>(output->imageData, output->imageData + 48), expected);
  }
}

// Grey in three channels is the same in both orders, and is not swapped behind that.
TEST_F(QTDConverterRun, goes_through_the_writers_conversion_from_mono_to_bgr) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_BGR8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_BGR8);
  FillMono8(source);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  for (uint32_t y = 0; y < 3; ++y) {
    for (uint32_t i = 0; i < 12; ++i) EXPECT_EQ(output.Byte(i, y), 16 * y + i / 3 + 1) << i << "," << y;
  }
}

// A byte is no 16-bit sample, and no rule scales it up to one.
TEST_F(QTDConverterRun, refuses_to_write_bytes_into_a_deep_output) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB16);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB16);
  FillMono8(source);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 16u);
  EXPECT_EQ(converter.Out(), nullptr);
}

TEST_F(QTDConverterRun, puts_line_0_at_the_top) {
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

TEST_F(QTDConverterRun, leaves_the_surface_of_a_processor_chain_alone) {
  FakeSurface surface(&journal);
  display.Publish(&surface);
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_TRUE(journal.empty());
}

TEST_F(QTDConverterRun, writes_its_trace_line) {
  TraceCapture trace;
  converter.ProcessImage(nullptr, nullptr, nullptr);
  EXPECT_EQ(trace.lines, (std::vector<std::string>{"QTDConverter::ProcessImage()"}));
}

TEST_F(QTDConverterRun, excludes_the_chains_own_runs_while_it_walks) {
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

struct OpenGLConversion : ConverterFixture {
  FakeSurface surface{&journal};
  QTDConverter onCard{&display, true};
  Picture source{4, 3, ZYN_PIXEL_MONO8}, output{4, 3, ZYN_PIXEL_MONO8}, result{4, 3, ZYN_PIXEL_MONO8};
  FakeStage* stage = nullptr;

  OpenGLConversion() {
    display.Publish(&surface);
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
