// When overlays count as being in place.
#include "QTD/window/ViewTracker.h"

#include <gtest/gtest.h>

namespace {

using QTD::ViewState;
using QTD::ViewTracker;

ViewState At(double x) {
  ViewState state;
  state.picture.x = x;
  return state;
}

}  // namespace

TEST(ViewTracker, knows_no_view_at_first) {
  ViewTracker tracker;
  EXPECT_FALSE(tracker.IsCurrent(ViewState()));
}

TEST(ViewTracker, knows_the_view_of_a_pass_that_ran_alone) {
  ViewTracker tracker;
  tracker.BeginPass();
  EXPECT_FALSE(tracker.IsCurrent(At(1)));
  tracker.EndPass(At(1));
  EXPECT_TRUE(tracker.IsCurrent(At(1)));
  EXPECT_FALSE(tracker.IsCurrent(At(2)));
}

TEST(ViewTracker, trusts_no_passes_that_overlapped) {
  ViewTracker tracker;
  tracker.BeginPass();
  tracker.BeginPass();
  tracker.EndPass(At(1));
  tracker.EndPass(At(2));
  EXPECT_FALSE(tracker.IsCurrent(At(1)));
  EXPECT_FALSE(tracker.IsCurrent(At(2)));
  tracker.BeginPass();
  tracker.EndPass(At(2));
  EXPECT_TRUE(tracker.IsCurrent(At(2)));
}

TEST(ViewTracker, storing_an_object_alone_leaves_the_others_in_place) {
  ViewTracker tracker;
  tracker.BeginPass();
  tracker.EndPass(At(1));
  tracker.BeginStore();
  tracker.EndStore();
  EXPECT_TRUE(tracker.IsCurrent(At(1)));
  tracker.BeginStore();
  tracker.BeginPass();
  tracker.EndPass(At(2));
  tracker.EndStore();
  EXPECT_FALSE(tracker.IsCurrent(At(2)));
}

TEST(ViewTracker, every_part_of_the_view_counts) {
  const ViewState base;
  EXPECT_TRUE(base == ViewState());
  ViewState other;
  const auto differs = [&] {
    const bool result = !(other == base);
    other = ViewState();
    return result;
  };
  other.picture.x = 1;
  EXPECT_TRUE(differs());
  other.picture.y = 1;
  EXPECT_TRUE(differs());
  other.picture.width = 1;
  EXPECT_TRUE(differs());
  other.picture.height = 1;
  EXPECT_TRUE(differs());
  other.scale = 1;
  EXPECT_TRUE(differs());
  other.position.first = 1;
  EXPECT_TRUE(differs());
  other.range.second = 1;
  EXPECT_TRUE(differs());
  other.page.first = 1;
  EXPECT_TRUE(differs());
  other.hasImage = true;
  EXPECT_TRUE(differs());
}
