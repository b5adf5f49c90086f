#include "QTD/image/QTDImageParser.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <string>

#include "QTD/frame/Text.h"
#include "ZynPixelFormat.h"

namespace {

// A parser whose clock stands still, and whose state during a run can be seen.
class Parser : public QTDImageParser {
 public:
  int64_t ReadClock() const override {
    ++readings;
    return now;
  }

  using QTDImageParser::image;

  void SetLocalTime(int hour, int minute, int second, int millis) {
    std::tm local{};
    local.tm_year = 2023 - 1900;
    local.tm_mon = 5;
    local.tm_mday = 7;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    now = int64_t{mktime(&local)} * 1000 + millis;
  }

  int64_t now = 0;
  mutable int readings = 0;
};

class ImageParser : public testing::Test {
 protected:
  ImageParser() {
    image.imageID = 42;
    image.timestamp = 1234567890123456789u;
    image.width = 640;
    image.height = 480;
    image.pixelType = ZYN_PIXEL_MONO8;
    parser.variables.Set("image", QTD::ToText(static_cast<const void*>(&image)));
    parser.SetLocalTime(12, 0, 1, 123);
  }

  std::string Parse(const std::string& text) { return parser.Parse(text.c_str()); }

  ZynImage image{};
  Parser parser;
};

TEST(TextParser, answers_the_text_as_it_stands) {
  QTD::TextParser parser;
  EXPECT_EQ(parser.Parse("a ${br} b"), "a ${br} b");
  EXPECT_EQ(parser.Parse(""), "");
  EXPECT_EQ(parser.Parse(nullptr), "");
}

TEST(QTDImageParser, starts_with_its_name_and_without_variables) {
  QTDImageParser parser;
  EXPECT_EQ(parser.name, "QTDImageParser");
  EXPECT_EQ(parser.variables.Count(), 0);
  EXPECT_EQ(parser.options.Count(), 0);
}

TEST(QTDImageParser, reads_the_wall_clock) {
  QTDImageParser parser;
  const auto now = [] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
  };
  const int64_t before = now();
  const int64_t read = std::stoll(parser.Parse("${millis}"));
  EXPECT_GE(read, before);
  EXPECT_LE(read, now());
}

TEST_F(ImageParser, answers_nothing_for_nothing) {
  EXPECT_EQ(parser.Parse(nullptr), "");
  EXPECT_EQ(parser.Parse(""), "");
  EXPECT_EQ(Parse("plain } text $ {"), "plain } text $ {");
}

TEST_F(ImageParser, expands_the_fields_of_the_image) {
  EXPECT_EQ(Parse("Frame ${image.id}"), "Frame 00000042");
  EXPECT_EQ(Parse("${image.time}"), "1234567890123456789");
  EXPECT_EQ(Parse("${image.dims}"), "640x480");
  EXPECT_EQ(Parse("${image.type}"), "17301761");
  EXPECT_EQ(Parse("a${image.id}b${image.dims}c"), "a00000042b640x480c");
}

TEST_F(ImageParser, takes_the_user_s_format) {
  EXPECT_EQ(Parse("${image.dims:%u by %u}"), "640 by 480");
  EXPECT_EQ(Parse("${image.dims:%-6d|}"), "640   |");
  EXPECT_EQ(Parse("${image.id:%5d}"), "   42");
  EXPECT_EQ(Parse("${image.type:0x%08X}"), "0x01080101");
  EXPECT_EQ(Parse("${image.time:%x}"), "112210f47de98115");
  EXPECT_EQ(Parse("${image.id:%%}"), "%");
  EXPECT_EQ(Parse("${image.id:no number}"), "no number");
}

TEST_F(ImageParser, gives_an_empty_text_for_other_formats) {
  for (const char* format :
       {"%n", "%s", "%lld", "%*d", "%f", "%c", "%p", "%d %d", "%", "%5", "%1$d", "%hhu"}) {
    EXPECT_EQ(Parse("[${image.id:" + std::string(format) + "}]"), "[]") << format;
  }
  EXPECT_EQ(Parse("[${image.dims:%u %u %u}]"), "[]");
  EXPECT_EQ(Parse("[${millis:%s}]"), "[]");
}

TEST_F(ImageParser, shows_no_image_fields_without_an_image) {
  parser.variables.Set("image", "");
  EXPECT_EQ(Parse("[${image.id}]"), "[]");
  EXPECT_EQ(Parse("[${image.id:%d}]"), "[]");
  EXPECT_EQ(Parse("[${image.time}]"), "[]");
  EXPECT_EQ(Parse("[${image.dims}]"), "[]");
  EXPECT_EQ(Parse("[${image.type}]"), "[]");
  parser.variables.Set("image", "(nil)");
  EXPECT_EQ(Parse("[${image.id}]"), "[]");
  parser.variables.Set("image", "no pointer");
  EXPECT_EQ(Parse("[${image.id}]"), "[]");
}

