#include "QTD/image/FormatNumber.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using QTD::FormatNumbers;
using QTD::FormatValue;

constexpr size_t kLongest = 16383;

std::string Format(const std::string& format) {
  return FormatNumbers(format, {FormatValue(uint32_t{42})});
}

TEST(FormatNumbers, puts_the_length_of_the_value_in) {
  EXPECT_EQ(FormatNumbers("%d", {FormatValue(int64_t{-5000000000})}), "-5000000000");
  EXPECT_EQ(FormatNumbers("%i", {FormatValue(UINT64_MAX)}), "-1");
  EXPECT_EQ(FormatNumbers("%u", {FormatValue(UINT64_MAX)}), "18446744073709551615");
  EXPECT_EQ(FormatNumbers("%X", {FormatValue(UINT64_MAX)}), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(FormatNumbers("%d", {FormatValue(UINT32_MAX)}), "-1");
  EXPECT_EQ(FormatNumbers("%u", {FormatValue(UINT32_MAX)}), "4294967295");
  EXPECT_EQ(FormatNumbers("%o", {FormatValue(UINT32_MAX)}), "37777777777");
}

TEST(FormatNumbers, takes_flags_width_and_precision) {
  EXPECT_EQ(Format("[%5d]"), "[   42]");
  EXPECT_EQ(Format("[%-5d]"), "[42   ]");
  EXPECT_EQ(Format("[%05d]"), "[00042]");
  EXPECT_EQ(Format("[%+d]"), "[+42]");
  EXPECT_EQ(Format("[% d]"), "[ 42]");
  EXPECT_EQ(Format("[%#x]"), "[0x2a]");
  EXPECT_EQ(Format("[%#d]"), "[42]");
  EXPECT_EQ(Format("[%6.4u]"), "[  0042]");
  EXPECT_EQ(Format("[%.4i]"), "[0042]");
  EXPECT_EQ(Format("[%---5d]"), "[42   ]");
  EXPECT_EQ(FormatNumbers("[%.d]", {FormatValue(uint32_t{0})}), "[]");
}

TEST(FormatNumbers, counts_the_values) {
  EXPECT_EQ(FormatNumbers("%u/%u", {FormatValue(uint32_t{1}), FormatValue(uint64_t{2})}), "1/2");
  EXPECT_EQ(FormatNumbers("%u", {FormatValue(uint32_t{1}), FormatValue(uint64_t{2})}), "1");
  EXPECT_EQ(Format("%u %u"), "");
  EXPECT_EQ(Format("%% %u %%"), "% 42 %");
  EXPECT_EQ(FormatNumbers("%%%%", {}), "%%");
  EXPECT_EQ(FormatNumbers("%u", {}), "");
}

TEST(FormatNumbers, refuses_every_other_letter) {
  for (int letter = 1; letter < 256; ++letter) {
    const char byte = static_cast<char>(letter);
    if (std::string("diuxXo%").find(byte) != std::string::npos) continue;
    EXPECT_EQ(Format(std::string("a%") + byte), "") << letter;
  }
  for (const char* format :
       {"%ld", "%lld", "%hu", "%zu", "%jd", "%*d", "%.*d", "%1$d", "%'d", "%.-3d", "%5%", "%"}) {
    EXPECT_EQ(Format(format), "") << format;
  }
}

TEST(FormatNumbers, ends_after_16383_characters) {
  EXPECT_EQ(Format(std::string(20000, 'x')), std::string(kLongest, 'x'));
  EXPECT_EQ(Format(std::string(kLongest, 'x') + "%u"), std::string(kLongest, 'x'));
  EXPECT_EQ(Format("%16383d"), std::string(kLongest - 2, ' ') + "42");
  EXPECT_EQ(Format("%16384d"), std::string(kLongest - 1, ' ') + "4");
}

TEST(FormatNumbers, refuses_a_bad_format_even_behind_the_end_of_the_room) {
  EXPECT_EQ(Format(std::string(20000, 'x') + "%n"), "");
}

TEST(FormatNumbers, survives_huge_widths_and_precisions) {
  EXPECT_EQ(Format("%2000000000d"), std::string(kLongest, ' '));
  EXPECT_EQ(Format("%99999999999999999999d"), std::string(kLongest, ' '));
  EXPECT_EQ(Format("%-2000000000d"), "42" + std::string(kLongest - 2, ' '));
  EXPECT_EQ(Format("%02000000000d"), std::string(kLongest, '0'));
  EXPECT_EQ(Format("%.2000000000d"), std::string(kLongest, '0'));
  EXPECT_EQ(Format("%#.99999999999x"), "0x" + std::string(kLongest - 2, '0'));
  EXPECT_EQ(FormatNumbers("%.2147483647d", {FormatValue(int64_t{-1})}), "-" + std::string(kLongest - 1, '0'));
}

}  // namespace
