#include "QTD/frame/RateMeter.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(RateMeter, is_zero_after_reset) {
  QTD::RateMeter meter;
  EXPECT_EQ(meter.Rate(), 0);
  EXPECT_EQ(meter.Total(), 0);
  EXPECT_EQ(meter.Count(), 0);
  meter.TickAt(true, 100);
  meter.ResetAt(5000);
  EXPECT_EQ(meter.Rate(), 0);
  EXPECT_EQ(meter.Total(), 0);
  EXPECT_EQ(meter.Count(), 0);
  meter.TickAt(true, 5100);
  EXPECT_DOUBLE_EQ(meter.Rate(), 10) << "the window begins at the reset";
}

TEST(RateMeter, counts_only_counted_ticks) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  meter.TickAt(true, 10);
  meter.TickAt(false, 20);
  meter.TickAt(true, 40);
  EXPECT_EQ(meter.Total(), 2);
  EXPECT_EQ(meter.Count(), 2);
  EXPECT_DOUBLE_EQ(meter.Rate(), 2 * 1000.0 / 40);
}

TEST(RateMeter, tick_at_the_start_of_the_window_gives_no_rate) {
  QTD::RateMeter meter;
  meter.ResetAt(700);
  meter.TickAt(true, 700);
  EXPECT_EQ(meter.Rate(), 0);
  EXPECT_EQ(meter.Count(), 1);
  meter.SetInterval(-1);
  meter.TickAt(true, 750);
  EXPECT_GT(meter.Rate(), 0);
  meter.ResetAt(800);
  meter.TickAt(true, 800);
  EXPECT_EQ(meter.Rate(), 0) << "no division by a window of no length";
}

TEST(RateMeter, clock_that_steps_back_changes_nothing_but_counts) {
  QTD::RateMeter meter;
  meter.ResetAt(1000);
  meter.TickAt(true, 1500);
  meter.TickAt(true, 400);
  EXPECT_DOUBLE_EQ(meter.Rate(), 2);
  EXPECT_EQ(meter.Count(), 2);
}

TEST(RateMeter, interval_holds_back_the_rate_inside_the_window) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  meter.SetInterval(500);
  meter.TickAt(true, 500);
  EXPECT_EQ(meter.Rate(), 0) << "not above the interval";
  meter.TickAt(true, 501);
  EXPECT_DOUBLE_EQ(meter.Rate(), 2 * 1000.0 / 501);

  meter.ResetAt(0);
  meter.SetInterval(1000);
  meter.TickAt(true, 999);
  EXPECT_EQ(meter.Rate(), 0);
  meter.TickAt(true, 1000);
  EXPECT_DOUBLE_EQ(meter.Rate(), 2) << "a full window always counts";
}

TEST(RateMeter, full_window_is_halved) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  for (int i = 0; i < 101; ++i) meter.TickAt(true, 9 * i);
  EXPECT_EQ(meter.Count(), 101);
  meter.TickAt(false, 1000);
  EXPECT_DOUBLE_EQ(meter.Rate(), 101);
  EXPECT_EQ(meter.Count(), 50);
  EXPECT_EQ(meter.Total(), 101);
  meter.TickAt(false, 1250);
  EXPECT_DOUBLE_EQ(meter.Rate(), 50 * 1000.0 / 750) << "the window now begins at 500";
  EXPECT_EQ(meter.Count(), 50);
}

TEST(RateMeter, half_of_an_odd_window_keeps_the_earlier_millisecond) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  for (int i = 0; i < 20; ++i) meter.TickAt(true, 1);
  meter.TickAt(false, 1001);  // begins anew at 500.5
  meter.TickAt(false, 1400);
  EXPECT_DOUBLE_EQ(meter.Rate(), 10 * 1000.0 / 900);
}

TEST(RateMeter, rate_decays_to_zero_without_events) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  for (int i = 0; i < 100; ++i) meter.TickAt(true, 10 * i);
  // Each further 500 milliseconds fill the window of 1000 again: the count, and the rate with it, halves
  // every time.
  double expected = 100;
  int64_t count = 100;
  int64_t now = 1000;
  for (; count > 0; now += 500) {
    meter.TickAt(false, now);
    EXPECT_DOUBLE_EQ(meter.Rate(), expected) << now;
    count /= 2;
    EXPECT_EQ(meter.Count(), count) << now;
    expected = static_cast<double>(count);
  }
  meter.TickAt(false, now);
  EXPECT_EQ(meter.Rate(), 0);
}

TEST(RateMeter, measures_a_steady_stream) {
  QTD::RateMeter meter;
  meter.ResetAt(0);
  for (int64_t now = 0; now <= 10000; now += 20) {
    meter.TickAt(true, now);
    if (now < 1000) continue;
    EXPECT_NEAR(meter.Rate(), 50, 2.5) << now;
  }
  EXPECT_EQ(meter.Total(), 501);
}

TEST(RateMeter, uses_a_steady_clock_in_milliseconds) {
  const int64_t before = QTD::TickMilliseconds();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const int64_t passed = QTD::TickMilliseconds() - before;
  EXPECT_GE(passed, 49);
  EXPECT_LT(passed, 20000);

  QTD::RateMeter meter;
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  meter.Tick(true);
  EXPECT_GT(meter.Rate(), 0);
  EXPECT_LE(meter.Rate(), 1000.0 / 19);
  meter.Reset();
  EXPECT_EQ(meter.Rate(), 0);
}

TEST(RateMeter, loses_no_event_of_the_total_on_several_threads) {
  QTD::RateMeter meter;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&meter, t] {
      for (int i = 0; i < 5000; ++i) {
        meter.Tick(t != 3);
        meter.Rate();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(meter.Total(), 3 * 5000);
}

}  // namespace
