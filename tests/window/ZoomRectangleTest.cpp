// The selection zoom from the press of the right button to its release, as the window drives it.
#include <QMouseEvent>

#include "ZoomHarness.h"

namespace {

using windowtest::CursorWindow;
using windowtest::HoldModifiers;
using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;
using windowtest::ZoomRectangleTest;

using Numbers = std::vector<int>;

}  // namespace

TEST_F(ZoomRectangleTest, a_movement_of_more_than_four_pixels_begins_a_rectangle) {
  struct Row {
    int dx, dy;
    bool begins;
  };
  for (const Row& row : {Row{0, 0, false}, Row{4, 0, false}, Row{0, -4, false}, Row{2, 3, false},
                         Row{3, 3, true}, Row{5, 0, true}, Row{0, -5, true}, Row{-4, 1, true}}) {
    Press(100, 90);
    EXPECT_TRUE(Move(100 + row.dx, 90 + row.dy)) << row.dx << " " << row.dy;
    EXPECT_EQ(row.begins, Zoom().IsActive()) << row.dx << " " << row.dy;
    EXPECT_EQ(!row.begins, window.rightPressed);
    EXPECT_EQ(row.begins ? CursorWindow::kZoomRectangle : CursorWindow::kIdle, window.mouseMode);
    Release(100, 90);
    EXPECT_FALSE(Zoom().IsActive());
    EXPECT_FALSE(window.rightPressed);
    EXPECT_EQ(CursorWindow::kIdle, window.mouseMode);
  }
}

TEST_F(ZoomRectangleTest, the_rectangle_runs_from_the_press_and_is_drawn_one_movement_behind) {
  Press(100, 90);
  Move(106, 90);
  EXPECT_TRUE(Band().empty());
  EXPECT_TRUE(Move(150, 130));
  EXPECT_TRUE(Move(180, 160));
  EXPECT_EQ((Numbers{100, 90, 50, 40}), Band());
  EXPECT_EQ(Qt::CrossCursor, Shape());
  EXPECT_TRUE(Shows(1, -200, -150));
  Release(180, 160);
  EXPECT_TRUE(Band().empty());
  EXPECT_EQ(Qt::ArrowCursor, Shape());
}

TEST_F(ZoomRectangleTest, what_it_holds_fills_the_windows_width) {
  Drag(100, 100, 190, 170);
  Settle();
  UpdateCounter counter(&window);
  Release(200, 180);
  // 100 by 80 pixels around (150, 140), which was (350, 290) in the picture, at four times the size.
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
  EXPECT_EQ(0, FitMode());
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(ZoomRectangleTest, the_way_of_the_drag_plays_no_part) {
  Drag(200, 180, 120, 110);
  Release(100, 100);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, with_shift_at_the_release_it_zooms_out) {
  Drag(100, 100, 190, 170);
  ASSERT_EQ(Qt::CrossCursor, Shape());
  HoldModifiers(Qt::ShiftModifier);
  Release(200, 180);
  // The scale grows by 400 / 100; the picture is then 200 by 150 in the middle of the window.
  EXPECT_TRUE(Shows(4, 100, 75));
}

TEST_F(ZoomRectangleTest, shift_during_the_drag_alone_does_not_count) {
  HoldModifiers(Qt::ShiftModifier);
  Drag(100, 100, 190, 170);
  ASSERT_EQ(Qt::IBeamCursor, Shape());
  HoldModifiers(Qt::NoModifier);
  Release(200, 180);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, with_ctrl_at_the_begin_it_grows_around_the_press) {
  HoldModifiers(Qt::ControlModifier);
  Press(200, 150);
  Move(206, 150);
  HoldModifiers(Qt::NoModifier);
  // The widget stands at (30, 20): its inner rectangle is 370 by 280.
  ASSERT_EQ(QRect(0, 0, 370, 280), window.geometry(false));
  Move(250, 199);
  Move(250, 199);
  EXPECT_EQ((Numbers{150, 112, 100, 76}), Band());  // 50 x 280 / 370 = 37.8
  Release(250, 199);
  EXPECT_TRUE(Shows(0.25, 200 - 400 * 4, 150 - 300 * 4));
}

TEST_F(ZoomRectangleTest, with_ctrl_a_drag_to_the_left_zooms_out) {
  HoldModifiers(Qt::ControlModifier);
  Drag(200, 150, 150, 150);
  EXPECT_EQ(Qt::IBeamCursor, Shape());
  Release(150, 150);
  EXPECT_TRUE(Shows(4, 100, 75));
}

TEST_F(ZoomRectangleTest, with_ctrl_a_vertical_drag_changes_nothing_when_nothing_is_adjusted) {
  Zoom().properties.Set("adjust", "0");
  HoldModifiers(Qt::ControlModifier);
  Drag(200, 150, 200, 290);
  Move(200, 290);
  EXPECT_EQ((Numbers{200, 10, 0, 280}), Band());
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  Release(200, 290);
  EXPECT_TRUE(Shows(1, -200, -150));
}

TEST_F(ZoomRectangleTest, ctrl_pressed_later_does_not_count) {
  Press(100, 100);
  Move(110, 110);
  HoldModifiers(Qt::ControlModifier);
  Move(200, 180);
  Release(200, 180);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, nineteen_pixels_are_no_zoom_and_twenty_are_one) {
  for (const QPoint& end : {QPoint(119, 200), QPoint(200, 119), QPoint(119, 119)}) {
    Drag(100, 100, end.x(), end.y());
    EXPECT_TRUE(Zoom().IsActive());
    Release(end.x(), end.y());
    EXPECT_TRUE(Shows(1, -200, -150));
    EXPECT_FALSE(Zoom().IsActive());
    EXPECT_TRUE(Band().empty());
    EXPECT_EQ(0, FitMode()) << "the picture does not jump at the next resizing either";
  }
  Drag(100, 100, 120, 120);
  Release(120, 120);
  EXPECT_NEAR(0.05, window.Screen()->Scale(), 1e-9);
}

TEST_F(ZoomRectangleTest, a_rectangle_is_no_click_for_the_host) {
  Drag(100, 100, 120, 105);
  Release(120, 105);
  EXPECT_FALSE(WaitFor([&] { return !host.Of("mouse.down").empty(); }, 50));
  Press(100, 100);
  Move(104, 100);
  Release(104, 100);
  ASSERT_TRUE(host.WaitForCode("mouse.down"));
  EXPECT_EQ("0", host.Of("mouse.down")[0].at("left"));
  EXPECT_TRUE(Shows(1, -200, -150));
}

TEST_F(ZoomRectangleTest, the_host_hears_of_the_new_view_once) {
  Drag(100, 100, 200, 180);
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 30));
  Release(200, 180);
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("notification.view") > 0; }));
  EXPECT_EQ(1, host.CountOf("notification.view"));
}

