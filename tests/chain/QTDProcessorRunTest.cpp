// The run of one image through the chain's list.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "chain/TraceCapture.h"

using chain_test::FakeDisplay;
using chain_test::FakeStage;
using chain_test::FakeSurface;
using chain_test::Journal;
using chain_test::TraceCapture;

namespace {

constexpr uint32_t kFailed = 0x80FF0001, kBadArgument = 0x80FF0007;

// Reaches what only the chain itself uses.
struct OpenProcessor : QTDProcessor {
  using QTDProcessor::QTDProcessor;
  uint32_t BaseError() const { return lastError; }
  void Stop() { stopFlag = 1; }
};

struct QTDProcessorRun : testing::Test {
  Journal journal;
  FakeDisplay display;
  FakeSurface surface{&journal};
  ZynImage image{};

  QTDProcessorRun() { display.Publish(&surface); }

  FakeStage* Add(QTDProcessor& chain, const char* name) {
    auto* const stage = new FakeStage(name, &journal);
    EXPECT_EQ(chain.AddProcessor(name, stage), 0u);
    return stage;
  }
  static std::string Parameter(QTDProcessor& chain, const char* name) {
    return chain.Parameters().GetString(name, "absent");
  }
};

}  // namespace

TEST_F(QTDProcessorRun, refuses_a_null_image) {
  QTDProcessor chain(&display, false);
  Add(chain, "a");
  EXPECT_EQ(chain.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(chain.LastError(), 7u);
  EXPECT_TRUE(journal.empty());
}

TEST_F(QTDProcessorRun, fails_without_stages) {
  QTDProcessor chain(&display, true);
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(chain.LastError(), 1u);
  EXPECT_TRUE(journal.empty());
  EXPECT_EQ(chain.Timer().Count(), 0);
}

TEST_F(QTDProcessorRun, hands_each_stage_what_the_one_before_produced) {
  QTDProcessor chain(nullptr, false);
  FakeStage* const a = Add(chain, "a");
  FakeStage* const b = Add(chain, "b");
  FakeStage* const c = Add(chain, "c");
  ZynImage fromA{}, output{};
  a->out = &fromA;  // and b produces nothing of its own
  int data = 0;
  EXPECT_EQ(chain.ProcessImage(&image, &output, &data), 0u);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run", "c.run"}));
  EXPECT_EQ(a->seenSource, &image);
  EXPECT_EQ(b->seenSource, &fromA);
  EXPECT_EQ(c->seenSource, &fromA);
  for (const FakeStage* stage : {a, b, c}) {
    EXPECT_EQ(stage->seenOutput, &output);
    EXPECT_EQ(stage->seenData, &data);
  }
  EXPECT_EQ(chain.LastError(), 0u);
}

TEST_F(QTDProcessorRun, gives_an_inserted_stage_the_current_image_in_list_order) {
  QTDProcessor chain(nullptr, false);
  FakeStage* const a = Add(chain, "a");
  FakeStage* const c = Add(chain, "c");
  auto* const b = new FakeStage("b", &journal);
  ASSERT_EQ(chain.InsertProcessor("c", "b", b), 0u);
  ZynImage fromA{}, fromB{};
  a->out = &fromA;
  b->out = &fromB;
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run", "c.run"}));
  EXPECT_EQ(b->seenSource, &fromA);
  EXPECT_EQ(c->seenSource, &fromB);
}

// Where a host puts a stage that works on what the camera sent, between the real ones.
TEST_F(QTDProcessorRun, gives_a_stage_before_image_unpacked_the_current_image) {
  QTDProcessor chain(&display, false);
  const chain_test::Picture source(4, 3, ZYN_PIXEL_MONO8), early(4, 3, ZYN_PIXEL_MONO8),
      late(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  auto* const second = new FakeStage("second", &journal);
  ASSERT_EQ(chain.InsertProcessor("image.unpacked", "second", second), 0u);
  EXPECT_EQ(chain.ProcessImage(source, nullptr, nullptr), 0u);
  EXPECT_EQ(second->seenSource, static_cast<ZynImage*>(source));

  auto* const first = new FakeStage("first", &journal);
  ASSERT_EQ(chain.InsertProcessor("second", "first", first), 0u);
  first->out = early;
  second->out = late;
  late.Byte(1, 2) = 77;
  journal.clear();
  EXPECT_EQ(chain.ProcessImage(source, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"first.run", "second.run"}));
  EXPECT_EQ(first->seenSource, static_cast<ZynImage*>(source));
  EXPECT_EQ(second->seenSource, static_cast<ZynImage*>(early));
  EXPECT_EQ(chain_test::ByteOf(chain.Out(), 1, 2), 77) << "the stages behind go on with its result";
}

TEST_F(QTDProcessorRun, calls_disabled_stages_too) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a")->Enable(false);
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run"}));
}

