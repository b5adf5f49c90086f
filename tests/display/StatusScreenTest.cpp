// The status line and the information text as they are seen.
#include "tests/display/ScreenFixture.h"

namespace display_test {

class StatusScreen : public ScreenTest {
 protected:
  struct Found {
    int count = 0;
    QRect around;
  };
  // The pixels of a colour.
  Found Pixels(QRgb color) {
    const QImage seen = Grab();
    Found found;
    for (int y = 0; y < seen.height(); ++y) {
      for (int x = 0; x < seen.width(); ++x) {
        if ((seen.pixel(x, y) & 0xFFFFFF) != (color & 0xFFFFFF)) continue;
        ++found.count;
        found.around = found.around.united(QRect(x, y, 1, 1));
      }
    }
    return found;
  }
  static constexpr int kLeast = 40;  // pixels of its own colour that a line of text has at least
};

TEST_F(StatusScreen, the_line_stands_at_the_top_left_in_its_colour_on_the_screen) {
  ShowOnScreen(image);  // black
  const QRgb color = qRgb(15480 & 0xFF, 15480 >> 8, 0);
  EXPECT_EQ(Pixels(color).count, 0);
  Run("cmd.display.view.status");
  const Found line = Pixels(color);
  EXPECT_GE(line.count, kLeast);
  EXPECT_LT(line.around.left(), 16);
  EXPECT_LT(line.around.bottom(), 40);
  EXPECT_GT(line.around.width(), 100);
  Run("cmd.display.view.status");
  EXPECT_EQ(Pixels(color).count, 0);
}

TEST_F(StatusScreen, the_information_stands_at_the_bottom_left_in_its_colour_on_the_screen) {
  ShowOnScreen(image);
  const QRgb color = qRgb(15480 & 0xFF, 15480 >> 8, 0);
  Run("cmd.display.view.info");
  const Found text = Pixels(color);
  EXPECT_GE(text.count, kLeast);
  EXPECT_LT(text.around.left(), 16);
  EXPECT_GT(text.around.top(), Window()->height() - 40);
  EXPECT_LT(text.around.bottom(), Window()->height());
  Run("cmd.display.view.info");
  EXPECT_EQ(Pixels(color).count, 0);
}

TEST_F(StatusScreen, another_colour_is_seen_with_the_next_tick_on_the_screen) {
  ShowOnScreen(image);
  Run("cmd.display.view.status");
  display->SetParameterInt("display.overlay.status.clr", 0x0000FF);  // red stands in the lowest byte
  display->slotTimer();
  const Found line = Pixels(qRgb(255, 0, 0));
  EXPECT_GE(line.count, kLeast);
  EXPECT_LT(line.around.bottom(), 40);
  EXPECT_EQ(Pixels(qRgb(15480 & 0xFF, 15480 >> 8, 0)).count, 0);
}

TEST_F(StatusScreen, real_keys_switch_it_on_the_screen) {
  ShowOnScreen(image);
  PointAt(InWindow(100, 100));
  Do(QStringLiteral("click 1"));
  ASSERT_TRUE(WaitFor([&] { return QGuiApplication::focusWindow() == Window(); }));
  Do(QStringLiteral("key s d"));
  EXPECT_TRUE(WaitFor([&] { return Has("@status"); }));
  EXPECT_GE(Pixels(qRgb(15480 & 0xFF, 15480 >> 8, 0)).count, kLeast);
  Do(QStringLiteral("key s i"));
  EXPECT_TRUE(WaitFor([&] { return Has("@info"); }));
  Do(QStringLiteral("key s d s i"));
  EXPECT_TRUE(WaitFor([&] { return !Has("@status") && !Has("@info"); }));
}

TEST_F(StatusScreen, a_change_during_a_drawing_in_progress_is_seen_at_the_next_drawing_on_the_screen) {
  ShowOnScreen(image);
  QTD::ARGUMENTS args{{"line.clr", "255"}, {"line.width", "4"}, {"objectID", "box"}};
  {
    DrawingInProgress drawing(*display->Viewer());
    ASSERT_EQ(display->AddRect(50, 50, 100, 80, &args), "box");
    EXPECT_EQ(Pixels(qRgb(255, 0, 0)).count, 0);
  }
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_GT(Pixels(qRgb(255, 0, 0)).count, 200);
}

}  // namespace display_test
