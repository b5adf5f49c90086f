// The window's own mouse handler and what it tells the host.
#include <cmath>
#include <thread>

#include "Harness.h"
#include "QTD/window/MouseNotification.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;

using Arguments = QTD::ARGUMENTS;

// A 800 by 600 picture in the 400 by 300 window, one to one: its corner lies at (-200, -150).
class MouseTest : public ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    Show(picture);
  }

  QTD::RectD View() { return window->Screen()->Picture(); }
  bool At(double x, double y) {
    const QTD::RectD view = View();
    return std::abs(view.x - x) < 1e-6 && std::abs(view.y - y) < 1e-6;
  }
  // What the messenger adds, and the code.
  static Arguments Keys(Arguments arguments) {
    arguments.erase("code");
    arguments.erase("from");
    return arguments;
  }

  const Picture picture{800, 600};
};

class ScriptedInput : public QTDInput {
 public:
  bool mouseDown(int, int, bool, bool) override { return Note("down"); }
  bool mouseMove(int, int, bool) override { return Note("move"); }
  bool mouseUp(int, int, bool, bool) override { return Note("up"); }
  bool mouseDouble(int, int, bool) override { return Note("double"); }
  bool wheel(int) override { return Note("wheel"); }
  bool focusLost() override { return Note("focus"); }
  bool key(int) override { return Note("key"); }

  bool handles = false;
  std::vector<std::string> seen;

 private:
  bool Note(const char* what) {
    seen.push_back(what);
    return handles;
  }
};

// A window that stands alone, with its protected side open.
class BareWindow : public QTDWindow {
 public:
  using QTDWindow::event;
  using QTDWindow::grabbed;
  using QTDWindow::handlers;
  using QTDWindow::kHeldByHost;
  using QTDWindow::kIdle;
  using QTDWindow::kPan;
  using QTDWindow::mouseMode;
  using QTDWindow::QTDWindow;
  using QTDWindow::rightPressed;
};

class BareMouseTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(window.open());
    window.resize(400, 300);
    window.setImage(picture.Record(), false);
    messenger.AddReceiver(&host);
    window.setMessenger(&messenger);
    QTD::PROPERTIES list;
    list.Set("flags", "7");
    window.Execute("cmd.notification.flags.set", &list);
  }
  void TearDown() override {
    window.setMessenger(nullptr);
    window.setImage(nullptr, false);
    messenger.RemoveReceiver(&host);
  }

  const Picture picture{800, 600};
  QWidget parent;
  BareWindow window{&parent, false};
  windowtest::Host host;
  QTD::Messenger messenger;
};

}  // namespace

TEST(QTDInput, handles_nothing) {
  QTDInput input;
  EXPECT_FALSE(input.mouseDown(1, 2, true, true));
  EXPECT_FALSE(input.mouseMove(1, 2, true));
  EXPECT_FALSE(input.mouseUp(1, 2, true, true));
  EXPECT_FALSE(input.mouseDouble(1, 2, true));
  EXPECT_FALSE(input.wheel(120));
  EXPECT_FALSE(input.focusLost());
  EXPECT_FALSE(input.key(Qt::Key_Plus));
  EXPECT_FALSE(input.spare());
}

TEST_F(MouseTest, a_drag_with_the_left_button_pans) {
  window->Screen()->setFit(2, true);
  window->Screen()->setFit(3, true);
  ASSERT_TRUE(At(-200, -150));
  UpdateCounter counter(window);
  Press(100, 100);
  EXPECT_EQ(0, window->Screen()->properties.GetInt("fit"));
  Settle();
  EXPECT_EQ(1, counter.count);
  Move(130, 80);
  EXPECT_TRUE(At(-170, -170));
  EXPECT_EQ(Qt::OpenHandCursor, window->cursor().shape());
  Settle();
  EXPECT_EQ(2, counter.count);
  Move(90, 110);
  EXPECT_TRUE(At(-210, -140));
  Release(90, 110);
  EXPECT_EQ(Qt::ArrowCursor, window->cursor().shape());
  Move(300, 300, Qt::NoButton);
  EXPECT_TRUE(At(-210, -140));
}

TEST_F(MouseTest, a_pan_shows_on_the_screen) {
  const Picture halves(800, 600, [](int x, int) { return x < 400 ? qRgb(250, 0, 0) : qRgb(0, 0, 240); });
  Show(halves);
  EXPECT_EQ(qRgb(0, 0, 240), Grab().pixel(200, 150));
  Press(100, 100);
  Move(150, 100);
  EXPECT_EQ(qRgb(250, 0, 0), Grab().pixel(249, 150));
  EXPECT_EQ(qRgb(0, 0, 240), Grab().pixel(250, 150));
  Release(150, 100);
  viewer->setImage(nullptr, false);
}

