// The same by a real pointer: the X server's events instead of ones that were made here.
#include "RealHarness.h"

namespace {

using windowtest::RealInputTest;
using windowtest::WaitFor;

}  // namespace

TEST_F(RealInputTest, a_drag_pans_what_is_seen) {
  Point(100, 100);
  Do(QStringLiteral("mousedown 1"));
  Point(140, 90);
  EXPECT_TRUE(Reaches(-160, -160));
  // Past the window's edge the pan goes on, until the picture's own edge stands at the window's.
  Point(100, 340);
  EXPECT_TRUE(Reaches(-200, 0));
  Point(140, 90);
  EXPECT_TRUE(Reaches(-160, -160));
  Do(QStringLiteral("mouseup 1"));
  Point(10, 10);
  EXPECT_TRUE(Reaches(-160, -160));
  EXPECT_EQ(qRgb(250, 0, 0), Grab().pixel(239, 150));
  EXPECT_EQ(qRgb(0, 0, 240), Grab().pixel(240, 150));
}

TEST_F(RealInputTest, the_wheel_zooms) {
  Point(200, 150);
  Do(QStringLiteral("click 4"));
  EXPECT_TRUE(WaitFor([&] { return window->Screen()->zoomPercent() == 125; }));
  Do(QStringLiteral("click 5"));
  EXPECT_TRUE(WaitFor([&] { return window->Screen()->zoomPercent() == 100; }));
}

TEST_F(RealInputTest, a_double_click_centres) {
  Point(250, 180);
  Do(QStringLiteral("click --repeat 2 --delay 50 1"));
  EXPECT_TRUE(Reaches(-250, -180));
}

TEST_F(RealInputTest, a_right_click_is_told) {
  ConnectHost();
  Point(100, 100);
  Do(QStringLiteral("mousedown 3"));
  EXPECT_TRUE(host.Of("mouse.down").empty());
  Do(QStringLiteral("mouseup 3"));
  ASSERT_TRUE(host.WaitForCode("mouse.down"));
  const QTD::ARGUMENTS told = host.Of("mouse.down")[0];
  EXPECT_EQ("0", told.at("left"));
  EXPECT_EQ("100", told.at("win.x"));
  EXPECT_EQ("300", told.at("img.x"));
  EXPECT_EQ(std::to_string(QCursor::pos().x()), told.at("gbl.x"));
}

TEST_F(RealInputTest, losing_the_focus_undoes_a_pan) {
  QWidget other;
  other.setGeometry(700, 500, 200, 100);
  other.show();
  Point(100, 100);
  Do(QStringLiteral("click 1"));
  ASSERT_TRUE(WaitFor([&] { return QGuiApplication::focusWindow() == window; }));
  Do(QStringLiteral("mousedown 1"));
  Point(150, 100);
  ASSERT_TRUE(Reaches(-150, -150));
  Do(QStringLiteral("windowfocus %1").arg(other.winId()));
  EXPECT_TRUE(Reaches(-200, -150));
  Do(QStringLiteral("mouseup 1"));
}

TEST_F(RealInputTest, a_bars_arrow_scrolls) {
  QScrollBar* bar = Bar(Qt::Horizontal);
  const QPoint arrow = bar->mapToGlobal(QPoint(bar->width() - 4, bar->height() / 2));
  Do(QStringLiteral("mousemove --sync %1 %2 click 1").arg(arrow.x()).arg(arrow.y()));
  EXPECT_TRUE(Reaches(-201, -150));
  EXPECT_EQ(201, bar->value());
}
