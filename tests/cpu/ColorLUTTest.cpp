// The tables of colour correction against the rule for one entry.
#include "cpu/stages/ColorLUT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// The rule in its own words and in a wider type: rounded half away from zero, then clamped.
uint32_t Rule(int32_t value, int32_t size, double gain, double offset, double gamma) {
  const int32_t top = size - 1;
  double x = value * gain + top * offset;
  const bool active = (gamma < 1.0 - 1e-7 || gamma > 1.0 + 1e-7) && (gamma < -1e-7 || gamma > 1e-7);
  if (active) x = std::pow(x > 0 ? x : 0.004, gamma);
  const long double rounded = std::trunc(x < 0 ? x - 0.5 : x + 0.5);
  if (std::isnan(x) || rounded < 0) return 0;
  return rounded > top ? static_cast<uint32_t>(top) : static_cast<uint32_t>(rounded);
}

void ExpectRule(const ColorLUT& lut) {
  for (int32_t channel = 0; channel < std::min(lut.channels, 3); ++channel) {
    const auto c = static_cast<size_t>(channel);
    for (int32_t value = 0; value <= lut.size; ++value) {
      const uint32_t expected = Rule(value, lut.size, lut.gain[c], lut.offset[c], lut.gamma);
      ASSERT_EQ(lut.tables[c][static_cast<size_t>(value)], expected) << channel << " at " << value;
    }
    for (size_t word = 0; word < ColorLUT::kWordValues; ++word) {
      const size_t index = std::min<size_t>(word, static_cast<size_t>(lut.size));
      ASSERT_EQ(lut.Words(c)[word], lut.tables[c][index]) << channel << " at " << word;
    }
  }
}

TEST(ColorLUT, has_no_tables_at_first) {
  ColorLUT lut;
  EXPECT_EQ(lut.size, 0);
  EXPECT_EQ(lut.channels, 1);
  EXPECT_EQ(lut.gamma, 1.0);
  for (size_t colour = 0; colour < 3; ++colour) {
    EXPECT_EQ(lut.gain[colour], 1.0);
    EXPECT_EQ(lut.offset[colour], 0.0);
  }
  for (const auto& table : lut.tables) EXPECT_EQ(table, nullptr);
  lut.Compute();  // nothing to do
  EXPECT_EQ(lut.Words(0), nullptr);
}

TEST(ColorLUT, makes_identity_tables_of_one_entry_more_than_its_size) {
  for (const int32_t size : {256, 1024, 4096, 16384, 65536}) {
    ColorLUT lut;
    lut.Allocate(size, 3);
    ASSERT_EQ(lut.size, size);
    EXPECT_EQ(lut.channels, 3);
    for (size_t channel = 0; channel < 3; ++channel) {
      for (int32_t value = 0; value <= size; ++value) {
        ASSERT_EQ(lut.tables[channel][static_cast<size_t>(value)], static_cast<uint32_t>(value));
        ASSERT_EQ(lut.spareTables[channel][static_cast<size_t>(value)], static_cast<uint32_t>(value));
      }
      for (size_t word = 0; word < ColorLUT::kWordValues; ++word)
        ASSERT_EQ(lut.Words(channel)[word], std::min<size_t>(word, static_cast<size_t>(size)));
    }
    EXPECT_EQ(lut.tables[3], nullptr);
  }
}

TEST(ColorLUT, any_other_size_means_no_tables) {
  for (const int32_t size :
       {0, 1, -1, 255, 257, 512, 2048, 8192, 32768, 65535, 65537, 131072, INT32_MAX, INT32_MIN}) {
    ColorLUT lut;
    lut.Allocate(size, 3);
    EXPECT_EQ(lut.size, 0) << size;
    EXPECT_EQ(lut.tables[0], nullptr);
  }
}

