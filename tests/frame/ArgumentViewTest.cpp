#include "QTD/frame/ArgumentView.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "QTD/frame/ImagePayload.h"
#include "QTD/frame/Text.h"

namespace {

using QTD::ARGUMENTS;
using QTD::ArgumentView;

TEST(ArgumentView, works_on_the_callers_map) {
  ARGUMENTS arguments = {{"pos.x", "12"}};
  ArgumentView view(&arguments);
  EXPECT_EQ(view.Map(), &arguments);
  EXPECT_EQ(view.GetInt("pos.x"), 12);
  view.Set("pos.x", "13").Set("pos.y", "14");
  EXPECT_EQ(arguments, (ARGUMENTS{{"pos.x", "13"}, {"pos.y", "14"}}));
}

TEST(ArgumentView, reads_and_writes_a_map_of_its_own_when_built_on_null) {
  ArgumentView view(nullptr);
  EXPECT_EQ(view.GetInt("name", "7"), 7);
  view.Set("name", "8");
  EXPECT_EQ(view.GetInt("name", "7"), 8);
  ASSERT_NE(view.Map(), nullptr);
  EXPECT_EQ(*view.Map(), (ARGUMENTS{{"name", "8"}}));
}

TEST(ArgumentView, stores_nothing_under_an_empty_name) {
  ARGUMENTS arguments;
  ArgumentView(&arguments).Set("", "value");
  EXPECT_TRUE(arguments.empty());
}

TEST(ArgumentView, takes_a_present_value_even_when_empty) {
  ARGUMENTS arguments = {{"empty", ""}, {"zero", std::string(1, '\0')}};
  ArgumentView view(&arguments);
  EXPECT_EQ(view.GetInt("empty", "7"), 0);
  EXPECT_EQ(view.GetString("empty", "text"), "");
  EXPECT_EQ(view.GetPointer("empty", "0x10"), nullptr);
  EXPECT_EQ(view.GetInt("zero", "7"), 0) << "a value of one zero byte reads as empty";
  EXPECT_EQ(view.GetString("zero", "text"), "");
}

TEST(ArgumentView, takes_the_fallback_of_an_absent_name) {
  ARGUMENTS arguments;
  ArgumentView view(&arguments);
  EXPECT_EQ(view.GetInt("absent", "7"), 7);
  EXPECT_EQ(view.GetInt("absent"), 0);
  EXPECT_EQ(view.GetString("absent", "text"), "text");
  EXPECT_EQ(view.GetPointer("absent", "0x10"), reinterpret_cast<void*>(16));
  EXPECT_TRUE(arguments.empty()) << "a read adds no entry";
}

TEST(ArgumentView, lets_parse_exceptions_pass) {
  ARGUMENTS arguments = {{"name", "abc"}};
  ArgumentView view(&arguments);
  EXPECT_THROW(view.GetInt("name"), std::invalid_argument);
  EXPECT_THROW(view.GetInt("absent", "99999999999"), std::out_of_range);
}

TEST(ArgumentView, reads_back_a_pointer) {
  int target = 0;
  ArgumentView view(nullptr);
  view.Set("pointer", QTD::ToText(static_cast<const void*>(&target)));
  EXPECT_EQ(view.GetPointer("pointer"), &target);
}

TEST(ImageNotificationPayload, is_one_map_that_is_filled_before_the_first_use) {
  ARGUMENTS& payload = QTD::ImageNotificationPayload();
  EXPECT_EQ(payload, (ARGUMENTS{{"code", "processed"}, {"result", "0"}}));
  EXPECT_EQ(&QTD::ImageNotificationPayload(), &payload);
  payload["result"] = "7";
  EXPECT_EQ(QTD::ImageNotificationPayload()["result"], "7") << "what was written stays until the next image";
  payload["result"] = "0";
}

}  // namespace
