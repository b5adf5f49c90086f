// A display in a real window, under a real pointer, judged by the pixels on the screen.
#pragma once

#include <QCursor>
#include <QGuiApplication>
#include <QImage>
#include <QScreen>

#include "tests/display/RepaintCounter.h"
#include "tests/support/Xdotool.h"

namespace display_test {

// The window has 400 by 300 pixels or a little less, which the platform lays out.
class ScreenTest : public PictureTest {
 protected:
  void SetUp() override {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) GTEST_SKIP() << "needs an X server";
    parent.setGeometry(60, 40, 420, 320);
    display->SetParameterInt("system.timer", 1000000);
    // Red from left to right and green from top to bottom, so that each pixel tells where it comes from.
    for (int y = 0; y < kHeight; ++y) {
      uint8_t* line = colors.pixels.data() + static_cast<size_t>(y) * colors.record.linePitch;
      for (int x = 0; x < kWidth; ++x) {
        *line++ = Red(x);
        *line++ = Green(y);
        *line++ = kBlue;
      }
    }
  }
  static constexpr uint8_t kBlue = 200;
  static uint8_t Red(int x) { return static_cast<uint8_t>(x / 4); }
  static uint8_t Green(int y) { return static_cast<uint8_t>(y / 4); }

  void ShowOnScreen(const HostImage& picture) {
    Start(picture);
    display->DisplayVideo(&picture.record);
    ASSERT_TRUE(WaitForImages(1));
    ASSERT_TRUE(WaitFor([&] { return Window()->isExposed() && Screen()->isReady(); }));
    parent.raise();
    Settle(100);
  }
  QImage Grab() {
    Settle(20);
    return Window()->QWindow::screen()->grabWindow(Window()->winId()).toImage();
  }
  static void Do(const QString& what) {
    ASSERT_EQ(Xdotool(what.split(QLatin1Char(' '))), 0) << qPrintable(what);
  }
  // A pointer that is there already must not be waited for.
  static void PointAt(const QPoint& global) {
    if (QCursor::pos() == global) return;
    Do(QStringLiteral("mousemove --sync %1 %2").arg(global.x()).arg(global.y()));
  }
  QPoint InWindow(int x, int y) { return display->Viewer()->mapToGlobal(QPoint(x, y)); }

  // Whether the screen shows what the geometry says, at some places of the window: each pixel in the picture
  // has the colour of the image pixel under it.
  bool Shows(double scale, double fractionX, double fractionY) {
    const QImage seen = Grab();
    const double left = seen.width() / 2.0 - kWidth / scale * fractionX;
    const double top = seen.height() / 2.0 - kHeight / scale * fractionY;
    for (int y = 10; y < seen.height(); y += 40) {
      for (int x = 10; x < seen.width(); x += 40) {
        const double imageX = (x + 0.5 - left) * scale, imageY = (y + 0.5 - top) * scale;
        if (imageX < 0 || imageY < 0 || imageX >= kWidth || imageY >= kHeight) continue;
        const QRgb pixel = seen.pixel(x, y);
        // A step of one colour is four image pixels wide.
        const int near = static_cast<int>(scale / 4) + 1;
        if (qBlue(pixel) != kBlue) return false;
        if (std::abs(qRed(pixel) - Red(static_cast<int>(imageX))) > near) return false;
        if (std::abs(qGreen(pixel) - Green(static_cast<int>(imageY))) > near) return false;
      }
    }
    return true;
  }

  HostImage colors{ZYN_PIXEL_RGB8, kWidth, kHeight};
};

}  // namespace display_test
