#include "QTD/window/KeyboardCommand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace {

class Keyboard : public QTD::KeyboardCommand {
 public:
  using QTD::KeyboardCommand::buffer;
  using QTD::KeyboardCommand::name;

  // The command of the last key of `keys`.
  std::string Type(const std::string& keys) {
    std::string command;
    for (const char key : keys) command = process(key);
    return command;
  }
};

class KeyboardCommandTest : public testing::Test {
 protected:
  void SetUp() override {
    keyboard.sequences.Set("sd", "status");
    keyboard.sequences.Set("si", "info");
    keyboard.maxLength = 2;
  }
  Keyboard keyboard;
};

}  // namespace

TEST(KeyboardCommand, holds_its_fields_in_order) {
  Keyboard keyboard;
  const std::vector<const void*> places = {&keyboard.sequences, &keyboard.name, &keyboard.buffer,
                                           &keyboard.maxLength};
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end(), std::less<>()));
}

TEST(KeyboardCommand, finds_nothing_until_it_knows_the_longest_sequence) {
  Keyboard keyboard;
  EXPECT_EQ(0, keyboard.maxLength);
  EXPECT_EQ("", keyboard.name);
  keyboard.sequences.Set("a", "command");
  EXPECT_EQ("", keyboard.Type("A"));
  EXPECT_EQ("", keyboard.buffer);
  keyboard.maxLength = 1;
  EXPECT_EQ("command", keyboard.Type("A"));
}

TEST_F(KeyboardCommandTest, a_sequence_yields_its_command_in_either_case) {
  EXPECT_EQ("status", keyboard.Type("SD"));
  EXPECT_EQ("info", keyboard.Type("si"));
  EXPECT_EQ("status", keyboard.Type("sD"));
}

TEST_F(KeyboardCommandTest, sequences_in_capitals_are_found_too) {
  keyboard.sequences.Set("QW", "other");
  EXPECT_EQ("other", keyboard.Type("qw"));
}

TEST_F(KeyboardCommandTest, a_key_in_between_breaks_a_sequence) {
  EXPECT_EQ("", keyboard.Type("SXD"));
  EXPECT_EQ("", keyboard.Type("D"));
}

TEST_F(KeyboardCommandTest, only_the_last_keys_count) {
  EXPECT_EQ("info", keyboard.Type("SSI"));
  EXPECT_EQ("status", keyboard.Type("XYZSD"));
}

TEST_F(KeyboardCommandTest, a_match_is_used_up) {
  EXPECT_EQ("status", keyboard.Type("SD"));
  EXPECT_EQ("", keyboard.buffer);
  EXPECT_EQ("", keyboard.Type("D"));
  EXPECT_EQ("", keyboard.Type("I"));
}

TEST_F(KeyboardCommandTest, keeps_no_more_keys_than_the_longest_sequence_has) {
  EXPECT_EQ("", keyboard.Type("ABCDEFGH"));
  EXPECT_EQ("GH", keyboard.buffer);
}

TEST_F(KeyboardCommandTest, a_sequence_longer_than_the_longest_is_not_found) {
  keyboard.sequences.Set("abcd", "long");
  EXPECT_EQ("", keyboard.Type("ABCD"));
  keyboard.maxLength = 4;
  EXPECT_EQ("long", keyboard.Type("ABCD"));
}

TEST_F(KeyboardCommandTest, the_first_of_two_that_fit_is_taken) {
  keyboard.sequences.Set("d", "late");
  EXPECT_EQ("status", keyboard.Type("SD"));
  EXPECT_EQ("late", keyboard.Type("XD"));
}

TEST_F(KeyboardCommandTest, zero_and_bytes_beyond_ascii_are_keys_like_others) {
  EXPECT_EQ("", keyboard.Type(std::string("S\0D", 3)));
  EXPECT_EQ("", keyboard.Type("\xff\xc4"));
  EXPECT_EQ("info", keyboard.Type("\xe4SI"));
  // Case is a matter of the letters alone: these differ by the same bit.
  keyboard.sequences.Set("{}", "braces");
  EXPECT_EQ("", keyboard.Type("[]"));
  EXPECT_EQ("braces", keyboard.Type("{}"));
}