TEST_F(QTDProcessorRun, ends_an_image_at_the_first_failing_stage_with_code_1) {
  OpenProcessor chain(nullptr, false);
  Add(chain, "a");
  FakeStage* const b = Add(chain, "b");
  Add(chain, "c");
  b->runCode = 0x80FF0009;
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run"}));
  EXPECT_EQ(chain.LastError(), 1u);
  EXPECT_EQ(chain.BaseError(), 0u);
  EXPECT_EQ(Parameter(chain, "time"), "absent");

  // The next image runs the whole list again.
  journal.clear();
  b->runCode = 0;
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run", "c.run"}));
  EXPECT_EQ(chain.LastError(), 0u);
}

TEST_F(QTDProcessorRun, takes_a_result_with_empty_low_bits_for_success) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a")->runCode = 0x80FF0000;
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
}

TEST_F(QTDProcessorRun, turns_an_exception_of_a_stage_into_a_failure) {
  QTDProcessor chain(&display, true);
  Add(chain, "a")->onRun = [] { throw 1; };
  Add(chain, "b");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(chain.LastError(), 1u);
  EXPECT_EQ(journal, (Journal{"begin", "a.run", "end"}));
}

TEST_F(QTDProcessorRun, goes_between_begin_and_end_of_an_opengl_surface) {
  QTDProcessor chain(&display, true);
  FakeStage* const a = Add(chain, "a");
  Add(chain, "b");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"begin", "a.run", "b.run", "end"}));
  journal.clear();
  a->runCode = 1;
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(journal, (Journal{"begin", "a.run", "end"}));
}

TEST_F(QTDProcessorRun, leaves_the_surface_of_a_processor_chain_alone) {
  QTDProcessor chain(&display, false);
  Add(chain, "a");
  EXPECT_EQ(chain.GetSurface(), &surface);
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run"}));
}

TEST_F(QTDProcessorRun, runs_without_a_surface_where_there_is_none) {
  display.Publish(nullptr);
  QTDProcessor chain(&display, true);
  Add(chain, "a");
  EXPECT_EQ(chain.GetSurface(), nullptr);
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  QTDProcessor ownerless(nullptr, true);
  Add(ownerless, "b");
  EXPECT_EQ(ownerless.GetSurface(), nullptr);
  EXPECT_EQ(ownerless.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run"}));
}

TEST_F(QTDProcessorRun, passes_over_exceptions_of_the_surface) {
  surface.throwing = true;
  QTDProcessor chain(&display, true);
  Add(chain, "a");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"begin", "a.run", "end"}));
}

TEST_F(QTDProcessorRun, finds_the_surface_of_a_display_that_a_host_made) {
  struct HostComponent : FakeStage {
    using FakeStage::FakeStage;
  } hosts("host", nullptr);
  hosts.SetParameterString("surface", QTD::ToText(static_cast<const void*>(&surface)).c_str());
  display.component = &hosts;
  QTDProcessor chain(&display, true);
  EXPECT_EQ(chain.GetSurface(), &surface);
}

TEST_F(QTDProcessorRun, ends_early_with_success_when_it_is_stopped) {
  OpenProcessor chain(&display, true);
  Add(chain, "a");
  Add(chain, "b");
  chain.Stop();
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"begin", "end"}));
  EXPECT_EQ(chain.LastError(), 0u);
  EXPECT_EQ(Parameter(chain, "time"), "absent");
}

TEST_F(QTDProcessorRun, stops_between_two_stages) {
  OpenProcessor chain(nullptr, false);
  Add(chain, "a")->onRun = [&chain] { chain.Stop(); };
  Add(chain, "b");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run"}));
  EXPECT_EQ(Parameter(chain, "time"), "absent");
}

TEST_F(QTDProcessorRun, is_complete_when_it_is_stopped_after_the_last_stage) {
  OpenProcessor chain(nullptr, false);
  Add(chain, "a")->onRun = [&chain] { chain.Stop(); };
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_NE(Parameter(chain, "time"), "absent");
}

TEST_F(QTDProcessorRun, goes_on_after_a_release_has_cleared_the_stop) {
  OpenProcessor chain(nullptr, false);
  chain.Stop();
  chain.Release();
  Add(chain, "a");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run"}));
}

TEST_F(QTDProcessorRun, ends_an_image_whose_stage_takes_stages_out_of_the_chain) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a");
  Add(chain, "b")->onRun = [&chain] { EXPECT_EQ(chain.RemoveProcessor("a"), 0u); };
  Add(chain, "c");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(journal, (Journal{"a.run", "b.run", "a.release", "a.delete"}));
  EXPECT_EQ(chain.GetProcessorCount(), 2);
}

TEST_F(QTDProcessorRun, survives_a_stage_that_removes_itself) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a")->onRun = [&chain] { EXPECT_EQ(chain.RemoveProcessor("a"), 0u); };
  Add(chain, "b");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(journal, (Journal{"a.run", "a.release", "a.delete"}));
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
}

