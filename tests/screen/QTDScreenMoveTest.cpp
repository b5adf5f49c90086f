// Centre, keys, scroll bars and pans.
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <thread>
#include <vector>

#include "tests/screen/ScreenFixture.h"

TEST(Move, recomputes_without_moving_for_minus_one) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.625);
  view.owner.Count();
  view.screen.setCenter(-1, -1);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.625));
  EXPECT_EQ(view.owner.Count(), 0u);
  view.screen.setCenter(-1, 0.5);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(500.0 / 4000, 0.5))
      << "only both at once mean the present centre";
}

TEST(Move, ignores_a_centre_that_is_no_number) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.25);
  view.screen.setCenter(std::nan(""), 0.75);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.75));
  view.screen.setCenter(std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(view.screen.Center(), QTD::PairD(1 - 500.0 / 4000, 500.0 / 4000));
}

TEST(Move, applies_an_initial_centre_when_the_window_gets_its_size) {
  View view;
  view.screen.setImageSize(4000, 4000);
  view.owner.Count();
  view.screen.setCenter(0.25, 0.75);
  EXPECT_EQ(view.owner.Count(), 0u);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.75));
  view.screen.setWindowSize(1000, 1000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.75));
  EXPECT_EQ(view.screen.pictureX, 500 - 1000.0);
  view.screen.moveTo(2000, 2000, "scr");
  view.screen.setWindowSize(1200, 1000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5)) << "the initial centre is applied once";
}

TEST(Move, keeps_an_initial_centre_until_there_is_a_picture) {
  View view;
  view.screen.setCenter(0.25, 0.75);
  view.screen.setWindowSize(1000, 1000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5)) << "a picture without a size is centred";
  view.screen.zoom(true, -1, false);
  view.screen.setFit(0, true);
  view.screen.setFit(3, true);
  view.screen.setCenter(-1, -1);
  view.screen.setScrollPos(-1, -1);
  view.screen.setImageSize(4000, 4000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.75));
  view.screen.setImageSize(8000, 8000);
  view.screen.setCenter(0.5, 0.5);
  view.screen.setImageSize(4000, 4000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(Move, gives_up_an_initial_centre_for_a_later_move) {
  const std::function<void(TestScreen&)> moves[] = {
      [](TestScreen& screen) { screen.setFit(1, true); },
      [](TestScreen& screen) { screen.setFit(1, false); },
      [](TestScreen& screen) { screen.moveTo(10, 10, "win"); },
      [](TestScreen& screen) { screen.moveTo(10, 10, "scr"); },
      [](TestScreen& screen) { screen.moveBy(true, 1); },
      [](TestScreen& screen) { screen.moveBy(false, -1); },
      [](TestScreen& screen) {
        screen.zoomToRect({10, 10, 100, 100}, true);
      },
      [](TestScreen& screen) { screen.setScrollPos(0, -1); },
      [](TestScreen& screen) { screen.setScrollPos(-1, 0); },
      [](TestScreen& screen) { screen.setCenter(0.5, 0.5); },
  };
  for (const auto& move : moves) {
    View view;
    view.screen.setWindowSize(1000, 1000);
    view.screen.setCenter(0.25, 0.75);
    move(view.screen);
    view.screen.setFit(0, false);
    view.screen.setImageSize(4000, 4000);
    EXPECT_GT(view.screen.pictureWidth, 3000) << "room for the centre that is not to be there";
    EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5)) << "move " << &move - moves;
  }
}

TEST(Move, gives_up_an_initial_centre_for_a_fit_before_there_is_a_window) {
  View view;
  view.screen.setCenter(0.25, 0.75);
  view.screen.setFit(1, false);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
  view.screen.setFit(3, false);
  view.screen.setWindowSize(1000, 1000);
  view.screen.setImageSize(4000, 4000);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
}

