#include "demosaicing/Parameters.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using Demosaicing::Parameters;

constexpr uint32_t kFailure = 0x80FF0000u;

struct ParametersTest : testing::Test {
  std::string Text(const char* name) {
    char buffer[512] = "untouched";
    uint32_t size = sizeof buffer;
    EXPECT_EQ(list.GetParameterString(name, buffer, &size), 0u);
    EXPECT_EQ(size, sizeof buffer) << "the size is never changed";
    return buffer;
  }

  Parameters list;
};

TEST_F(ParametersTest, are_none_at_first_and_have_id_ff) {
  EXPECT_EQ(list.GetComponentID(), 0xFF);
  EXPECT_EQ(list.GetParameterCount(), 0u);
}

TEST_F(ParametersTest, are_kept_as_text_in_the_order_in_which_they_came) {
  EXPECT_EQ(list.SetParameterInt("int", std::numeric_limits<int64_t>::min()), 0u);
  EXPECT_EQ(list.SetParameterBool("flag", 2), 0u);
  EXPECT_EQ(list.SetParameterDouble("double", -0.5), 0u);
  EXPECT_EQ(list.SetParameterString("text", nullptr), 0u);
  EXPECT_EQ(list.SetParameter("direct", "some text"), 0u);
  EXPECT_EQ(list.SetParameterInt("int", 7), 0u);
  EXPECT_EQ(list.GetParameterCount(), 5u);
  EXPECT_EQ(Text("int"), "7");
  EXPECT_EQ(Text("flag"), "1");
  EXPECT_EQ(Text("double"), "-0.500000");
  EXPECT_EQ(Text("text"), "");
  EXPECT_EQ(Text("direct"), "some text");
  const char* const names[] = {"int", "flag", "double", "text", "direct"};
  for (uint32_t i = 0; i < 5; ++i) {
    char name[16];
    uint32_t size = sizeof name;
    EXPECT_EQ(list.GetParameterName(i, name, &size), 0u);
    EXPECT_STREQ(name, names[i]);
    EXPECT_EQ(list.GetParameterName(i, nullptr, nullptr), 0u) << "only asks whether the index exists";
  }
  EXPECT_EQ(list.GetParameterName(5, nullptr, nullptr), kFailure | 5u);
  EXPECT_EQ(list.GetParameterName(0xFFFFFFFFu, nullptr, nullptr), kFailure | 5u);
  char name[16];
  EXPECT_EQ(list.GetParameterName(0, name, nullptr), kFailure | 7u);
}

TEST_F(ParametersTest, are_read_as_the_kind_asked_for) {
  list.SetParameter("a", " +12.75abc");
  int64_t number = 0;
  double value = 0;
  uint8_t flag = 9;
  EXPECT_EQ(list.GetParameterInt("a", &number), 0u);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(list.GetParameterDouble("a", &value), 0u);
  EXPECT_EQ(value, 12.75);
  EXPECT_EQ(list.GetParameterBool("a", &flag), 0u);
  EXPECT_EQ(flag, 1);
  list.SetParameterString("a", "");
  EXPECT_EQ(list.GetParameterInt("a", &number), 0u);
  EXPECT_EQ(list.GetParameterDouble("a", &value), 0u);
  EXPECT_EQ(list.GetParameterBool("a", &flag), 0u);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(flag, 0);
}

TEST_F(ParametersTest, keep_the_largest_numbers) {
  list.SetParameterDouble("a", std::numeric_limits<double>::lowest());
  double value = 0;
  EXPECT_EQ(list.GetParameterDouble("a", &value), 0u);
  EXPECT_EQ(value, std::numeric_limits<double>::lowest());
  list.SetParameterDouble("a", std::numeric_limits<double>::infinity());
  EXPECT_EQ(Text("a"), "inf");
}

