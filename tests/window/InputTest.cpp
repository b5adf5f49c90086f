// How events reach the handlers, and the states of the mouse that only the window sees.
#include "QTD/window/QTDInput.h"

#include "Harness.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

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

TEST_F(BareMouseTest, a_right_release_repaints) {
  Settle();
  UpdateCounter counter(&window);
  EXPECT_TRUE(window.mouseUp(10, 10, false, false));
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(BareMouseTest, handlers_are_asked_in_order_until_one_has_handled) {
  ScriptedInput first;
  ScriptedInput second;
  window.handlers.insert(window.handlers.begin(), &second);
  window.handlers.insert(window.handlers.begin(), &first);
  const QPointF at(5, 5);
  const auto send = [&] {
    QMouseEvent down(QEvent::MouseButtonPress, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent move(QEvent::MouseMove, at, at, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent up(QEvent::MouseButtonRelease, at, at, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QMouseEvent twice(QEvent::MouseButtonDblClick, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
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
