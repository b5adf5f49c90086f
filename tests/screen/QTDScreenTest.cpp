#include "QTD/screen/QTDScreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/screen/ScreenFixture.h"

namespace {

using Log = std::vector<std::string>;

class LoggingSurface : public QTDSurface {
 public:
  bool begin(QTD::PROPERTIES*) override {
    log.push_back("begin");
    return answer;
  }
  void end(QTD::PROPERTIES*, bool flush) override { log.push_back(flush ? "end+" : "end"); }
  void flush(QTD::PROPERTIES*) override { log.push_back("flush"); }
  void resize(int width, int height) override {
    QTDSurface::resize(width, height);
    log.push_back("resize " + std::to_string(width) + "x" + std::to_string(height));
  }
  Log log;
  bool answer = true;
};

}  // namespace

TEST(QTDScreen, begins_with_the_defaults) {
  View view;
  const std::pair<const char*, const char*> rows[] = {
      {"screen.min", "60"},      {"screen.max", "40000"}, {"scroll.max", "32000"},
      {"scroll.horz", "1"},      {"scroll.vert", "1"},    {"fit", "3"},
      {"scale", "1.000000"},     {"move.by", "0.100000"}, {"zoom.align", "1"},
      {"zoom.coef", "1.100000"}, {"color", "12632256"},   {"scale.min", "absent"},
      {"scale.max", "absent"}};
  TestScreen bare(nullptr);
  for (const auto& [key, value] : rows) EXPECT_EQ(bare.properties.GetString(key, "absent"), value) << key;
  EXPECT_EQ(bare.properties.GetInt("color"), 0xC0C0C0);
  EXPECT_EQ(bare.Center(), QTD::PairD(0.5, 0.5));
  EXPECT_EQ(bare.Scale(), 1.0);
  EXPECT_EQ(bare.dragX, -1);
  EXPECT_TRUE(bare.notify);
  EXPECT_FALSE(bare.isReady());
}

TEST(QTDScreen, fits_the_whole_picture) {
  View view(1000, 1000, 1000, 500, 1);
  EXPECT_EQ(view.screen.Scale(), 1.0);
  EXPECT_EQ(view.screen.pictureX, 0.0);
  EXPECT_EQ(view.screen.pictureY, 250.0);
}

