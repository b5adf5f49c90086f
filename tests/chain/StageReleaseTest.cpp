// In which surroundings the stages of a chain on the card end.
#include <gtest/gtest.h>

#include <thread>

#include "ChainFakes.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/frame/HostCodeUnderLocks.h"
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

// The display may have another surface by then.
TEST_F(StageRelease, of_a_chain_that_left_its_display_goes_on_its_own_surface_or_none) {
  for (const bool replaced : {false, true}) {
    SCOPED_TRACE(replaced);
    display.Publish(&surface);
    QTDProcessor chain(&display, true);
    Add(chain, "a");
    journal.clear();
    chain.LeaveDisplay();
    FakeSurface other(&journal);
    if (replaced) display.Publish(&other);
    chain.Release();
    EXPECT_EQ(journal, replaced ? (Journal{"a.release", "a.delete"}) : between);
  }
}

TEST_F(StageRelease, of_a_chain_that_left_its_display_tells_nobody) {
  QTDProcessor chain(&display, false);
  Add(chain, "a");
  bool told = false;
  chain.SetStagesLeaving([&] { told = true; });
  chain.LeaveDisplay();
  chain.Release();
  EXPECT_FALSE(told);
}

// What the host asks for from inside a stage, such as the chain's end, has to wait; what it does when the
// stage goes has not.
TEST_F(StageRelease, is_host_code_without_a_lock_and_a_run_is_host_code_under_one) {
  class Leaving : public FakeStage {
   public:
    Leaving(QTDProcessor& ownChain, Journal* writtenTo) : FakeStage("a", writtenTo), chain(ownChain) {
      onRun = [this] {
        inRun = QTD::HostCodeUnderLocks::IsActive();
        chain.RemoveProcessor("a");
      };
    }
    void Release() override {
      EXPECT_TRUE(inRun);
      EXPECT_FALSE(QTD::HostCodeUnderLocks::IsActive());
      FakeStage::Release();
    }

   private:
    QTDProcessor& chain;
    bool inRun = false;
  };
  QTDProcessor chain(&display, false);
  ASSERT_EQ(chain.AddProcessor("a", new Leaving(chain, &journal)), 0u);
  const Picture image(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_NE(chain.ProcessImage(image, nullptr, nullptr), 0u);
  EXPECT_EQ(journal, (Journal{"a.run", "a.release", "a.delete"}));
  EXPECT_FALSE(QTD::HostCodeUnderLocks::IsActive());
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
