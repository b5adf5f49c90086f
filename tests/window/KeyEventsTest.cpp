// What follows the keys besides the view: bars, overlays, the host; and the keys that are not the view's own.
#include <QMenu>

#include "KeysHarness.h"

namespace {

using windowtest::KeysTest;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;

}  // namespace

TEST_F(KeysTest, bars_and_overlays_follow_the_keys) {
  QTD::PROPERTIES list;
  list.Set("cs", "img");
  const std::string id = window->overlayRect(nullptr, 400, 300, 20, 20, &list);
  // The rectangle's corner is the picture's middle. The zoom steps are 125 and 75 per cent.
  struct Row {
    int code;
    int x, y, w;        // of the rectangle in the window
    int horz, vert;     // the bars' values
    int right, bottom;  // and ends
  };
  for (const Row& row :
       {Row{Qt::Key_Plus, 200, 150, 25, 300, 225, 600, 450},
        Row{Qt::Key_Minus, 200, 150, 15, 100, 75, 200, 150}, Row{Qt::Key_C, 200, 150, 20, 200, 150, 400, 300},
        Row{Qt::Key_Left, 240, 150, 20, 160, 150, 400, 300},
        Row{Qt::Key_Up, 200, 180, 20, 200, 120, 400, 300},
        Row{Qt::Key_Right, 160, 150, 20, 240, 150, 400, 300},
        Row{Qt::Key_Down, 200, 120, 20, 200, 180, 400, 300}}) {
    SCOPED_TRACE(row.code);
    window->Screen()->setScale(1);
    window->Screen()->setCenter(0.5, 0.5);
    if (row.code == Qt::Key_C) window->Screen()->setCenter(0.3, 0.4);
    window->followView();
    Key(row.code);
    QTD::PROPERTIES object;
    ASSERT_TRUE(window->Objects().get(id, &object));
    EXPECT_EQ(row.x, object.GetInt("x"));
    EXPECT_EQ(row.y, object.GetInt("y"));
    EXPECT_EQ(row.w, object.GetInt("w"));
    EXPECT_EQ(row.horz, Bar(Qt::Horizontal)->value());
    EXPECT_EQ(row.vert, Bar(Qt::Vertical)->value());
    EXPECT_EQ(row.right, Bar(Qt::Horizontal)->maximum());
    EXPECT_EQ(row.bottom, Bar(Qt::Vertical)->maximum());
  }
}

TEST_F(KeysTest, an_open_menu_has_the_keys) {
  window->Screen()->setScale(1);
  QMenu menu;
  const QAction* const first = menu.addAction(QStringLiteral("first"));
  const QAction* const second = menu.addAction(QStringLiteral("second"));
  menu.popup(QPoint(0, 0));
  ASSERT_TRUE(WaitFor([&] { return menu.isVisible(); }));
  KeyEvent(Qt::Key_Down);
  EXPECT_EQ(first, menu.activeAction());
  KeyEvent(Qt::Key_Down);
  EXPECT_EQ(second, menu.activeAction());
  KeyEvent(Qt::Key_Plus);
  EXPECT_EQ(1, window->Screen()->Scale());
  KeyEvent(Qt::Key_Escape);
  EXPECT_FALSE(menu.isVisible());
  KeyEvent(Qt::Key_Plus);
  EXPECT_NE(1, window->Screen()->Scale());
}

TEST_F(KeysTest, the_host_hears_of_zoom_and_movement_but_not_of_fitting) {
  ConnectHost(1);
  for (const int code : {0x32, 0x30, 0x31}) Key(code);
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 50));
  for (const int code : {int{Qt::Key_Plus}, int{Qt::Key_Minus}, int{Qt::Key_Left}, int{Qt::Key_Up}, 0x43,
                         int{Qt::Key_Right}, int{Qt::Key_Down}}) {
    host.Clear();
    Key(code);
    EXPECT_TRUE(WaitFor([&] { return host.CountOf("notification.view") == 1; })) << code;
    EXPECT_EQ(1u, host.Of("view.changed").size()) << code;
  }
}

// To fit the whole picture brings its middle to the window's: that is a movement of the view, which the host
// hears of, whatever key it came from.
TEST_F(KeysTest, the_host_hears_of_a_fit_that_centres) {
  ConnectHost(1);
  window->Screen()->setCenter(0.3, 0.4);
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("notification.view") == 1; }));
  host.Clear();
  Key(Qt::Key_0);
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("notification.view") == 1; }));
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

TEST_F(KeysTest, key_events_of_all_keys_reach_the_view) {
  const windowtest::Picture wide(1600, 600);
  Show(wide);
  struct Row {
    int code;
    double scale, x, y;
  };
  for (const Row& row :
       {Row{Qt::Key_Plus, 0.8, -800, -225}, Row{Qt::Key_Minus, 4.0 / 3, -400, -75}, Row{Qt::Key_0, 4, 0, 75},
        Row{Qt::Key_1, 1, -600, -150}, Row{Qt::Key_2, 2, -200, 0}, Row{Qt::Key_C, 1, -600, -150},
        Row{Qt::Key_Left, 1, -560, -150}, Row{Qt::Key_Up, 1, -600, -120}, Row{Qt::Key_Right, 1, -640, -150},
        Row{Qt::Key_Down, 1, -600, -180}}) {
    SCOPED_TRACE(row.code);
    window->Screen()->setFit(row.code == Qt::Key_1 ? 1 : 3, true);
    window->Screen()->setCenter(row.code == Qt::Key_C ? 0.3 : 0.5, 0.5);
    Settle();
    UpdateCounter counter(window);
    KeyEvent(row.code);
    EXPECT_NEAR(row.scale, window->Screen()->Scale(), 1e-6);
    EXPECT_TRUE(At(row.x, row.y)) << View().x << " " << View().y;
    Settle();
    EXPECT_EQ(1, counter.count);
  }
  viewer->setImage(nullptr, false);
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
  for (const int code : windowtest::kViewKeys) Key(code);
  window->Screen()->setWindowSize(0, 0);
  EXPECT_TRUE(window->isOpen());
}

// The host's first centre waits for the first picture.
TEST_F(ViewerTest, before_there_is_a_picture_no_key_moves_its_centre) {
  const windowtest::Picture picture(800, 600);
  for (const int code :
       {int{Qt::Key_C}, int{Qt::Key_Left}, int{Qt::Key_Up}, int{Qt::Key_Right}, int{Qt::Key_Down}}) {
    ASSERT_TRUE(window->open());
    window->Screen()->setCenter(0.4, 0.6);
    Settle();
    UpdateCounter counter(window);
    EXPECT_TRUE(window->key(code)) << code;
    Settle();
    EXPECT_EQ(0, counter.count) << code;
    Show(picture);
    const QTD::RectD view = window->Screen()->Picture();
    EXPECT_NEAR(200 - 320, view.x, 1e-6) << code;
    EXPECT_NEAR(150 - 360, view.y, 1e-6) << code;
    viewer->setImage(nullptr, false);
  }
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
