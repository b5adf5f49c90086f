// Zoom steps and the zoom rectangle.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/screen/ScreenFixture.h"

namespace {

std::vector<int> Percents(TestScreen& screen, bool in, int steps) {
  std::vector<int> reached;
  for (int i = 0; i < steps; ++i) {
    screen.zoom(in, -1, false);
    reached.push_back(screen.zoomPercent());
  }
  return reached;
}

}  // namespace

TEST(Zoom, steps_along_the_ladder) {
  View view(1000, 1000, 4000, 4000, 3);
  EXPECT_EQ(Percents(view.screen, true, 7), (std::vector<int>{125, 150, 200, 250, 300, 400, 500}));
  EXPECT_EQ(Percents(view.screen, false, 3), (std::vector<int>{400, 300, 250}));
  view.screen.setScale(1);
  EXPECT_EQ(Percents(view.screen, false, 1), (std::vector<int>{75}));
  view.screen.setScale(100.0 / 130);
  EXPECT_EQ(Percents(view.screen, false, 1), (std::vector<int>{100}));
  view.screen.setScale(20);
  EXPECT_EQ(Percents(view.screen, false, 1), (std::vector<int>{5}));
  view.screen.setScale(100.0 / 3);
  EXPECT_EQ(Percents(view.screen, false, 1), (std::vector<int>{3}));
}

TEST(Zoom, below_the_ladder_there_is_no_further_step_out) {
  View view(80, 80, 20000, 20000, 1);  // 0.4 per cent
  const double fitted = view.screen.Scale();
  EXPECT_EQ(fitted, 250.0);
  EXPECT_FALSE(view.screen.zoom(false, -1, true));
  EXPECT_FALSE(view.screen.zoom(false, -1, false));
  EXPECT_EQ(view.screen.Scale(), fitted);
  EXPECT_TRUE(view.screen.zoom(true, -1, false));
  EXPECT_EQ(view.screen.Scale(), 20.0);  // the first step of the ladder, 5 per cent
}

TEST(Zoom, frees_the_fit_and_tells_the_owner_once) {
  View view(1000, 1000, 4000, 4000, 3);
  EXPECT_TRUE(view.screen.zoom(true, 1, false));
  EXPECT_EQ(view.Text("fit"), "0");
  EXPECT_EQ(view.Text("scale"), "0.800000");
  EXPECT_EQ(view.owner.told, (std::vector<std::string>{"view.changed"}));
  EXPECT_EQ(view.owner.lists, 0);
}

TEST(Zoom, multiplies_by_the_coefficient_when_it_does_not_follow_the_ladder) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.properties.Set("zoom.align", "2");
  view.screen.zoom(true, 2, false);
  EXPECT_EQ(view.screen.Scale(), 0.5);
  view.screen.zoom(false, 4, false);
  EXPECT_EQ(view.screen.Scale(), 2.0);
  view.screen.setScale(1);
  view.screen.zoom(false, 0, false);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 1.1) << "the property's coefficient";
  view.screen.setScale(1);
  view.screen.zoom(false, std::nan(""), false);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 1.1);
  view.screen.setScale(1);
  view.screen.zoom(true, 1e-9, false);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 0.1) << "a coefficient near zero makes the factor 0: the least scale";
  view.screen.zoom(false, std::numeric_limits<double>::infinity(), false);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 4000.0 / 60);
}

TEST(Zoom, probe_changes_nothing_and_knows_the_limits) {
  View view(1000, 1000, 4000, 4000, 3);
  EXPECT_TRUE(view.screen.zoom(true, -1, true));
  EXPECT_TRUE(view.screen.zoom(false, -1, true));
  EXPECT_EQ(view.screen.Scale(), 1.0);
  EXPECT_EQ(view.Text("fit"), "3");
  EXPECT_EQ(view.owner.Count(), 0u);

  view.screen.properties.Set("zoom.align", "0");
  view.screen.setScale(0);
  EXPECT_FALSE(view.screen.zoom(true, 2, true));
  EXPECT_TRUE(view.screen.zoom(true, 2, false)) << "only the probe knows of the limits";
  EXPECT_EQ(view.screen.Scale(), 0.1);
  view.screen.setScale(1e9);
  EXPECT_FALSE(view.screen.zoom(true, 1, true));
}

TEST(Zoom, does_nothing_before_it_is_ready_or_at_no_scale) {
  View view;
  EXPECT_FALSE(view.screen.zoom(true, -1, false));
  EXPECT_EQ(view.Text("fit"), "3");
  EXPECT_EQ(view.screen.zoomPercent(), 0);
  view.screen.zoomToRect({0, 0, 10, 10}, true);
  EXPECT_EQ(view.Text("fit"), "3");

  view.screen.setWindowSize(100, 100);
  view.screen.properties.Set("scale", "0.00000001");
  EXPECT_FALSE(view.screen.zoom(true, -1, false));
  EXPECT_EQ(view.Text("fit"), "3");
}

TEST(Zoom, tells_the_percentage) {
  View view(1000, 1000, 4000, 4000, 0);
  view.screen.setScale(3);
  EXPECT_EQ(view.screen.zoomPercent(), 33);
  view.screen.setScale(1.5);
  EXPECT_EQ(view.screen.zoomPercent(), 67) << "66.67";
  view.screen.scale = 0;
  EXPECT_EQ(view.screen.zoomPercent(), 0);
}

TEST(Zoom, into_a_rectangle_sets_scale_by_its_width_and_centre_by_its_middle) {
  View view(1000, 1000, 4000, 4000, 3);
  ASSERT_EQ(view.screen.pictureX, -1500.0);
  view.screen.zoomToRect({300, 100, 501, 7}, true);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 0.501);
  EXPECT_DOUBLE_EQ(view.screen.centerFractionX, (300 + 250 + 1500) / 4000.0);
  EXPECT_DOUBLE_EQ(view.screen.centerFractionY, (100 + 3 + 1500) / 4000.0);
  EXPECT_EQ(view.Text("fit"), "0");
  EXPECT_EQ(view.owner.Count(), 1u);
  EXPECT_TRUE(view.screen.notify);
}

TEST(Zoom, out_of_a_rectangle_enlarges_the_scale) {
  View view(1000, 1000, 8000, 8000, 3);
  view.screen.zoomToRect({250, 250, 500, 500}, false);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 2.0);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(Zoom, keeps_the_notification_switch_as_it_was) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.notify = false;
  view.screen.zoomToRect({300, 100, 501, 7}, true);
  EXPECT_FALSE(view.screen.notify);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Zoom, stands_absurd_rectangles) {
  View view(1000, 1000, 4000, 4000, 3);
  const QTD::RectI rects[] = {{0, 0, 0, 0},
                              {0, 0, -5, 5},
                              {INT_MAX, INT_MAX, INT_MAX, INT_MAX},
                              {INT_MIN, INT_MIN, INT_MIN, INT_MIN}};
  for (const QTD::RectI& rect : rects) {
    for (bool in : {false, true}) {
      view.screen.zoomToRect(rect, in);
      EXPECT_GE(view.screen.Scale(), 0.1);
      EXPECT_LE(view.screen.Scale(), 4000.0 / 60);
      EXPECT_GE(view.screen.centerFractionX, 0.0);
      EXPECT_LE(view.screen.centerFractionX, 1.0);
    }
  }
}
