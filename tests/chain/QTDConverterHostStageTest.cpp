// Conversions while the host prepares, releases or removes stages: inside a stage of its own, or on another
// thread.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "QTD/image/HeldRecords.h"
#include "chain/ConverterFixture.h"

using namespace chain_test;

namespace {

// Of a record that its stage has deleted.
bool IsHeld(const ZynImage* record) {
  return QTD::LeaveToHolders(const_cast<ZynImage*>(record));
}

// Runs some code of the host's when it is asked for its picture or told to read it back.
class AskedStage : public FakeStage {
 public:
  using FakeStage::FakeStage;
  ZynImage* Out() override {
    if (onOut) onOut();
    return FakeStage::Out();
  }
  uint32_t ExecuteCommand(const char* name) override {
    if (onCommand) onCommand();
    return FakeStage::ExecuteCommand(name);
  }
  std::function<void()> onOut, onCommand;
};

struct QTDConverterHostStage : ConverterFixture {
  Picture source{4, 3, ZYN_PIXEL_MONO8}, output{4, 3, ZYN_PIXEL_MONO8};

  // With a first stage that makes a picture of its own.
  void PrepareCopying() {
    ASSERT_EQ(chain.Init(source), 0u);
    Publish(&chain);
    ASSERT_EQ(converter.Init(source, output), 0u);
    Unpacked()->Enable(true);
    FillMono8(source);
  }
  ZynImgProcessor* Unpacked() { return chain.FindProcessor("image.unpacked"); }
  void ExpectSourceInOutput(bool turned = false) {
    for (uint32_t y = 0; y < 3; ++y) {
      for (uint32_t x = 0; x < 4; ++x) EXPECT_EQ(output.Byte(x, y), source.Byte(x, turned ? 2 - y : y));
    }
  }
};

}  // namespace

TEST_F(QTDConverterHostStage, may_prepare_the_stage_anew_whose_picture_it_reads) {
  PrepareCopying();
  FakeStage* const host = Insert("image.output", "host");
  host->onRun = [&] {
    ASSERT_NE(host->seenSource, static_cast<ZynImage*>(source));
    ASSERT_EQ(Unpacked()->Init(source, nullptr), 0u);
    EXPECT_TRUE(IsHeld(host->seenSource));
    EXPECT_EQ(ByteOf(host->seenSource, 3, 2), source.Byte(3, 2));
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  ExpectSourceInOutput();
}

TEST_F(QTDConverterHostStage, may_release_the_stage_whose_picture_it_reads) {
  PrepareCopying();
  FakeStage* const host = Insert("image.output", "host");
  host->onRun = [&] {
    Unpacked()->Release();
    EXPECT_TRUE(IsHeld(host->seenSource));
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  ExpectSourceInOutput();
}

// What the text stage puts out is a copy of a record, with the mark of a bottom-up image, on the same pixels.
TEST_F(QTDConverterHostStage, may_prepare_the_stage_anew_whose_pixels_a_marked_record_shows) {
  source->origin = 1;
  PrepareCopying();
  FakeStage* const host = Insert("image.output", "host");
  host->onRun = [&] {
    const ZynImage* const made = Unpacked()->Out();
    ASSERT_NE(host->seenSource, made);
    ASSERT_EQ(host->seenSource->imageData, made->imageData);
    ASSERT_EQ(Unpacked()->Init(source, nullptr), 0u);
    EXPECT_TRUE(IsHeld(made));
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
  ExpectSourceInOutput(true);
}

TEST_F(QTDConverterHostStage, that_removes_stages_when_it_is_asked_for_its_picture_fails_the_conversion) {
  PrepareCopying();
  auto* const host = new AskedStage("host", &journal);
  ASSERT_EQ(chain.InsertProcessor("image.output", "host", host), 0u);
  host->onOut = [&] { chain.RemoveProcessor("image.unpacked"); };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
}

TEST_F(QTDConverterHostStage, that_removes_itself_when_it_is_asked_for_its_picture_is_freed_behind_the_walk) {
  PrepareCopying();
  auto* const host = new AskedStage("host", &journal);
  ASSERT_EQ(chain.InsertProcessor("image.output", "host", host), 0u);
  Journal inside;
  host->onOut = [&] {
    chain.RemoveProcessor("host");
    inside = journal;
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(inside, (Journal{"host.run"}));
  EXPECT_EQ(journal, (Journal{"host.run", "host.release", "host.delete"}));
}

TEST_F(QTDConverterHostStage, that_removes_itself_while_it_reads_back_fails_the_conversion) {
  FakeSurface surface{&journal};
  display.Publish(&surface);
  auto* const host = new AskedStage("image.output", &journal);
  Picture result(4, 3, ZYN_PIXEL_MONO8);
  host->sourceInfo = host->outputInfo = host->out = result;
  host->SetParameterBool("readGPU", 0);
  ASSERT_EQ(chain.AddProcessor("image.output", host), 0u);
  Publish(&chain);
  QTDConverter onCard(&display, true);
  ASSERT_EQ(onCard.Init(source, output), 0u);
  host->onCommand = [&] { chain.RemoveProcessor("image.output"); };
  EXPECT_EQ(onCard.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(onCard.GetState(), 32u);
  EXPECT_EQ(journal.back(), "image.output.delete");
}

TEST_F(QTDConverterHostStage, is_prepared_and_released_on_another_thread_during_conversions) {
  PrepareCopying();
  for (const char* name : {"image.unpacked", "image.output"}) {
    SCOPED_TRACE(name);
    ZynImgProcessor& stage = *chain.FindProcessor(name);
    std::atomic<bool> stop{false};
    std::atomic<int> rounds{0};
    std::thread host([&] {
      while (!stop) {
        stage.Init(source, nullptr);
        std::this_thread::yield();
        if (++rounds % 3 == 0) stage.Release();
      }
    });
    int prepared = 0, good = 0;
    while (rounds == 0) std::this_thread::yield();
    for (int round = 0; round < 2000 || (good == 0 && round < 200000); ++round) {
      if (converter.Init(source, output) != 0) continue;
      ++prepared;
      if (converter.ProcessImage(source, output, nullptr) == 0) ++good;
    }
    stop = true;
    host.join();
    EXPECT_GT(rounds, 0);
    EXPECT_GT(prepared, 0);
    EXPECT_GT(good, 0);
    ASSERT_EQ(stage.Init(source, nullptr), 0u);
  }
  ASSERT_EQ(converter.Init(source, output), 0u);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  ExpectSourceInOutput();
}