TEST(Move, keeps_an_initial_centre_that_comes_behind_a_fit) {
  for (int mode : {0, 1, 2, 3}) {
    for (bool window : {false, true}) {
      // Too small for its least size of 60: larger than the window in every mode.
      View view;
      if (window) view.screen.setWindowSize(30, 30);
      view.screen.setFit(mode, true);
      view.screen.setCenter(0.25, 0.75);
      if (!window) view.screen.setWindowSize(30, 30);
      view.screen.setImageSize(100, 100);
      EXPECT_EQ(view.screen.Center(), (QTD::PairD(0.25, 0.75))) << mode << window;
    }
  }
}

TEST(Move, takes_the_initial_centre_behind_the_fit) {
  View view;
  view.screen.setFit(2, false);
  view.screen.setCenter(0.3, 0.5);
  view.screen.setWindowSize(1000, 1000);
  view.screen.setImageSize(4000, 2000);
  EXPECT_EQ(view.screen.Scale(), 2.0);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.3, 0.5));
  View fitted;
  fitted.screen.setFit(1, false);
  fitted.screen.setCenter(0.3, 0.5);
  fitted.screen.setWindowSize(1000, 1000);
  fitted.screen.setImageSize(4000, 2000);
  EXPECT_EQ(fitted.screen.Center(), QTD::PairD(0.5, 0.5)) << "the whole picture is in view";
}

TEST(Move, by_keys_goes_a_share_of_the_window_times_the_scale) {
  View view(1000, 500, 8000, 8000, 0);
  view.screen.setScale(2);
  ASSERT_EQ(view.screen.pictureWidth, 4000.0);
  EXPECT_TRUE(view.screen.moveBy(true, 2));
  EXPECT_DOUBLE_EQ(view.screen.centerFractionX, 0.5 + 0.1 * (1000 * 2.0 * 2 / 4000));
  EXPECT_EQ(view.screen.centerFractionY, 0.5);
  EXPECT_TRUE(view.screen.moveBy(false, -1));
  EXPECT_DOUBLE_EQ(view.screen.centerFractionY, 0.5 - 0.1 * (500 * 2.0 / 4000));
  EXPECT_DOUBLE_EQ(view.screen.centerFractionX, 0.6);
  EXPECT_EQ(view.owner.Count(), 2u);
}

TEST(Move, by_keys_is_refused_before_it_is_ready_and_during_a_pan) {
  View early;
  EXPECT_FALSE(early.screen.moveBy(true, 1));
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.dragStart(5, 5);
  EXPECT_FALSE(view.screen.moveBy(true, 1));
  view.screen.dragEnd();
  EXPECT_TRUE(view.screen.moveBy(true, 1));
}

TEST(Move, to_a_point_of_the_window_or_of_the_picture) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.moveTo(700, 400, "win");
  EXPECT_DOUBLE_EQ(view.screen.centerFractionX, (1500 + 700) / 4000.0);
  EXPECT_DOUBLE_EQ(view.screen.centerFractionY, (1500 + 400) / 4000.0);
  for (const char* system : {"scr", "WIN", "", static_cast<const char*>(nullptr)}) {
    view.screen.setCenter(0.5, 0.5);
    view.screen.moveTo(1000, 3000, system);
    EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.75));
  }
}

TEST(Move, by_scroll_bars_undoes_the_fold_of_the_range) {
  View view(1000, 1000, 100000, 4000, 3);
  view.screen.properties.Set("screen.max", "100000");
  view.screen.setScale(1);
  view.screen.setScrollPos(8000, -1);
  EXPECT_DOUBLE_EQ(view.screen.pictureX, -8000 * 3.09375);
  EXPECT_EQ(view.screen.pictureY, -1500.0);
  EXPECT_EQ(view.screen.ScrollPos(), QTD::PairI(8000, 1500));
  view.screen.setScrollPos(-1, 0);
  EXPECT_EQ(view.screen.pictureY, 0.0);
  EXPECT_EQ(view.screen.ScrollPos(), QTD::PairI(8000, 0));
  EXPECT_EQ(view.owner.Count(), 2u);
  view.screen.setScrollPos(-1, -1);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Move, by_scroll_bars_to_the_present_position_tells_nobody) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setScrollPos(1500, 1500);
  EXPECT_EQ(view.owner.Count(), 0u);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
  view.screen.setCenter(1.0 / 3, 0.5);
  view.owner.Count();
  view.screen.setScrollPos(-1, -1);
  EXPECT_EQ(view.owner.Count(), 0u) << "not even for a centre of many decimals";
}

