// Every notification of a display with all its keys, who receives it, and what starts and stops it.
#include <QFocusEvent>
#include <QMouseEvent>
#include <stdexcept>
#include <utility>

#include "tests/display/PictureFixture.h"
#include "tests/display/RecordingHost.h"

namespace display_test {

class Notifications : public PictureTest {
 protected:
  ~Notifications() override {
    if (display) display->DelNotification(&host);
  }
  std::string From() {
    return QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayProcessor*>(display.get())));
  }
  std::string ProcText() {
    return QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayCommand*>(&host)));
  }
  // A picture at one image pixel to two window pixels in a window of 200 by 100, and a host that hears all.
  void ShowToHost() {
    Show();
    display->AddNotification(&host);
    Run("cmd.display.view.nofication", {{"flags", "7"}});
    Screen()->setWindowSize(200, 100);
    Screen()->setFit(0, false);
    Screen()->setScale(0.5);
    Screen()->setCenter(0.5, 0.5);  // the picture's corner lies at (-900, -750)
    ASSERT_TRUE(host.HeardAll(*display));
    host.Clear();
  }
  void Mouse(QEvent::Type type, int x, int y, Qt::MouseButton button) {
    const Qt::MouseButton changed = type == QEvent::MouseMove ? Qt::NoButton : button;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::MouseButtons() : button;
    QMouseEvent event(type, QPointF(x, y), QPointF(Global(x, y)), changed, held, Qt::NoModifier);
    QCoreApplication::sendEvent(Window(), &event);
  }
  QPoint Global(int x, int y) { return display->Viewer()->mapToGlobal(QPoint(x, y)); }
  // The only message of that name and code, or an empty map.
  QTD::ARGUMENTS Heard(const char* name, const char* code) {
    EXPECT_TRUE(host.HeardAll(*display));
    const std::vector<QTD::ARGUMENTS> found = host.Of(name, code);
    EXPECT_EQ(found.size(), 1u) << name << " " << code;
    return found.empty() ? QTD::ARGUMENTS() : found.front();
  }

  RecordingHost host;
};

