#include "QTD/image/FormatTime.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <string>

namespace {

int64_t Noon() {
  std::tm local{};
  local.tm_year = 123;
  local.tm_mon = 10;
  local.tm_mday = 5;
  local.tm_hour = 12;
  local.tm_sec = 1;
  local.tm_isdst = -1;
  return mktime(&local);
}

std::string At(const std::string& format, int32_t millisecond = 123) {
  return QTD::FormatTime(format, Noon(), millisecond);
}

TEST(FormatTime, writes_the_local_time) {
  EXPECT_EQ(At(""), "20231105120001");
  EXPECT_EQ(At("%H%M%S.%fff"), "120001.123");
  EXPECT_EQ(At("text"), "text");
}

TEST(FormatTime, gives_one_digit_of_the_fraction_per_f) {
  EXPECT_EQ(At("%f"), "1");
  EXPECT_EQ(At("%ff"), "12");
  EXPECT_EQ(At("%fff"), "123");
  EXPECT_EQ(At("%f", 99), "0");
  EXPECT_EQ(At("%ff", 99), "09");
  EXPECT_EQ(At("%fff", 9), "009");
  EXPECT_EQ(At("%f", 999), "9");
}

TEST(FormatTime, counts_a_run_of_more_than_3_as_3) {
  EXPECT_EQ(At("%ffff!"), "123f!");
}

// The stretch has the length 1 + run + position: at position 0 exactly the "%f...", at 2 two characters more.
TEST(FormatTime, swallows_as_many_characters_behind_the_fraction_as_stand_before_it) {
  EXPECT_EQ(At("%f-%H"), "1-12");
  EXPECT_EQ(At("a.%f-z%H"), "a.112");
  EXPECT_EQ(At("%H%fff1234end"),
            "12123"
            "34end");
  EXPECT_EQ(At("abcdef%f12345"), "abcdef1");  // cut off at the end
}

TEST(FormatTime, replaces_the_first_fraction_only) {
  EXPECT_EQ(At("%f%%"), "1%");
  const std::string second = At("%fx%H%f");
  EXPECT_EQ(second.substr(0, 4), "1x12");
  EXPECT_NE(second, "1x121");
}

TEST(FormatTime, bounds_the_text_at_255_characters) {
  EXPECT_EQ(At(std::string(255, 'x')), std::string(255, 'x'));
  EXPECT_EQ(At(std::string(256, 'x')), "");
  EXPECT_EQ(At("%99999999999d"), "");
  EXPECT_EQ(At(std::string(100000, 'x') + "%f"), "");
}

TEST(FormatTime, survives_odd_formats_and_clocks) {
  At("%");
  At("%E");
  At("%Q%!%%f");
  EXPECT_EQ(QTD::FormatTime("%Y", std::numeric_limits<int64_t>::max(), 0), "");
}

}  // namespace
