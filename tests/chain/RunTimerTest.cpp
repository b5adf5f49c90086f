#include "QTD/chain/RunTimer.h"

#include <gtest/gtest.h>

TEST(RunTimer, averages_the_durations_of_its_runs) {
  RunTimer timer;
  timer.Start(1000);
  EXPECT_DOUBLE_EQ(timer.Stop(1010), 10.0);
  timer.Start(2000);
  EXPECT_DOUBLE_EQ(timer.Stop(2025), 17.5);
  EXPECT_EQ(timer.Count(), 2);
  EXPECT_EQ(timer.Total(), 35);
  EXPECT_DOUBLE_EQ(timer.Average(), 17.5);
}

TEST(RunTimer, halves_its_window_at_the_twenty_first_run) {
  RunTimer timer;
  for (int run = 1; run <= 20; ++run) {
    timer.Start(0);
    timer.Stop(10);
  }
  EXPECT_EQ(timer.Count(), 20);
  EXPECT_EQ(timer.Total(), 200);
  timer.Start(0);
  EXPECT_DOUBLE_EQ(timer.Stop(10), 10.0);
  EXPECT_EQ(timer.Count(), 10);
  EXPECT_EQ(timer.Total(), 100);
}

TEST(RunTimer, keeps_its_average_continuous_over_the_halving) {
  RunTimer timer;
  double average = 0;
  for (int run = 1; run <= 21; ++run) {
    timer.Start(0);
    average = timer.Stop(40);
  }
  EXPECT_DOUBLE_EQ(average, 40.0);
  timer.Start(0);
  EXPECT_DOUBLE_EQ(timer.Stop(40), 40.0);
}

TEST(RunTimer, follows_the_recent_past) {
  RunTimer timer;
  for (int run = 0; run < 21; ++run) {
    timer.Start(0);
    timer.Stop(10);
  }
  double average = 0;
  for (int run = 0; run < 200; ++run) {
    timer.Start(0);
    average = timer.Stop(110);
  }
  EXPECT_NEAR(average, 110.0, 1.0);  // an average over all 221 runs would be 100.5
}

TEST(RunTimer, counts_runs_that_are_never_stopped) {
  RunTimer timer;
  for (int run = 0; run < 30; ++run) timer.Start(0);
  EXPECT_EQ(timer.Count(), 30);
  EXPECT_DOUBLE_EQ(timer.Stop(31), 31.0 / 30.0);
  EXPECT_EQ(timer.Count(), 15);
}

TEST(RunTimer, answers_0_when_nothing_was_counted) {
  RunTimer timer;
  EXPECT_EQ(timer.Stop(0), 0.0);
}

TEST(RunTimer, starts_anew_after_a_reset) {
  RunTimer timer;
  timer.Start(0);
  timer.Stop(50);
  timer.Reset();
  EXPECT_EQ(timer.Count(), 0);
  EXPECT_EQ(timer.Total(), 0);
  EXPECT_EQ(timer.Average(), 0.0);
  timer.Start(100);
  EXPECT_DOUBLE_EQ(timer.Stop(103), 3.0);
}