TEST(QTDScreen, fills_the_window) {
  View view(1000, 1000, 1000, 500, 2);
  EXPECT_EQ(view.screen.Scale(), 0.5);
  EXPECT_EQ(view.screen.pictureWidth, 2000.0);
  EXPECT_EQ(view.screen.pictureHeight, 1000.0);
  EXPECT_EQ(view.screen.pictureX, -500.0);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(QTDScreen, fits_with_the_larger_ratio_and_fills_with_the_smaller) {
  View fit(500, 1000, 1000, 500, 1);
  EXPECT_EQ(fit.screen.Scale(), 2.0);
  View fill(500, 1000, 1000, 500, 2);
  EXPECT_EQ(fill.screen.Scale(), 0.5);
  View tallFit(1000, 500, 500, 1000, 1);
  EXPECT_EQ(tallFit.screen.Scale(), 2.0);
  View tallFill(1000, 500, 500, 1000, 2);
  EXPECT_EQ(tallFill.screen.Scale(), 0.5);
}

TEST(QTDScreen, centres_on_fit_and_keeps_the_centre_otherwise) {
  View view(1000, 1000, 10000, 5000, 3);
  view.screen.setCenter(0.25, 0.75);
  view.screen.setFit(2, true);
  EXPECT_EQ(view.screen.centerFractionX, 0.25);
  EXPECT_EQ(view.screen.centerFractionY, 0.5) << "the height just fills the window";
  view.screen.setFit(3, true);
  EXPECT_EQ(view.screen.centerFractionX, 0.25);
  view.screen.setFit(0, true);
  EXPECT_EQ(view.screen.centerFractionX, 0.25);
  EXPECT_EQ(view.screen.Scale(), 1.0);
  view.screen.setFit(1, true);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(QTDScreen, centres_on_fit_even_where_the_limits_leave_the_picture_larger_than_the_window) {
  View view(30, 30, 100, 100, 0);
  view.screen.setScale(1);
  view.screen.setCenter(0.25, 0.375);
  view.screen.setFit(1, true);
  EXPECT_NEAR(view.screen.pictureWidth, 60, 1e-9);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(QTDScreen, holds_the_fit_mode_even_before_it_is_ready) {
  View view(1000, 1000, 500, 500, 0);
  view.screen.setFit(7, true);
  EXPECT_EQ(view.Text("fit"), "3");
  view.screen.setFit(-2, true);
  EXPECT_EQ(view.Text("fit"), "0");
  View early;
  early.screen.setFit(9, true);
  EXPECT_EQ(early.Text("fit"), "3");
}

TEST(QTDScreen, centres_a_small_picture_whatever_the_fractions_were) {
  View view(1000, 800, 300, 200, 3);
  view.screen.setCenter(0.1, 0.9);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
  EXPECT_EQ(view.screen.pictureX, 350.0);
  EXPECT_EQ(view.screen.pictureY, 300.0);
}

TEST(QTDScreen, leaves_no_gap_beside_a_large_picture) {
  View view(1000, 800, 4000, 2000, 3);
  view.screen.setCenter(0, 0);
  EXPECT_EQ(view.screen.pictureX, 0.0);
  EXPECT_EQ(view.screen.pictureY, 0.0);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(500.0 / 4000, 400.0 / 2000));
  view.screen.setCenter(1, 1);
  EXPECT_EQ(view.screen.pictureX, -3000.0);
  EXPECT_EQ(view.screen.pictureY, -1200.0);
  view.screen.setCenter(-7, 55);
  EXPECT_EQ(view.screen.pictureX, 0.0);
  EXPECT_EQ(view.screen.pictureY, -1200.0);
}

TEST(QTDScreen, tells_from_update_whether_the_centre_had_to_move) {
  View view(1000, 800, 4000, 2000, 3);
  EXPECT_FALSE(view.screen.update());
  view.screen.centerFractionX = 0.01;
  EXPECT_TRUE(view.screen.update());
  view.screen.centerFractionY = 1.5;
  EXPECT_TRUE(view.screen.update());
  EXPECT_FALSE(view.screen.update());
}

TEST(QTDScreen, folds_a_scroll_range_above_its_greatest) {
  View view(1000, 100, 100000, 400, 3);
  view.screen.properties.Set("screen.max", "100000");
  view.screen.setScale(1);
  ASSERT_EQ(view.screen.pictureWidth, 100000.0);
  EXPECT_EQ(view.screen.ScrollRange(), QTD::PairI(32000, 300));
  EXPECT_EQ(view.Text("scroll.horz"), "3.093750");
  EXPECT_EQ(view.Text("scroll.vert"), "1.000000");
  EXPECT_EQ(view.screen.ScrollPos(), QTD::PairI(16000, 150)) << "49500 / 3.09375";
  EXPECT_EQ(view.screen.scrollPage(), QTD::PairI(323, 100)) << "1000 / 3.09375";
  view.screen.properties.Set("scroll.max", "0");
  view.screen.update();
  EXPECT_EQ(view.screen.ScrollPos(), QTD::PairI(0, 0));
  EXPECT_EQ(view.screen.scrollPage(), QTD::PairI(0, 0));
}

TEST(QTDScreen, rounds_the_scroll_page) {
  View view(1000, 800, 4000, 4000, 3);
  view.screen.properties.Set("scroll.horz", "1.5");
  view.screen.properties.Set("scroll.vert", "3");
  EXPECT_EQ(view.screen.scrollPage(), QTD::PairI(667, 267)) << "666.67 and 266.67";
  view.screen.properties.Set("scroll.horz", "3");
  view.screen.properties.Set("scroll.vert", "7");
  EXPECT_EQ(view.screen.scrollPage(), QTD::PairI(333, 114)) << "333.33 and 114.29";
}

TEST(QTDScreen, has_no_scroll_range_for_a_small_picture) {
  View view(1000, 800, 300, 200, 3);
  EXPECT_EQ(view.screen.ScrollRange(), QTD::PairI(-700, -600));
  EXPECT_EQ(view.screen.ScrollPos(), QTD::PairI(-350, -300));
}

TEST(QTDScreen, tells_the_surface_area_and_size) {
  View view(1000, 800, 4000, 2000, 3);
  EXPECT_EQ(view.surface.area.x, -1500.0);
  EXPECT_EQ(view.surface.area.y, -600.0);
  EXPECT_EQ(view.surface.area.width, 4000.0);
  EXPECT_EQ(view.surface.area.height, 2000.0);
  EXPECT_EQ(view.surface.size.width, 1000);
  EXPECT_EQ(view.surface.size.height, 800);
  EXPECT_EQ(view.screen.Picture().x, -1500.0);
  EXPECT_EQ(view.screen.Picture().height, 2000.0);
}

TEST(QTDScreen, resizes_the_surface_when_it_has_another_size_and_not_in_every_update) {
  LoggingSurface surface;
  TestScreen screen(&surface);
  surface.size = {5, 5};
  screen.setImageSize(300, 200);
  EXPECT_EQ(surface.log, Log()) << "there is no window size to tell";
  screen.setWindowSize(1000, 800);
  EXPECT_EQ(surface.log, (Log{"resize 1000x800"}));
  surface.size = {5, 5};
  screen.setCenter(-1, -1);
  EXPECT_EQ(surface.log, (Log{"resize 1000x800", "resize 1000x800"}));
  screen.setCenter(-1, -1);
  EXPECT_EQ(surface.log.size(), 2u);
}

TEST(QTDScreen, tells_the_surface_its_size_before_there_is_a_picture) {
  LoggingSurface surface;
  TestScreen screen(&surface);
  screen.setWindowSize(1000, 800);
  EXPECT_EQ(surface.log, (Log{"resize 1000x800"}));
}

TEST(QTDScreen, tells_the_surface_every_window_size_even_the_same) {
  LoggingSurface surface;
  TestScreen screen(&surface);
  screen.setImageSize(300, 200);
  screen.setWindowSize(1000, 800);
  screen.setWindowSize(1000, 800);
  EXPECT_EQ(surface.log, (Log{"resize 1000x800", "resize 1000x800"}));
  screen.setImageSize(200, 300);
  EXPECT_EQ(surface.log.size(), 2u);
}

TEST(QTDScreen, clears_when_it_is_initialised) {
  class Clearing : public TestScreen {
   public:
    using TestScreen::TestScreen;
    void clear(bool flush) override { cleared.push_back(flush); }
    std::vector<bool> cleared;
  } screen(nullptr);
  screen.init(nullptr, 0, 0, 3);
  EXPECT_EQ(screen.cleared, std::vector<bool>{false});
}

TEST(QTDScreen, leaves_the_surface_alone_without_a_picture) {
  View view(1000, 800, 4000, 2000, 3);
  view.screen.done(true);
  EXPECT_EQ(view.screen.imageWidth, 0);
  EXPECT_EQ(view.screen.imageHeight, 0);
  view.screen.update();
  EXPECT_EQ(view.screen.Picture().width, 0.0);
  EXPECT_EQ(view.surface.area.width, 4000.0);
}

TEST(QTDScreen, ignores_sizes_of_zero_and_below) {
  View view(1000, 800, 4000, 2000, 3);
  const int sizes[][2] = {{0, 0}, {0, 5}, {5, 0}, {-5, 5}, {5, -5}};
  for (const auto& size : sizes) {
    view.screen.setWindowSize(size[0], size[1]);
    view.screen.setImageSize(size[0], size[1]);
  }
  EXPECT_EQ(view.screen.windowWidth, 1000.0);
  EXPECT_EQ(view.screen.windowHeight, 800.0);
  EXPECT_EQ(view.screen.imageWidth, 4000);
  EXPECT_EQ(view.screen.imageHeight, 2000);
  EXPECT_EQ(view.screen.Scale(), 1.0);
}

TEST(QTDScreen, holds_the_scale_in_the_limits_of_the_screen) {
  View view(1000, 1000, 100, 100, 0);
  view.screen.setScale(50);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 100.0 / 60);
  view.screen.setScale(0);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 100.0 / 40000);
  EXPECT_EQ(view.Text("scale"), "0.002500");
  EXPECT_EQ(view.Text("scale.min"), "0.002500");
  EXPECT_EQ(view.Text("scale.max"), "1.666667");
  view.screen.setScale(-1);
  EXPECT_DOUBLE_EQ(view.screen.Scale(), 100.0 / 40000) << "a negative scale is ignored";
  view.screen.setScale(1.5);
  EXPECT_EQ(view.screen.Scale(), 1.5);
}

