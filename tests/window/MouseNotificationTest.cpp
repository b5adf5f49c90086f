// What the host hears of the mouse, and what it may do meanwhile.
#include "QTD/window/MouseNotification.h"

#include <QEventLoop>
#include <thread>

#include "MouseHarness.h"

namespace {

using windowtest::MouseTest;
using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

using Arguments = QTD::ARGUMENTS;

}  // namespace

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

TEST_F(MouseTest, losing_the_focus_is_told_with_the_place_of_the_press) {
  ConnectHost();
  Press(100, 90);
  LoseFocus();
  const auto told = host.Of("mouse.free");
  ASSERT_EQ(1u, told.size());
  EXPECT_EQ((Arguments{{"win.x", "100"}, {"win.y", "90"}}), Keys(told[0]));
}

TEST_F(MouseTest, a_right_press_is_remembered_by_its_global_place) {
  ConnectHost();
  Press(100, 90, Qt::RightButton);
  LoseFocus();
  const QPoint global = viewer->mapToGlobal(QPoint(100, 90));
  ASSERT_EQ(1u, host.Of("mouse.free").size());
  EXPECT_EQ(std::to_string(global.x()), host.Of("mouse.free")[0].at("win.x"));
  EXPECT_EQ(std::to_string(global.y()), host.Of("mouse.free")[0].at("win.y"));
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

// A host that asks its user in a box of its own, whose event loop brings the release in before the press is
// answered: there is nothing left to pan.
// A receiver of the release runs the event loop, and the user presses again within it.
TEST_F(MouseTest, a_press_that_comes_before_the_release_is_answered_goes_on) {
  ConnectHost();
  window->Screen()->setFit(3, true);
  Press(100, 100);
  bool pressed = false;
  host.OnMessage([&](const Arguments& arguments) {
    if (arguments.at("code") != "mouse.up" || pressed) return;
    pressed = true;
    Press(120, 100);
  });
  Release(100, 100);
  ASSERT_TRUE(pressed);
  host.OnMessage(nullptr);
  ASSERT_TRUE(At(-200, -150));
  Move(130, 100);
  EXPECT_TRUE(At(-190, -150));
  Release(130, 100);
}

TEST_F(MouseTest, a_release_that_comes_before_the_press_is_answered_ends_it) {
  for (const bool focus : {false, true}) {
    SCOPED_TRACE(focus);
    ConnectHost();
    host.OnMessage([&](const Arguments& arguments) {
      if (arguments.at("code") != "mouse.down") return;
      if (focus) {
        QCoreApplication::postEvent(window, new QFocusEvent(QEvent::FocusOut));
      } else {
        QCoreApplication::postEvent(
            window, new QMouseEvent(QEvent::MouseButtonRelease, QPointF(100, 100), QPointF(100, 100),
                                    Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
      }
      QEventLoop loop;
      loop.processEvents();
    });
    window->Screen()->setCenter(0.5, 0.5);
    window->Screen()->setFit(3, true);
    ASSERT_TRUE(At(-200, -150));
    Press(100, 100);
    const char* const ending = focus ? "mouse.free" : "mouse.up";
    ASSERT_EQ(1u, host.Of(ending).size()) << "it did come in";
    host.OnMessage(nullptr);
    EXPECT_EQ(3, window->Screen()->properties.GetInt("fit")) << "a pan would have freed it";
    Move(130, 80, Qt::NoButton);
    EXPECT_TRUE(At(-200, -150));
    EXPECT_EQ(Qt::ArrowCursor, window->cursor().shape());
    // The next press is one as ever.
    Press(100, 100);
    Move(110, 100);
    EXPECT_TRUE(At(-190, -150));
    Release(110, 100);
    host.Clear();
  }
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
