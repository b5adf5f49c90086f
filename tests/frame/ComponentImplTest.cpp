#include "QTD/frame/ComponentImpl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "QTD/frame/Text.h"

namespace {

using QTD::ARGUMENTS;
using QTD::ComponentImpl;

constexpr uint32_t kFailure = 0x80FF0000u;

// A handler that records its calls, and answers `result`.
class Handler : public ZynDisplayCommand {
 public:
  struct Call {
    std::string command, name, value, props;
    size_t entries;
  };

  uint32_t RunCommand(const char* name, ARGUMENTS* args) override {
    calls.push_back({name, (*args)["name"], (*args)["value"], (*args)["props"], args->size()});
    if (action) action(*args);
    return result;
  }

  std::vector<Call> calls;
  uint32_t result = 0;
  std::function<void(ARGUMENTS&)> action;
};

// A component that shows what subclasses see.
class Component : public ComponentImpl {
 public:
  using ComponentImpl::componentID;
  using ComponentImpl::log;
};

struct ComponentTest : testing::Test {
  std::string Text(const char* name) {
    char buffer[512] = "untouched";
    uint32_t size = sizeof buffer;
    EXPECT_EQ(component.GetParameterString(name, buffer, &size), 0u);
    EXPECT_EQ(size, sizeof buffer) << "the size is never changed";
    return buffer;
  }
  bool Has(const char* name) { return component.Parameters().Has(name); }

