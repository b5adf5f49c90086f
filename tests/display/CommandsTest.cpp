// Named commands, parameter access and notifications of the controller.
#include <thread>

#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class Commands : public DisplayTest {
 protected:
  HostImage image{ZYN_PIXEL_MONO8, 64, 48};
  QTDScreen* Screen() { return display->Viewer()->Window()->Screen(); }
};

TEST_F(Commands, an_unknown_name_answers_0) {
  QTD::ARGUMENTS args;
  for (const char* name : {"", "cmd", "something", "cmd.parameter.set"}) {
    EXPECT_EQ(display->RunCommand(name, nullptr), 0u) << name;
  }
  EXPECT_EQ(display->RunCommand(nullptr, &args), 0u);
}

TEST_F(Commands, receivers_are_added_once_and_removed) {
  Start(image);  // adds the receiver
  QTD::ARGUMENTS args{
      {"proc", QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayCommand*>(&receiver)))}};
  EXPECT_EQ(display->RunCommand("cmd.system.notification.add", &args), 1u);
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(1));
  Settle();
  EXPECT_EQ(receiver.Images(), 1u);
  EXPECT_EQ(display->RunCommand("cmd.system.notification.del", &args), 1u);
  display->DisplayVideo(&image.record);
  Settle();
  EXPECT_EQ(receiver.Images(), 1u);
}

TEST_F(Commands, a_notification_command_without_arguments_does_nothing) {
  EXPECT_EQ(display->RunCommand("cmd.system.notification.add", nullptr), 0u);
  EXPECT_EQ(display->RunCommand("cmd.system.notification.del", nullptr), 0u);
  QTD::ARGUMENTS empty;
  EXPECT_EQ(display->RunCommand("cmd.system.notification.add", &empty), 1u);
}

TEST_F(Commands, the_background_colour_reaches_a_screen_that_exists) {
  display->SetParameterInt("display.view.bgcolor", 0x112233);
  EXPECT_EQ(Parameter("display.view.bgcolor"), QTD::ToText(0x112233));
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  EXPECT_EQ(Screen()->properties.GetString("color"), "12632256");
  display->SetParameterInt("display.view.bgcolor", 0x445566);
  EXPECT_EQ(Screen()->properties.GetString("color"), QTD::ToText(0x445566));
  EXPECT_EQ(Parameter("display.view.bgcolor"), QTD::ToText(0x445566));
}

TEST_F(Commands, the_flag_parameters_also_stand_in_the_list) {
  display->SetParameterInt("image.notification.flags.set", 1);
  EXPECT_EQ(Parameter("image.notification.flags.set"), "1");
}

TEST_F(Commands, scale_and_fit_are_read_from_the_screen) {
  double scale = 0;
  EXPECT_EQ(display->GetParameterDouble("display.view.scale", &scale),
            Composed(5));  // no screen yet: a plain read
  int64_t fit = 0;
  EXPECT_EQ(display->GetParameterInt("display.view.fit", &fit), 0u);
  EXPECT_EQ(fit, 3);
  Start(image);
  EXPECT_EQ(display->GetParameterInt("display.view.fit", &fit), 0u);
  EXPECT_EQ(fit, 1);
  ASSERT_TRUE(display->SetFit(3, false));
  EXPECT_EQ(display->GetParameterDouble("display.view.scale", &scale), 0u);
  EXPECT_DOUBLE_EQ(scale, 1.0);
}

TEST_F(Commands, execute_adds_a_text_from_the_parameters) {
  EXPECT_EQ(display->ExecuteCommand("text.add"), Composed(1));  // no picture, no text
  EXPECT_EQ(display->LastError(), 1u);
  Start(image);
  display->DisplayVideo(nullptr);  // clears the code
  display->SetParameterString("text.text", "hello");
  display->SetParameterInt("text.pos.x", 4);
  display->SetParameterInt("text.pos.y", 5);
  EXPECT_EQ(display->ExecuteCommand("text.add"), 0u);
  const std::string id = Parameter("objectID");
  QTD::PROPERTIES object;
  ASSERT_TRUE(display->Viewer()->Window()->Objects().get(id, &object));
  EXPECT_EQ(object.GetString("text"), "hello");
  EXPECT_EQ(object.GetInt("x"), 4);
  EXPECT_TRUE(display->DeleteObject(id));
  EXPECT_FALSE(display->DeleteObject(id));
}

TEST_F(Commands, execute_refuses_other_names_and_leaves_no_error) {
  EXPECT_EQ(display->ExecuteCommand("something"), Composed(10));
  EXPECT_EQ(display->LastError(), 0u);
  EXPECT_EQ(display->ExecuteCommand(nullptr), Composed(10));
}

