#include "cpu/screen/TextLine.h"

#include <gtest/gtest.h>

#include <limits>

TEST(TextLine, is_cut_at_its_first_tab) {
  const TextLine plain("abc");
  EXPECT_EQ(plain.piece, "abc");
  EXPECT_EQ(plain.rest, "");
  const TextLine tabbed("ab\tc\td");
  EXPECT_EQ(tabbed.piece, "ab");
  EXPECT_EQ(tabbed.rest, "c\td");
  const TextLine ending("ab\t");
  EXPECT_EQ(ending.piece, "ab");
  EXPECT_EQ(ending.rest, "");
  EXPECT_EQ(TextLine(nullptr).piece, "");
}

TEST(TextLine, tab_stops_lie_four_font_heights_apart_from_the_start) {
  int stop = 0;
  EXPECT_TRUE(NextTabStop(10, 6, 14, &stop));
  EXPECT_EQ(stop, 66);
  EXPECT_TRUE(NextTabStop(10, 55, 14, &stop));
  EXPECT_EQ(stop, 66);
  EXPECT_TRUE(NextTabStop(10, 56, 14, &stop));
  EXPECT_EQ(stop, 122);
  EXPECT_TRUE(NextTabStop(-300, 0, 14, &stop));
  EXPECT_EQ(stop, -244);
}

TEST(TextLine, has_no_tab_stop_for_a_font_without_height_or_past_the_range_of_int) {
  int stop = 7;
  EXPECT_FALSE(NextTabStop(10, 6, 0, &stop));
  EXPECT_FALSE(NextTabStop(10, 6, -3, &stop));
  EXPECT_FALSE(NextTabStop(std::numeric_limits<int>::max(), 6, 14, &stop));
  EXPECT_EQ(stop, 7);
}
