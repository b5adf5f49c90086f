// What each key does to the view, and when the window is painted anew for it.
#include <QKeyEvent>

#include "MouseHarness.h"

namespace {

using windowtest::MouseTest;
using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

// Beyond `Press` and the like of the mouse: a key told to the window's own handler.
class KeysTest : public MouseTest {
 protected:
  // How many repaints were posted.
  int Key(int code, bool handled = true) {
    Settle();
    UpdateCounter counter(window);
    EXPECT_EQ(handled, window->key(code)) << code;
    Settle();
    return counter.count;
  }
  void KeyEvent(int code) {
    QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
  }
  int FitMode() { return window->Screen()->properties.GetInt("fit"); }
};

}  // namespace

TEST_F(KeysTest, plus_and_minus_zoom_along_the_ladder) {
  EXPECT_EQ(1, Key(Qt::Key_Plus));
  EXPECT_EQ(125, window->Screen()->zoomPercent());
  EXPECT_EQ(0, FitMode());
  EXPECT_EQ(1, Key(Qt::Key_Minus));
  EXPECT_EQ(100, window->Screen()->zoomPercent());
  EXPECT_EQ(1, Key(Qt::Key_Minus));
  EXPECT_EQ(75, window->Screen()->zoomPercent());
}

TEST_F(KeysTest, off_the_ladder_the_screens_own_coefficient_counts) {
  window->Screen()->properties.Set("zoom.align", "0");
  window->Screen()->properties.Set("zoom.coef", "1.6");
  EXPECT_EQ(1, Key(Qt::Key_Plus));
  EXPECT_NEAR(0.625, window->Screen()->Scale(), 1e-6);
  EXPECT_EQ(1, Key(Qt::Key_Minus));
  EXPECT_NEAR(1.0, window->Screen()->Scale(), 1e-6);
}

TEST_F(KeysTest, a_zoom_step_against_a_limit_repaints_all_the_same) {
  QTDScreen& screen = *window->Screen();
  screen.setScale(1e-9);
  const double nearest = 800 / 40000.0;
  ASSERT_NEAR(nearest, screen.Scale(), 1e-9);
  EXPECT_EQ(1, Key(Qt::Key_Plus));
  EXPECT_NEAR(nearest, screen.Scale(), 1e-9);

  screen.setScale(1e9);
  ASSERT_NEAR(10, screen.Scale(), 1e-9);
  EXPECT_EQ(1, Key(Qt::Key_Minus));
  EXPECT_NEAR(10, screen.Scale(), 1e-9);
  EXPECT_EQ(1, Key(Qt::Key_Plus));
  EXPECT_EQ(15, screen.zoomPercent());
}

TEST_F(KeysTest, below_the_ladder_minus_changes_nothing) {
  const Picture large(4000, 3000);
  Show(large);
  window->Screen()->setScale(25);  // 4 per cent
  EXPECT_EQ(0, Key(Qt::Key_Minus));
  EXPECT_NEAR(25, window->Screen()->Scale(), 1e-9);
  viewer->setImage(nullptr, false);
}

TEST_F(KeysTest, digits_fit_fill_and_show_one_to_one) {
  const Picture wide(1600, 600);
  Show(wide);
  ASSERT_EQ(3, FitMode());
  struct Row {
    int code;
    int mode;
    double scale, x, y;
  };
  for (const Row& row : {Row{0x30, 1, 4, 0, 75}, Row{0x31, 3, 1, -600, -150}, Row{0x32, 2, 2, -200, 0},
                         Row{0x30, 1, 4, 0, 75}, Row{0x32, 2, 2, -200, 0}, Row{0x31, 3, 1, -600, -150}}) {
    EXPECT_EQ(1, Key(row.code)) << row.code;
    EXPECT_EQ(row.mode, FitMode());
    EXPECT_NEAR(row.scale, window->Screen()->Scale(), 1e-9);
    EXPECT_TRUE(At(row.x, row.y)) << row.code;
  }
  viewer->setImage(nullptr, false);
}

