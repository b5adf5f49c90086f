// What others ask the display window for: its place, its parameters and its commands.
#include <thread>

#include "Harness.h"
#include "QTD/window/QTDWindow.h"

namespace {

using windowtest::Settle;
using windowtest::WaitFor;

class OpenWindow : public QTDWindow {
 public:
  using QTDWindow::notificationFlags;
  using QTDWindow::QTDWindow;
};

class QTDWindowCommands : public windowtest::ViewerTest {};

}  // namespace

TEST_F(QTDWindowCommands, tells_the_inner_and_the_outer_rectangle) {
  EXPECT_EQ(QRect(0, 0, kWidth, kHeight), window->geometry(false));
  EXPECT_EQ(viewer->frameGeometry(), window->geometry(true));
  QRect elsewhere;
  std::thread([&] { elsewhere = window->geometry(false); }).join();
  EXPECT_EQ(QRect(0, 0, kWidth, kHeight), elsewhere);
}

TEST(QTDWindow, the_inner_rectangle_is_less_by_the_childs_position) {
  QWidget parent;
  parent.resize(200, 100);
  QTDWindow window(&parent, false);
  EXPECT_EQ(QRect(0, 0, 200, 100), window.geometry(false));
  QWidget child(&parent);
  child.setGeometry(20, 10, 150, 80);
  child.show();
  parent.show();
  EXPECT_EQ(QRect(0, 0, 130, 70), window.geometry(false));
}

TEST_F(QTDWindowCommands, maps_points_through_the_viewer) {
  QPoint point(10, 20);
  window->mapToGlobal(point);
  EXPECT_EQ(viewer->mapToGlobal(QPoint(10, 20)), point);
  window->mapFromGlobal(point);
  EXPECT_EQ(QPoint(10, 20), point);
  QCursor::setPos(viewer->mapToGlobal(QPoint(33, 44)));
  Settle();
  EXPECT_EQ(QCursor::pos(), window->cursorPos(true));
  EXPECT_EQ(viewer->mapFromGlobal(QCursor::pos()), window->cursorPos(false));
}

TEST(QTDWindow, sets_the_notification_flags_by_command) {
  OpenWindow window(nullptr, false);
  QTD::PROPERTIES list;
  list.Set("flags", "2");
  window.Execute("cmd.notification.flags.set", &list);
  EXPECT_EQ(2u, window.notificationFlags);
  list.Set("flags", "-1");
  window.Execute("cmd.notification.flags.set", &list);
  EXPECT_EQ(2u, window.notificationFlags);
  window.Execute("cmd.notification.flags.set", nullptr);
  EXPECT_EQ(2u, window.notificationFlags);
  QTD::PROPERTIES empty;
  window.Execute("cmd.notification.flags.set", &empty);
  EXPECT_EQ(2u, window.notificationFlags);
  list.Set("flags", "0");
  window.Execute("cmd.notification.flags.set", &list);
  EXPECT_EQ(0u, window.notificationFlags);
  window.Execute("no.such.command", &list);
  window.Execute(nullptr, &list);
}

TEST_F(QTDWindowCommands, passes_the_status_commands_on) {
  ConnectHost();
  QTD::PROPERTIES list;
  list.Set("ignored", "1");
  window->Execute("cmd.display.view.status", &list);
  window->Execute("cmd.display.view.info", nullptr);
  EXPECT_TRUE(WaitFor([&] {
    return host.CountOf("cmd.display.view.status") == 1 && host.CountOf("cmd.display.view.info") == 1;
  }));
}

TEST(QTDWindow, reads_and_writes_its_parameters) {
  QTDWindow window(nullptr, false);
  EXPECT_EQ("none", window.GetValue("some.name", "none"));
  EXPECT_EQ("", window.GetValue("some.name", nullptr));
  window.SetValue("some.name", "7", true);
  EXPECT_EQ("7", window.GetValue("some.name", "none"));
  window.SetValue("some.name", nullptr, true);
  EXPECT_EQ("", window.GetValue("some.name", "none"));
  window.SetValue(nullptr, "7", true);
  EXPECT_EQ("x", window.GetValue(nullptr, "x"));
}
