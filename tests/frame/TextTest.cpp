#include "QTD/frame/Text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "frame/OwnLocale.h"

namespace {

using QTD::ParseBool;
using QTD::ParseDouble;
using QTD::ParseInt;
using QTD::ParseInt64;
using QTD::ParsePointer;
using QTD::ToText;

// The text of the exception of type E that `call` raises.
template <typename E, typename Call>
std::string Raised(Call call) {
  try {
    call();
  } catch (const E& error) {
    return error.what();
  } catch (...) {
    return "another exception";
  }
  return "no exception";
}

TEST(Text, writes_whole_numbers_in_decimal) {
  EXPECT_EQ(ToText(0), "0");
  EXPECT_EQ(ToText(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(ToText(std::numeric_limits<long long>::min()), "-9223372036854775808");
  EXPECT_EQ(ToText(4294967295u), "4294967295");
  EXPECT_EQ(ToText(1234567890123L), "1234567890123");
}

TEST(Text, writes_a_flag_as_0_or_1) {
  EXPECT_EQ(ToText(true), "1");
  EXPECT_EQ(ToText(false), "0");
}

TEST(Text, writes_a_double_with_six_decimals) {
  EXPECT_EQ(ToText(0.5), "0.500000");
  EXPECT_EQ(ToText(-2.0), "-2.000000");
  EXPECT_EQ(ToText(0.1234567), "0.123457");
  EXPECT_EQ(ToText(std::numeric_limits<double>::infinity()), "inf");
}

TEST(Text, takes_the_callers_format_and_the_default_for_null) {
  EXPECT_EQ(ToText(255, "%04x"), "00ff");
  EXPECT_EQ(ToText(7LL, "<%lld>"), "<7>");
  EXPECT_EQ(ToText(1.25, "%.1e"), "1.2e+00");
  EXPECT_EQ(ToText(5, nullptr), "5");
  EXPECT_EQ(ToText(0.5, nullptr), "0.500000");
}

TEST(Text, never_cuts_a_long_value) {
  const std::string large = ToText(1e300);
  ASSERT_EQ(large.size(), 301u + 7u);  // 301 digits, the point, six decimals
  EXPECT_EQ(large.substr(301), ".000000");
  EXPECT_EQ(ParseDouble(large), 1e300);
  EXPECT_EQ(ToText(1, "%100d"), std::string(99, ' ') + "1");
  EXPECT_EQ(ToText(1, "%63d").size(), 63u);
  EXPECT_EQ(ToText(1, "%64d").size(), 64u);
}

TEST(Text, speaks_the_c_locale_whatever_the_host_set) {
  const test::CommaLocale locale;
  ASSERT_TRUE(locale.IsSet());
  EXPECT_EQ(ToText(0.5), "0.500000");
  EXPECT_EQ(ToText(0.25, "%.2f"), "0.25");
  EXPECT_EQ(ToText(1234567, "%'d"), "1234567");
  EXPECT_EQ(ToText(1234567LL), "1234567");
  EXPECT_EQ(ParseDouble("0.5"), 0.5);
  EXPECT_EQ(ParseDouble("0,5"), 0.0);
  EXPECT_EQ(ParseInt("1.234"), 1);
  EXPECT_TRUE(locale.IsSet()) << "the host's setting must stay";
}

TEST(Text, reads_the_zero_of_the_kind_from_an_empty_text) {
  EXPECT_EQ(ParseInt(""), 0);
  EXPECT_EQ(ParseInt64(""), 0);
  EXPECT_FALSE(ParseBool(""));
  EXPECT_EQ(ParseDouble(""), 0.0);
  EXPECT_EQ(ParsePointer(""), nullptr);
  EXPECT_EQ(QTD::ParseString(""), "");
}

TEST(Text, ends_a_value_at_its_first_zero_byte) {
  EXPECT_EQ(ParseInt(std::string(1, '\0')), 0);
  EXPECT_EQ(ParseDouble(std::string(1, '\0')), 0.0);
  EXPECT_EQ(ParsePointer(std::string(1, '\0')), nullptr);
  EXPECT_EQ(ParseInt(std::string("1\0002", 3)), 1);
  EXPECT_EQ(ParseDouble(std::string("1\0002", 3)), 1.0);
  EXPECT_EQ(QTD::ParseString(std::string("ab\0cd", 5)), "ab");
}

TEST(Text, skips_leading_blanks_and_ignores_trailing_characters) {
  EXPECT_EQ(ParseInt("12abc"), 12);
  EXPECT_EQ(ParseInt(" \t\n\v\f\r-7 "), -7);
  EXPECT_EQ(ParseInt("+5"), 5);
  EXPECT_EQ(ParseInt("0x10"), 0);
  EXPECT_EQ(ParseInt("3.9"), 3);
  EXPECT_EQ(ParseInt64(" +9223372036854775807x"), 9223372036854775807LL);
  EXPECT_EQ(ParseDouble("\t 1.5mm"), 1.5);
}

TEST(Text, reads_whole_numbers_up_to_their_limits) {
  EXPECT_EQ(ParseInt("2147483647"), 2147483647);
  EXPECT_EQ(ParseInt("-2147483648"), std::numeric_limits<int>::min());
  EXPECT_EQ(ParseInt64("-9223372036854775808"), std::numeric_limits<int64_t>::min());
}

TEST(Text, reads_a_flag_as_a_number_other_than_0) {
  EXPECT_TRUE(ParseBool("1"));
  EXPECT_TRUE(ParseBool("-2"));
  EXPECT_FALSE(ParseBool("0"));
}

TEST(Text, reads_doubles_in_all_forms_of_the_c_library) {
  EXPECT_EQ(ParseDouble("1e3"), 1000.0);
  EXPECT_EQ(ParseDouble(".5"), 0.5);
  EXPECT_EQ(ParseDouble("-0x1p4"), -16.0);
  EXPECT_TRUE(std::isinf(ParseDouble("-INF")));
  EXPECT_TRUE(std::isnan(ParseDouble("nan(1)")));
}

TEST(Text, raises_invalid_argument_without_digits) {
  using Invalid = std::invalid_argument;
  for (const char* text : {"abc", "true", " ", "-", "+-5", "--5", "- 5"}) {
    EXPECT_EQ(Raised<Invalid>([&] { ParseInt(text); }), "invalid stoi argument") << text;
    EXPECT_EQ(Raised<Invalid>([&] { ParseBool(text); }), "invalid stoi argument") << text;
    EXPECT_EQ(Raised<Invalid>([&] { ParseInt64(text); }), "invalid stoll argument") << text;
    EXPECT_EQ(Raised<Invalid>([&] { ParseDouble(text); }), "invalid stod argument") << text;
  }
}

TEST(Text, raises_out_of_range_beyond_the_limits) {
  using Range = std::out_of_range;
  for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
    EXPECT_EQ(Raised<Range>([&] { ParseInt(text); }), "stoi argument out of range") << text;
    EXPECT_EQ(Raised<Range>([&] { ParseBool(text); }), "stoi argument out of range") << text;
  }
  for (const char* text : {"9223372036854775808", "-9223372036854775809"}) {
    EXPECT_EQ(Raised<Range>([&] { ParseInt64(text); }), "stoll argument out of range") << text;
  }
  for (const char* text : {"1e400", "-1e400", "1e-400"}) {
    EXPECT_EQ(Raised<Range>([&] { ParseDouble(text); }), "stod argument out of range") << text;
  }
}

TEST(Text, takes_no_notice_of_an_earlier_error_number_and_leaves_it) {
  errno = ERANGE;
  EXPECT_EQ(ParseDouble("2.5"), 2.5);
  EXPECT_EQ(errno, ERANGE);
  errno = 0;
  EXPECT_THROW(ParseDouble("1e400"), std::out_of_range);
  EXPECT_EQ(errno, 0);
}

TEST(Text, reads_back_a_pointer_that_it_wrote) {
  int target = 0;
  EXPECT_EQ(ParsePointer(ToText(static_cast<const void*>(&target))), &target);
  EXPECT_EQ(QTD::ParsePointerAs<int>(ToText(static_cast<const void*>(&target))), &target);
  EXPECT_EQ(ToText(static_cast<const void*>(nullptr)), "(nil)");
}

TEST(Text, takes_for_blanks_in_front_of_a_pointer_what_the_c_locale_does) {
  const test::BarLocale locale;
  ASSERT_TRUE(locale.IsSet());
  EXPECT_EQ(ParsePointer("|0x10"), nullptr);
  EXPECT_EQ(ParsePointer("\t 0x10"), reinterpret_cast<void*>(16));
  EXPECT_TRUE(locale.IsSet()) << "the host's setting must stay";
}

// The address of a text is never its value.
template <typename Value, typename = void>
constexpr bool kIsWritten = false;
template <typename Value>
constexpr bool kIsWritten<Value, std::void_t<decltype(ToText(std::declval<Value>()))>> = true;

TEST(Text, writes_no_text_as_an_address) {
  static_assert(!kIsWritten<const char*> && !kIsWritten<char*> && !kIsWritten<const char(&)[4]>);
  static_assert(kIsWritten<const void*> && kIsWritten<int*> && kIsWritten<bool>);
  EXPECT_EQ(ToText(nullptr), "(nil)");
}

TEST(Text, reads_null_from_all_its_forms_and_from_an_unreadable_text) {
  for (const char* text : {"(nil)", "0", "0x0", "xyz", " "}) EXPECT_EQ(ParsePointer(text), nullptr) << text;
  EXPECT_EQ(ParsePointer("0x10"), reinterpret_cast<void*>(16));
  EXPECT_EQ(ParsePointer("10"), reinterpret_cast<void*>(16))
      << "digits are hexadecimal without the prefix too";
}

}  // namespace