TEST_F(MouseTest, no_key_moves_the_view_during_a_pan) {
  Press(100, 100);
  EXPECT_FALSE(window->Screen()->moveBy(true, 1));
  Release(100, 100);
  EXPECT_TRUE(window->Screen()->moveBy(true, 1));
}

TEST_F(MouseTest, remembers_where_the_last_press_was) {
  Press(12, 34);
  Release(50, 60);
  EXPECT_EQ("12", window->GetValue("mouse.win.x", ""));
  EXPECT_EQ("34", window->GetValue("mouse.win.y", ""));
  Press(56, 78, Qt::RightButton);
  EXPECT_EQ("56", window->GetValue("mouse.win.x", ""));
  EXPECT_EQ("78", window->GetValue("mouse.win.y", ""));
}

TEST_F(MouseTest, without_a_picture_a_press_is_nothing) {
  ConnectHost();
  viewer->setImage(nullptr, false);
  Press(12, 34);
  EXPECT_EQ("", window->GetValue("mouse.win.x", ""));
  EXPECT_TRUE(host.Of("mouse.down").empty());
  Move(60, 60);
  EXPECT_TRUE(At(-200, -150));
}

TEST_F(MouseTest, a_left_press_is_told_with_its_place_in_window_and_picture) {
  ConnectHost();
  Press(100, 90);
  const auto told = host.Of("mouse.down");
  ASSERT_EQ(1u, told.size());
  EXPECT_EQ(1, host.CountOf("notification.mouse"));
  EXPECT_EQ((Arguments{{"left", "1"},
                       {"win.x", "100"},
                       {"win.y", "90"},
                       {"img.x", "300.000000"},
                       {"img.y", "240.000000"}}),
            Keys(told[0]));
}

TEST_F(MouseTest, a_left_release_is_told_with_its_place_in_window_and_picture) {
  ConnectHost();
  Release(10, 20);
  const auto told = host.Of("mouse.up");
  ASSERT_EQ(1u, told.size());
  EXPECT_EQ(
      (Arguments{
          {"left", "1"}, {"win.x", "10"}, {"win.y", "20"}, {"img.x", "210.000000"}, {"img.y", "170.000000"}}),
      Keys(told[0]));
}

