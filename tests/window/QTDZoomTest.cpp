// The life of the rubber band: its begin and end, its ticks and keys.
#include "QTD/window/QTDZoom.h"

#include <functional>

#include "ZoomHarness.h"

namespace {

using windowtest::CursorWindow;
using windowtest::HoldModifiers;
using windowtest::OpenZoom;
using windowtest::QTDZoomTest;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

using Numbers = std::vector<int>;

}  // namespace

TEST_F(QTDZoomTest, has_its_properties_its_name_and_no_band_at_first) {
  EXPECT_EQ("1", zoom.properties.GetString("adjust"));
  EXPECT_EQ("32768", zoom.properties.GetString("color"));
  EXPECT_EQ("20", zoom.properties.GetString("skip.track"));
  EXPECT_EQ("5", zoom.properties.GetString("rect.width"));
  EXPECT_EQ(4, zoom.properties.Count());
  char expected[64];
  std::snprintf(expected, sizeof expected, "zoom.0x%p", static_cast<void*>(&zoom));
  EXPECT_EQ(expected, zoom.objectID);
  EXPECT_EQ("", zoom.name);
  EXPECT_FALSE(zoom.IsActive());
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, begins_at_the_press_or_at_the_cursor) {
  EXPECT_TRUE(Begin(10, 20));
  EXPECT_TRUE(zoom.IsActive());
  EXPECT_EQ(Global(10, 20), zoom.start);
  EXPECT_FALSE(zoom.fromCenter);
  Cursor(33, 44);
  EXPECT_TRUE(zoom.begin(nullptr, nullptr, true));
  EXPECT_EQ(Global(33, 44), zoom.start);
  EXPECT_TRUE(zoom.fromCenter);
  EXPECT_TRUE(zoom.timer->isActive());
  EXPECT_EQ(200, zoom.timer->interval());
}

TEST_F(QTDZoomTest, each_round_begins_with_an_empty_band) {
  ASSERT_TRUE(Begin(10, 10));
  Cursor(60, 70);
  zoom.trackTo(nullptr);
  EXPECT_EQ(50, zoom.rect.width);
  ASSERT_TRUE(Begin(10, 10));
  EXPECT_EQ(0, zoom.rect.x);
  EXPECT_EQ(0, zoom.rect.width);
}

TEST_F(QTDZoomTest, does_not_begin_without_a_window_a_parent_or_a_size) {
  OpenZoom alone(nullptr);
  EXPECT_FALSE(alone.begin(nullptr, nullptr, false));
  EXPECT_FALSE(alone.IsActive());
  EXPECT_FALSE(alone.timer->isActive());
  alone.trackTo(nullptr);
  alone.finish(nullptr);

  CursorWindow orphan(nullptr, false);
  ASSERT_TRUE(orphan.open());
  orphan.setGeometry(0, 0, 100, 100);
  OpenZoom ofOrphan(&orphan);
  EXPECT_FALSE(ofOrphan.begin(&orphan, nullptr, false));
  EXPECT_FALSE(ofOrphan.IsActive());

  window.MakeEmpty();
  EXPECT_FALSE(Begin(10, 10));
  EXPECT_FALSE(zoom.IsActive());
  EXPECT_FALSE(zoom.timer->isActive());
}

TEST_F(QTDZoomTest, a_band_that_cannot_begin_anew_is_gone) {
  ASSERT_TRUE(Begin(10, 10));
  Cursor(60, 70);
  zoom.trackTo(nullptr);
  window.MakeEmpty();
  EXPECT_FALSE(Begin(10, 10));
  EXPECT_FALSE(zoom.IsActive());
  EXPECT_TRUE(Drawn().empty());
}

TEST_F(QTDZoomTest, another_window_takes_the_band_over) {
  QWidget otherParent;
  otherParent.setGeometry(0, 0, 200, 100);
  CursorWindow other(&otherParent, false);
  ASSERT_TRUE(other.open());
  other.setGeometry(0, 0, 200, 100);
  other.at = QPoint(50, 60);
  ASSERT_TRUE(Begin(10, 10));
  zoom.trackTo(nullptr);
  ASSERT_FALSE(Drawn().empty());
  EXPECT_TRUE(zoom.begin(&other, nullptr, false));
  EXPECT_TRUE(Drawn().empty());
  zoom.trackTo(nullptr);
  EXPECT_TRUE(other.Objects().get(zoom.ObjectID(), nullptr));
  zoom.finish(nullptr);
}