TEST_F(KeysTest, a_digit_whose_mode_holds_already_refits_and_moves_overlays_but_does_not_repaint) {
  struct Row {
    int code;
    int mode;
    double scale;
  };
  for (const Row& row : {Row{0x30, 1, 2}, Row{0x31, 3, 1}, Row{0x32, 2, 2}}) {
    QTDScreen& screen = *window->Screen();
    screen.setFit(row.mode, true);
    screen.setScale(0.5);  // 1600 by 1200 pixels, from (-600, -450) on
    window->followView();
    QTD::PROPERTIES list;
    list.Set("cs", "img");
    const std::string id = window->overlayRect(nullptr, 600, 450, 80, 60, &list);
    EXPECT_EQ(0, Key(row.code)) << row.code;
    EXPECT_NEAR(row.scale, screen.Scale(), 1e-9);
    QTD::PROPERTIES object;
    ASSERT_TRUE(window->Objects().get(id, &object));
    EXPECT_EQ(row.scale == 1 ? 400 : 300, object.GetInt("x"));
    EXPECT_EQ(row.scale == 1 ? 80 : 40, object.GetInt("w"));
    EXPECT_EQ(row.scale == 1 ? 400 : 0, Bar(Qt::Horizontal)->maximum());
    window->Objects().remove(id);
  }
}

TEST_F(KeysTest, c_centres) {
  window->Screen()->setCenter(0.3, 0.4);
  ASSERT_FALSE(At(-200, -150));
  EXPECT_EQ(1, Key(0x43));
  EXPECT_TRUE(At(-200, -150));
  EXPECT_EQ(0, Key(0x43));
  // One fraction is enough.
  window->Screen()->setCenter(0.5, 0.4);
  EXPECT_EQ(1, Key(0x43));
  EXPECT_TRUE(At(-200, -150));
}

TEST_F(KeysTest, arrows_move_by_a_tenth_of_the_window) {
  EXPECT_EQ(1, Key(Qt::Key_Left));
  EXPECT_TRUE(At(-160, -150));
  EXPECT_EQ(1, Key(Qt::Key_Up));
  EXPECT_TRUE(At(-160, -120));
  EXPECT_EQ(1, Key(Qt::Key_Right));
  EXPECT_EQ(1, Key(Qt::Key_Right));
  EXPECT_TRUE(At(-240, -120));
  EXPECT_EQ(1, Key(Qt::Key_Down));
  EXPECT_EQ(1, Key(Qt::Key_Down));
  EXPECT_TRUE(At(-240, -180));
}

TEST_F(KeysTest, at_the_pictures_edge_an_arrow_repaints_nothing) {
  window->Screen()->setCenter(0.25, 0.25);
  ASSERT_TRUE(At(0, 0));
  EXPECT_EQ(0, Key(Qt::Key_Left));
  EXPECT_EQ(0, Key(Qt::Key_Up));
  EXPECT_TRUE(At(0, 0));
  EXPECT_EQ(1, Key(Qt::Key_Right));
}

TEST_F(KeysTest, no_arrow_moves_the_view_during_a_pan) {
  Press(100, 100);
  Move(110, 105);
  ASSERT_TRUE(At(-190, -145));
  for (const int code : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down}) EXPECT_EQ(0, Key(code));
  EXPECT_TRUE(At(-190, -145));
  Release(110, 105);
  EXPECT_EQ(1, Key(Qt::Key_Left));
}

TEST_F(KeysTest, bars_and_overlays_follow_the_keys) {
  QTD::PROPERTIES list;
  list.Set("cs", "img");
  const std::string id = window->overlayRect(nullptr, 400, 300, 20, 20, &list);
  Key(Qt::Key_Right);
  EXPECT_EQ(240, Bar(Qt::Horizontal)->value());
  QTD::PROPERTIES object;
  ASSERT_TRUE(window->Objects().get(id, &object));
  EXPECT_EQ(160, object.GetInt("x"));
}