TEST_F(MouseTest, a_right_click_is_told_at_its_release_with_rounded_numbers) {
  ConnectHost();
  window->Screen()->setScale(1.5);  // the picture is 533.33 by 400 from (-66.67, -50)
  Press(100, 91, Qt::RightButton);
  EXPECT_FALSE(WaitFor([&] { return !host.Of("mouse.down").empty(); }, 100));
  UpdateCounter counter(window);
  Release(102, 91, Qt::RightButton);
  ASSERT_TRUE(host.WaitForCode("mouse.down"));
  const QPoint global = viewer->mapToGlobal(QPoint(102, 91));
  // (102 + 66.67) x 1.5 = 253; (91 + 50) x 1.5 = 211.5, away from zero 212.
  EXPECT_EQ((Arguments{{"left", "0"},
                       {"win.x", "102"},
                       {"win.y", "91"},
                       {"gbl.x", std::to_string(global.x())},
                       {"gbl.y", std::to_string(global.y())},
                       {"img.x", "253"},
                       {"img.y", "212"}}),
            Keys(host.Of("mouse.down")[0]));
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(MouseTest, movement_is_told_with_its_place) {
  ConnectHost();
  Move(40, 50, Qt::NoButton);
  ASSERT_TRUE(host.WaitForCode("mouse.move"));
  EXPECT_EQ((Arguments{{"win.x", "40"}, {"win.y", "50"}, {"img.x", "240.000000"}, {"img.y", "200.000000"}}),
            Keys(host.Of("mouse.move")[0]));
}

TEST_F(MouseTest, off_the_picture_clicks_tell_a_dash_and_movement_tells_numbers) {
  const Picture small(100, 80);
  Show(small);  // from (150, 110) on
  ConnectHost();
  Press(20, 30);
  ASSERT_EQ(1u, host.Of("mouse.down").size());
  EXPECT_EQ("-", host.Of("mouse.down")[0].at("img.x"));
  EXPECT_EQ("-", host.Of("mouse.down")[0].at("img.y"));
  Release(20, 30);
  ASSERT_EQ(1u, host.Of("mouse.up").size());
  EXPECT_EQ("-", host.Of("mouse.up")[0].at("img.x"));
  host.Clear();
  Press(20, 30, Qt::RightButton);
  Release(20, 30, Qt::RightButton);
  ASSERT_TRUE(host.WaitForCode("mouse.down"));
  EXPECT_EQ("-", host.Of("mouse.down")[0].at("img.x"));
  Move(20, 30, Qt::NoButton);
  ASSERT_TRUE(host.WaitForCode("mouse.move"));
  EXPECT_EQ("-130.000000", host.Of("mouse.move")[0].at("img.x"));
  EXPECT_EQ("-80.000000", host.Of("mouse.move")[0].at("img.y"));
  viewer->setImage(nullptr, false);
}

TEST(MouseNotification, without_a_screen_there_is_no_place_in_the_picture) {
  const Arguments moved = QTD::MouseNoticeArguments(QTD::MouseNotice::Move, QPoint(1, 2), QPoint(), nullptr);
  EXPECT_EQ("-", moved.at("img.x"));
  EXPECT_EQ("-", moved.at("img.y"));
}

TEST(MouseNotification, flags_and_roads_of_the_notices) {
  using QTD::MouseNotice;
  struct Row {
    MouseNotice notice;
    uint32_t flag;
    bool waits;
  };
  for (const Row& row : {Row{MouseNotice::LeftDown, 4, true}, Row{MouseNotice::RightClick, 4, false},
                         Row{MouseNotice::Move, 2, false}, Row{MouseNotice::LeftUp, 4, true},
                         Row{MouseNotice::Free, 2, true}}) {
    EXPECT_EQ(row.flag, QTD::MouseNoticeFlag(row.notice));
    EXPECT_EQ(row.waits, QTD::MouseNoticeWaits(row.notice));
  }
}

TEST_F(MouseTest, each_notice_needs_its_flag) {
  ConnectHost(3);
  Press(100, 100);
  Release(100, 100);
  Press(100, 100, Qt::RightButton);
  Release(100, 100, Qt::RightButton);
  Move(50, 50, Qt::NoButton);
  ASSERT_TRUE(host.WaitForCode("mouse.move"));
  EXPECT_TRUE(host.Of("mouse.down").empty());
  EXPECT_TRUE(host.Of("mouse.up").empty());
  host.Clear();

  SetFlags(5);
  Move(50, 50, Qt::NoButton);
  LoseFocus();
  Press(100, 100, Qt::RightButton);
  Release(100, 100, Qt::RightButton);
  ASSERT_TRUE(host.WaitForCode("mouse.down"));
  EXPECT_TRUE(host.Of("mouse.move").empty());
  EXPECT_TRUE(host.Of("mouse.free").empty());
}

TEST_F(MouseTest, a_press_that_the_host_takes_starts_no_pan) {
  ConnectHost();
  host.Answer("mouse.down", 1);
  Press(100, 100);
  EXPECT_EQ(3, window->Screen()->properties.GetInt("fit"));
  Move(130, 80);
  EXPECT_TRUE(At(-200, -150));
  EXPECT_EQ(Qt::ArrowCursor, window->cursor().shape());
}

TEST_F(MouseTest, a_release_that_the_host_takes_leaves_the_pan_running) {
  ConnectHost();
  host.Answer("mouse.up", 1);
  Press(100, 100);
  Move(110, 100);
  Release(110, 100);
  EXPECT_EQ(Qt::OpenHandCursor, window->cursor().shape());
  Move(120, 100);
  EXPECT_TRUE(At(-180, -150));
  host.Answer("mouse.up", 0);
  Release(120, 100);
  EXPECT_EQ(Qt::ArrowCursor, window->cursor().shape());
  Move(150, 100);
  EXPECT_TRUE(At(-180, -150));
}

TEST_F(MouseTest, losing_the_focus_brings_a_panned_picture_back) {
  QTD::PROPERTIES list;
  list.Set("cs", "img");
  const std::string id = window->overlayRect(nullptr, 400, 300, 20, 20, &list);
  Press(100, 100);
  Move(150, 140);
  ASSERT_TRUE(At(-150, -110));
  LoseFocus();
  EXPECT_TRUE(At(-200, -150));
  EXPECT_EQ(Qt::ArrowCursor, window->cursor().shape());
  EXPECT_EQ(200, Bar(Qt::Horizontal)->value());
  EXPECT_EQ(150, Bar(Qt::Vertical)->value());
  QTD::PROPERTIES object;
  ASSERT_TRUE(window->Objects().get(id, &object));
  EXPECT_EQ(200, object.GetInt("x"));
  Move(300, 200);
  EXPECT_TRUE(At(-200, -150));
  EXPECT_TRUE(window->Screen()->moveBy(true, 1));
}

TEST_F(MouseTest, losing_the_focus_is_told_with_the_place_of_the_press) {
  ConnectHost();
  Press(100, 90);
  LoseFocus();
  const auto told = host.Of("mouse.free");
  ASSERT_EQ(1u, told.size());
  EXPECT_EQ((Arguments{{"win.x", "100"}, {"win.y", "90"}}), Keys(told[0]));
}

TEST_F(MouseTest, a_loss_of_focus_that_the_host_takes_leaves_the_pan_running) {
  ConnectHost();
  host.Answer("mouse.free", 1);
  Press(100, 100);
  Move(150, 100);
  LoseFocus();
  EXPECT_TRUE(At(-150, -150));
  Move(160, 100);
  EXPECT_TRUE(At(-140, -150));
}

TEST_F(MouseTest, a_double_click_with_the_left_button_centres) {
  UpdateCounter counter(window);
  DoubleClick(150, 100, Qt::RightButton);
  EXPECT_TRUE(At(-200, -150));
  DoubleClick(150, 100);
  EXPECT_TRUE(At(-150, -100));
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(MouseTest, the_wheel_zooms_along_the_ladder) {
  Wheel(120);
  EXPECT_EQ(125, window->Screen()->zoomPercent());
  Wheel(480);
  EXPECT_EQ(150, window->Screen()->zoomPercent());
  Wheel(-120);
  EXPECT_EQ(125, window->Screen()->zoomPercent());
  EXPECT_EQ(0, window->Screen()->properties.GetInt("fit"));
}

TEST_F(MouseTest, off_the_ladder_the_wheel_zooms_by_its_notches) {
  window->Screen()->properties.Set("zoom.align", "0");
  Wheel(240);
  EXPECT_NEAR(1 / 2.2, window->Screen()->Scale(), 1e-6);
  window->Screen()->setScale(1.0);
  Wheel(-120);
  EXPECT_NEAR(1.1, window->Screen()->Scale(), 1e-6);
  // Less than a notch takes the screen's own step.
  window->Screen()->setScale(1.0);
  Wheel(15);
  EXPECT_NEAR(1 / 1.1, window->Screen()->Scale(), 1e-6);
}

TEST_F(MouseTest, a_wheel_event_of_pixels_alone_is_nothing) {
  UpdateCounter counter(window);
  Wheel(0, 40);
  Settle();
  EXPECT_EQ(100, window->Screen()->zoomPercent());
  EXPECT_EQ(0, counter.count);
}

TEST_F(BareMouseTest, the_mouse_is_grabbed_for_the_length_of_a_pan) {
  EXPECT_FALSE(window.grabbed);
  window.mouseDown(10, 10, true, false);
  EXPECT_TRUE(window.grabbed);
  EXPECT_EQ(BareWindow::kPan, window.mouseMode);
  window.mouseUp(10, 10, true, false);
  EXPECT_FALSE(window.grabbed);
  EXPECT_EQ(BareWindow::kIdle, window.mouseMode);
  window.mouseDown(10, 10, true, false);
  window.focusLost();
  EXPECT_FALSE(window.grabbed);
  window.mouseDown(10, 10, true, false);
  window.close();
  EXPECT_FALSE(window.grabbed);
  EXPECT_EQ(BareWindow::kIdle, window.mouseMode);
}

TEST_F(MouseTest, notices_go_out_with_no_lock_held) {
  ConnectHost();
  std::atomic<int> done{0};
  host.OnMessage([&](const Arguments& arguments) {
    if (arguments.at("code") != "mouse.down") return;
    // Another thread, for which the receiver waits, must get all locks of the window.
    std::thread other([&] {
      window->setImage(picture.Record(), true);
      window->resize(kWidth, kHeight);
      window->overlayRect("a", 1, 1, 5, 5, nullptr);
      window->scrollTo(-1, 100);
      window->Execute("view.changed", nullptr);
      ++done;
    });
    other.join();
  });
  Press(100, 100);
  EXPECT_EQ(1, done);
  host.OnMessage(nullptr);
}

TEST_F(MouseTest, the_host_may_close_the_window_while_it_hears_of_the_mouse) {
  ConnectHost();
  host.OnMessage([&](const Arguments&) { window->close(); });
  Press(100, 100);
  EXPECT_FALSE(window->isOpen());
  ASSERT_TRUE(window->open());
  Release(100, 100);
  EXPECT_FALSE(window->isOpen());
  host.OnMessage(nullptr);
}

TEST_F(MouseTest, the_host_may_take_the_picture_away_while_it_hears_of_the_mouse) {
  ConnectHost();
  host.OnMessage([&](const Arguments&) { viewer->setImage(nullptr, false); });
  Press(100, 100);
  EXPECT_EQ(3, window->Screen()->properties.GetInt("fit"));
  host.OnMessage(nullptr);
}

TEST_F(MouseTest, the_host_may_delete_the_viewer_while_it_hears_of_the_mouse) {
  for (const char* code : {"mouse.down", "mouse.up", "mouse.free"}) {
    if (!viewer) {
      widget.reset();
      MouseTest::SetUp();
    }
    ConnectHost();
    host.OnMessage([&](const Arguments& arguments) {
      if (arguments.at("code") == code) delete viewer.data();
    });
    Press(100, 100);
    if (window) Release(100, 100);
    if (window) LoseFocus();
    EXPECT_FALSE(viewer) << code;
    EXPECT_FALSE(window) << code;
    host.OnMessage(nullptr);
  }
}

TEST_F(MouseTest, a_receiver_that_throws_has_not_taken_the_press) {
  ConnectHost();
  host.OnMessage([](const Arguments& arguments) {
    if (arguments.at("code") == "mouse.down") throw std::runtime_error("host");
  });
  EXPECT_NO_THROW(Press(100, 100));
  host.OnMessage(nullptr);
  Move(110, 100);
  EXPECT_TRUE(At(-190, -150));
}

TEST_F(BareMouseTest, while_the_host_holds_the_mouse_movement_is_not_told) {
  window.mouseMode = BareWindow::kHeldByHost;
  EXPECT_FALSE(window.mouseMove(10, 10, false));
  EXPECT_FALSE(WaitFor([&] { return !host.Of("mouse.move").empty(); }, 50));
}

TEST_F(BareMouseTest, a_release_ends_the_hosts_hold) {
  window.mouseMode = BareWindow::kHeldByHost;
  window.grabbed = true;
  host.Answer("mouse.up", 1);
  window.mouseUp(10, 10, true, false);
  EXPECT_EQ(BareWindow::kIdle, window.mouseMode);
  EXPECT_FALSE(window.grabbed);
}

TEST_F(BareMouseTest, a_loss_of_focus_ends_the_hosts_hold) {
  window.mouseMode = BareWindow::kHeldByHost;
  window.grabbed = true;
  host.Answer("mouse.free", 1);
  window.focusLost();
  EXPECT_EQ(BareWindow::kIdle, window.mouseMode);
  EXPECT_FALSE(window.grabbed);
}

TEST_F(BareMouseTest, a_right_click_during_a_pan_leaves_no_grab_behind) {
  ASSERT_TRUE(window.mouseDown(10, 10, true, false));
  EXPECT_TRUE(window.grabbed);
  window.mouseDown(10, 10, false, false);
  EXPECT_TRUE(window.rightPressed);
  window.mouseUp(10, 10, false, false);
  EXPECT_FALSE(window.rightPressed);
  EXPECT_EQ(BareWindow::kIdle, window.mouseMode);
  window.mouseUp(10, 10, true, false);
  EXPECT_FALSE(window.grabbed);
  EXPECT_TRUE(window.Screen()->moveBy(true, 1));
}

TEST_F(BareMouseTest, handlers_are_asked_in_order_until_one_has_handled) {
  ScriptedInput first;
  ScriptedInput second;
  window.handlers.insert(window.handlers.begin(), &second);
  window.handlers.insert(window.handlers.begin(), &first);
  const auto send = [&] {
    QMouseEvent down(QEvent::MouseButtonPress, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent up(QEvent::MouseButtonRelease, QPointF(5, 5), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QMouseEvent twice(QEvent::MouseButtonDblClick, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QFocusEvent focus(QEvent::FocusOut);
    for (QEvent* event : std::initializer_list<QEvent*>{&down, &move, &up, &twice, &key, &wheel, &focus}) {
      window.event(event);
    }
  };
  const std::vector<std::string> all{"down", "move", "up", "double", "key", "wheel", "focus"};

  second.handles = true;
  Settle();
  UpdateCounter counter(&window);
  send();
  EXPECT_EQ(all, first.seen);
  EXPECT_EQ(all, second.seen);
  EXPECT_EQ(100, window.Screen()->zoomPercent());
  Settle();
  EXPECT_EQ(1, counter.count);

  first.seen.clear();
  second.seen.clear();
  first.handles = true;
  send();
  EXPECT_EQ(all, first.seen);
  EXPECT_EQ(std::vector<std::string>{"focus"}, second.seen);
}
