// Numbers and pointers as texts.
#include "apps/zynview/view/Commands.h"

#include <gtest/gtest.h>

#include "zynview/RecordingDisplay.h"

TEST(ViewerCommands, write_numbers_with_a_point_and_read_them_back) {
  EXPECT_EQ(zynview::Number(12.5), "12.500000");
  EXPECT_EQ(zynview::Number(-0.25), "-0.250000");
  EXPECT_EQ(zynview::Number("3.75"), 3.75);
  EXPECT_EQ(zynview::Number("-"), 0);
  EXPECT_EQ(zynview::Number(""), 0);
}

TEST(ViewerCommands, carry_pointers_as_text) {
  int anything = 0;
  EXPECT_EQ(zynview::PointerFrom(zynview::PointerText(&anything)), &anything);
  EXPECT_EQ(zynview::PointerFrom(""), nullptr);
}

TEST(ViewerCommands, take_a_switch_that_is_not_there_for_off) {
  RecordingDisplay display;
  EXPECT_FALSE(zynview::IsOn(&display, "display.view.info"));
  display.parameters.values["display.view.info"] = "1";
  EXPECT_TRUE(zynview::IsOn(&display, "display.view.info"));
  display.parameters.values["display.view.info"] = "0";
  EXPECT_FALSE(zynview::IsOn(&display, "display.view.info"));
}

TEST(ViewerCommands, tell_whether_the_display_has_done_it) {
  RecordingDisplay display;
  EXPECT_TRUE(zynview::Run(&display, "cmd.display.view.status"));
  display.answer = [](const std::string&, QTD::ARGUMENTS*) { return 0u; };
  EXPECT_FALSE(zynview::Run(&display, "cmd.display.view.status", {{"name", "value"}}));
  EXPECT_EQ(display.commands.back().second, (QTD::ARGUMENTS{{"name", "value"}}));
}

TEST(WindowToImage, is_what_the_display_answers) {
  RecordingDisplay display;
  display.answer = [](const std::string& name, QTD::ARGUMENTS* args) {
    EXPECT_EQ(name, "cmd.display.view.translate");
    EXPECT_EQ(std::stod(args->at("pos.x")), 12.5);
    EXPECT_EQ(args->at("cs.src"), "win");
    EXPECT_EQ(args->at("cs.dst"), "img");
    *args = {{"pos.x", "3.25"}, {"pos.y", "-1.5"}, {"result", "0"}};
    return 1u;
  };
  const auto point = zynview::WindowToImage(&display, 12.5, 7);
  ASSERT_TRUE(point.has_value());
  EXPECT_EQ(point->x, 3.25);
  EXPECT_EQ(point->y, -1.5);
  EXPECT_FALSE(point->isOnPicture);
  display.answer = [](const std::string&, QTD::ARGUMENTS*) { return 0u; };
  EXPECT_FALSE(zynview::WindowToImage(&display, 1, 1).has_value());
}