TEST(QTDScreen, takes_the_limits_from_the_shorter_and_the_longer_side) {
  View view(1000, 1000, 600, 4000, 0);
  view.screen.setScale(1000);
  EXPECT_EQ(view.screen.Scale(), 10.0) << "600 / 60";
  view.screen.setScale(0.0001);
  EXPECT_EQ(view.screen.Scale(), 0.1) << "4000 / 40000";
}

TEST(QTDScreen, shows_one_to_one_without_a_picture_or_without_limits) {
  View view;
  view.screen.setWindowSize(100, 100);
  view.screen.setScale(5);
  EXPECT_EQ(view.screen.Scale(), 1.0);
  view.screen.setImageSize(1000, 1000);
  view.screen.properties.Set("screen.min", "0");
  view.screen.setScale(5);
  EXPECT_EQ(view.screen.Scale(), 1.0);
}

TEST(QTDScreen, ignores_a_scale_before_it_is_ready) {
  View view;
  view.screen.setScale(0.5);
  EXPECT_EQ(view.screen.Scale(), 1.0);
  EXPECT_EQ(view.Text("scale.min"), "absent");
}

TEST(QTDScreen, refits_on_resize_in_the_fit_modes_and_keeps_a_free_zoom) {
  View fit(1000, 1000, 1000, 500, 1);
  fit.screen.setWindowSize(500, 500);
  EXPECT_EQ(fit.screen.Scale(), 2.0);
  fit.screen.setImageSize(2000, 2000);
  EXPECT_EQ(fit.screen.Scale(), 4.0);

  View fill(1000, 1000, 1000, 500, 2);
  fill.screen.setWindowSize(500, 500);
  EXPECT_EQ(fill.screen.Scale(), 1.0);

  View free(1000, 1000, 8000, 8000, 0);
  free.screen.setScale(2.5);
  free.screen.setCenter(0.25, 0.625);
  free.screen.setWindowSize(800, 600);
  EXPECT_EQ(free.screen.Scale(), 2.5);
  EXPECT_EQ(free.screen.Center(), QTD::PairD(0.25, 0.625));
}

