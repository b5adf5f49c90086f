// What each key does to the view, and when the window is painted anew for it.
#include "KeysHarness.h"

namespace {

using windowtest::KeysTest;
using windowtest::Picture;

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
  window->Screen()->setCenter(0.75, 0.75);
  ASSERT_TRUE(At(-400, -300));
  EXPECT_EQ(0, Key(Qt::Key_Right));
  EXPECT_EQ(0, Key(Qt::Key_Down));
  EXPECT_TRUE(At(-400, -300));
  EXPECT_EQ(1, Key(Qt::Key_Up));
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
