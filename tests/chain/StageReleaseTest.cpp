// In which surroundings the stages of a chain on the card end.
#include <gtest/gtest.h>

#include <thread>

#include "ChainFakes.h"
#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"

namespace {

using chain_test::FakeDisplay;
using chain_test::FakeStage;
using chain_test::FakeSurface;
using chain_test::Journal;
using chain_test::Picture;

// Longer than what the others write into.
class StageRelease : public testing::Test {
 protected:
  StageRelease() { display.Publish(&surface); }
  FakeStage* Add(QTDProcessor& chain, const char* name) {
    auto* const stage = new FakeStage(name, &journal);
    EXPECT_EQ(chain.AddProcessor(name, stage), 0u);
    return stage;
  }

  Journal journal;
  FakeSurface surface{&journal};
  FakeDisplay display;
  const Journal between{"begin", "a.release", "a.delete", "end"};
};

TEST_F(StageRelease, of_a_removed_stage_goes_between_begin_and_end) {
  QTDProcessor chain(&display, true);
  Add(chain, "a");
  ASSERT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_EQ(journal, between);
}

TEST_F(StageRelease, of_all_stages_is_one_pass) {
  QTDProcessor chain(&display, true);
  Add(chain, "a");
  Add(chain, "b");
  chain.Release();
  EXPECT_EQ(journal, (Journal{"begin", "a.release", "a.delete", "b.release", "b.delete", "end"}));
  journal.clear();
  chain.Release();
  EXPECT_TRUE(journal.empty());
}

TEST_F(StageRelease, with_the_chain_goes_between_begin_and_end) {
  {
    QTDProcessor chain(&display, true);
    Add(chain, "a");
  }
  EXPECT_EQ(journal, between);
}

TEST_F(StageRelease, after_the_run_that_removed_the_stage_goes_between_begin_and_end) {
  QTDProcessor chain(&display, true);
  Add(chain, "a")->onRun = [&] { chain.RemoveProcessor("a"); };
  const Picture image(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_NE(chain.ProcessImage(image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"begin", "a.run", "end", "begin", "a.release", "a.delete", "end"}));
}

TEST_F(StageRelease, on_the_processor_needs_no_surface) {
  QTDProcessor chain(&display, false);
  Add(chain, "a");
  ASSERT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
}

// The context is not to be had there.
TEST_F(StageRelease, off_the_gui_thread_has_no_pass) {
  QTDProcessor chain(&display, true);
  Add(chain, "a");
  std::thread([&] { chain.RemoveProcessor("a"); }).join();
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
}

TEST_F(StageRelease, of_a_chain_that_outlives_its_display_goes_without) {
  auto owner = std::make_unique<FakeDisplay>();
  owner->Publish(&surface);
  QTDProcessor chain(owner.get(), true);
  Add(chain, "a");
  owner.reset();
  chain.Release();
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
}

}  // namespace