TEST_F(Commands, overlays_need_a_picture) {
  QTD::ARGUMENTS args{{"text.clr", "255"}};
  EXPECT_EQ(display->AddText("a", 1, 1, nullptr), "");
  EXPECT_EQ(display->AddRect(1, 1, 5, 5, nullptr), "");
  EXPECT_FALSE(display->SetOverlayProperties(&args));
  EXPECT_FALSE(display->SetOverlayVariables(&args));
  Start(image);
  display->DisplayVideo(nullptr);
  EXPECT_NE(display->AddText("a", 1, 1, nullptr), "");
  EXPECT_EQ(display->AddText("", 1, 1, nullptr), "");
  EXPECT_EQ(display->AddText(nullptr, 1, 1, nullptr), "");
  EXPECT_NE(display->AddRect(1, 1, 5, 5, nullptr), "");
  EXPECT_TRUE(display->SetOverlayProperties(&args));
  EXPECT_EQ(display->Viewer()->Window()->Objects().Defaults().GetString("text.clr"), "255");
  EXPECT_TRUE(display->SetOverlayVariables(&args));
  EXPECT_EQ(display->Viewer()->Window()->Objects().Parser()->variables.GetString("text.clr"), "255");
}

TEST_F(Commands, a_variable_named_image_stays_the_windows_own) {
  Start(image);
  display->DisplayVideo(nullptr);
  QTD::TextParser* parser = display->Viewer()->Window()->Objects().Parser();
  const std::string before = parser->variables.GetString("image");
  QTD::ARGUMENTS args{{"image", "0x1234"}};
  display->SetOverlayVariables(&args);
  EXPECT_EQ(parser->variables.GetString("image"), before);
}

TEST_F(Commands, view_operations_need_a_screen) {
  EXPECT_FALSE(display->Zoom(true, 0, false));
  EXPECT_FALSE(display->CanZoom(true, 0));
  EXPECT_FALSE(display->SetFit(1, false));
  EXPECT_FALSE(display->SetScale(1, false));
  EXPECT_FALSE(display->SetCenter(0.5, 0.5, false));
}

TEST_F(Commands, the_scale_is_refused_where_the_screen_holds_it) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  Start(large);
  display->DisplayVideo(&large.record);  // the screen learns the picture's size from the first image
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_TRUE(display->SetScale(2.0, true));
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 2.0);
  EXPECT_FALSE(display->SetScale(1000.0, true));
  EXPECT_TRUE(display->SetFit(3, true));
  EXPECT_TRUE(display->Zoom(true, 0, true));
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 1 / 1.25);
  EXPECT_TRUE(display->CanZoom(true, 0));
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 1 / 1.25);
  EXPECT_TRUE(display->SetCenter(0.25, 0.75, true));
}

TEST_F(Commands, any_command_may_be_called_from_inside_a_notification) {
  Start(image);
  bool called = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image") return;
    display->SetFit(3, true);
    display->Zoom(true, 0, true);
    display->AddText("inside", 1, 1, nullptr);
    display->SetParameterInt("display.view.bgcolor", 5);
    double scale = 0;
    display->GetParameterDouble("display.view.scale", &scale);
    for (const char* command :
         {"cmd.display.view.fit", "cmd.display.view.zoom.out", "cmd.display.view.at",
          "cmd.display.view.image", "cmd.display.view.translate", "cmd.display.view.status",
          "cmd.display.view.info", "cmd.system.menu.create"}) {
      QTD::ARGUMENTS args;
      EXPECT_EQ(display->RunCommand(command, &args), 1u) << command;
      if (args.count("qmenu")) display->RunCommand("cmd.system.menu.delete", &args);
    }
    display->DelNotification(&receiver);
    display->AddNotification(&receiver);
    display->DisplayVideo(&image.record);
    called = true;
  });
  display->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitFor([&] { return called; }));
}

TEST_F(Commands, a_receiver_may_initialise_the_display_anew) {
  Start(image);
  HostImage other(ZYN_PIXEL_RGB8, 20, 10);
  bool done = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || done) return;
    EXPECT_EQ(display->Initialize(&other.record), 0u);
    done = true;
  });
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitFor([&] { return done; }));
  Settle();
  EXPECT_EQ(display->DisplayVideo(&other.record), 0u);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_EQ(receiver.LastResult(), "0");
}

TEST_F(Commands, a_receiver_that_throws_harms_nobody) {
  Start(image);
  receiver.OnMessage([&](const std::string& name) {
    if (name == "notification.image") throw std::runtime_error("host");
  });
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(1));
  display->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitForImages(2));
}

}  // namespace display_test