TEST(ColorLUT, has_one_to_four_tables) {
  const int32_t wanted[][2] = {{INT32_MIN, 1}, {-1, 1}, {0, 1}, {1, 1},        {2, 2},
                               {3, 3},         {4, 4},  {5, 4}, {INT32_MAX, 4}};
  for (const auto& [asked, given] : wanted) {
    ColorLUT lut;
    lut.Allocate(256, asked);
    EXPECT_EQ(lut.channels, given);
    for (int32_t channel = 0; channel < 4; ++channel)
      EXPECT_EQ(lut.tables[static_cast<size_t>(channel)] != nullptr, channel < given) << asked;
  }
}

TEST(ColorLUT, a_fourth_table_stays_the_identity) {
  ColorLUT lut;
  lut.Allocate(256, 4);
  lut.gain = {2, 2, 2};
  lut.gamma = 2;
  lut.Compute();
  ExpectRule(lut);
  for (uint32_t value = 0; value <= 256; ++value) {
    EXPECT_EQ(lut.tables[3][value], value);
    EXPECT_EQ(lut.spareTables[0][value], value);
  }
}

TEST(ColorLUT, a_new_allocation_starts_from_the_default) {
  ColorLUT lut;
  lut.Allocate(4096, 3);
  lut.gain = {2, 3, 4};
  lut.offset = {.1, .2, .3};
  lut.gamma = 0.5;
  lut.Compute();
  lut.Allocate(1024, 1);
  EXPECT_EQ(lut.gain[2], 1.0);
  EXPECT_EQ(lut.offset[2], 0.0);
  EXPECT_EQ(lut.gamma, 1.0);
  EXPECT_EQ(lut.tables[1], nullptr);
  EXPECT_EQ(lut.tables[0][1024], 1024u);
  lut.gain[0] = 5;
  lut.Free();
  EXPECT_EQ(lut.size, 0);
  EXPECT_EQ(lut.gain[0], 1.0);
  EXPECT_EQ(lut.tables[0], nullptr);
  EXPECT_EQ(lut.Words(0), nullptr);
}

TEST(ColorLUT, the_neutral_setting_leaves_all_values) {
  ColorLUT lut;
  lut.Allocate(4096, 1);
  lut.Compute();
  for (uint32_t value = 0; value < 4096; ++value) ASSERT_EQ(lut.tables[0][value], value);
  EXPECT_EQ(lut.tables[0][4096], 4095u);  // the entry behind the range is clamped
}

TEST(ColorLUT, a_gain_of_2_doubles_up_to_the_largest_value) {
  ColorLUT lut;
  lut.Allocate(4096, 1);
  lut.gain[0] = 2;
  lut.Compute();
  for (uint32_t value = 0; value <= 2047; ++value) ASSERT_EQ(lut.tables[0][value], 2 * value);
  for (uint32_t value = 2048; value <= 4096; ++value) ASSERT_EQ(lut.tables[0][value], 4095u);
}

TEST(ColorLUT, an_offset_is_a_fraction_of_the_largest_value) {
  ColorLUT lut;
  lut.Allocate(65536, 3);
  lut.offset[1] = 0.5;
  lut.Compute();
  // 65535 / 2 is 32767.5, which rounds away from zero.
  for (uint32_t value = 0; value <= 65536; ++value) {
    ASSERT_EQ(lut.tables[1][value], std::min(value + 32768, 65535u));
    ASSERT_EQ(lut.tables[0][value], std::min(value, 65535u));
  }
}

TEST(ColorLUT, gamma_works_on_the_value_itself) {
  ColorLUT lut;
  lut.Allocate(4096, 1);
  lut.gamma = 2;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][0], 0u);  // 0.004 squared
  EXPECT_EQ(lut.tables[0][16], 256u);
  EXPECT_EQ(lut.tables[0][63], 3969u);
  EXPECT_EQ(lut.tables[0][64], 4095u);
  lut.gamma = 0.5;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][4095], 64u);  // darkens strongly
  // What has no power counts as 0.004.
  lut.gamma = -1;
  lut.offset[0] = -0.5;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][0], 250u);
}