TEST_F(QTDZoomTest, its_end_leaves_nothing_behind) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  zoom.trackTo(nullptr);
  Settle();
  UpdateCounter counter(&window);
  zoom.finish(nullptr);
  EXPECT_FALSE(zoom.IsActive());
  EXPECT_FALSE(zoom.timer->isActive());
  EXPECT_EQ(0, window.Objects().count());
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(QTDZoomTest, its_end_tells_the_band_as_it_then_is) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  Cursor(50, 30);
  HoldModifiers(Qt::ShiftModifier);
  QTD::RectI band;
  zoom.finish(&band);
  EXPECT_EQ(OnScreen(50, 30, 50, 60), (Numbers{band.x, band.y, band.width, band.height}));
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
  EXPECT_EQ(0, window.Objects().count());
}

TEST_F(QTDZoomTest, without_a_band_there_is_nothing_to_track_and_nothing_to_end) {
  Settle();
  UpdateCounter counter(&window);
  window.setCursor(Qt::WaitCursor);
  QTD::RectI band{1, 2, 3, 4};
  zoom.trackTo(&band);
  zoom.trackTo(nullptr);
  zoom.finish(&band);
  zoom.slotTimer();
  EXPECT_EQ(1, band.x);
  EXPECT_EQ(4, band.height);
  EXPECT_EQ(Qt::WaitCursor, Shape());
  EXPECT_EQ(0, window.Objects().count());
  Settle();
  EXPECT_EQ(0, counter.count);
}

TEST_F(QTDZoomTest, shift_takes_effect_while_the_mouse_stands_still) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  ASSERT_EQ(Qt::CrossCursor, Shape());
  HoldModifiers(Qt::ShiftModifier);
  EXPECT_TRUE(WaitFor([&] { return Shape() == Qt::IBeamCursor; }, 2000));
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.lastMode);
  HoldModifiers(Qt::NoModifier);
  EXPECT_TRUE(WaitFor([&] { return Shape() == Qt::CrossCursor; }, 2000));
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, a_tick_leaves_small_and_centred_bands_alone) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(110, 100);
  zoom.trackTo(nullptr);
  HoldModifiers(Qt::ShiftModifier);
  zoom.slotTimer();
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.CurrentMode());
  EXPECT_EQ(Qt::ArrowCursor, Shape());
  ASSERT_TRUE(Begin(100, 90, true));
  Cursor(150, 90);
  zoom.trackTo(nullptr);
  zoom.slotTimer();
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
  EXPECT_EQ(Qt::CrossCursor, Shape());
}

TEST_F(QTDZoomTest, several_rounds_in_a_row_do_no_harm) {
  for (int round = 0; round < 20; ++round) {
    ASSERT_TRUE(Begin(100, 90));
    Cursor(150, 130);
    zoom.trackTo(nullptr);
    if (round % 2) zoom.finish(nullptr);
  }
  ASSERT_TRUE(Begin(100, 90));
  zoom.trackTo(nullptr);
  HoldModifiers(Qt::ShiftModifier);
  EXPECT_TRUE(WaitFor([&] { return Shape() == Qt::IBeamCursor; }, 2000));
}

TEST_F(QTDZoomTest, the_keyboard_is_asked_once_in_a_tick) {
  zoom.slotTimer();
  const auto first = zoom.lastTick;
  zoom.slotTimer();  // another connection's, in the same tick
  EXPECT_EQ(first, zoom.lastTick);
  for (int round = 0; round < 5; ++round) ASSERT_TRUE(Begin(100, 90));
  EXPECT_TRUE(WaitFor([&] { return zoom.lastTick != first; }, 2000));
  EXPECT_GE(zoom.lastTick - first, std::chrono::milliseconds(100));
}

TEST_F(QTDZoomTest, a_key_is_taken_into_account_at_once_between_two_ticks) {
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  HoldModifiers(Qt::ShiftModifier);
  zoom.lastTick = std::chrono::steady_clock::now();
  EXPECT_TRUE(zoom.key(Qt::Key_Shift));
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
}

