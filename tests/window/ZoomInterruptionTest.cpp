// What else can happen while the right button is down: the focus goes, the left button comes.
#include "ZoomHarness.h"

namespace {

using windowtest::CursorWindow;
using windowtest::HoldModifiers;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;
using windowtest::ZoomRectangleTest;

}  // namespace

TEST_F(ZoomRectangleTest, losing_the_focus_is_like_the_release) {
  Drag(100, 100, 190, 170);
  Cursor(200, 180);
  Settle();
  UpdateCounter counter(&window);
  LoseFocus();
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
  EXPECT_EQ(0, FitMode());
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_TRUE(Band().empty());
  EXPECT_EQ(CursorWindow::kIdle, window.mouseMode);
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  Settle();
  EXPECT_EQ(1, counter.count);
  Move(20, 20);
  Release(20, 20);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

// The key alone, with the mouse still: the next tick shows it.
TEST_F(ZoomRectangleTest, losing_the_focus_does_what_the_cursor_shows) {
  Drag(100, 100, 200, 180);
  HoldModifiers(Qt::ShiftModifier);
  ASSERT_TRUE(WaitFor([&] { return Shape() == Qt::IBeamCursor; }, 2000));
  LoseFocus();
  EXPECT_TRUE(Shows(4, 100, 75));

  window.Screen()->setScale(1);
  window.Screen()->setCenter(0.5, 0.5);
  Drag(100, 100, 200, 180);
  ASSERT_EQ(Qt::IBeamCursor, Shape());
  HoldModifiers(Qt::NoModifier);
  // On a busy machine the tick may have come already, and shows that Shift is up.
  const bool stillShown = Shape() == Qt::IBeamCursor;
  LoseFocus();
  EXPECT_TRUE(stillShown ? Shows(4, 100, 75) : Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, losing_the_focus_before_a_mode_was_shown_does_as_the_release) {
  Press(100, 100);
  Move(110, 100);
  ASSERT_TRUE(Zoom().IsActive());
  ASSERT_EQ(QTDZoom::kNoZoom, Zoom().ShownMode());
  Cursor(200, 180);
  LoseFocus();
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, losing_the_focus_on_a_band_that_has_become_small_changes_nothing) {
  Drag(100, 100, 200, 180);
  Cursor(101, 101);
  LoseFocus();
  EXPECT_TRUE(Shows(1, -200, -150));
}

TEST_F(ZoomRectangleTest, losing_the_focus_before_a_rectangle_forgets_the_press) {
  Press(100, 100);
  LoseFocus();
  EXPECT_FALSE(window.rightPressed);
  EXPECT_FALSE(Move(200, 180));
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_TRUE(Shows(1, -200, -150));
}

TEST_F(ZoomRectangleTest, a_loss_of_focus_that_the_host_takes_leaves_the_rectangle) {
  Flags("7");
  host.Answer("mouse.free", 1);
  Drag(100, 100, 200, 180);
  LoseFocus();
  EXPECT_TRUE(Zoom().IsActive());
  Move(150, 150);
  Release(200, 180);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, a_click_with_the_left_button_during_the_drag_does_not_keep_it) {
  Drag(100, 100, 200, 180);
  window.mouseDown(200, 180, true, false);
  window.mouseUp(200, 180, true, false);
  ASSERT_TRUE(Zoom().IsActive());
  LoseFocus();
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_TRUE(Band().empty());
}

// Both buttons at once, in the window's own pixels.
TEST_F(ZoomRectangleTest, a_right_press_during_a_pan_goes_with_the_focus) {
  window.mouseDown(100, 100, true, false);
  Press(110, 110);
  ASSERT_TRUE(window.rightPressed);
  LoseFocus();
  EXPECT_FALSE(window.rightPressed);
  EXPECT_FALSE(Move(200, 180));
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_FALSE(window.grabbed);
  EXPECT_EQ(CursorWindow::kIdle, window.mouseMode);
}

TEST_F(ZoomRectangleTest, a_right_press_during_a_pan_goes_with_the_pan) {
  window.mouseDown(100, 100, true, false);
  Press(110, 110);
  window.mouseUp(110, 110, true, false);
  EXPECT_FALSE(Move(200, 180));
  EXPECT_FALSE(Zoom().IsActive());
}

TEST_F(ZoomRectangleTest, a_left_click_takes_the_place_of_a_right_press) {
  Press(100, 100);
  window.mouseDown(100, 100, true, false);
  EXPECT_FALSE(window.rightPressed);
  window.mouseUp(100, 100, true, false);
  EXPECT_FALSE(Move(101, 100));
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_EQ(CursorWindow::kIdle, window.mouseMode);
}

TEST_F(ZoomRectangleTest, a_left_click_that_the_host_takes_leaves_the_right_press) {
  Flags("4");
  host.Answer("mouse.down", 1);
  Press(100, 100);
  window.mouseDown(100, 100, true, false);
  EXPECT_TRUE(window.rightPressed);
  EXPECT_TRUE(Move(110, 100));
  EXPECT_TRUE(Zoom().IsActive());
  Release(110, 100);
}
