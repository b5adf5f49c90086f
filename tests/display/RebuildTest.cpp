// The last image runs through the chain again.
#include <algorithm>

#include "QTD/chain/QTDProcessor.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/HostCodeStage.h"

namespace display_test {

class Rebuild : public DisplayTest {
 protected:
  void SetUp() override { Start(image); }

  void Show(HostImage& shown, uint8_t level, uint64_t id) {
    Fill(shown, level, id);
    const std::size_t before = receiver.Images();
    ASSERT_EQ(display->DisplayVideo(&shown.record), 0u);
    ASSERT_TRUE(WaitForImages(before + 1));
    Settle();  // the check that looks for a further frame
  }
  static void Fill(HostImage& filled, uint8_t level, uint64_t id) {
    std::fill(filled.pixels.begin(), filled.pixels.end(), level);
    filled.record.imageID = id;
  }
  void ExpectShown(uint8_t level, uint64_t id) {
    const ZynImage* const out = display->GetProcessor()->Out();
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->imageID, id);
    EXPECT_TRUE(std::all_of(out->imageData, out->imageData + 64 * 3,
                            [level](uint8_t value) { return value == level; }));
  }
  // Counts the runs of the chain.
  void CountRuns(int* runs) {
    auto* const stage = new HostCodeStage([runs] { return ++*runs, 0u; });
    ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", stage), 0u);
  }

  HostImage image{ZYN_PIXEL_MONO8, 64, 48};
};

TEST_F(Rebuild, sees_the_frame_that_was_shown_last_while_the_next_one_waits) {
  for (uint8_t round = 1; round < 5; ++round) {
    Show(image, round, round);
    Fill(image, 100, 100);
    ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
    display->slotRebuildImage();
    ExpectShown(round, round);
    // The one that waited is shown next, all the same.
    ASSERT_TRUE(WaitFor([&] { return receiver.Images() == std::size_t{2} * round; }));
    ExpectShown(100, 100);
  }
}

TEST_F(Rebuild, sees_the_frame_that_was_shown_last_after_another_one_was_dropped) {
  Show(image, 1, 1);
  Fill(image, 2, 2);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ZynImage noPixels = image.record;
  noPixels.imageData = nullptr;
  ASSERT_EQ(display->DisplayVideo(&noPixels), Composed(7));
  Settle();  // the failure turns the waiting check into 8, and its frame is gone
  ASSERT_EQ(display->LastError(), 8u);
  ASSERT_EQ(receiver.Images(), 1u);
  Fill(image, 3, 3);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  display->slotRebuildImage();
  ExpectShown(1, 1);
  ASSERT_TRUE(WaitForImages(2));
  ExpectShown(3, 3);
}

TEST_F(Rebuild, does_not_believe_a_record_that_was_refused) {
  Show(image, 1, 1);
  int runs = 0;
  CountRuns(&runs);
  ZynImage lying = image.record;
  lying.linePitch = 0x7FFFFFFF;
  ASSERT_EQ(display->DisplayVideo(&lying), 0u);
  ASSERT_TRUE(WaitForImages(2));
  ASSERT_EQ(receiver.LastResult(), "7");
  display->slotRebuildImage();
  EXPECT_EQ(runs, 0);  // its pixels have taken the place of the last good ones
  EXPECT_EQ(display->LastError(), 7u);
  Show(image, 2, 2);
  display->slotRebuildImage();
  EXPECT_EQ(runs, 2);
  ExpectShown(2, 2);
}

TEST_F(Rebuild, one_is_run_for_all_that_are_asked_for_meanwhile) {
  Show(image, 7, 1);
  int runs = 0;
  CountRuns(&runs);
  for (int command = 0; command < 100; ++command)
    EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 1u);
  Settle();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 1u);
  Settle();
  EXPECT_EQ(runs, 2);
}

TEST_F(Rebuild, before_any_image_leaves_the_error_as_it_was) {
  ZynImage noPixels = image.record;
  noPixels.imageData = nullptr;
  ASSERT_EQ(display->DisplayVideo(&noPixels), Composed(7));
  const int64_t requests = display->InputRate().Total();
  EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 1u);
  EXPECT_TRUE(WaitFor([&] { return display->InputRate().Total() == requests + 1; }));
  EXPECT_EQ(display->LastError(), 7u);
  EXPECT_EQ(display->OutputRate().Total(), 0);

  QTDDisplay fresh(&parent, false);  // without a format
  ASSERT_EQ(fresh.DisplayVideo(&noPixels), Composed(7));
  EXPECT_EQ(fresh.RunCommand("cmd.image.rebuild", nullptr), 0u);
  EXPECT_TRUE(WaitFor([&] { return fresh.InputRate().Total() == 1; }));
  EXPECT_EQ(fresh.LastError(), 7u);
}

TEST_F(Rebuild, of_an_image_that_a_stage_fails_stores_the_code) {
  Show(image, 1, 1);
  auto* const stage = new HostCodeStage([] { return 5u; });
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", stage), 0u);
  display->slotRebuildImage();
  EXPECT_EQ(display->LastError(), 1u);
  EXPECT_EQ(display->OutputRate().Total(), 1);
}

}  // namespace display_test