TEST_F(QTDProcessorRun, survives_a_stage_that_releases_the_chain) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a")->onRun = [&] {
    chain.Release();
    EXPECT_EQ(journal, (Journal{"a.run"}));  // not freed while it is on the stack
  };
  Add(chain, "b");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(journal, (Journal{"a.run", "a.release", "a.delete", "b.release", "b.delete"}));
}

TEST_F(QTDProcessorRun, writes_the_pointers_of_source_and_output) {
  QTDProcessor chain(nullptr, false);
  Add(chain, "a");
  EXPECT_EQ(Parameter(chain, "@source.image"), "absent");
  ZynImage output{};
  chain.ProcessImage(&image, &output, nullptr);
  EXPECT_EQ(chain.Parameters().GetPointer("@source.image"), &image);
  EXPECT_EQ(chain.Parameters().GetPointer("@output.image"), &output);
  chain.ProcessImage(&image, nullptr, nullptr);
  EXPECT_EQ(Parameter(chain, "@output.image"), "(nil)");
}

TEST_F(QTDProcessorRun, writes_the_average_time_with_two_decimals) {
  QTDProcessor chain(nullptr, false);
  int wait = 30;
  Add(chain, "a")->onRun = [&wait] { std::this_thread::sleep_for(std::chrono::milliseconds(wait)); };
  EXPECT_EQ(Parameter(chain, "time"), "absent");
  chain.ProcessImage(&image, nullptr, nullptr);
  wait = 0;
  chain.ProcessImage(&image, nullptr, nullptr);
  const std::string text = Parameter(chain, "time");
  // Two runs of 30 milliseconds and next to nothing: whole milliseconds, halved.
  const double time = std::stod(text);
  EXPECT_GE(time, 14.5);
  EXPECT_DOUBLE_EQ(time * 2, std::floor(time * 2));
  EXPECT_EQ(text, std::to_string(static_cast<int>(time)) + (time > std::floor(time) ? ".50 ms" : ".00 ms"));
}

TEST_F(QTDProcessorRun, counts_every_run_and_halves_the_count_at_21) {
  QTDProcessor chain(nullptr, false);
  FakeStage* const a = Add(chain, "a");
  for (int run = 1; run <= 20; ++run) chain.ProcessImage(&image, nullptr, nullptr);
  EXPECT_EQ(chain.Timer().Count(), 20);
  chain.ProcessImage(&image, nullptr, nullptr);
  EXPECT_EQ(chain.Timer().Count(), 10);
  a->runCode = 1;  // counted, though never timed
  chain.ProcessImage(&image, nullptr, nullptr);
  EXPECT_EQ(chain.Timer().Count(), 11);
}

TEST_F(QTDProcessorRun, writes_its_trace_lines_in_order) {
  image.imageID = 7;
  ZynImage fromB{};
  fromB.imageID = 18446744073709551615ull;
  TraceCapture trace;
  QTDProcessor chain(nullptr, false);
  Add(chain, "a");
  Add(chain, "b")->out = &fromB;
  chain.ProcessImage(&image, nullptr, nullptr);
  EXPECT_EQ(
      trace.lines,
      (std::vector<std::string>{
          "QTDProcessor::QTDProcessor() -> ENTER", "QTDProcessor::QTDProcessor() <- EXIT",
          "QTDProcessor::ProcessImage() -> ENTER", "QTDProcessor::ProcessImage(): proc: a ",
          "QTDProcessor::ProcessImage(): proc->Out: imageID is 7", "QTDProcessor::ProcessImage(): proc: b ",
          "QTDProcessor::ProcessImage(): proc->Out: imageID is 18446744073709551615",
          "QTDProcessor::ProcessImage() <- EXIT"}));
}

TEST_F(QTDProcessorRun, traces_entry_and_exit_of_refused_images) {
  QTDProcessor chain(nullptr, false);
  TraceCapture trace;
  chain.ProcessImage(nullptr, nullptr, nullptr);
  chain.ProcessImage(&image, nullptr, nullptr);  // no stages
  const std::vector<std::string> once = {"QTDProcessor::ProcessImage() -> ENTER",
                                         "QTDProcessor::ProcessImage() <- EXIT"};
  EXPECT_EQ(trace.lines, (std::vector<std::string>{once[0], once[1], once[0], once[1]}));
}

TEST_F(QTDProcessorRun, a_stage_that_inserts_others_before_itself_runs_once) {
  QTDProcessor chain(&display, false);
  FakeStage* const first = Add(chain, "first");
  int inserted = 0;
  first->onRun = [&] {
    const std::string fresh = "new" + std::to_string(inserted++);
    chain.InsertProcessor("first", fresh.c_str(), new FakeStage(fresh, &journal));
  };
  Add(chain, "second");
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"first.run", "second.run"}));
  EXPECT_EQ(chain.GetProcessorCount(), 3);  // the new one runs from the next image on
}
