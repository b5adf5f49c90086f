// What the host's face passes on and what it drops: mouse messages to windows that are gone, names at the
// limits of the prefix, single images, colours and the fit.
#include <memory>
#include <stdexcept>

#include "tests/display/HostFixture.h"

namespace display_test {

class HostForwarding : public HostPictureTest {};

TEST_F(HostForwarding, a_window_that_is_gone_hears_nothing_sent_or_posted) {
  auto window = std::make_unique<QWidget>();
  window->show();
  const auto handle = static_cast<int64_t>(window->winId());
  window.reset();
  for (int64_t dead : {handle, int64_t{0}, int64_t{-1}, int64_t{123456789}}) {
    Component()->SetParameterInt("window.command", dead);
    for (const auto& [code, left] : {std::pair("mouse.down", "1"), std::pair("mouse.down", "0"),
                                     std::pair("mouse.up", "1"), std::pair("mouse.move", "0")}) {
      EXPECT_EQ(Mouse(code, left), 0u) << dead << " " << code << " " << left;
    }
    Settle(5);
  }
}

TEST_F(HostForwarding, a_window_that_goes_before_a_posted_message_arrives_harms_nobody) {
  auto window = std::make_unique<QWidget>();
  window->show();
  Component()->SetParameterInt("window.command", static_cast<int64_t>(window->winId()));
  EXPECT_EQ(Mouse("mouse.move", "0"), 0u);
  EXPECT_EQ(Mouse("mouse.down", "0"), 0u);
  window.reset();
  Settle(20);
}

TEST_F(HostForwarding, a_handle_that_is_no_number_raises) {
  Component()->SetParameterString("window.command", "mine");
  EXPECT_THROW(Mouse("mouse.down", "1"), std::invalid_argument);
}

TEST_F(HostForwarding, a_name_passes_as_far_as_it_goes_along_the_prefix) {
  for (const char* name : {"", "n", "notif", "notificatio", "notification", "notification.",
                           "notification.view", "notifications", "notification.mouse.x"}) {
    QTD::ARGUMENTS args;
    EXPECT_EQ(Impl()->RunCommand(name, &args), 0u) << name;
    EXPECT_EQ(args, (QTD::ARGUMENTS{{"code", ""}})) << name;
  }
  for (const char* name : {"N", "Notification.mouse", "notificatioN.mouse", "otification",
                           "notificaton.mouse", "cmd.notification", " notification"}) {
    QTD::ARGUMENTS args;
    EXPECT_EQ(Impl()->RunCommand(name, &args), 0u) << name;
    EXPECT_TRUE(args.empty()) << name;
  }
  QTD::ARGUMENTS given{{"code", "mine"}};
  EXPECT_EQ(Impl()->RunCommand("notification.view", &given), 0u);
  EXPECT_EQ(given, (QTD::ARGUMENTS{{"code", "mine"}}));
}

TEST_F(HostForwarding, a_single_image_is_refused_and_not_shown) {
  Show();
  const int64_t received = Controller()->InputRate().Total();
  HostImage white(ZYN_PIXEL_MONO8, 1000, 800, 0, 255);
  white.record.imageID = 99;
  EXPECT_EQ(Repaints(*Window(), [&] { EXPECT_EQ(display->DisplayImage(&white.record), Composed(3)); }), 0);
  EXPECT_EQ(display->DisplayImage(nullptr), Composed(3));
  EXPECT_EQ(Controller()->InputRate().Total(), received);
  QTD::ARGUMENTS args;
  EXPECT_EQ(Controller()->RunCommand("cmd.image.rebuild", &args), 1u);
  Settle();
  const ZynImage* shown = Controller()->GetProcessor()->Out();
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(shown->imageID, 0u);
  EXPECT_EQ(shown->imageData[0], 0);
}

TEST_F(HostForwarding, a_colour_beyond_an_integer_is_handed_on_whole) {
  Show();
  Component()->SetParameterString("display.bg.color", "4294967301");
  EXPECT_EQ(Controller()->Parameters().GetString("display.view.bgcolor"), "4294967301");
  EXPECT_EQ(Window()->Screen()->properties.GetString("color"), "4294967301");
  // What the host gave is stored behind the handler, as every parameter is.
  EXPECT_EQ(Parameter("display.bg.color"), "4294967301");
  EXPECT_NO_THROW(Window()->render());
}

TEST_F(HostForwarding, the_colour_is_stored_as_the_number_that_was_read_back) {
  QTD::ARGUMENTS args{{"name", "display.bg.color"}, {"value", "4294967301"}};
  EXPECT_EQ(Impl()->RunCommand("cmd.parameter.set", &args), 0u);
  EXPECT_EQ(Parameter("display.bg.color"), "5");
  args["value"] = " 255 and more";
  EXPECT_EQ(Impl()->RunCommand("cmd.parameter.set", &args), 0u);
  EXPECT_EQ(Parameter("display.bg.color"), "255");
  args["value"] = "99999999999999999999";
  EXPECT_THROW(Impl()->RunCommand("cmd.parameter.set", &args), std::out_of_range);
  EXPECT_EQ(Parameter("display.bg.color"), "255");
}

TEST_F(HostForwarding, the_handler_does_nothing_without_arguments_and_for_reads) {
  Component()->SetParameterInt("display.bg.color", 255);
  Controller()->SetParameterInt("display.view.bgcolor", 9);
  EXPECT_EQ(Impl()->RunCommand("cmd.parameter.set", nullptr), 0u);
  EXPECT_EQ(Impl()->RunCommand("cmd.parameter.get", nullptr), 0u);
  for (const char* name : {"cmd.parameter.get", "parameter.get"}) {
    QTD::ARGUMENTS args{{"name", "display.bg.color"}, {"value", "before"}};
    EXPECT_EQ(Impl()->RunCommand(name, &args), 0u);
    EXPECT_EQ(args["value"], "before") << name;
    EXPECT_EQ(Parameter("display.bg.color"), "255") << name;
  }
}

TEST_F(HostForwarding, a_fit_without_a_number_is_the_free_one) {
  Show();
  EXPECT_EQ(Component()->SetParameterString("display.fit", "2"), 0u);
  EXPECT_EQ(Component()->SetParameterString("display.fit", ""), 0u);
  EXPECT_EQ(Window()->Screen()->properties.GetInt("fit"), 0);
  EXPECT_EQ(Parameter("display.fit"), "");
}

TEST_F(HostForwarding, commands_that_fail_leave_no_identifier_behind) {
  Impl()->Parameters().Set("objectID", "mine");
  EXPECT_EQ(Component()->ExecuteCommand("text.add"), 0u);  // no picture, no text
  EXPECT_EQ(Parameter("objectID"), "");
  EXPECT_EQ(Component()->ExecuteCommand("display.dump.on"), Composed(1));
  EXPECT_EQ(Parameter("dump.objectID"), "absent");
  EXPECT_EQ(Component()->ExecuteCommand("display.dump.off"), Composed(1));
  EXPECT_EQ(Parameter("dump.objectID"), "absent");
}

TEST_F(HostForwarding, a_text_takes_its_attributes_from_the_parameters) {
  Show();
  QTD::DrawObjects& objects = Window()->Objects();
  Component()->SetParameterString("text.text", "plain");
  EXPECT_EQ(Component()->ExecuteCommand("text.add"), 0u);
  const std::string made = Parameter("objectID");
  QTD::PROPERTIES object;
  ASSERT_TRUE(objects.get(made, &object));
  EXPECT_EQ(object.GetString("x"), "0");
  EXPECT_EQ(object.GetString("y"), "0");
  EXPECT_EQ(object.GetString("text.font"), "default");
  EXPECT_EQ(object.GetString("text.clr", "absent"), "");
  for (const auto& [name, value] :
       {std::pair("objectID", "mine"), std::pair("text.font", "medium"), std::pair("text.clr", "77"),
        std::pair("cs", "scr"), std::pair("text.pos.x", "3"), std::pair("text.pos.y", "4")}) {
    Component()->SetParameterString(name, value);
  }
  EXPECT_EQ(Component()->ExecuteCommand("text.add"), 0u);
  ASSERT_TRUE(objects.get("mine", &object));
  EXPECT_EQ(object.GetString("x.cs"), "3");
  EXPECT_EQ(object.GetString("y.cs"), "4");
  EXPECT_EQ(object.GetString("cs"), "scr");
  EXPECT_EQ(object.GetString("text.font"), "medium");
  EXPECT_EQ(object.GetString("text.clr"), "77");
  Component()->SetParameterString("text.pos.y", "low");
  EXPECT_THROW(Component()->ExecuteCommand("text.add"), std::invalid_argument);
  EXPECT_EQ(Parameter("objectID"), "mine");
}

}  // namespace display_test