// Values between two integers show whether a power that moves them by some hundredths was taken.
TEST(ColorLUT, gamma_near_1_and_near_0_is_not_active) {
  struct Case {
    double gamma, fraction;
    uint32_t step;  // to the nearest integer
  };
  constexpr double kTop = 65535;
  for (const Case& tried : {Case{1.0 + 9e-8, 0.46, 0},
                            {1.0 - 9e-8, 0.54, 1},
                            {0.0, 0.46, 0},
                            {9e-8, 0.46, 0},
                            {-9e-8, 0.46, 0}}) {
    ColorLUT lut;
    lut.Allocate(65536, 1);
    lut.gamma = tried.gamma;
    lut.offset[0] = tried.fraction / kTop;
    lut.Compute();
    for (uint32_t value = 0; value < 65535; ++value)
      ASSERT_EQ(lut.tables[0][value], value + tried.step) << tried.gamma;
  }
  for (const double gamma : {1.1e-7, -1.1e-7}) {
    ColorLUT lut;
    lut.Allocate(256, 1);
    lut.gamma = gamma;
    lut.Compute();
    EXPECT_EQ(lut.tables[0][200], 1u);
  }
  // 60000.4 to the power of 1 + 2e-7 is 60000.4 * (1 + 2e-7 * 11.0) = 60000.53.
  ColorLUT lut;
  lut.Allocate(65536, 1);
  lut.gamma = 1.0 + 2e-7;
  lut.offset[0] = 0.4 / kTop;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][60000], 60001u);
  EXPECT_EQ(lut.tables[0][100], 100u);
}

TEST(ColorLUT, every_entry_follows_the_rule) {
  const double gains[] = {0, 0.5, 1, 1.7, -1, 300}, offsets[] = {0, 0.25, -0.1, 1.5, -3};
  for (const int32_t size : {256, 1024, 4096}) {
    for (const double gain : gains) {
      for (const double offset : offsets) {
        for (const double gamma : {1.0, 0.45, 2.2, -0.5}) {
          ColorLUT lut;
          lut.Allocate(size, 3);
          lut.gain = {gain, 1 - gain, gain * gain};
          lut.offset = {offset, -offset, offset / 3};
          lut.gamma = gamma;
          lut.Compute();
          ExpectRule(lut);
        }
      }
    }
  }
  for (const int32_t size : {16384, 65536}) {
    ColorLUT lut;
    lut.Allocate(size, 3);
    lut.gain = {1.7, 0.3, -0.5};
    lut.offset = {-0.05, 0.125, 1};
    for (const double gamma : {1.0, 0.9, 1.1}) {
      lut.gamma = gamma;
      lut.Compute();
      ExpectRule(lut);
    }
  }
}

TEST(ColorLUT, absurd_settings_give_entries_within_the_range) {
  const double absurd[] = {0, 1, -1, 1e300, -1e300, 1e-300, kInfinity, -kInfinity, kNan};
  for (const double gain : absurd) {
    for (const double offset : absurd) {
      for (const double gamma : absurd) {
        ColorLUT lut;
        lut.Allocate(256, 1);
        lut.gain[0] = gain;
        lut.offset[0] = offset;
        lut.gamma = gamma;
        lut.Compute();
        for (uint32_t value = 0; value <= 256; ++value) ASSERT_LE(lut.tables[0][value], 255u);
      }
    }
  }
  ColorLUT lut;
  lut.Allocate(256, 1);
  lut.gain[0] = kNan;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][100], 0u);  // what is no number is 0
  lut.gain[0] = kInfinity;
  lut.Compute();
  EXPECT_EQ(lut.tables[0][0], 0u);  // 0 times infinity is no number
  EXPECT_EQ(lut.tables[0][1], 255u);
}

}  // namespace
