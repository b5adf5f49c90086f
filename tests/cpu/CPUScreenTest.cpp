#include "cpu/screen/CPUScreen.h"

#include <gtest/gtest.h>

#include "support/NotingSurface.h"
#include "tests/cpu/CPUSurfaceFixture.h"
#include "tests/cpu/DrawingHelpers.h"

namespace {

// Sets the picture's rectangle without the arithmetic of a view.
class PlacedScreen : public CPUScreen {
 public:
  using CPUScreen::CPUScreen;
  void place(double x, double y, double w, double h) {
    pictureX = x;
    pictureY = y;
    pictureWidth = w;
    pictureHeight = h;
  }
};

using CPUScreenOnWindow = CPUSurfaceFixture;

}  // namespace

TEST(CPUScreen, without_a_surface_draws_nothing_and_answers_false) {
  CPUScreen screen(nullptr);
  const RgbPicture picture(4, 4);
  EXPECT_FALSE(screen.draw(&picture.record, nullptr));
  screen.clear(true);
  screen.flush();
}

TEST(CPUScreen, clear_fills_the_surface_in_mid_grey_and_does_not_flush) {
  NotingSurface surface;
  CPUScreen screen(&surface);
  screen.properties.Set("color", "255");
  screen.clear(true);
  ASSERT_EQ(surface.order, "f");
  ExpectWhole(surface.fills[0], 128, 128, 128);
}

TEST(CPUScreen, flush_goes_to_the_surface) {
  NotingSurface surface;
  CPUScreen screen(&surface);
  screen.flush();
  EXPECT_EQ(surface.order, "F");
}

TEST(CPUScreen, draw_without_an_image_paints_the_background_in_the_colour_of_the_list) {
  NotingSurface surface;
  CPUScreen screen(&surface);
  EXPECT_TRUE(screen.draw(nullptr, nullptr));
  ASSERT_EQ(surface.order, "f");
  ExpectWhole(surface.fills[0], 0xC0, 0xC0, 0xC0);
  screen.properties.Set("color", "1056816");  // 0x102030: red 48, green 32, blue 16
  EXPECT_TRUE(screen.draw(nullptr, nullptr));
  ExpectWhole(surface.fills[1], 48, 32, 16);
  screen.properties.Set("color", "4294967295");  // the largest "%u"
  EXPECT_TRUE(screen.draw(nullptr, nullptr));
  ExpectWhole(surface.fills[2], 255, 255, 255);
}

TEST(CPUScreen, draw_survives_a_colour_that_is_no_number) {
  NotingSurface surface;
  CPUScreen screen(&surface);
  for (const char* text : {"red", "99999999999999999999999"}) {
    screen.properties.Set("color", text);
    EXPECT_TRUE(screen.draw(nullptr, nullptr));
    ExpectWhole(surface.fills.back(), 0xC0, 0xC0, 0xC0);
  }
}

TEST(CPUScreen, draw_puts_the_whole_image_into_the_picture_rectangle) {
  NotingSurface surface;
  PlacedScreen screen(&surface);
  const RgbPicture picture(40, 30);
  screen.place(-3.5, 7.25, -80.5, -61.75);  // lengths count without their sign
  EXPECT_TRUE(screen.draw(&picture.record, nullptr));
  EXPECT_EQ(surface.order, "fi");
  EXPECT_EQ(surface.drawn, &picture.record);
  EXPECT_EQ(surface.target.x, -3.5);
  EXPECT_EQ(surface.target.y, 7.25);
  EXPECT_EQ(surface.target.width, 80.5);
  EXPECT_EQ(surface.target.height, 61.75);
  EXPECT_EQ(surface.source.x, 0.0);
  EXPECT_EQ(surface.source.y, 0.0);
  EXPECT_EQ(surface.source.width, 40.0);
  EXPECT_EQ(surface.source.height, 30.0);
}

TEST(CPUScreen, init_and_done_answer_true) {
  NotingSurface surface;
  CPUScreen screen(&surface);
  EXPECT_TRUE(screen.init(nullptr, 100, 50, 1));
  EXPECT_EQ(screen.properties.GetInt("fit"), 1);
  EXPECT_TRUE(screen.done(true));
  EXPECT_TRUE(screen.done(false));
}

TEST_F(CPUScreenOnWindow, shows_the_picture_fitted_on_its_background) {
  CPUScreen screen(&surface);
  const RgbPicture picture(60, 30);
  ASSERT_TRUE(screen.init(nullptr, 60, 30, 1));
  screen.setWindowSize(kSurfaceWidth, kSurfaceHeight);
  screen.setFit(1, false);
  QTD::PROPERTIES pass;
  ASSERT_TRUE(screen.begin(&pass));
  screen.clear(false);
  EXPECT_EQ(at(60, 45), qRgb(128, 128, 128));
  ASSERT_TRUE(screen.draw(&picture.record, &pass));
  // 60x30 in 120x90: twice as large, 15 lines of background above and below. Its 0xC0 of 256 is 0.75 of 255.
  EXPECT_EQ(at(60, 14), qRgb(191, 191, 191));
  EXPECT_EQ(at(60, 75), qRgb(191, 191, 191));
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 120; ++x) {
      ASSERT_EQ(at(x, 15 + y), picture.wrapped().pixel(x / 2, y / 2)) << x << ", " << y;
    }
  }
  screen.end(&pass, true);
}
