// Receivers of notifications: what they hear, on which thread, and what their answer does.
#include <atomic>
#include <mutex>

#include "tests/guide/GuideTest.h"

namespace guide {
namespace {

// [receiver]
class Listener : public ZynDisplayCommand {
 public:
  std::atomic<int> shown{0}, failed{0}, views{0};
  std::atomic<bool> takesClicks{false};

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    const std::string message = name, code = (*args)["code"];
    if (message == "notification.image") ++((*args)["result"] == "0" ? shown : failed);  // GUI thread
    if (message == "notification.view") ++views;                                         // messenger thread
    Keep(code, *args);
    if (message != "notification.mouse" || code != "mouse.down") return 0;
    return (*args)["left"] == "1" && takesClicks ? 1 : 0;  // 1: the press is ours
  }
  // [/receiver]
  QTD::ARGUMENTS Last(const std::string& code) {
    std::lock_guard<std::mutex> guard(lock);
    return last[code];
  }

 private:
  void Keep(const std::string& code, const QTD::ARGUMENTS& args) {
    std::lock_guard<std::mutex> guard(lock);
    const auto button = args.find("left");
    last[button != args.end() && button->second == "0" ? "right click" : code] = args;
  }
  std::mutex lock;  // guards `last`
  std::map<std::string, QTD::ARGUMENTS> last;
};

class Notifications : public GuideTest {
 protected:
  void Join() {
    // [join]
    const std::string proc = PointerText(static_cast<ZynDisplayCommand*>(&listener));
    Command(display, "cmd.system.notification.add", {{"proc", proc}});
    settings->SetParameterInt("image.notification.flags.set", 1);       // "notification.image", please
    Command(display, "cmd.display.view.nofication", {{"flags", "7"}});  // view, movements, buttons
    // [/join]
  }
  ~Notifications() override {
    const std::string proc = PointerText(static_cast<ZynDisplayCommand*>(&listener));
    Command(display, "cmd.system.notification.del", {{"proc", proc}});  // then the receiver may go
  }
  bool Hears(const std::string& code) {
    return WaitFor([&] { return !listener.Last(code).empty(); });
  }

  Picture image{ZYN_PIXEL_MONO8, 1200, 900};
  Listener listener;
};

TEST_F(Notifications, images_are_told_until_the_flag_goes) {
  Show(image.record);
  Join();
  display->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitFor([&] { return listener.shown == 1; }));
  EXPECT_EQ(listener.Last("processed")["result"], "0");
  ZynImage lying = image.record;
  lying.imageSize = 100;  // fewer bytes than lines
  display->DisplayVideo(&lying);
  EXPECT_TRUE(WaitFor([&] { return listener.failed == 1; }));
  settings->SetParameterInt("image.notification.flags.clear", 1);
  display->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitFor([&] { return OnScreen(1, 1).isValid(); }));
  EXPECT_EQ(listener.shown, 1);
}

TEST_F(Notifications, a_changed_view_is_told) {
  Show(image.record);
  Join();
  listener.views = 0;
  Command(display, "cmd.display.view.zoom.in");
  EXPECT_TRUE(WaitFor([&] { return listener.views > 0; }));
  EXPECT_TRUE(Hears("view.changed"));
}

TEST_F(Notifications, the_mouse_is_told) {
  Show(image.record);
  Join();
  guide::Mouse(QEvent::MouseButtonPress, 30, 40, Qt::LeftButton);
  QTD::ARGUMENTS down = listener.Last("mouse.down");
  EXPECT_EQ(down["win.x"], "30");
  EXPECT_EQ(down["win.y"], "40");
  EXPECT_EQ(down.count("img.x") + down.count("img.y"), 2u);
  EXPECT_EQ(PointerFrom(down["from"]), static_cast<void*>(display));
  guide::Mouse(QEvent::MouseMove, 31, 41, Qt::NoButton);
  EXPECT_TRUE(Hears("mouse.move"));
  guide::Mouse(QEvent::MouseButtonRelease, 31, 41, Qt::LeftButton);
  EXPECT_TRUE(Hears("mouse.up"));
  guide::Mouse(QEvent::MouseButtonPress, 50, 60, Qt::RightButton);
  guide::Mouse(QEvent::MouseButtonRelease, 50, 60, Qt::RightButton);
  ASSERT_TRUE(Hears("right click"));
  EXPECT_EQ(listener.Last("right click").count("gbl.x") + listener.Last("right click").count("gbl.y"), 2u);
  QFocusEvent lost(QEvent::FocusOut);
  QCoreApplication::sendEvent(DisplayWindow(), &lost);
  EXPECT_TRUE(Hears("mouse.free"));
}

TEST_F(Notifications, a_host_that_takes_a_press_keeps_the_picture_from_being_dragged) {
  Show(image.record);
  Join();
  const auto dragged = [&] {
    Command(display, "cmd.display.view.fit", {{"mode", "3"}});
    QTD::ARGUMENTS before, after;
    display->RunCommand("cmd.display.view.image", &before);
    guide::Mouse(QEvent::MouseButtonPress, 100, 100, Qt::LeftButton);
    guide::Mouse(QEvent::MouseMove, 60, 70, Qt::NoButton);
    guide::Mouse(QEvent::MouseButtonRelease, 60, 70, Qt::LeftButton);
    display->RunCommand("cmd.display.view.image", &after);
    return before["pos.x"] != after["pos.x"];
  };
  EXPECT_TRUE(dragged());
  listener.takesClicks = true;
  EXPECT_FALSE(dragged());
}

TEST_F(Notifications, keys_are_told_as_the_commands_that_they_stand_for) {
  Show(image.record);
  Join();
  for (int key : {Qt::Key_S, Qt::Key_D}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(DisplayWindow(), &press);
  }
  EXPECT_TRUE(WaitFor([&] { return Parameter(settings, "display.view.status") == "1"; }));
}

TEST_F(Notifications, a_receiver_may_call_commands_and_delete_the_display) {
  Show(image.record);
  class Host : public ZynDisplayCommand {
   public:
    explicit Host(ZynDisplayProcessor* heard) : display(heard) {}
    uint32_t RunCommand(const char* name, QTD::ARGUMENTS*) override {
      if (std::string(name) != "notification.image") return 0;
      told = Command(display, "cmd.display.view.fit") == 1;
      ZynDisplayCPU::DeleteComponent(display);  // happens a moment later
      return 0;
    }
    ZynDisplayProcessor* display;
    bool told = false;
  };
  QWidget other;
  other.show();
  ZynDisplayProcessor* second = ZynDisplayCPU::CreateComponent(&other);
  ASSERT_EQ(second->Initialize(&image.record), 0u);
  Host host(second);
  Command(second, "cmd.system.notification.add",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&host))}});
  second->GetComponent()->SetParameterInt("image.notification.flags.set", 1);
  second->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitFor([&] { return other.findChildren<QWidget*>().isEmpty(); }));
  EXPECT_TRUE(host.told);
}

// Once more with the frame that is there, after a change of settings.
TEST_F(Notifications, the_last_image_runs_again) {
  EXPECT_EQ(Command(display, "cmd.image.rebuild"), 0u);  // before Initialize
  Show(image.record);
  EXPECT_EQ(Command(display, "cmd.image.rebuild"), 1u);
}

}  // namespace
}  // namespace guide