TEST(QTDScreen, takes_the_scale_from_its_text_when_a_size_changes) {
  View view(1000, 1000, 8000, 8000, 0);
  view.screen.setScale(1.0 / 3);
  EXPECT_EQ(view.screen.Scale(), 1.0 / 3);
  view.screen.setWindowSize(1000, 1000);
  EXPECT_EQ(view.screen.Scale(), 1.0 / 3) << "the same size: nothing to refit";
  view.screen.setWindowSize(999, 1000);
  EXPECT_EQ(view.screen.Scale(), 0.333333);
}

TEST(QTDScreen, initialises_with_owner_size_and_fit) {
  QTDSurface surface;
  Owner owner;
  TestScreen screen(&surface);
  EXPECT_TRUE(screen.init(&owner, 640, 480, 2));
  EXPECT_EQ(screen.imageWidth, 640);
  EXPECT_EQ(screen.imageHeight, 480);
  EXPECT_EQ(screen.properties.GetString("fit"), "2");
  owner.Count();
  screen.setWindowSize(320, 320);
  EXPECT_EQ(owner.Count(), 1u);
  EXPECT_TRUE(screen.done(false));
  EXPECT_EQ(screen.imageWidth, 0);
}

TEST(QTDScreen, forwards_the_paint_pass_to_the_surface) {
  LoggingSurface surface;
  TestScreen screen(&surface);
  EXPECT_TRUE(screen.begin(nullptr));
  surface.answer = false;
  EXPECT_FALSE(screen.begin(nullptr));
  EXPECT_TRUE(screen.prepare(nullptr));
  screen.clear(true);
  screen.flush();
  EXPECT_FALSE(screen.draw(nullptr, nullptr));
  screen.end(nullptr, false);
  screen.end(nullptr, true);
  EXPECT_EQ(surface.log, (Log{"begin", "begin", "end", "end+", "flush"}));
}

TEST(QTDScreen, works_without_a_surface_and_an_owner) {
  TestScreen screen(nullptr);
  screen.init(nullptr, 1000, 1000, 1);
  screen.setWindowSize(100, 100);
  EXPECT_EQ(screen.Scale(), 10.0);
  EXPECT_FALSE(screen.begin(nullptr));
  screen.end(nullptr, true);
}