TEST_F(ZoomRectangleTest, overlays_follow_the_zoom) {
  QTD::PROPERTIES list;
  list.Set("cs", "img");
  const std::string id = window.overlayRect(nullptr, 350, 290, 10, 5, &list);
  Drag(100, 100, 200, 180);
  Release(200, 180);
  QTD::PROPERTIES object;
  ASSERT_TRUE(window.Objects().get(id, &object));
  EXPECT_EQ(200, object.GetInt("x"));
  EXPECT_EQ(150, object.GetInt("y"));
  EXPECT_EQ(40, object.GetInt("w"));
}

TEST_F(ZoomRectangleTest, keys_do_nothing_during_a_drag_but_tell_of_shift) {
  Drag(100, 100, 200, 180);
  ASSERT_EQ(Qt::CrossCursor, Shape());
  for (const int code : {0x2B, 0x2D, 0x30, 0x31, 0x32, 0x43, int{Qt::Key_Left}, int{Qt::Key_Up},
                         int{Qt::Key_Right}, int{Qt::Key_Down}})
    Key(code);
  for (const int code : {Qt::Key_S, Qt::Key_D}) Key(code);
  EXPECT_TRUE(Shows(1, -200, -150));
  EXPECT_EQ(3, FitMode());
  EXPECT_EQ(Qt::CrossCursor, Shape());
  HoldModifiers(Qt::ShiftModifier);
  Key(Qt::Key_Shift);
  EXPECT_EQ(Qt::IBeamCursor, Shape());
  EXPECT_EQ(QTDZoom::kZoomOut, Zoom().CurrentMode());
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("cmd.display.view.status") > 0; }, 30));
  HoldModifiers(Qt::NoModifier);
  Release(100, 100);
  Key(Qt::Key_Plus);
  EXPECT_EQ(125, window.Screen()->zoomPercent());
}

TEST_F(ZoomRectangleTest, where_none_can_begin_the_drag_is_remembered_and_ends_as_a_click) {
  window.MakeEmpty();
  Press(100, 100);
  EXPECT_TRUE(Move(200, 180));
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_EQ(CursorWindow::kZoomRectangle, window.mouseMode);
  EXPECT_FALSE(window.rightPressed);
  EXPECT_TRUE(Move(210, 190));
  EXPECT_TRUE(Band().empty());
  Release(210, 190);
  EXPECT_EQ(CursorWindow::kIdle, window.mouseMode);
  EXPECT_TRUE(host.WaitForCode("mouse.down"));
  EXPECT_TRUE(Shows(1, -200, -150));
}

