// What the mouse does to the view: pan, double click, wheel, and the loss of focus.
#include "MouseHarness.h"

namespace {

using windowtest::MouseTest;
using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;

}  // namespace

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
