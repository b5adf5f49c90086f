// The scroll bars: following the view, and moving it.
#include <thread>

#include "Harness.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;

class ScrollBarsTest : public ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    horz = Bar(Qt::Horizontal);
    vert = Bar(Qt::Vertical);
    for (QScrollBar* bar : {horz, vert}) {
      QObject::connect(bar, &QScrollBar::valueChanged, [this] { ++signalCount; });
    }
  }
  QTD::RectD View() { return window->Screen()->Picture(); }

  QScrollBar* horz = nullptr;
  QScrollBar* vert = nullptr;
  int signalCount = 0;
  const Picture large{800, 600};
};

}  // namespace

TEST_F(ScrollBarsTest, are_off_without_a_picture) {
  window->syncScrollBars(3);
  EXPECT_FALSE(horz->isEnabled());
  EXPECT_FALSE(vert->isEnabled());
}

TEST_F(ScrollBarsTest, are_off_for_a_picture_that_fits) {
  const Picture picture(400, 300);
  Show(picture);
  EXPECT_FALSE(horz->isEnabled());
  EXPECT_FALSE(vert->isEnabled());
  EXPECT_EQ(0, horz->maximum());
  EXPECT_EQ(0, vert->maximum());
  viewer->setImage(nullptr, false);
}

TEST_F(ScrollBarsTest, span_the_part_of_the_picture_outside_the_window) {
  Show(large);
  EXPECT_TRUE(horz->isEnabled());
  EXPECT_EQ(0, horz->minimum());
  EXPECT_EQ(400, horz->maximum());
  EXPECT_EQ(400, horz->pageStep());
  EXPECT_EQ(200, horz->value());
  EXPECT_TRUE(vert->isEnabled());
  EXPECT_EQ(0, vert->minimum());
  EXPECT_EQ(300, vert->maximum());
  EXPECT_EQ(300, vert->pageStep());
  EXPECT_EQ(150, vert->value());
}

TEST_F(ScrollBarsTest, begin_at_zero_again_when_the_host_has_moved_their_ends) {
  Show(large);
  horz->setMinimum(-50);
  vert->setMaximum(1000);
  window->syncScrollBars(3);
  EXPECT_EQ(0, horz->minimum());
  EXPECT_EQ(300, vert->maximum());
}

TEST_F(ScrollBarsTest, each_axis_is_on_its_own) {
  const Picture wide(800, 200);
  Show(wide);
  EXPECT_TRUE(horz->isEnabled());
  EXPECT_FALSE(vert->isEnabled());
  viewer->setImage(nullptr, false);
}

TEST_F(ScrollBarsTest, go_off_when_the_picture_is_taken_away) {
  Show(large);
  viewer->setImage(nullptr, false);
  Settle();
  EXPECT_FALSE(horz->isEnabled());
  EXPECT_EQ(0, vert->maximum());
}

TEST_F(ScrollBarsTest, the_users_movement_moves_the_picture) {
  Show(large);
  UpdateCounter counter(window);
  horz->setValue(50);
  EXPECT_DOUBLE_EQ(-50, View().x);
  EXPECT_DOUBLE_EQ(-150, View().y);
  Settle();
  EXPECT_EQ(1, counter.count);
  vert->setValue(300);
  EXPECT_DOUBLE_EQ(-50, View().x);
  EXPECT_DOUBLE_EQ(-300, View().y);
}

TEST_F(ScrollBarsTest, zero_is_a_place_and_less_is_none) {
  Show(large);
  window->scrollTo(0, -1);
  EXPECT_DOUBLE_EQ(0, View().x);
  EXPECT_DOUBLE_EQ(-150, View().y);
  EXPECT_EQ(0, horz->value());
  EXPECT_EQ(150, vert->value());
  window->scrollTo(-1, -1);
  EXPECT_DOUBLE_EQ(0, View().x);
  EXPECT_DOUBLE_EQ(-150, View().y);
  window->scrollTo(-1, 0);
  EXPECT_DOUBLE_EQ(0, View().y);
  EXPECT_EQ(0, vert->value());
  viewer->slotHorzSliderChanged(120);
  viewer->slotVertSliderChanged(130);
  EXPECT_DOUBLE_EQ(-120, View().x);
  EXPECT_DOUBLE_EQ(-130, View().y);
}

TEST_F(ScrollBarsTest, follow_the_view_without_signals_of_their_own) {
  Show(large);
  signalCount = 0;
  window->Screen()->setCenter(0.4, 0.6);
  EXPECT_EQ(120, horz->value());
  EXPECT_EQ(210, vert->value());
  Wheel(120);
  EXPECT_EQ(600, horz->maximum());
  window->scrollTo(10, 20);
  EXPECT_EQ(10, horz->value());
  EXPECT_EQ(0, signalCount);
}

TEST_F(ScrollBarsTest, the_bits_choose_the_bar) {
  Show(large);
  horz->blockSignals(true);
  vert->blockSignals(true);
  horz->setValue(1);
  vert->setValue(1);
  window->syncScrollBars(2);
  EXPECT_EQ(200, horz->value());
  EXPECT_EQ(1, vert->value());
  horz->setValue(1);
  window->syncScrollBars(1);
  EXPECT_EQ(1, horz->value());
  EXPECT_EQ(150, vert->value());
}

TEST_F(ScrollBarsTest, are_not_touched_by_other_threads) {
  Show(large);
  std::thread other([&] {
    window->Screen()->setCenter(0.4, 0.6);
    window->scrollTo(-1, 30);
  });
  other.join();
  EXPECT_DOUBLE_EQ(-120, View().x);
  EXPECT_DOUBLE_EQ(-30, View().y);
  EXPECT_EQ(200, horz->value());
  EXPECT_EQ(150, vert->value());
  Settle();
  EXPECT_EQ(120, horz->value());
  EXPECT_EQ(30, vert->value());
}

TEST_F(ScrollBarsTest, a_range_beyond_32000_is_folded) {
  const Picture wide(40000, 60);
  Show(wide);  // 39600 pixels outside, in steps of 39600 / 32000 = 1.2375
  EXPECT_EQ(32000, horz->maximum());
  EXPECT_EQ(16000, horz->value());
  EXPECT_EQ(323, horz->pageStep());
  horz->setValue(32000);
  EXPECT_NEAR(-39600, View().x, 0.1);
  horz->setValue(8000);
  EXPECT_NEAR(-9900, View().x, 0.1);
  EXPECT_EQ(8000, horz->value());
  viewer->setImage(nullptr, false);
}

TEST_F(ScrollBarsTest, a_deleted_bar_is_not_missed) {
  Show(large);
  delete vert;
  window->scrollTo(5, 5);
  EXPECT_DOUBLE_EQ(-200, View().x);
  window->syncScrollBars(3);
  Wheel(120);
  EXPECT_EQ(600, horz->maximum());
}

TEST_F(ScrollBarsTest, a_click_into_the_groove_turns_a_page) {
  Show(large);
  const QPoint left(horz->width() / 4 - 20, horz->height() / 2);
  for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, left, horz->mapToGlobal(left), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(horz, &event);
  }
  EXPECT_DOUBLE_EQ(0, View().x);
  EXPECT_EQ(0, horz->value());
}
