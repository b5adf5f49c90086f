// The zoom rectangle and the keys by a real pointer and a real keyboard.
#include "QTD/window/QTDZoom.h"
#include "RealHarness.h"

namespace {

using windowtest::RealZoomTest;
using windowtest::Settle;
using windowtest::WaitFor;

// Counts the movements that a window is told of.
class MoveCounter : public QObject {
 public:
  explicit MoveCounter(QObject* watched) { watched->installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::MouseMove) ++count;
    return false;
  }
  int count = 0;
};

}  // namespace

TEST_F(RealZoomTest, a_drag_with_the_right_button_zooms_on_what_it_spans) {
  Drag(100, 100, 199, 179);
  ASSERT_TRUE(Shows(Qt::CrossCursor));
  Point(200, 180);
  // The band of the movement before is to be seen.
  ASSERT_TRUE(WaitFor([&] { return Grab().pixel(150, 100) == qRgb(0, 128, 0); }));
  EXPECT_EQ(qRgb(0, 128, 0), Grab().pixel(100, 140));
  Release();
  EXPECT_TRUE(Reaches(200 - 350 * 4, 150 - 290 * 4));
  EXPECT_TRUE(Scales(0.25));
  // The colours part at (400, 300) of the picture: at 200 + 50 x 4 in the window, just behind its edge.
  EXPECT_EQ(qRgb(250, 0, 0), Grab().pixel(399, 100));
  EXPECT_EQ(qRgb(250, 0, 0), Grab().pixel(100, 100));
}

TEST_F(RealZoomTest, the_drag_goes_on_outside_the_window) {
  Drag(300, 200, 450, 250);
  Release();
  EXPECT_TRUE(Scales(150 / 400.0));
}

// Without a button down nothing but the grab brings these movements here.
TEST_F(RealZoomTest, the_mouse_is_grabbed_as_long_as_there_is_a_band) {
  Point(300, 200);
  MoveCounter moves(window);
  Point(600, 500);
  EXPECT_EQ(0, moves.count);
  ASSERT_TRUE(window->Zoom()->begin(window, nullptr, false));
  Point(620, 500);
  EXPECT_TRUE(WaitFor([&] { return moves.count > 0; }));
  window->Zoom()->finish(nullptr);
  Settle();
  moves.count = 0;
  Point(600, 500);
  EXPECT_FALSE(WaitFor([&] { return moves.count > 0; }, 50));
}

TEST_F(RealZoomTest, a_small_band_changes_nothing) {
  Drag(100, 100, 119, 200);
  Release();
  EXPECT_TRUE(Reaches(-200, -150));
  EXPECT_TRUE(Scales(1));
}

TEST_F(RealZoomTest, shift_turns_the_zoom_round) {
  Drag(100, 100, 200, 180);
  ASSERT_TRUE(Shows(Qt::CrossCursor));
  Do(QStringLiteral("keydown Shift_L"));
  EXPECT_TRUE(Shows(Qt::IBeamCursor)) << "though the mouse stands still";
  Release();
  Do(QStringLiteral("keyup Shift_L"));
  EXPECT_TRUE(Scales(4));
  EXPECT_TRUE(Reaches(100, 75));
}

TEST_F(RealZoomTest, ctrl_lets_it_grow_around_the_press) {
  Do(QStringLiteral("keydown Control_L"));
  Drag(200, 150, 250, 150);
  Do(QStringLiteral("keyup Control_L"));
  Release();
  EXPECT_TRUE(Scales(0.25));
  EXPECT_TRUE(Reaches(200 - 400 * 4, 150 - 300 * 4));
}

TEST_F(RealZoomTest, losing_the_focus_zooms) {
  QWidget other;
  other.setGeometry(700, 500, 200, 100);
  other.show();
  ASSERT_TRUE(WaitFor([&] { return other.isVisible(); }));
  Settle();
  Drag(100, 100, 200, 180);
  Do(QStringLiteral("windowfocus %1").arg(other.winId()));
  EXPECT_TRUE(Scales(0.25));
  EXPECT_FALSE(window->Zoom()->IsActive());
}

TEST_F(RealZoomTest, losing_the_focus_with_shift_held_does_what_the_cursor_shows) {
  QWidget other;
  other.setGeometry(700, 500, 200, 100);
  other.show();
  ASSERT_TRUE(WaitFor([&] { return other.isVisible(); }));
  Settle();
  Drag(100, 100, 200, 180);
  ASSERT_TRUE(Shows(Qt::CrossCursor));
  Do(QStringLiteral("keydown Shift_L"));
  ASSERT_TRUE(Shows(Qt::IBeamCursor)) << "though the mouse stands still";
  Do(QStringLiteral("windowfocus %1").arg(other.winId()));
  EXPECT_TRUE(Scales(4));
  EXPECT_TRUE(Reaches(100, 75));
}

TEST_F(RealZoomTest, keys_do_nothing_during_a_drag) {
  Drag(100, 100, 119, 119);
  Do(QStringLiteral("key plus key Left key 0"));
  EXPECT_TRUE(Scales(1));
  EXPECT_TRUE(Reaches(-200, -150));
  Release();
  EXPECT_TRUE(Scales(1));
}
