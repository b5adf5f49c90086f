#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "QTD/image/QTDImageParser.h"

namespace {

struct Outcome {
  bool valid;
  std::string text;
  bool operator==(const Outcome& other) const { return valid == other.valid && text == other.text; }
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << outcome.valid << " \"" << outcome.text << '"';
}

Outcome Validate(std::string text, bool cleanFileName = false) {
  QTDImageParser parser;
  const bool valid = parser.ValidateTime(text, 1, cleanFileName);
  return {valid, text};
}

TEST(ValidateTime, leaves_valid_formats_alone) {
  for (char letter : std::string("YybBmUWjdeaAwuHIMSf")) {
    const std::string text = std::string("${time:%") + letter + "}";
    EXPECT_EQ(Validate(text), (Outcome{true, text}));
  }
  EXPECT_EQ(Validate(""), (Outcome{true, ""}));
}

TEST(ValidateTime, replaces_every_other_percent_sign) {
  EXPECT_EQ(Validate("${time:%Q}"), (Outcome{false, "${time:#Q}"}));
  EXPECT_EQ(Validate("${date:%Y%q%d}"), (Outcome{false, "${date:%Y#q%d}"}));
  EXPECT_EQ(Validate("${time:%%H}"), (Outcome{false, "${time:#%H}"}));
  EXPECT_EQ(Validate("${time:%}"), (Outcome{false, "${time:#}"}));
  for (int letter = 1; letter < 256; ++letter) {
    const char byte = static_cast<char>(letter);
    const bool valid = std::string("YybBmUWjdeaAwuHIMSf").find(byte) != std::string::npos;
    EXPECT_EQ(Validate(std::string("${date:%") + byte + "}").valid, valid) << letter;
  }
}

TEST(ValidateTime, looks_on_to_the_end_of_the_text) {
  EXPECT_EQ(Validate("${time:%H} at 100% of ${image.id:%08u}"),
            (Outcome{false, "${time:%H} at 100# of ${image.id:#08u}"}));
  EXPECT_EQ(Validate("${time:%H} ${date:%Q} %k"), (Outcome{false, "${time:%H} ${date:#Q} #k"}));
}

TEST(ValidateTime, looks_behind_times_and_dates_only) {
  EXPECT_EQ(Validate("%Q ${image.id:%k}"), (Outcome{true, "%Q ${image.id:%k}"}));
  EXPECT_EQ(Validate("%Q ${date:%k} ${time:%k}"), (Outcome{false, "%Q ${date:#k} ${time:#k}"}));
  EXPECT_EQ(Validate("${time}%Q ${Time:%Q}"), (Outcome{true, "${time}%Q ${Time:%Q}"}));
}

TEST(ValidateTime, raises_out_of_range_for_a_percent_sign_at_the_very_end) {
  for (const char* text : {"${time:%H} 100%", "${date:%", "${time:%%"}) {
    try {
      Validate(text);
      ADD_FAILURE() << text;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid string position");
    }
  }
  EXPECT_EQ(Validate("${image.id} 100%"), (Outcome{true, "${image.id} 100%"}));
}

TEST(ValidateTime, blanks_what_a_file_name_can_not_hold) {
  EXPECT_EQ(Validate("a<b>c:d\"e/f\\g|h?i*j", true), (Outcome{false, "a b c d e f g h i j"}));
  EXPECT_EQ(Validate("plain.png", true), (Outcome{true, "plain.png"}));
  EXPECT_EQ(Validate("${time:%H}", true), (Outcome{false, "${time %H}"}));
  EXPECT_EQ(Validate("${time:%Q}", true), (Outcome{false, "${time #Q}"}));
  EXPECT_EQ(Validate("a:b", false), (Outcome{true, "a:b"}));
}

TEST(CleanFileName, refuses_a_replacement_that_is_such_a_character) {
  std::string text = "a:b";
  EXPECT_FALSE(QTDImageParser::CleanFileName(text, '*'));
  EXPECT_EQ(text, "a:b");
  EXPECT_TRUE(QTDImageParser::CleanFileName(text, '_'));
  EXPECT_EQ(text, "a_b");
  EXPECT_FALSE(QTDImageParser::CleanFileName(text, '_'));
}

}  // namespace