TEST_F(ImageParser, forgets_the_image_after_the_run) {
  EXPECT_EQ(Parse("${image.id}"), "00000042");
  EXPECT_EQ(parser.image, nullptr);
  EXPECT_EQ(parser.ExpandToken("image.id", "none"), "");
}

TEST_F(ImageParser, expands_breaks_and_tabs_whatever_the_case) {
  EXPECT_EQ(Parse("a${br}b"), "a\nb");
  EXPECT_EQ(Parse("a${BR}b"), "a\nb");
  EXPECT_EQ(Parse("a${Tab}b"), "a\tb");
  EXPECT_EQ(Parse("a${br:%d}b"), "a\nb");
  EXPECT_EQ(Parse("${Image.ID}"), "00000042");
}

TEST_F(ImageParser, lets_unknown_placeholders_vanish) {
  EXPECT_EQ(Parse("${unknown}"), "");
  EXPECT_EQ(Parse("a${unknown:%d}b"), "ab");
  EXPECT_EQ(Parse("a${}b"), "ab");
  EXPECT_EQ(Parse("a${:}b"), "ab");
  EXPECT_EQ(Parse("a${brr}b${b}c"), "abc");
}

TEST_F(ImageParser, keeps_an_opening_without_a_closing) {
  EXPECT_EQ(Parse("a ${br"), "a ${br");
  EXPECT_EQ(Parse("${br}x${"), "\nx${");
  EXPECT_EQ(Parse("} ${image.id ${"), "} ${image.id ${");
}

TEST_F(ImageParser, expands_the_time_and_the_date) {
  EXPECT_EQ(Parse("${time}"), "120001");
  EXPECT_EQ(Parse("${date}"), "20230607");
  EXPECT_EQ(Parse("${time:%H%M%S.%fff}"), "120001.123");
  EXPECT_EQ(Parse("${date:%d.%m.%y}"), "07.06.23");
  EXPECT_EQ(Parse("${date:%H}"), "12");
  EXPECT_EQ(Parse("${millis}"), std::to_string(parser.now));
  EXPECT_EQ(Parse("${millis:%u}"), std::to_string(parser.now));
}

TEST_F(ImageParser, drops_what_follows_a_second_colon) {
  EXPECT_EQ(Parse("${time:%H:%M}"), "12");
  EXPECT_EQ(Parse("${::time:::%M::x}"), "00");
}

TEST_F(ImageParser, gives_an_empty_text_for_too_long_a_time) {
  EXPECT_EQ(Parse("[${time:" + std::string(255, 'x') + "}]"), "[" + std::string(255, 'x') + "]");
  EXPECT_EQ(Parse("[${time:" + std::string(256, 'x') + "}]"), "[]");
}

TEST_F(ImageParser, reads_the_clock_once_for_the_whole_text) {
  Parse("a${millis}b${time}c${date}d");
  EXPECT_EQ(parser.readings, 1);
}

TEST_F(ImageParser, splits_a_time_before_the_epoch_downwards) {
  parser.now = -1;
  EXPECT_EQ(Parse("${time:%fff}"), "999");
  EXPECT_EQ(Parse("${millis}"), "-1");
}

TEST_F(ImageParser, lets_variables_win_over_keywords) {
  parser.variables.Set("date", "today");
  EXPECT_EQ(Parse("${date}"), "today");
  EXPECT_EQ(Parse("${date:%Y}"), "today");
  EXPECT_EQ(Parse("${DATE}"), "20230607");  // the case of variables counts
  parser.variables.Set("br", "");
  EXPECT_EQ(Parse("a${br}b"), "ab");
}

TEST_F(ImageParser, expands_what_an_expansion_brings_in) {
  parser.variables.Set("outer", "<${inner}>");
  parser.variables.Set("inner", "no. ${image.id}");
  EXPECT_EQ(Parse("${outer}"), "<no. 00000042>");
  EXPECT_EQ(Parse("${outer} and ${outer}"), "<no. 00000042> and <no. 00000042>");
}

TEST_F(ImageParser, joins_placeholders_over_the_seam_of_an_expansion) {
  parser.variables.Set("half", "x$");
  EXPECT_EQ(Parse("${half}{image.id}"), "x00000042");
  parser.variables.Set("open", "x${image");
  EXPECT_EQ(Parse("${open}.id} ${br}"), "x00000042 \n");
  parser.variables.Set("close", "id}");
  EXPECT_EQ(Parse("${close}"), "id}");
}