TEST(Move, by_a_pan_follows_the_mouse) {
  View view(1000, 1000, 4000, 4000, 3);
  EXPECT_FALSE(view.screen.dragMove(1, 1)) << "no pan is running";
  view.screen.dragStart(600, 600);
  EXPECT_TRUE(view.screen.dragMove(700, 560));
  EXPECT_DOUBLE_EQ(view.screen.pictureX, -1400.0);
  EXPECT_DOUBLE_EQ(view.screen.pictureY, -1540.0);
  EXPECT_TRUE(view.screen.dragMove(600, 600));
  EXPECT_DOUBLE_EQ(view.screen.pictureX, -1500.0);
  EXPECT_EQ(view.owner.Count(), 2u);
  view.screen.dragEnd();
  EXPECT_EQ(view.screen.dragX, -1);
  EXPECT_EQ(view.screen.dragY, -1);
  EXPECT_FALSE(view.screen.dragMove(1, 1));
}

TEST(Move, puts_the_centre_back_when_a_pan_is_cancelled) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.625);
  view.screen.dragStart(600, 600);
  view.screen.dragMove(100, 900);
  view.owner.Count();
  view.screen.dragCancel();
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.25, 0.625));
  EXPECT_EQ(view.screen.pictureX, -500.0);
  EXPECT_EQ(view.screen.dragX, -1);
  EXPECT_EQ(view.owner.Count(), 0u);
  view.screen.setCenter(0.5, 0.5);
  view.screen.dragCancel();
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5)) << "no pan was running";
}

TEST(Move, starts_no_pan_before_it_is_ready) {
  View view;
  view.screen.dragStart(5, 5);
  EXPECT_EQ(view.screen.dragX, -1);
}

TEST(Move, stands_the_ends_of_the_number_range) {
  View view(1000, 1000, 4000, 4000, 3);
  for (int value : {INT_MAX, INT_MIN, 0}) {
    view.screen.moveBy(true, value);
    view.screen.moveTo(value, value, "win");
    view.screen.setScrollPos(value, value);
    view.screen.dragStart(INT_MIN, 0);
    view.screen.dragMove(value, value);
    view.screen.dragEnd();
    EXPECT_GE(view.screen.centerFractionX, 0.0);
    EXPECT_LE(view.screen.centerFractionX, 1.0);
    EXPECT_GE(view.screen.centerFractionY, 0.0);
    EXPECT_LE(view.screen.centerFractionY, 1.0);
  }
}

TEST(Move, stays_whole_when_several_threads_move_at_once) {
  View view(1000, 1000, 4000, 4000, 3);
  std::atomic<int> told{0};
  view.owner.then = nullptr;
  class Counter : public Owner {
   public:
    explicit Counter(std::atomic<int>& counted) : count(counted) {}
    void Execute(const char*, QTD::PROPERTIES*) override { ++count; }
    std::atomic<int>& count;
  } counter(told);
  view.screen.init(&counter, 0, 0, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&view, t] {
      for (int i = 0; i < 300; ++i) {
        switch ((i + t) % 6) {
          case 0:
            view.screen.zoom(i % 2 == 0, -1, false);
            break;
          case 1:
            view.screen.setCenter(i / 300.0, 0.5);
            break;
          case 2:
            view.screen.setWindowSize(900 + i % 3, 800);
            break;
          case 3:
            view.screen.setScrollPos(i, i);
            break;
          case 4:
            view.screen.setFit(t, true);
            break;
          default: {
            double x = 5, y = 5;
            view.screen.transform(&x, &y, "win", "img", true, false);
            break;
          }
        }
        const QTD::PairD center = view.screen.Center();
        EXPECT_TRUE(center.first >= 0 && center.first <= 1);
        const QTD::RectD area = view.surface.Area();
        EXPECT_GE(area.width, 0.0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(told.load(), 0);
}
