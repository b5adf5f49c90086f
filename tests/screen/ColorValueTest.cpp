#include "QTD/screen/ColorValue.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "QTD/screen/Numbers.h"

TEST(Round, goes_half_away_from_zero) {
  EXPECT_EQ(QTD::Round(0.5), 1);
  EXPECT_EQ(QTD::Round(-0.5), -1);
  EXPECT_EQ(QTD::Round(2.4999), 2);
  EXPECT_EQ(QTD::Round(-2.5), -3);
  EXPECT_EQ(QTD::Round(0), 0);
}

TEST(Round, holds_what_no_int_can_take) {
  EXPECT_EQ(QTD::Round(1e300), INT_MAX);
  EXPECT_EQ(QTD::Round(-1e300), INT_MIN);
  EXPECT_EQ(QTD::Round(std::numeric_limits<double>::infinity()), INT_MAX);
  EXPECT_EQ(QTD::Round(std::nan("")), 0);
  EXPECT_EQ(QTD::Round(2147483646.4), 2147483646);
}

TEST(GuardedDivide, answers_zero_for_a_divisor_near_zero) {
  EXPECT_EQ(QTD::GuardedDivide(5, 0), 0.0);
  EXPECT_EQ(QTD::GuardedDivide(5, 0.9e-7), 0.0);
  EXPECT_EQ(QTD::GuardedDivide(5, -0.9e-7), 0.0);
  EXPECT_EQ(QTD::GuardedDivide(5, 2), 2.5);
  EXPECT_DOUBLE_EQ(QTD::GuardedDivide(1e-7, 1e-7), 1.0);
}

TEST(ColorValue, takes_red_from_the_lowest_byte) {
  const ColorValue color(0xFF302010u);
  EXPECT_EQ(color.red, 0x10);
  EXPECT_EQ(color.green, 0x20);
  EXPECT_EQ(color.blue, 0x30);
  EXPECT_EQ(color.alpha, 0);
}

TEST(ColorValue, begins_black_with_eight_bits) {
  const ColorValue color;
  EXPECT_TRUE(color.IsBlack());
  EXPECT_EQ(color.range, 256);
  EXPECT_EQ(color.depth, 8);
  EXPECT_EQ(color.mode, 0);
  EXPECT_EQ(color.redPart + color.greenPart + color.bluePart + color.alphaPart, 0.0);
  EXPECT_EQ(color.redWeight, 0.3086);
  EXPECT_EQ(color.greenWeight, 0.6094);
  EXPECT_EQ(color.blueWeight, 0.082);
  EXPECT_FALSE(ColorValue(0, 0, 1).IsBlack());
}

TEST(ColorValue, divides_by_the_range_and_makes_its_last_value_full) {
  const ColorValue color(128, 255, 254);
  EXPECT_EQ(color.redPart, 0.5);
  EXPECT_EQ(color.greenPart, 1.0);
  EXPECT_EQ(color.bluePart, 254.0 / 256);
  EXPECT_EQ(ColorValue(70000, 0, 0, 65536).redPart, 1.0);
  EXPECT_EQ(ColorValue(-3, 0, 0).redPart, 0.0);
}

TEST(ColorValue, derives_the_depth_from_the_range) {
  const int rows[][2] = {{256, 8},    {1024, 10}, {4096, 12}, {16384, 14},
                         {65536, 16}, {512, 8},   {2048, 8},  {1000, 8}};
  for (const auto& row : rows) EXPECT_EQ(ColorValue(0, 0, 0, row[0]).depth, row[1]) << row[0];
}

TEST(ColorValue, survives_a_range_without_values) {
  for (int range : {0, 1, -1, INT_MIN}) {
    const ColorValue color(0, 5, -5, range);
    for (double part : {color.redPart, color.greenPart, color.bluePart}) {
      EXPECT_GE(part, 0.0) << range;
      EXPECT_LE(part, 1.0) << range;
    }
    EXPECT_EQ(color.Grey().red, 0) << range;
  }
}

TEST(ColorValue, keeps_its_integers_at_its_own_depth) {
  for (int value = 0; value < 256; ++value) {
    EXPECT_EQ(ColorValue(value, 0, 0).AtDepth(8).red, value);
  }
}

TEST(ColorValue, rescales_the_integers_and_keeps_the_parts_at_another_depth) {
  ColorValue color(255, 128, 0);
  color.mode = 3;
  const ColorValue wide = color.AtDepth(16);
  EXPECT_EQ(wide.range, 65536);
  EXPECT_EQ(wide.depth, 16);
  EXPECT_EQ(wide.mode, 3);
  EXPECT_EQ(wide.red, 65535);
  EXPECT_EQ(wide.green, 32768);
  EXPECT_EQ(wide.blue, 0);
  EXPECT_EQ(wide.redPart, 1.0);
  EXPECT_EQ(wide.greenPart, 0.5);
  EXPECT_EQ(wide.AtDepth(8).green, 128);
  EXPECT_EQ(color.AtDepth(12).red, 4095);
}

TEST(ColorValue, holds_an_absurd_depth) {
  for (int depth : {-1, 0, 31, 32, INT_MAX, INT_MIN}) {
    const ColorValue color = ColorValue(255, 0, 0).AtDepth(depth);
    EXPECT_GT(color.range, 0) << depth;
    EXPECT_EQ(color.red, color.range - 1) << depth;
  }
}

TEST(ColorValue, weighs_the_components_of_its_grey) {
  EXPECT_EQ(ColorValue(255, 0, 0).Grey().red, 79);     // 0.3086 * 256 = 79.0016
  EXPECT_EQ(ColorValue(0, 255, 0).Grey().green, 156);  // 0.6094 * 256 = 156.0064
  EXPECT_EQ(ColorValue(0, 0, 255).Grey().blue, 21);    // 0.082 * 256 = 20.992
  const ColorValue white = ColorValue(255, 255, 255).AtDepth(16).Grey();
  EXPECT_EQ(white.red, 65535);
  EXPECT_EQ(white.green, 65535);
  EXPECT_EQ(white.blue, 65535);
  const ColorValue half = ColorValue(128, 128, 128).Grey();
  EXPECT_EQ(half.red, 128);
  EXPECT_NEAR(half.bluePart, 0.5, 1e-12);
}
