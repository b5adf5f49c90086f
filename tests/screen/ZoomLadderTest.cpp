#include "QTD/screen/ZoomLadder.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

using QTD::NextZoomPercent;

namespace {

std::vector<int> Walk(int from, bool in, int steps) {
  std::vector<int> reached;
  for (int i = 0; i < steps; ++i) reached.push_back(from = NextZoomPercent(from, in));
  return reached;
}

}  // namespace

TEST(ZoomLadder, climbs_entry_by_entry_and_then_by_hundreds) {
  EXPECT_EQ(Walk(1, true, 18), (std::vector<int>{5, 10, 15, 20, 30, 40, 50, 75, 100, 125, 150, 200, 250, 300,
                                                 400, 500, 600, 700}));
}

TEST(ZoomLadder, descends_by_hundreds_and_then_entry_by_entry) {
  EXPECT_EQ(Walk(700, false, 18), (std::vector<int>{600, 500, 400, 300, 250, 200, 150, 125, 100, 75, 50, 40,
                                                    30, 20, 15, 10, 5, 5}));
}

TEST(ZoomLadder, climbs_from_between_two_entries_to_the_next) {
  EXPECT_EQ(NextZoomPercent(3, true), 5);
  EXPECT_EQ(NextZoomPercent(0, true), 5);
  EXPECT_EQ(NextZoomPercent(7, true), 10);
  EXPECT_EQ(NextZoomPercent(130, true), 150);
  EXPECT_EQ(NextZoomPercent(299, true), 300);
  EXPECT_EQ(NextZoomPercent(301, true), 400);
  EXPECT_EQ(NextZoomPercent(349, true), 400);
  EXPECT_EQ(NextZoomPercent(350, true), 500);
}

TEST(ZoomLadder, falls_two_places_from_between_two_entries) {
  EXPECT_EQ(NextZoomPercent(130, false), 100);
  EXPECT_EQ(NextZoomPercent(12, false), 5);
  EXPECT_EQ(NextZoomPercent(299, false), 200);
  EXPECT_EQ(NextZoomPercent(301, false), 200);
  EXPECT_EQ(NextZoomPercent(349, false), 200);
  EXPECT_EQ(NextZoomPercent(350, false), 300);
}

TEST(ZoomLadder, stays_below_its_first_entry_on_the_way_out) {
  EXPECT_EQ(NextZoomPercent(5, false), 5);
  EXPECT_EQ(NextZoomPercent(3, false), 3);
  EXPECT_EQ(NextZoomPercent(0, false), 0);
  EXPECT_EQ(NextZoomPercent(9, false), 5);
}

TEST(ZoomLadder, stands_the_ends_of_the_number_range) {
  EXPECT_GT(NextZoomPercent(INT_MAX, true), 2000000000);
  EXPECT_GT(NextZoomPercent(INT_MAX, false), 2000000000);
  EXPECT_EQ(NextZoomPercent(INT_MIN, true), 5);
  EXPECT_EQ(NextZoomPercent(INT_MIN, false), INT_MIN);
}

TEST(HeldScale, holds_in_the_limits) {
  EXPECT_EQ(QTD::HeldScale(0.5, 1, 2), 1);
  EXPECT_EQ(QTD::HeldScale(2.5, 1, 2), 2);
  EXPECT_EQ(QTD::HeldScale(1.5, 1, 2), 1.5);
  EXPECT_EQ(QTD::HeldScale(1.5, 2, 1), 2) << "limits that cross";
  EXPECT_EQ(QTD::HeldScale(3, 2, 1), 1) << "limits that cross";
}
