// The panel with histogram, profile and statistics.
#include "apps/zynview/view/AnalysisDock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QScrollArea>
#include <functional>

#include "ZynPixelFormat.h"
#include "apps/zynview/view/ProfilePlot.h"
#include "apps/zynview/view/StatisticsTable.h"
#include "zynview/RandomFrame.h"

using zynview::AnalysisDock;
using zynview::FrameKeeper;

namespace {

struct AnalysisDockTest : testing::Test {
  FrameKeeper keeper;
  AnalysisDock dock{&keeper, nullptr};

  // As a camera would: kept only when somebody wants it.
  void Offer(uint64_t id, uint32_t width = 40, uint32_t height = 30) {
    RandomFrame frame(ZYN_PIXEL_BAYERRG12, width, height, 0, static_cast<uint32_t>(id));
    frame.image.imageID = id;
    keeper.Offer(frame.image);
  }

  static bool WaitFor(const std::function<bool()>& happened, int milliseconds = 20000) {
    QElapsedTimer clock;
    clock.start();
    while (!happened() && clock.elapsed() < milliseconds)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return happened();
  }
};

}  // namespace

TEST_F(AnalysisDockTest, wants_frames_only_while_it_is_seen) {
  QCoreApplication::processEvents();
  Offer(1);
  EXPECT_EQ(keeper.Serial(), 0u);
  dock.show();
  ASSERT_TRUE(WaitFor([this] { return Offer(2), keeper.Serial() > 0; }));
  dock.hide();
  QCoreApplication::processEvents();
  Offer(3);
  const uint64_t serial = keeper.Serial();
  EXPECT_FALSE(WaitFor([this, serial] { return Offer(4), keeper.Serial() > serial; }, 400));
}

TEST_F(AnalysisDockTest, follows_the_frames_at_most_ten_times_in_a_second) {
  dock.show();
  uint64_t id = 0;
  ASSERT_TRUE(WaitFor([&] { return Offer(++id), dock.Shown().imageID > 0; }));
  const uint64_t before = keeper.Serial();
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < 1000) {
    Offer(++id);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
  }
  EXPECT_LE(keeper.Serial() - before, static_cast<uint64_t>(clock.elapsed() / 100 + 2));
  EXPECT_GT(keeper.Serial(), before);
  const uint64_t last = id;
  EXPECT_TRUE(WaitFor([&] { return Offer(++id), dock.Shown().imageID > last; }));
}

TEST_F(AnalysisDockTest, shows_a_frame_that_stands_still_when_it_is_opened_and_when_the_region_changes) {
  keeper.Want();
  Offer(7);
  dock.show();
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().imageID == 7; }));
  EXPECT_TRUE(dock.Shown().isWhole);
  dock.SetRegion(QRect(2, 4, 6, 8));
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().region == QRect(2, 4, 6, 8); }));
  EXPECT_EQ(dock.Shown().imageID, 7u);
  dock.SetRegion(QRect());
  EXPECT_TRUE(WaitFor([this] { return dock.Shown().isWhole; }));
}

TEST_F(AnalysisDockTest, follows_the_mouse_with_its_line_until_it_is_held) {
  keeper.Want();
  Offer(1);
  dock.show();
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().profile.line == 15; })) << "the middle at first";
  dock.PointAt(3);
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().profile.line == 3; }));
  dock.SetHeld(true);
  dock.PointAt(9);
  EXPECT_FALSE(WaitFor([this] { return dock.Shown().profile.line == 9; }, 400));
  dock.SetHeld(false);
  dock.PointAt(9);
  EXPECT_TRUE(WaitFor([this] { return dock.Shown().profile.line == 9; }));
}

