// Where the rubber band stands, what it asks for, and how it shows.
#include "ZoomHarness.h"

namespace {

using windowtest::HoldModifiers;
using windowtest::QTDZoomTest;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

using Numbers = std::vector<int>;

}  // namespace

TEST_F(QTDZoomTest, runs_between_its_corners_whichever_way_the_drag_goes) {
  struct Row {
    int toX, toY, x, y, w, h;
  };
  for (const Row& row :
       {Row{180, 150, 100, 90, 80, 60}, Row{40, 150, 40, 90, 60, 60}, Row{40, 20, 40, 20, 60, 70},
        Row{180, 20, 100, 20, 80, 70}, Row{-50, 400, -50, 90, 150, 310}, Row{100, 90, 100, 90, 0, 0}}) {
    ASSERT_TRUE(Begin(100, 90));
    Cursor(row.toX, row.toY);
    EXPECT_EQ(OnScreen(row.x, row.y, row.w, row.h), Tracked());
  }
}

TEST_F(QTDZoomTest, asks_for_a_zoom_when_both_sides_are_long_enough) {
  struct Row {
    int dx, dy;
    uint32_t mode;
  };
  for (const Row& row :
       {Row{19, 100, 0}, Row{100, 19, 0}, Row{20, 20, 1}, Row{-20, -20, 1}, Row{-19, -20, 0}, Row{0, 0, 0}}) {
    ASSERT_TRUE(Begin(200, 150));
    Cursor(200 + row.dx, 150 + row.dy);
    Tracked();
    EXPECT_EQ(row.mode, zoom.CurrentMode()) << row.dx << " " << row.dy;
  }
}

TEST_F(QTDZoomTest, shift_turns_the_zoom_round) {
  ASSERT_TRUE(Begin(10, 10));
  Cursor(60, 60);
  HoldModifiers(Qt::ShiftModifier);
  Tracked();
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
  Cursor(20, 20);
  Tracked();
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.CurrentMode());
  HoldModifiers(Qt::ControlModifier);
  Cursor(60, 60);
  Tracked();
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, the_smallest_extent_can_be_set) {
  zoom.properties.Set("skip.track", "50");
  ASSERT_TRUE(Begin(10, 10));
  Cursor(59, 100);
  Tracked();
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.CurrentMode());
  Cursor(60, 100);
  Tracked();
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, around_its_centre_it_keeps_the_windows_aspect_ratio) {
  parent.setGeometry(0, 0, 800, 600);
  ASSERT_EQ(QRect(0, 0, 800, 600), window.geometry(false));
  ASSERT_TRUE(Begin(400, 300, true));
  Cursor(500, 310);
  EXPECT_EQ(OnScreen(300, 225, 200, 150), Tracked());
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
  // Half a pixel away from zero: 50 x 3 / 4 = 37.5.
  Cursor(350, 300);
  EXPECT_EQ(OnScreen(350, 262, 100, 76), Tracked());
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
}

// 45 x 210 / 300 = 31.5, which the quotient 0.7 would miss.
TEST_F(QTDZoomTest, around_its_centre_halves_are_rounded_up) {
  parent.setGeometry(0, 0, 300, 210);
  ASSERT_EQ(QRect(0, 0, 300, 210), window.geometry(false));
  ASSERT_TRUE(Begin(150, 105, true));
  Cursor(195, 105);
  EXPECT_EQ(OnScreen(105, 73, 90, 64), Tracked());
}

// The inner rectangle is the child at the parent's centre, less its own place.
TEST_F(QTDZoomTest, around_its_centre_the_inner_rectangle_counts) {
  parent.setGeometry(0, 0, 400, 300);
  QWidget child(&parent);
  child.setGeometry(100, 50, 300, 250);
  child.show();
  parent.show();
  ASSERT_TRUE(WaitFor([&] { return child.isVisible(); }));
  ASSERT_EQ(QRect(0, 0, 200, 200), window.geometry(false));
  ASSERT_TRUE(Begin(200, 150, true));
  Cursor(230, 150);
  EXPECT_EQ(OnScreen(170, 120, 60, 60), Tracked());
  // A child that stands farther in than it is wide or high: the lengths count, not their signs.
  child.setGeometry(190, 140, 90, 60);
  ASSERT_EQ(-100, window.geometry(false).width());
  ASSERT_EQ(-80, window.geometry(false).height());
  Cursor(220, 150);
  EXPECT_EQ(OnScreen(180, 134, 40, 32), Tracked());
  // No width at all: no height.
  child.setGeometry(110, 100, 110, 120);
  ASSERT_EQ(0, window.geometry(false).width());
  EXPECT_EQ(OnScreen(180, 150, 40, 0), Tracked());
}

TEST_F(QTDZoomTest, around_its_centre_without_adjustment_it_reaches_to_the_cursor) {
  zoom.properties.Set("adjust", "0");
  ASSERT_TRUE(Begin(200, 150, true));
  Cursor(230, 110);
  EXPECT_EQ(OnScreen(170, 110, 60, 80), Tracked());
}