TEST_F(ZoomRectangleTest, a_window_without_a_parent_shows_no_rectangle) {
  CursorWindow orphan(nullptr, false);
  ASSERT_TRUE(orphan.open());
  orphan.setGeometry(0, 0, 400, 300);
  orphan.resize(400, 300);
  orphan.setImage(picture.Record(), false);
  orphan.mouseDown(100, 100, false, false);
  EXPECT_TRUE(orphan.mouseMove(200, 180, false));
  EXPECT_FALSE(orphan.Zoom()->IsActive());
  EXPECT_EQ(CursorWindow::kZoomRectangle, orphan.mouseMode);
  orphan.mouseUp(200, 180, false, false);
  EXPECT_EQ(CursorWindow::kIdle, orphan.mouseMode);
  orphan.setImage(nullptr, false);
}

TEST_F(ZoomRectangleTest, without_a_picture_there_is_none) {
  window.setImage(nullptr, false);
  Drag(100, 100, 200, 180);
  EXPECT_FALSE(Zoom().IsActive());
  Release(200, 180);
}

TEST_F(ZoomRectangleTest, a_picture_that_goes_during_the_drag_does_no_harm) {
  Drag(100, 100, 200, 180);
  window.setImage(nullptr, false);
  window.Screen()->done(true);
  Move(210, 190);
  Release(210, 190);
  EXPECT_FALSE(Zoom().IsActive());
}

TEST_F(ZoomRectangleTest, the_button_that_is_not_left_decides) {
  window.Screen()->setFit(3, true);
  const auto send = [&](QEvent::Type type, int x, int y, Qt::MouseButton button) {
    Cursor(x, y);
    QMouseEvent event(type, QPointF(x, y), QPointF(Global(x, y)), button, Qt::NoButton, Qt::NoModifier);
    window.event(&event);
  };
  send(QEvent::MouseButtonPress, 100, 100, Qt::MiddleButton);
  send(QEvent::MouseMove, 150, 150, Qt::NoButton);
  send(QEvent::MouseButtonRelease, 200, 180, Qt::MiddleButton);
  EXPECT_TRUE(Shows(0.25, 200 - 350 * 4, 150 - 290 * 4));
}

TEST_F(ZoomRectangleTest, closing_the_window_ends_it) {
  Drag(100, 100, 200, 180);
  const std::string id = Zoom().ObjectID();
  ASSERT_TRUE(window.Objects().get(id, nullptr));
  window.close();
  EXPECT_FALSE(window.Zoom());
  EXPECT_FALSE(window.Objects().get(id, nullptr));
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  EXPECT_FALSE(window.mouseMove(210, 190, false));
  ASSERT_TRUE(window.open());
  ASSERT_TRUE(window.Zoom());
  EXPECT_FALSE(Zoom().IsActive());
  EXPECT_FALSE(Move(220, 200));
}

TEST_F(ZoomRectangleTest, deleting_the_window_ends_it) {
  auto other = std::make_unique<CursorWindow>(&parent, false);
  ASSERT_TRUE(other->open());
  other->setGeometry(30, 20, 400, 300);
  other->resize(400, 300);
  other->setImage(picture.Record(), false);
  other->mouseDown(100, 100, false, false);
  other->mouseMove(200, 180, false);
  ASSERT_TRUE(other->Zoom()->IsActive());
  other.reset();
  Settle();
}

TEST_F(ZoomRectangleTest, a_window_that_fails_to_open_has_no_zoom) {
  EXPECT_TRUE(window.Zoom());
  CursorWindow opengl(&parent, true);
  opengl.setSurfaceType(QSurface::RasterSurface);  // on which no context can be made
  EXPECT_FALSE(opengl.open());
  EXPECT_FALSE(opengl.isOpen());
  EXPECT_FALSE(opengl.Zoom());
}

// The band as it is painted. The cursor is the system's own here.
TEST_F(ViewerTest, the_band_is_painted_green_and_goes_with_the_release) {
  const Picture picture(800, 600, [](int, int) { return qRgb(200, 30, 40); });
  Show(picture);
  const auto go = [&](int x, int y) {
    QCursor::setPos(viewer->mapToGlobal(QPoint(x, y)));
    Settle();
    Move(x, y, Qt::RightButton);
  };
  Press(100, 100, Qt::RightButton);
  go(110, 110);
  go(200, 180);
  go(201, 181);
  const QRgb green = qRgb(0, 128, 0);
  const QImage shown = Grab();
  for (const QPoint& at : {QPoint(100, 100), QPoint(150, 100), QPoint(100, 140)}) {
    EXPECT_EQ(green, shown.pixel(at)) << at.x() << " " << at.y();
  }
  EXPECT_EQ(qRgb(200, 30, 40), shown.pixel(150, 140));
  EXPECT_EQ(qRgb(200, 30, 40), shown.pixel(95, 95));
  Release(201, 181, Qt::RightButton);
  const QImage after = Grab();
  for (const QPoint& at : {QPoint(100, 100), QPoint(150, 100), QPoint(100, 140)}) {
    EXPECT_EQ(qRgb(200, 30, 40), after.pixel(at));
  }
  EXPECT_NEAR(101 / 400.0, window->Screen()->Scale(), 1e-6);
  viewer->setImage(nullptr, false);
}