TEST_F(QTDZoomTest, each_round_begins_without_a_mode) {
  ASSERT_TRUE(Begin(10, 10));
  Cursor(60, 70);
  zoom.trackTo(nullptr);
  ASSERT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode());
  zoom.finish(nullptr);
  EXPECT_EQ(QTDZoom::kZoomIn, zoom.CurrentMode()) << "whoever ended the band reads it";
  ASSERT_TRUE(Begin(10, 10));
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.CurrentMode());
  EXPECT_EQ(QTDZoom::kNoZoom, zoom.ShownMode());
}

// The window may live on: it keeps nothing of the band.
TEST_F(QTDZoomTest, a_band_whose_parent_goes_can_still_be_ended) {
  const std::function<void(CursorWindow&)> ends[] = {
      [](CursorWindow& ended) { ended.Zoom()->finish(nullptr); },
      [](CursorWindow& ended) {
        QTD::RectI band{1, 2, 3, 4};
        ended.Zoom()->finish(&band);
        EXPECT_EQ(3, band.width);
      },
      [](CursorWindow& ended) { ended.mouseUp(5, 5, false, false); },
      [](CursorWindow& ended) { ended.focusLost(); },
  };
  for (const auto& end : ends) {
    SCOPED_TRACE(&end - ends);
    auto widget = std::make_unique<QWidget>();
    widget->setGeometry(0, 0, 100, 80);
    CursorWindow other(widget.get(), false);
    ASSERT_TRUE(other.open());
    other.setGeometry(0, 0, 100, 80);
    ASSERT_TRUE(other.Zoom()->begin(&other, nullptr, false));
    other.Zoom()->trackTo(nullptr);
    other.setCursor(Qt::CrossCursor);
    ASSERT_TRUE(other.Objects().get(other.Zoom()->ObjectID(), nullptr));
    widget.reset();
    end(other);
    EXPECT_FALSE(other.Objects().get(other.Zoom()->ObjectID(), nullptr));
    EXPECT_EQ(Qt::ArrowCursor, other.cursor().shape());
  }
}

TEST_F(QTDZoomTest, handles_keys_only_while_there_is_a_band) {
  EXPECT_FALSE(zoom.key(Qt::Key_Plus));
  ASSERT_TRUE(Begin(100, 90));
  Cursor(150, 130);
  zoom.trackTo(nullptr);
  HoldModifiers(Qt::ShiftModifier);
  EXPECT_TRUE(zoom.key(Qt::Key_Plus));
  EXPECT_EQ(QTDZoom::kZoomOut, zoom.CurrentMode());
  EXPECT_EQ(Qt::IBeamCursor, Shape());
  EXPECT_FALSE(zoom.mouseDown(1, 1, true, false));
  EXPECT_FALSE(zoom.mouseMove(1, 1, true));
  EXPECT_FALSE(zoom.mouseUp(1, 1, true, false));
  EXPECT_FALSE(zoom.mouseDouble(1, 1, true));
  EXPECT_FALSE(zoom.wheel(120));
  EXPECT_FALSE(zoom.focusLost());
  EXPECT_TRUE(zoom.IsActive());
}

TEST_F(QTDZoomTest, a_band_whose_window_or_parent_goes_is_forgotten) {
  auto widget = std::make_unique<QWidget>();
  widget->setGeometry(0, 0, 100, 80);
  auto other = std::make_unique<CursorWindow>(widget.get(), false);
  ASSERT_TRUE(other->open());
  other->setGeometry(0, 0, 100, 80);
  ASSERT_TRUE(zoom.begin(other.get(), nullptr, false));
  widget.reset();
  EXPECT_FALSE(zoom.IsActive());
  zoom.trackTo(nullptr);
  zoom.slotTimer();
  zoom.finish(nullptr);

  widget = std::make_unique<QWidget>();
  widget->setGeometry(0, 0, 100, 80);
  other = std::make_unique<CursorWindow>(widget.get(), false);
  ASSERT_TRUE(other->open());
  other->setGeometry(0, 0, 100, 80);
  ASSERT_TRUE(zoom.begin(other.get(), nullptr, false));
  other.reset();
  zoom.trackTo(nullptr);
  zoom.slotTimer();
  EXPECT_FALSE(zoom.key(Qt::Key_Plus));
  zoom.finish(nullptr);
}