TEST_F(QTDZoomTest, around_its_centre_the_horizontal_distance_alone_asks_for_a_zoom) {
  HoldModifiers(Qt::ShiftModifier);  // plays no part here
  for (const char* adjust : {"0", "1"}) {
    zoom.properties.Set("adjust", adjust);
    struct Row {
      int dx, dy;
      uint32_t mode;
    };
    for (const Row& row : {Row{0, 200, 0}, Row{19, 200, 0}, Row{-19, 0, 0}, Row{20, 0, 1}, Row{-20, 0, 2},
                           Row{300, 5, 1}, Row{-300, -90, 2}}) {
      ASSERT_TRUE(Begin(200, 150, true));
      Cursor(200 + row.dx, 150 + row.dy);
      Tracked();
      EXPECT_EQ(row.mode, zoom.CurrentMode()) << row.dx << " " << row.dy;
    }
  }
}

TEST_F(QTDZoomTest, around_its_centre_with_no_smallest_extent_standing_still_zooms_in) {
  zoom.properties.Set("skip.track", "0");
  ASSERT_TRUE(Begin(200, 150, true));
  Cursor(200, 150);
  EXPECT_EQ(OnScreen(200, 150, 0, 0), Tracked());
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, the_drawing_is_one_movement_behind) {
  ASSERT_TRUE(Begin(100, 90));
  EXPECT_TRUE(Drawn().empty());
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  const Numbers first = Drawn();
  ASSERT_EQ(4u, first.size());
  EXPECT_EQ(0, first[2]);
  EXPECT_EQ(0, first[3]);
  Cursor(40, 300);
  zoom.trackTo(nullptr);
  EXPECT_EQ((Numbers{100, 90, 50, 40}), Drawn());
  zoom.trackTo(nullptr);
  EXPECT_EQ((Numbers{40, 90, 60, 210}), Drawn());
}

TEST_F(QTDZoomTest, a_band_that_is_only_asked_for_is_not_drawn) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  Settle();
  UpdateCounter counter(&window);
  Tracked();
  EXPECT_TRUE(Drawn().empty());
  EXPECT_EQ(0, zoom.rect.width);
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.lastMode);
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  Settle();
  EXPECT_EQ(0, counter.count);
}

TEST_F(QTDZoomTest, the_band_is_an_overlay_of_its_colour) {
  zoom.properties.Set("color", "4294967295");
  ASSERT_TRUE(Begin(100, 90));
  zoom.trackTo(nullptr);
  QTD::PROPERTIES object;
  ASSERT_TRUE(window.Objects().get(zoom.ObjectID(), &object));
  EXPECT_EQ("4294967295", object.GetString("line.clr"));
  EXPECT_EQ("1", object.GetString("update"));
  EXPECT_EQ(zoom.ObjectID(), object.GetString("objectID"));
  EXPECT_EQ("rect", object.GetString("type"));
  EXPECT_EQ("win", object.GetString("cs"));
  EXPECT_EQ(1, window.Objects().count());
}

TEST_F(QTDZoomTest, a_movement_repaints_and_shows_its_mode) {
  ASSERT_TRUE(Begin(100, 90));
  Settle();
  UpdateCounter counter(&window);
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  EXPECT_EQ(Qt::CrossCursor, Shape());
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.lastMode);
  Settle();
  EXPECT_EQ(1, counter.count);
  HoldModifiers(Qt::ShiftModifier);
  zoom.trackTo(nullptr);
  EXPECT_EQ(Qt::IBeamCursor, Shape());
  Cursor(101, 91);
  zoom.trackTo(nullptr);
  EXPECT_EQ(Qt::ArrowCursor, Shape());
}

TEST_F(QTDZoomTest, draws_nothing_without_a_band) {
  const QTD::RectI band{50, 60, 70, 80};
  zoom.drawBand(&band);
  EXPECT_TRUE(Drawn().empty());
  ASSERT_TRUE(Begin(100, 90));
  zoom.drawBand(nullptr);
  EXPECT_TRUE(Drawn().empty());
  zoom.drawBand(&band);
  const QPoint corner = parent.mapFromGlobal(QPoint(50, 60));
  EXPECT_EQ((Numbers{corner.x(), corner.y(), 70, 80}), Drawn());
}

TEST_F(QTDZoomTest, positions_at_the_ends_of_the_numbers_do_no_harm) {
  const int least = std::numeric_limits<int>::min();
  const int most = std::numeric_limits<int>::max();
  for (const bool fromCenter : {false, true}) {
    for (const QPoint& press : {QPoint(least, least), QPoint(most, most), QPoint(least, most)}) {
      ASSERT_TRUE(zoom.begin(&window, &press, fromCenter));
      window.at = QPoint(most, least);
      QTD::RectI band;
      zoom.trackTo(&band);
      EXPECT_GE(band.width, 0);
      EXPECT_GE(band.height, 0);
    }
    zoom.finish(nullptr);
  }
}