TEST_F(ImageParser, stops_where_an_expansion_leaves_a_placeholder_at_the_same_place) {
  EXPECT_EQ(Parse("${image.type}${br}"), "17301761\n");
  EXPECT_EQ(Parse("${unknown}${br}x${br}"), "${br}x${br}");
  parser.variables.Set("same", "${same}");
  EXPECT_EQ(Parse("a${same}b${br}"), "a${same}b${br}");
}

TEST_F(ImageParser, ends_a_variable_that_brings_in_itself_after_1000_replacements) {
  parser.variables.Set("loop", "x${loop}");
  EXPECT_EQ(Parse("${loop}"), std::string(1000, 'x') + "${loop}");
  EXPECT_EQ(Parse("${loop}${br}"), std::string(1000, 'x') + "${loop}${br}");
  parser.variables.Set("one", "1${two}");
  parser.variables.Set("two", "2${one}");
  EXPECT_EQ(Parse("${one}").size(), 1000 + std::string("${one}").size());
}

TEST_F(ImageParser, bounds_the_growth_of_a_variable_that_brings_in_itself) {
  const size_t length = size_t{1} << 20;
  parser.variables.Set("bomb", std::string(length, 'x') + "${bomb}${bomb}");
  EXPECT_LT(Parse("${bomb}").size(), 8 * length);
}

TEST_F(ImageParser, expands_all_placeholders_of_a_long_text) {
  std::string text;
  std::string expected;
  for (int number = 0; number < 100000; ++number) {
    text += "${tab}";
    expected += "\t";
  }
  EXPECT_EQ(Parse(text), expected);
}

TEST_F(ImageParser, expands_what_each_of_many_placeholders_brings_in) {
  parser.variables.Set("unit", "u${tab}");
  std::string text;
  std::string expected;
  for (int number = 0; number < 1500; ++number) {
    text += "${unit}";
    expected += "u\t";
  }
  EXPECT_EQ(Parse(text), expected);
}

TEST_F(ImageParser, gives_the_fallback_where_a_token_says_nothing) {
  EXPECT_EQ(parser.ExpandToken(nullptr, "none"), "none");
  EXPECT_EQ(parser.ExpandToken("", "none"), "none");
  EXPECT_EQ(parser.ExpandToken(":::", "none"), "none");
  EXPECT_EQ(parser.ExpandToken("unknown:%d", "none"), "none");
  EXPECT_EQ(parser.ExpandToken("unknown", nullptr), "");
  EXPECT_EQ(parser.ExpandToken("br", "none"), "\n");
}

TEST_F(ImageParser, finds_variables_by_their_exact_name) {
  parser.variables.Set("name", "value");
  parser.variables.Set("cut", std::string("ab\0cd", 5));
  std::string value = "before";
  EXPECT_FALSE(parser.GetVariable("Name", value));
  EXPECT_FALSE(parser.GetVariable("", value));
  EXPECT_FALSE(parser.GetVariable(nullptr, value));
  EXPECT_EQ(value, "before");
  EXPECT_TRUE(parser.GetVariable("name", value));
  EXPECT_EQ(value, "value");
  EXPECT_TRUE(parser.GetVariable("cut", value));
  EXPECT_EQ(value, "ab");
}

TEST_F(ImageParser, validates_times_when_the_option_says_so) {
  EXPECT_NE(Parse("${time:%Q}"), "#Q");
  parser.options.Set("validateTime", "1");
  EXPECT_EQ(Parse("${time:%Q}"), "#Q");
  EXPECT_EQ(Parse("${time:%H%M%S.%fff}"), "120001.123");
  EXPECT_EQ(Parse("${image.dims:%5u}"), "  640");  // no time or date before it
}

TEST_F(ImageParser, raises_out_of_range_for_a_percent_sign_at_the_end_of_a_validated_text) {
  EXPECT_EQ(Parse("${time:%H} 100%"), "12 100%");
  parser.options.Set("validateTime", "1");
  EXPECT_THROW(Parse("${time:%H} 100%"), std::out_of_range);
  EXPECT_EQ(Parse("${time} 100%"), "120001 100%");
}

TEST_F(ImageParser, survives_an_option_that_is_no_number) {
  parser.options.Set("validateTime", "true");
  EXPECT_EQ(Parse("${image.id}"), "00000042");
  parser.options.Set("validateTime", "99999999999999999999");
  EXPECT_EQ(Parse("${image.id}"), "00000042");
}

}  // namespace