TEST_F(AnalysisDockTest, holds_the_line_with_a_click_on_the_profile) {
  auto* plot = dock.findChild<QWidget*>(QStringLiteral("profile"));
  ASSERT_NE(plot, nullptr);
  const auto click = [plot](Qt::MouseButton button) {
    QMouseEvent event(QEvent::MouseButtonPress, QPointF(20, 20), QPointF(20, 20), button, button,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(plot, &event);
  };
  click(Qt::LeftButton);
  EXPECT_TRUE(dock.IsHeld());
  click(Qt::RightButton);
  EXPECT_TRUE(dock.IsHeld());
  click(Qt::LeftButton);
  EXPECT_FALSE(dock.IsHeld());
}

TEST_F(AnalysisDockTest, takes_no_keys_from_the_display) {
  dock.show();
  for (const QWidget* each : dock.findChildren<QWidget*>()) {
    if (each->isVisible() && each->isEnabled()) {
      EXPECT_EQ(each->focusPolicy() & Qt::ClickFocus, 0) << each->metaObject()->className();
      EXPECT_EQ(each->focusPolicy() & Qt::TabFocus, 0) << each->metaObject()->className();
    }
  }
}

TEST_F(AnalysisDockTest, has_the_figures_of_each_colour_in_its_table) {
  // Red 1000, green 2000, blue at the top.
  RandomFrame frame(ZYN_PIXEL_BAYERRG12, 4, 4, 0, 1);
  for (std::size_t i = 0; i < 16; ++i) {
    const bool lower = i / 4 % 2 == 1, right = i % 2 == 1;
    const unsigned value = lower != right ? 2000 : lower ? 4095 : 1000;
    frame.bytes[2 * i] = static_cast<uint8_t>(value);
    frame.bytes[2 * i + 1] = static_cast<uint8_t>(value >> 8);
  }
  keeper.Want();
  keeper.Offer(frame.image);
  dock.show();
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().depth == 12; }));
  const auto* table = dynamic_cast<zynview::StatisticsTable*>(dock.findChild<QTableWidget*>());
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->columnCount(), 3);
  const QStringList red{QStringLiteral("4"),    QStringLiteral("1000.00"), QStringLiteral("0.00"),
                        QStringLiteral("1000"), QStringLiteral("1000"),    QStringLiteral("0"),
                        QStringLiteral("0")};
  for (int line = 0; line < red.size(); ++line) EXPECT_EQ(table->Cell(line, 0), red[line]) << line;
  EXPECT_EQ(table->Cell(0, 1), QStringLiteral("8"));
  EXPECT_EQ(table->Cell(1, 1), QStringLiteral("2000.00"));
  EXPECT_EQ(table->Cell(6, 2), QStringLiteral("4"));
  EXPECT_EQ(table->verticalHeaderItem(6)->text(), QStringLiteral("At 4095"));
  EXPECT_EQ(table->horizontalHeaderItem(2)->text(), QStringLiteral("B"));
}

TEST_F(AnalysisDockTest, has_no_figures_for_a_region_without_a_pixel) {
  keeper.Want();
  Offer(1);
  dock.SetRegion(QRect(1000, 1000, 5, 5));
  dock.show();
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().depth == 12; }));
  const auto* table = dynamic_cast<zynview::StatisticsTable*>(dock.findChild<QTableWidget*>());
  EXPECT_EQ(table->Cell(0, 0), QStringLiteral("0"));
  EXPECT_EQ(table->Cell(3, 0), QString());
}

TEST_F(AnalysisDockTest, keeps_the_window_at_hand_while_a_large_frame_is_counted) {
  std::vector<uint8_t> pixels(std::size_t{4096} * 3072 * 2, 1);
  ZynImage frame = zynview::MakeRecord(ZYN_PIXEL_MONO16, 4096, 3072, 0, pixels.data());
  frame.imageID = 1;
  keeper.Want();
  keeper.Offer(frame);
  // The thread of the window alone: the machine may be busy with other things.
  const auto used = [] {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
  };
  const double before = used();
  dock.show();
  const double shown = used() - before;
  EXPECT_EQ(dock.Shown().imageID, 0u) << "counted elsewhere";
  ASSERT_TRUE(WaitFor([this] { return dock.Shown().imageID == 1; }));
  EXPECT_EQ(dock.Shown().statistics.Rows().at(0).count, 4096u * 3072u);
  std::printf("showing the panel: %.1f ms\n", shown);
}
