// When the owner hears that the view has changed.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/screen/ScreenFixture.h"

TEST(Notify, tells_the_owner_of_a_new_centre) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.625);
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setCenter(0.25, 0.625);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Notify, counts_a_centre_with_more_than_six_decimals_as_changed) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(1.0 / 3, 0.5);
  view.owner.Count();
  view.screen.setCenter(-1, -1);
  EXPECT_EQ(view.owner.Count(), 1u) << "the record of the old view holds six decimals only";
}

TEST(Notify, counts_a_scale_with_more_than_six_decimals_as_changed) {
  View view(1000, 1000, 4000, 4000, 0);
  view.screen.setScale(1.0 / 3);
  view.screen.setCenter(0.25, 0.25);
  view.owner.Count();
  view.screen.setCenter(-1, -1);
  EXPECT_EQ(view.owner.Count(), 1u) << "0.333333 is more than 1e-7 away";
  view.screen.setScale(0.33333305);
  view.screen.setCenter(-1, -1);
  EXPECT_EQ(view.owner.Count(), 0u) << "0.333333 is less than 1e-7 away";
}

TEST(Notify, tells_of_a_fit_that_changes_nothing_but_the_scale) {
  View view(1000, 1000, 4000, 2000, 0);
  view.screen.setScale(3);
  view.screen.setFit(2, true);
  ASSERT_EQ(view.screen.Scale(), 2.0);
  ASSERT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setFit(3, true);
  ASSERT_EQ(view.screen.Scale(), 1.0);
  ASSERT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5));
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setFit(3, true);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Notify, tells_of_a_fit_when_the_centre_has_more_than_six_decimals) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(1.0 / 3, 0.5);
  view.owner.Count();
  for (int mode : {0, 3}) {
    view.screen.setFit(mode, true);
    EXPECT_EQ(view.owner.Count(), 1u) << mode;
    view.screen.setFit(mode, false);
    EXPECT_EQ(view.owner.Count(), 0u) << mode;
  }
}

TEST(Notify, tells_of_a_picture_of_another_size) {
  View view(1000, 1000, 4000, 4000, 2);
  view.screen.setImageSize(2000, 2000);
  ASSERT_EQ(view.screen.Scale(), 2.0);
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setImageSize(2000, 2000);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Notify, tells_even_of_sizes_that_it_ignores_when_the_centre_has_more_than_six_decimals) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(1.0 / 3, 0.5);
  view.owner.Count();
  view.screen.setWindowSize(0, 0);
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setImageSize(0, 0);
  EXPECT_EQ(view.owner.Count(), 1u);
}

TEST(Notify, tells_nothing_of_an_operation_that_failed) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.25);
  view.owner.Count();
  view.screen.properties.Set("screen.min", "none");
  EXPECT_THROW(view.screen.setFit(1, true), std::invalid_argument);
  ASSERT_EQ(view.screen.Center(), QTD::PairD(0.5, 0.5)) << "it had moved the centre before it failed";
  EXPECT_EQ(view.owner.Count(), 0u);
  view.screen.properties.Set("screen.min", "60");
  view.screen.setCenter(-1, -1);
  EXPECT_EQ(view.owner.Count(), 0u) << "nothing has changed since";
  view.screen.setCenter(0.25, 0.25);
  EXPECT_EQ(view.owner.Count(), 1u);
}

TEST(Notify, tells_nobody_while_notification_is_off) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.notify = false;
  view.screen.setCenter(0.25, 0.25);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Notify, tells_once_for_an_operation_that_calls_others) {
  View view(1000, 1000, 4000, 4000, 3);
  view.screen.setCenter(0.25, 0.25);
  view.owner.Count();
  view.screen.setFit(1, true);
  EXPECT_EQ(view.owner.Count(), 1u);
  view.screen.setFit(2, false);
  EXPECT_EQ(view.owner.Count(), 0u) << "not asked to tell";
  view.screen.setScale(2);
  EXPECT_EQ(view.owner.Count(), 0u);
}

TEST(Notify, tells_the_owner_with_the_lock_given_up) {
  View view(1000, 1000, 4000, 4000, 3);
  bool answered = false;
  view.owner.then = [&] {
    // Another thread gets through to the screen while the owner is being told.
    std::promise<void> read;
    std::thread other([&] {
      view.screen.Scale();
      read.set_value();
    });
    answered = read.get_future().wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    if (answered) {
      other.join();
    } else {
      other.detach();
    }
  };
  view.screen.zoomToRect({10, 10, 100, 100}, true);
  EXPECT_TRUE(answered);
}

TEST(Notify, lets_the_owner_move_the_view_while_it_is_told) {
  View view(1000, 1000, 4000, 4000, 3);
  bool once = true;
  view.owner.then = [&] {
    if (std::exchange(once, false)) view.screen.setCenter(0.75, 0.75);
  };
  view.screen.setCenter(0.25, 0.25);
  EXPECT_EQ(view.screen.Center(), QTD::PairD(0.75, 0.75));
  EXPECT_EQ(view.owner.Count(), 2u);
}