TEST_F(Notifications, an_image_is_told_with_its_code) {
  Show();
  display->AddNotification(&host);
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(2));
  const QTD::ARGUMENTS expected{{"code", "processed"}, {"result", "0"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.image", "processed"), expected);

  host.Clear();
  ZynImage lying = image.record;
  lying.imageSize = 100;
  display->DisplayVideo(&lying);
  ASSERT_TRUE(WaitForImages(3));
  const QTD::ARGUMENTS failed{{"code", "processed"}, {"result", "7"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.image", "processed"), failed);
}

TEST_F(Notifications, images_are_told_while_the_first_flag_is_set) {
  Show();
  display->SetParameterInt("image.notification.flags.clear", 1);
  const auto told = [&] {
    display->AddNotification(&host);
    host.Clear();
    const int64_t before = display->OutputRate().Total();
    display->DisplayVideo(&image.record);
    EXPECT_TRUE(WaitFor([&] { return display->OutputRate().Total() > before; }));
    return host.Of("notification.image").size();
  };
  EXPECT_EQ(told(), 0u);
  display->SetParameterInt("image.notification.flags.set", 2);  // another flag
  EXPECT_EQ(told(), 0u);
  display->SetParameterInt("image.notification.flags.set", 1);
  EXPECT_EQ(told(), 1u);
  display->SetParameterInt("image.notification.flags.clear", 2);  // the first one stays
  EXPECT_EQ(told(), 1u);
  display->SetParameterInt("image.notification.flags.set", 4);  // none is taken away
  EXPECT_EQ(told(), 1u);
  EXPECT_THROW(display->SetParameterString("image.notification.flags.clear", "all"), std::invalid_argument);
  EXPECT_EQ(told(), 1u);
  display->SetParameterInt("image.notification.flags.clear", 7);
  EXPECT_EQ(told(), 0u);
  EXPECT_EQ(Parameter("image.notification.flags.clear"), "7");
  EXPECT_EQ(Parameter("image.notification.flags.set"), "4");
}

TEST_F(Notifications, a_view_that_changed_is_told) {
  ShowToHost();
  Run("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.4"}});
  const QTD::ARGUMENTS expected{{"code", "view.changed"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.view", "view.changed"), expected);
}

TEST_F(Notifications, a_left_press_and_its_release_are_told_where_they_were) {
  ShowToHost();
  Mouse(QEvent::MouseButtonPress, 11, 20, Qt::LeftButton);
  Mouse(QEvent::MouseButtonRelease, 11, 20, Qt::LeftButton);
  QTD::ARGUMENTS expected{{"code", "mouse.down"},  {"left", "1"},           {"win.x", "11"}, {"win.y", "20"},
                          {"img.x", "455.500000"}, {"img.y", "385.000000"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.mouse", "mouse.down"), expected);
  expected["code"] = "mouse.up";
  EXPECT_EQ(Heard("notification.mouse", "mouse.up"), expected);
}

TEST_F(Notifications, a_right_click_is_told_in_whole_numbers) {
  ShowToHost();
  Mouse(QEvent::MouseButtonPress, 11, 20, Qt::RightButton);
  EXPECT_TRUE(host.HeardAll(*display));
  EXPECT_TRUE(host.Of("notification.mouse").empty());
  Mouse(QEvent::MouseButtonRelease, 11, 20, Qt::RightButton);
  const QPoint global = Global(11, 20);
  const QTD::ARGUMENTS expected{{"code", "mouse.down"},
                                {"left", "0"},
                                {"win.x", "11"},
                                {"win.y", "20"},
                                {"gbl.x", QTD::ToText(global.x())},
                                {"gbl.y", QTD::ToText(global.y())},
                                {"img.x", "456"},
                                {"img.y", "385"},
                                {"from", From()}};
  EXPECT_EQ(Heard("notification.mouse", "mouse.down"), expected);
}

TEST_F(Notifications, a_movement_is_told) {
  ShowToHost();
  Mouse(QEvent::MouseMove, 11, 20, Qt::NoButton);
  const QTD::ARGUMENTS expected{{"code", "mouse.move"},  {"win.x", "11"},         {"win.y", "20"},
                                {"img.x", "455.500000"}, {"img.y", "385.000000"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.mouse", "mouse.move"), expected);
}

TEST_F(Notifications, a_lost_focus_is_told_where_the_press_was) {
  ShowToHost();
  Mouse(QEvent::MouseButtonPress, 11, 20, Qt::LeftButton);
  QFocusEvent lost(QEvent::FocusOut);
  QCoreApplication::sendEvent(Window(), &lost);
  const QTD::ARGUMENTS expected{{"code", "mouse.free"}, {"win.x", "11"}, {"win.y", "20"}, {"from", From()}};
  EXPECT_EQ(Heard("notification.mouse", "mouse.free"), expected);
}

TEST_F(Notifications, a_place_off_the_picture_has_no_image_coordinates) {
  ShowToHost();
  Screen()->setScale(10.0);  // 100 by 80 in the middle of 200 by 100
  host.Clear();
  Mouse(QEvent::MouseButtonPress, 11, 20, Qt::LeftButton);
  QTD::ARGUMENTS heard = Heard("notification.mouse", "mouse.down");
  EXPECT_EQ(heard["img.x"], "-");
  EXPECT_EQ(heard["img.y"], "-");
  host.Clear();
  Mouse(QEvent::MouseMove, 11, 20, Qt::NoButton);
  heard = Heard("notification.mouse", "mouse.move");
  EXPECT_EQ(heard["win.x"], "11");
  EXPECT_NE(heard["img.x"], "-");
  EXPECT_NE(heard["img.y"], "-");
}

TEST_F(Notifications, what_is_posted_without_arguments_says_who_sent_it) {
  Show();
  display->SetParameterInt("system.timer", 1000000);
  display->AddNotification(&host);
  Window()->Execute("cmd.display.view.info", nullptr);
  EXPECT_TRUE(host.HeardAll(*display));
  ASSERT_EQ(host.Of("cmd.display.view.info").size(), 1u);
  EXPECT_EQ(host.Of("cmd.display.view.info").front(), (QTD::ARGUMENTS{{"from", From()}}));
  // What is sent without arguments does not.
  display->GetMessenger()->Send("probe", nullptr);
  ASSERT_EQ(host.Of("probe").size(), 1u);
  EXPECT_TRUE(host.Of("probe").front().empty());
}

TEST_F(Notifications, a_receiver_is_added_by_its_pointer_and_told_once) {
  QTD::ARGUMENTS args{{"proc", ProcText()}};
  const auto told = [&] {
    QTD::ARGUMENTS message;
    host.Clear();
    display->GetMessenger()->Send("probe", &message);
    return host.Of("probe").size();
  };
  EXPECT_EQ(told(), 0u);
  EXPECT_EQ(Run("cmd.system.notification.add", &args), 1u);
  EXPECT_EQ(told(), 1u);
  EXPECT_EQ(Run("cmd.system.notification.add", &args), 1u);
  EXPECT_EQ(told(), 1u);
  EXPECT_EQ(args, (QTD::ARGUMENTS{{"proc", ProcText()}}));
  EXPECT_EQ(Run("cmd.system.notification.del", &args), 1u);
  EXPECT_EQ(told(), 0u);
  EXPECT_EQ(Run("cmd.system.notification.del", &args), 1u);  // it is not there any more
}

TEST_F(Notifications, without_a_pointer_nobody_comes_and_nobody_goes) {
  display->AddNotification(&host);
  QTD::ARGUMENTS message;
  const uint32_t answer = display->GetMessenger()->Send("probe", &message);
  for (const char* name : {"cmd.system.notification.add", "cmd.system.notification.del"}) {
    EXPECT_EQ(Run(name), 0u) << name;
    QTD::ARGUMENTS empty;
    EXPECT_EQ(Run(name, &empty), 1u) << name;
    EXPECT_TRUE(empty.empty()) << name;
    for (const char* nobody : {"", "0", "(nil)", "nobody"}) {
      EXPECT_EQ(Run(name, {{"proc", nobody}}), 1u) << name << " " << nobody;
    }
  }
  host.Clear();
  EXPECT_EQ(display->GetMessenger()->Send("probe", &message), answer);
  EXPECT_EQ(host.Of("probe").size(), 1u);
}

TEST_F(Notifications, names_close_to_a_command_are_not_it) {
  Show();
  int rebuilds = 0;
  QObject::connect(display.get(), &QTDDisplay::signalRebuildImage, [&] { ++rebuilds; });
  for (const char* name : {"cmd.image.rebuil", "cmd.image.rebuild.x", "cmd.image.Rebuild", "image.rebuild",
                           "cmd.system.notification", "cmd.system.notification.ADD", "cmd.parameter.SET",
                           "cmd.system.notification.add.x", "cmd.parameter.set.x", "Cmd.parameter.set"}) {
    QTD::ARGUMENTS args{{"proc", ProcText()}, {"name", "host.own"}, {"value", "1"}};
    EXPECT_EQ(Run(name, &args), 0u) << name;
  }
  EXPECT_EQ(rebuilds, 0);
  EXPECT_EQ(Parameter("host.own"), "absent");
  QTD::ARGUMENTS message;
  display->GetMessenger()->Send("probe", &message);
  EXPECT_TRUE(host.Of("probe").empty());
  EXPECT_EQ(Run("cmd.image.rebuild"), 1u);
  EXPECT_EQ(rebuilds, 1);
}

TEST_F(Notifications, a_rebuild_is_asked_for_also_before_there_is_a_format) {
  int rebuilds = 0;
  QObject::connect(display.get(), &QTDDisplay::signalRebuildImage, [&] { ++rebuilds; });
  EXPECT_EQ(Run("cmd.image.rebuild"), 0u);
  EXPECT_EQ(rebuilds, 1);
}

TEST_F(Notifications, parameters_go_in_and_out_by_command) {
  QTD::ARGUMENTS args{{"name", "host.own"}, {"value", "12"}};
  EXPECT_EQ(Run("cmd.parameter.set", &args), 0u);
  EXPECT_EQ(Parameter("host.own"), "12");
  args["value"] = "before";
  EXPECT_EQ(Run("cmd.parameter.get", &args), 0u);
  EXPECT_EQ(args["value"], "12");
  args["name"] = "never.set";
  EXPECT_EQ(Run("cmd.parameter.get", &args), 0u);
  EXPECT_EQ(args["value"], "");
  QTD::ARGUMENTS nameless{{"value", "5"}};
  EXPECT_EQ(Run("cmd.parameter.set", &nameless), 0u);
  QTD::ARGUMENTS valueless{{"name", "host.own"}};
  EXPECT_EQ(Run("cmd.parameter.set", &valueless), 0u);
  EXPECT_EQ(Parameter("host.own"), "");
}

TEST_F(Notifications, scale_and_fit_are_brought_up_to_date_in_the_own_list) {
  Show();
  Screen()->setScale(2.25);
  Screen()->setFit(0, false);
  QTD::ARGUMENTS args{{"name", "display.view.scale"}, {"value", "before"}};
  EXPECT_EQ(Run("cmd.parameter.get", &args), 0u);
  EXPECT_EQ(Parameter("display.view.scale"), "2.250000");
  EXPECT_EQ(args["value"], "before");
  args["name"] = "display.view.fit";
  EXPECT_EQ(Run("cmd.parameter.get", &args), 0u);
  EXPECT_EQ(Parameter("display.view.fit"), "0");
  EXPECT_EQ(args["value"], "before");
}

TEST_F(Notifications, a_text_without_letters_is_refused_also_over_a_picture) {
  Show();
  display->SetParameterString("objectID", "mine");
  EXPECT_EQ(display->ExecuteCommand("text.add"), Composed(1));
  EXPECT_EQ(display->LastError(), 1u);
  EXPECT_EQ(Parameter("objectID"), "");
  EXPECT_EQ(Objects().count(), 0);
  display->DisplayVideo(nullptr);
  for (const auto& [name, value] :
       {std::pair("text.text", "hello"), std::pair("text.clr", "7"), std::pair("text.font", "medium"),
        std::pair("cs", "win"), std::pair("objectID", "mine"), std::pair("text.pos.x", "2"),
        std::pair("text.pos.y", "-1")}) {
    display->SetParameterString(name, value);
  }
  EXPECT_EQ(display->ExecuteCommand("text.add"), 0u);
  EXPECT_EQ(display->LastError(), 0u);
  EXPECT_EQ(Parameter("objectID"), "mine");
  EXPECT_EQ(Attribute("mine", "text.clr"), "7");
  EXPECT_EQ(Attribute("mine", "text.font"), "medium");
  EXPECT_EQ(Attribute("mine", "placement"), "2");
  display->SetParameterString("text.pos.x", "left");
  EXPECT_THROW(display->ExecuteCommand("text.add"), std::invalid_argument);
}

}  // namespace display_test
