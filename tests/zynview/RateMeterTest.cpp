#include "apps/zynview/view/RateMeter.h"

#include <gtest/gtest.h>

using zynview::RateMeter;

namespace {

// Looks at a source of so many frames a second each half second.
void Watch(RateMeter& meter, double rate, int from, int to) {
  for (int ms = from; ms <= to; ms += 500) {
    const auto delivered = static_cast<uint64_t>(rate * ms / 1000);
    meter.Note(ms, delivered, delivered / 2);
  }
}

}  // namespace

TEST(RateMeter, tells_slow_rates_as_well_as_fast_ones) {
  for (const double rate : {0.2, 0.5, 1.0, 5.0, 25.0, 200.0}) {
    RateMeter meter;
    meter.Start(0);
    Watch(meter, rate, 500, 20000);
    EXPECT_NEAR(meter.Delivered(), rate, rate / 20) << rate;
  }
}

TEST(RateMeter, tells_what_is_shown_by_itself) {
  RateMeter meter;
  meter.Start(0);
  Watch(meter, 40, 500, 20000);
  EXPECT_DOUBLE_EQ(meter.Delivered(), 40);
  EXPECT_DOUBLE_EQ(meter.Shown(), 20);
}

TEST(RateMeter, follows_a_fast_source_within_a_second) {
  RateMeter meter;
  meter.Start(0);
  Watch(meter, 100, 500, 10000);
  meter.Note(10500, 1010, 1010);  // 20 a second from here on
  meter.Note(11000, 1020, 1020);
  EXPECT_DOUBLE_EQ(meter.Delivered(), 20);
}

TEST(RateMeter, tells_none_when_the_source_has_stopped_or_begins) {
  RateMeter meter;
  EXPECT_EQ(meter.Delivered(), 0);
  meter.Start(0);
  EXPECT_EQ(meter.Delivered(), 0);
  Watch(meter, 100, 500, 10000);
  for (int ms = 10500; ms <= 20500; ms += 500) meter.Note(ms, 1000, 500);
  EXPECT_EQ(meter.Delivered(), 0);
  meter.Start(30000);
  meter.Note(30500, 5, 5);
  EXPECT_DOUBLE_EQ(meter.Delivered(), 10);
}