TEST_F(KeysTest, the_host_hears_of_zoom_and_movement_but_not_of_fitting) {
  ConnectHost(1);
  for (const int code : {0x32, 0x30, 0x31}) Key(code);
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 50));
  for (const int code : {int{Qt::Key_Plus}, int{Qt::Key_Left}, 0x43}) {
    host.Clear();
    Key(code);
    EXPECT_TRUE(WaitFor([&] { return host.CountOf("notification.view") == 1; })) << code;
  }
}

TEST_F(KeysTest, key_events_reach_the_view) {
  UpdateCounter counter(window);
  KeyEvent(Qt::Key_Plus);
  EXPECT_EQ(125, window->Screen()->zoomPercent());
  Settle();
  EXPECT_EQ(1, counter.count);
  KeyEvent(Qt::Key_A);
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(KeysTest, the_view_has_no_other_keys) {
  ConnectHost(1);
  for (int code = 0x20; code < 0x7F; ++code) {
    if (std::string("+-012C").find(static_cast<char>(code)) != std::string::npos) continue;
    EXPECT_EQ(0, Key(code, false));
  }
  EXPECT_EQ(0, Key(Qt::Key_Home, false));
  EXPECT_EQ(0, Key(-1, false));
  EXPECT_TRUE(At(-200, -150));
  EXPECT_EQ(3, FitMode());
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 20));
}

TEST_F(KeysTest, without_a_screen_no_key_is_handled) {
  ConnectHost();
  window->close();
  EXPECT_EQ(0, Key(Qt::Key_Plus, false));
  for (const int code : {0x53, 0x44}) EXPECT_EQ(0, Key(code, false));
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("cmd.display.view.status") > 0; }, 20));
  EXPECT_TRUE(window->open());
}

TEST_F(KeysTest, without_a_picture_the_keys_do_no_harm) {
  viewer->setImage(nullptr, false);
  window->Screen()->done(true);
  for (const int code : {0x2B, 0x2D, 0x30, 0x31, 0x32, 0x43, int{Qt::Key_Left}, int{Qt::Key_Down}}) Key(code);
  window->Screen()->setWindowSize(0, 0);
  EXPECT_TRUE(window->isOpen());
}

TEST_F(KeysTest, typed_sequences_become_commands) {
  ConnectHost();
  const auto type = [&](std::initializer_list<int> codes) {
    for (const int code : codes) KeyEvent(code);
  };
  type({Qt::Key_S, Qt::Key_X, Qt::Key_D});
  type({Qt::Key_S, Qt::Key_S, Qt::Key_I});
  ASSERT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.info") == 1; }));
  EXPECT_EQ(0, host.CountOf("cmd.display.view.status"));
  type({Qt::Key_S, Qt::Key_D});
  ASSERT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.status") == 1; }));
  EXPECT_EQ(1, host.CountOf("cmd.display.view.info"));
}

TEST_F(KeysTest, a_key_of_the_view_between_two_letters_is_not_typed) {
  ConnectHost();
  for (const int code : {int{Qt::Key_S}, int{Qt::Key_Plus}, int{Qt::Key_D}}) window->key(code);
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.status") == 1; }));
}

TEST_F(KeysTest, of_a_code_above_255_the_low_byte_is_typed) {
  ConnectHost();
  EXPECT_FALSE(window->key(0x01000053));
  EXPECT_FALSE(window->key(0x7FFFFF44));
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.status") == 1; }));
  host.Clear();
  // The key "ctrl" has the low byte 0x21, which stands between the letters.
  for (const int code : {int{Qt::Key_S}, int{Qt::Key_Control}, int{Qt::Key_D}}) window->key(code);
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("cmd.display.view.status") > 0; }, 30));
}

TEST_F(KeysTest, sequences_are_found_after_the_window_was_opened_again) {
  ConnectHost();
  ASSERT_TRUE(window->open());
  for (const int code : {Qt::Key_S, Qt::Key_I}) window->key(code);
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.info") == 1; }));
}
