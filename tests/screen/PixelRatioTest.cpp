// Windows with several device pixels to one window pixel.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/screen/ScreenFixture.h"

TEST(PixelRatio, shows_one_to_one_on_device_pixels) {
  View view(1000, 1000, 4000, 2000, 3);
  view.screen.setPixelRatio(2);
  EXPECT_EQ(view.screen.Scale(), 2.0);
  EXPECT_EQ(view.screen.pictureWidth, 2000.0) << "window pixels, of two device pixels each";
  EXPECT_EQ(view.screen.zoomPercent(), 100);
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setScale(5);
  view.screen.setFit(3, true);
  EXPECT_EQ(view.screen.Scale(), 2.0);
  view.screen.setPixelRatio(1.25);
  EXPECT_EQ(view.screen.Scale(), 1.25);
  view.screen.setPixelRatio(1);
  EXPECT_EQ(view.screen.Scale(), 1.0);
}

TEST(PixelRatio, counts_per_cent_in_device_pixels) {
  View view(1000, 1000, 4000, 4000, 0);
  view.screen.setPixelRatio(2);
  view.screen.setScale(1);
  EXPECT_EQ(view.screen.zoomPercent(), 200);
  view.screen.setScale(3);
  EXPECT_EQ(view.screen.zoomPercent(), 67);
  view.screen.scale = 0;
  EXPECT_EQ(view.screen.zoomPercent(), 0);
}

TEST(PixelRatio, steps_along_the_same_ladder) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setPixelRatio(2);
  std::vector<int> reached;
  std::vector<double> scales;
  for (int i = 0; i < 7; ++i) {
    EXPECT_TRUE(view.screen.zoom(true, -1, false));
    reached.push_back(view.screen.zoomPercent());
    scales.push_back(view.screen.Scale());
  }
  EXPECT_EQ(reached, (std::vector<int>{125, 150, 200, 250, 300, 400, 500}));
  EXPECT_DOUBLE_EQ(scales[0], 1.6);
  EXPECT_DOUBLE_EQ(scales[2], 1.0);
  EXPECT_DOUBLE_EQ(scales[6], 0.4);
  view.screen.setFit(3, false);
  EXPECT_TRUE(view.screen.zoom(false, -1, false));
  EXPECT_EQ(view.screen.zoomPercent(), 75);
}

TEST(PixelRatio, leaves_fits_free_zooms_and_coefficients_in_window_pixels) {
  View fit(500, 1000, 1000, 500, 1);
  fit.screen.setPixelRatio(2);
  EXPECT_EQ(fit.screen.Scale(), 2.0);
  EXPECT_EQ(fit.screen.pictureWidth, 500.0);
  View fill(500, 1000, 1000, 500, 2);
  fill.screen.setPixelRatio(2);
  EXPECT_EQ(fill.screen.Scale(), 0.5);
  EXPECT_EQ(fill.owner.Count(), 0u) << "nothing has changed";
  View free(1000, 1000, 4000, 4000, 0);
  free.screen.setScale(0.75);
  free.screen.setPixelRatio(2);
  EXPECT_EQ(free.screen.Scale(), 0.75);
  free.screen.properties.Set("zoom.align", "0");
  free.screen.zoom(false, 2, false);
  EXPECT_EQ(free.screen.Scale(), 1.5);
}

TEST(PixelRatio, holds_one_to_one_in_the_limits_of_window_pixels) {
  View view(1000, 1000, 100, 100, 3);
  view.screen.setPixelRatio(2);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 100.0 / 60);
}

TEST(PixelRatio, is_one_to_one_without_limits) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setPixelRatio(2);
  view.screen.properties.Set("screen.min", "0");
  view.screen.setScale(7);
  EXPECT_EQ(view.screen.Scale(), 2.0);
}

TEST(PixelRatio, counts_from_before_the_window_has_a_size) {
  View view;
  view.owner.Count();
  view.screen.setPixelRatio(2);
  EXPECT_EQ(view.owner.Count(), 0u);
  view.screen.setImageSize(4000, 4000);
  view.screen.setWindowSize(1000, 1000);
  EXPECT_EQ(view.screen.Scale(), 2.0);
}

TEST(PixelRatio, ignores_what_no_window_has) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setPixelRatio(2);
  view.owner.Count();
  for (double ratio : {0.0, -0.0, -1.0, -kInfinity, kInfinity, std::nan(""), 1e-300, 1e300, 2.0}) {
    view.screen.setPixelRatio(ratio);
    EXPECT_EQ(view.screen.zoomPercent(), 100) << ratio;
    view.screen.setFit(3, false);
    EXPECT_EQ(view.screen.Scale(), 2.0) << ratio;
  }
  EXPECT_EQ(view.owner.Count(), 0u);
}