TEST_F(ParametersTest, raise_what_the_interface_says_for_texts_that_are_no_numbers) {
  int64_t number = 3;
  double value = 3;
  uint8_t flag = 3;
  for (const char* const text : {"abc", "+-1", " "}) {
    list.SetParameter("a", text);
    EXPECT_THROW(list.GetParameterInt("a", &number), std::invalid_argument) << text;
    EXPECT_THROW(list.GetParameterBool("a", &flag), std::invalid_argument) << text;
    EXPECT_THROW(list.GetParameterDouble("a", &value), std::invalid_argument) << text;
  }
  list.SetParameter("a", "1000000000000000000000");
  EXPECT_THROW(list.GetParameterInt("a", &number), std::out_of_range);
  list.SetParameter("a", "1e999");
  EXPECT_THROW(list.GetParameterDouble("a", &value), std::out_of_range);
  EXPECT_EQ(number, 3);
}

TEST_F(ParametersTest, refuse_what_is_missing) {
  int64_t number = 0;
  list.SetParameter("a", "1");
  EXPECT_EQ(list.GetParameterInt("b", &number), kFailure | 5u);
  EXPECT_EQ(list.GetParameterInt("b", nullptr), kFailure | 5u);
  EXPECT_EQ(list.GetParameterInt(nullptr, &number), kFailure | 5u);
  EXPECT_EQ(list.GetParameterInt("a", nullptr), kFailure | 7u);
  EXPECT_EQ(list.GetParameterBool("a", nullptr), kFailure | 7u);
  EXPECT_EQ(list.GetParameterDouble("a", nullptr), kFailure | 7u);
  for (const auto& [name, value] :
       {std::pair<const char*, const char*>(nullptr, "1"), {"", "1"}, {"a", nullptr}, {"a", ""}}) {
    EXPECT_EQ(list.SetParameter(name, value), kFailure | 7u);
  }
  EXPECT_EQ(Text("a"), "1");
  EXPECT_EQ(list.SetParameterInt("", 1), 0u) << "no failure, and stores nothing";
  EXPECT_EQ(list.SetParameterInt(nullptr, 1), 0u);
  EXPECT_EQ(list.GetParameterCount(), 1u);
}

TEST_F(ParametersTest, are_copied_only_into_buffers_with_room_for_the_terminator) {
  list.SetParameter("a", "123456789");
  char buffer[16] = "untouched";
  uint32_t size = 9;
  EXPECT_EQ(list.GetParameterString("a", buffer, &size), kFailure | 6u);
  EXPECT_STREQ(buffer, "untouched");
  size = 10;
  EXPECT_EQ(list.GetParameter("a", buffer, &size), 0u);
  EXPECT_STREQ(buffer, "123456789");
  size = 0;
  EXPECT_EQ(list.GetParameterString("a", buffer, &size), kFailure | 7u);
  EXPECT_EQ(list.GetParameterString("a", buffer, nullptr), kFailure | 7u);
  EXPECT_EQ(list.GetParameterString("a", nullptr, &size), kFailure | 7u);
  EXPECT_EQ(list.GetParameterString("b", nullptr, nullptr), kFailure | 5u);
  size = 0x80000000u;
  EXPECT_EQ(list.GetParameterString("a", buffer, &size), kFailure | 6u) << "sizes count as signed";
}

TEST_F(ParametersTest, have_reserved_operations_and_no_commands) {
  EXPECT_EQ(list.SetParameterExtra("a", nullptr), kFailure | 10u);
  EXPECT_EQ(list.GetParameterExtra("a", nullptr), kFailure | 10u);
  EXPECT_EQ(list.ExecuteCommand("params.apply"), kFailure | 10u);
  EXPECT_EQ(list.ExecuteCommand(nullptr), kFailure | 10u);
}

TEST_F(ParametersTest, stand_access_from_four_threads_at_once) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      const std::string name = "p" + std::to_string(thread);
      for (int turn = 0; turn < 500; ++turn) {
        list.SetParameterInt(name.c_str(), turn);
        list.SetParameterInt("shared", turn);
        int64_t number = -1;
        list.GetParameterInt("shared", &number);
        list.GetParameterName(static_cast<uint32_t>(turn % 6), nullptr, nullptr);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(list.GetParameterCount(), 5u);
  EXPECT_EQ(Text("p3"), "499");
}

}  // namespace