  Handler setter;
  Handler getter;
  Component component;
};

TEST_F(ComponentTest, is_new_with_id_ff_and_without_parameters) {
  EXPECT_EQ(component.GetComponentID(), 0xFF);
  EXPECT_EQ(component.GetParameterCount(), 0u);
  EXPECT_EQ(component.CallParameterHandler(true, "a", "b"), 0u);
  EXPECT_EQ(component.log.getName(), "ZynDisplayQt");
}

TEST_F(ComponentTest, composes_return_codes_of_bit_31_its_id_and_the_code) {
  EXPECT_EQ(component.Compose(0), 0u);
  EXPECT_EQ(component.Compose(ZYN_ERR_BAD_ARGUMENT), 0x80FF0007u);
  EXPECT_EQ(component.Compose(0x12340005u), 0x80FF0005u);
  component.componentID = 0x07;
  EXPECT_EQ(component.Compose(ZYN_ERR_BAD_ARGUMENT), 0x80070007u);
}

TEST_F(ComponentTest, gives_the_bare_code_of_an_answer) {
  EXPECT_EQ(QTD::BareCode(0), 0u);
  EXPECT_EQ(QTD::BareCode(0x80FF0007u), 7u);
  EXPECT_EQ(QTD::BareCode(0x8007FFFFu), 0xFFFFu);
  EXPECT_EQ(QTD::BareCode(5), 5u) << "a code that was bare before";
}

TEST_F(ComponentTest, answers_not_supported_for_the_reserved_operations) {
  EXPECT_EQ(component.SetParameterExtra("a", nullptr), kFailure | ZYN_ERR_NOT_SUPPORTED);
  EXPECT_EQ(component.GetParameterExtra("a", nullptr), kFailure | ZYN_ERR_NOT_SUPPORTED);
  EXPECT_EQ(component.ExecuteCommand("a"), kFailure | ZYN_ERR_NOT_SUPPORTED);
  EXPECT_EQ(component.ExecuteCommand(nullptr), kFailure | ZYN_ERR_NOT_SUPPORTED);
}

TEST_F(ComponentTest, stores_directly_without_asking_the_handler) {
  component.SetParameterHandlers(&setter, &getter);
  EXPECT_EQ(component.SetParameter("a", "1"), 0u);
  EXPECT_EQ(component.SetParameter("a", "2"), 0u);
  EXPECT_TRUE(setter.calls.empty());
  EXPECT_EQ(Text("a"), "2");
  EXPECT_EQ(component.GetParameterCount(), 1u);
}

TEST_F(ComponentTest, refuses_a_direct_store_of_null_or_empty_texts) {
  EXPECT_EQ(component.SetParameter(nullptr, "1"), 0x80FF0007u);
  EXPECT_EQ(component.SetParameter("", "1"), 0x80FF0007u);
  EXPECT_EQ(component.SetParameter("a", nullptr), 0x80FF0007u);
  EXPECT_EQ(component.SetParameter("a", ""), 0x80FF0007u);
  EXPECT_EQ(component.GetParameterCount(), 0u);
}

TEST_F(ComponentTest, stores_each_kind_as_text) {
  EXPECT_EQ(component.SetParameterBool("flag", 0), 0u);
  EXPECT_EQ(component.SetParameterInt("int", std::numeric_limits<int64_t>::min()), 0u);
  EXPECT_EQ(component.SetParameterDouble("double", 0.5), 0u);
  EXPECT_EQ(component.SetParameterString("text", "some text"), 0u);
  EXPECT_EQ(Text("flag"), "0");
  EXPECT_EQ(Text("int"), "-9223372036854775808");
  EXPECT_EQ(Text("double"), "0.500000");
  EXPECT_EQ(Text("text"), "some text");
}

TEST_F(ComponentTest, stores_an_empty_or_null_text_through_the_handler_road) {
  component.SetParameter("a", "1");
  EXPECT_EQ(component.SetParameterString("a", ""), 0u);
  EXPECT_EQ(Text("a"), "");
  EXPECT_EQ(component.SetParameterString("b", nullptr), 0u);
  EXPECT_TRUE(Has("b"));
  EXPECT_EQ(Text("b"), "");
}

TEST_F(ComponentTest, shows_the_handler_name_value_and_list) {
  component.SetParameterHandlers(&setter, &getter);
  EXPECT_EQ(component.SetParameterInt("a", -5), 0u);
  ASSERT_EQ(setter.calls.size(), 1u);
  EXPECT_EQ(setter.calls[0].command, "cmd.parameter.set");
  EXPECT_EQ(setter.calls[0].name, "a");
  EXPECT_EQ(setter.calls[0].value, "-5");
  EXPECT_EQ(setter.calls[0].entries, 3u);
  EXPECT_EQ(QTD::ParsePointer(setter.calls[0].props), &component.Parameters());
  EXPECT_TRUE(getter.calls.empty());
  component.SetParameterDouble("a", 1.5);
  component.SetParameterString("a", nullptr);
  EXPECT_EQ(setter.calls[1].value, "1.500000");
  EXPECT_EQ(setter.calls[2].value, "");
}

TEST_F(ComponentTest, shows_the_flags_byte_to_the_handler_and_keeps_its_truth) {
  component.SetParameterHandlers(&setter, nullptr);
  EXPECT_EQ(component.SetParameterBool("flag", 2), 0u);
  ASSERT_EQ(setter.calls.size(), 1u);
  EXPECT_EQ(setter.calls[0].value, "2");
  EXPECT_EQ(Text("flag"), "1");
  component.SetParameterBool("flag", 255);
  EXPECT_EQ(setter.calls[1].value, "255");
}

TEST_F(ComponentTest, returns_a_refusal_as_1_and_keeps_the_old_value) {
  component.SetParameterInt("a", 1);
  component.SetParameterHandlers(&setter, nullptr);
  setter.result = 0x80FF0005u;
  EXPECT_EQ(component.SetParameterInt("a", 2), 1u);
  EXPECT_EQ(component.SetParameterBool("a", 1), 1u);
  EXPECT_EQ(component.SetParameterDouble("a", 2), 1u);
  EXPECT_EQ(component.SetParameterString("a", "2"), 1u);
  EXPECT_EQ(component.SetParameterString("new", "2"), 1u);
  EXPECT_EQ(Text("a"), "1");
  EXPECT_FALSE(Has("new"));
}

TEST_F(ComponentTest, stores_nothing_under_an_empty_or_null_name_but_asks_the_handler_first) {
  component.SetParameterHandlers(&setter, nullptr);
  for (const char* name : {"", static_cast<const char*>(nullptr)}) {
    setter.calls.clear();
    EXPECT_EQ(component.SetParameterBool(name, 1), 0u);
    EXPECT_EQ(component.SetParameterInt(name, 1), 0u);
    EXPECT_EQ(component.SetParameterDouble(name, 1), 0u);
    EXPECT_EQ(component.SetParameterString(name, "1"), 0u);
    ASSERT_EQ(setter.calls.size(), 4u);
    EXPECT_EQ(setter.calls[3].name, "");
    EXPECT_EQ(component.GetParameterCount(), 0u);
  }
}

TEST_F(ComponentTest, reads_each_kind) {
  component.SetParameter("int", "5000000000");
  component.SetParameter("double", "0.25");
  component.SetParameter("flag", "-3");
  component.SetParameterString("empty", "");
  uint8_t flag = 7;
  int64_t number = 7;
  double real = 7;
  EXPECT_EQ(component.GetParameterInt("int", &number), 0u);
  EXPECT_EQ(number, 5000000000);
  EXPECT_EQ(component.GetParameterDouble("double", &real), 0u);
  EXPECT_EQ(real, 0.25);
  EXPECT_EQ(component.GetParameterBool("flag", &flag), 0u);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(component.GetParameterInt("empty", &number), 0u);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(component.GetParameterDouble("empty", &real), 0u);
  EXPECT_EQ(real, 0.0);
  EXPECT_EQ(component.GetParameterBool("empty", &flag), 0u);
  EXPECT_EQ(flag, 0);
}

TEST_F(ComponentTest, reports_an_absent_name_before_a_null_result) {
  component.SetParameter("a", "1");
  int64_t number = 7;
  EXPECT_EQ(component.GetParameterInt("absent", &number), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(component.GetParameterInt(nullptr, &number), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterInt("a", nullptr), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterInt("absent", nullptr), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterBool("a", nullptr), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterBool("absent", nullptr), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterDouble("a", nullptr), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterDouble("absent", nullptr), kFailure | ZYN_ERR_NOT_FOUND);
}

TEST_F(ComponentTest, lets_the_handler_bring_a_value_up_to_date_before_a_read) {
  component.SetParameterHandlers(&setter, &getter);
  getter.action = [](ARGUMENTS& args) {
    static_cast<QTD::PROPERTIES*>(QTD::ParsePointer(args["props"]))->Set(args["name"], "42");
  };
  int64_t number = 0;
  EXPECT_EQ(component.GetParameterInt("a", &number), 0u);
  EXPECT_EQ(number, 42);
  ASSERT_EQ(getter.calls.size(), 1u);
  EXPECT_EQ(getter.calls[0].command, "cmd.parameter.get");
  EXPECT_EQ(getter.calls[0].name, "a");
  EXPECT_EQ(QTD::ParsePointer(getter.calls[0].value), &number);
  EXPECT_TRUE(setter.calls.empty());
  component.GetParameterInt("a", nullptr);
  EXPECT_EQ(getter.calls[1].value, "(nil)");
}

TEST_F(ComponentTest, returns_a_read_handlers_refusal_before_an_absent_name) {
  component.SetParameterHandlers(nullptr, &getter);
  getter.result = 5;
  int64_t number = 7;
  uint8_t flag = 7;
  double real = 7;
  char buffer[8] = "old";
  uint32_t size = sizeof buffer;
  EXPECT_EQ(component.GetParameterInt("absent", &number), 1u);
  EXPECT_EQ(component.GetParameterBool("absent", &flag), 1u);
  EXPECT_EQ(component.GetParameterDouble("absent", &real), 1u);
  EXPECT_EQ(component.GetParameterString("absent", buffer, &size), 1u);
  EXPECT_EQ(number, 7);
  EXPECT_STREQ(buffer, "old");
}

TEST_F(ComponentTest, lets_parse_exceptions_reach_the_host) {
  component.SetParameter("a", "abc");
  component.SetParameter("large", "9223372036854775808");
  int64_t number = 7;
  uint8_t flag = 7;
  double real = 7;
  EXPECT_THROW(component.GetParameterInt("a", &number), std::invalid_argument);
  EXPECT_THROW(component.GetParameterBool("a", &flag), std::invalid_argument);
  EXPECT_THROW(component.GetParameterDouble("a", &real), std::invalid_argument);
  EXPECT_THROW(component.GetParameterInt("large", &number), std::out_of_range);
  EXPECT_EQ(number, 7);
}

TEST_F(ComponentTest, needs_a_buffer_longer_than_the_value) {
  component.SetParameter("a", "123456789");
  char buffer[10];
  std::memset(buffer, 'x', sizeof buffer);
  uint32_t size = 9;
  EXPECT_EQ(component.GetParameterString("a", buffer, &size), kFailure | ZYN_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 9u);
  EXPECT_EQ(buffer[0], 'x');
  size = 10;
  EXPECT_EQ(component.GetParameterString("a", buffer, &size), 0u);
  EXPECT_STREQ(buffer, "123456789");
}

TEST_F(ComponentTest, reads_sizes_as_signed_numbers) {
  component.SetParameter("a", "1");
  char buffer[4] = "old";
  uint32_t size = 0x80000000u;
  EXPECT_EQ(component.GetParameterString("a", buffer, &size), kFailure | ZYN_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(component.GetParameterName(0, buffer, &size), kFailure | ZYN_ERR_BUFFER_TOO_SMALL);
  EXPECT_STREQ(buffer, "old");
}

TEST_F(ComponentTest, refuses_to_read_into_no_buffer_after_it_found_the_name) {
  component.SetParameter("a", "1");
  char buffer[4] = "old";
  uint32_t size = sizeof buffer;
  uint32_t none = 0;
  EXPECT_EQ(component.GetParameterString("a", nullptr, &size), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterString("a", buffer, nullptr), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterString("a", buffer, &none), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_EQ(component.GetParameterString("absent", nullptr, nullptr), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterString(nullptr, buffer, &size), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_STREQ(buffer, "old");
}

TEST_F(ComponentTest, shows_the_read_handler_the_buffers_present_text_within_its_size) {
  component.SetParameterHandlers(nullptr, &getter);
  const char unterminated[4] = {'a', 'b', 'c', 'd'};
  std::vector<char> buffer(unterminated, unterminated + 4);
  uint32_t size = 4;
  component.GetParameterString("a", buffer.data(), &size);
  EXPECT_EQ(getter.calls.back().value, "abcd");
  size = 2;
  component.GetParameterString("a", buffer.data(), &size);
  EXPECT_EQ(getter.calls.back().value, "ab");
  buffer[1] = '\0';
  size = 4;
  component.GetParameterString("a", buffer.data(), &size);
  EXPECT_EQ(getter.calls.back().value, "a");
  component.GetParameterString("a", buffer.data(), nullptr);
  EXPECT_EQ(getter.calls.back().value, "");
  component.GetParameterString("a", nullptr, &size);
  EXPECT_EQ(getter.calls.back().value, "");
}

TEST_F(ComponentTest, gives_names_by_index_without_asking_a_handler) {
  component.SetParameterHandlers(&setter, &getter);
  component.SetParameter("first", "1");
  component.SetParameter("second", "2");
  char buffer[16] = "old";
  uint32_t size = sizeof buffer;
  EXPECT_EQ(component.GetParameterName(1, buffer, &size), 0u);
  EXPECT_STREQ(buffer, "second");
  size = 6;
  EXPECT_EQ(component.GetParameterName(1, buffer, &size), kFailure | ZYN_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(component.GetParameterName(0, buffer, &size), 0u);
  EXPECT_STREQ(buffer, "first");
  EXPECT_TRUE(getter.calls.empty());
}

TEST_F(ComponentTest, tells_by_a_null_buffer_whether_an_index_exists) {
  component.SetParameter("first", "1");
  uint32_t size = 16;
  char buffer[16] = "old";
  EXPECT_EQ(component.GetParameterName(0, nullptr, nullptr), 0u);
  EXPECT_EQ(component.GetParameterName(0, nullptr, &size), 0u);
  EXPECT_EQ(component.GetParameterName(1, nullptr, nullptr), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterName(0xFFFFFFFFu, buffer, &size), kFailure | ZYN_ERR_NOT_FOUND);
  EXPECT_EQ(component.GetParameterName(0, buffer, nullptr), kFailure | ZYN_ERR_BAD_ARGUMENT);
  size = 0;
  EXPECT_EQ(component.GetParameterName(0, buffer, &size), kFailure | ZYN_ERR_BAD_ARGUMENT);
  EXPECT_STREQ(buffer, "old");
}

TEST_F(ComponentTest, reads_through_an_overridden_text_read) {
  struct Override : ComponentImpl {
    uint32_t GetParameterString(const char*, char*, uint32_t*) override { return 77; }
  };
  Override changed;
  EXPECT_EQ(changed.GetParameter("a", nullptr, nullptr), 77u);
  component.SetParameter("a", "1");
  char buffer[4];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(component.GetParameter("a", buffer, &size), 0u);
  EXPECT_STREQ(buffer, "1");
}

TEST_F(ComponentTest, lets_a_handler_call_back_into_the_component) {
  component.SetParameterHandlers(&setter, nullptr);
  setter.action = [&](ARGUMENTS& args) {
    if (args["name"] == "outer") component.SetParameterInt("inner", 1);
    if (args["name"] == "inner") component.SetParameterHandlers(nullptr, nullptr);
  };
  EXPECT_EQ(component.SetParameterInt("outer", 2), 0u);
  EXPECT_EQ(Text("inner"), "1");
  EXPECT_EQ(Text("outer"), "2");
  EXPECT_EQ(component.SetParameterInt("outer", 3), 0u);
  EXPECT_EQ(setter.calls.size(), 2u) << "null removes a handler";
}

TEST(ZynDisplayCommand, answers_itself_and_0_by_default) {
  ZynDisplayCommand command;
  EXPECT_EQ(command.GetCommandTarget("name"), &command);
  EXPECT_EQ(command.GetCommandTarget(nullptr), &command);
  EXPECT_EQ(command.RunCommand("name", nullptr), 0u);
}

}  // namespace
