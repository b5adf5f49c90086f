// A picture under a real pointer and a real keyboard: the X server's events instead of ones that were made
// here.
#pragma once

#include <QGuiApplication>
#include <cmath>

#include "Harness.h"
#include "QTD/window/QTDZoom.h"
#include "tests/support/Xdotool.h"

namespace windowtest {

// A 800 by 600 picture in the 400 by 300 window, one to one: its corner lies at (-200, -150).
class RealInputTest : public ViewerTest {
 protected:
  void SetUp() override {
    if (!OnX()) GTEST_SKIP() << "needs an X server";
    ViewerTest::SetUp();
    Show(picture);
    widget->raise();
    Point(390, 290);
    Settle();
  }

  static void Do(const QString& what) {
    ASSERT_EQ(0, Xdotool(what.split(QLatin1Char(' ')))) << qPrintable(what);
    Settle();
  }
  // Moves the pointer to a place in the window. One that is there already must not be waited for.
  void Point(int x, int y) {
    const QPoint global = viewer->mapToGlobal(QPoint(x, y));
    if (QCursor::pos() == global) return;
    Do(QStringLiteral("mousemove --sync %1 %2").arg(global.x()).arg(global.y()));
  }
  bool Reaches(double x, double y) {
    return WaitFor([&] {
      const QTD::RectD view = window->Screen()->Picture();
      return std::abs(view.x - x) < 1e-6 && std::abs(view.y - y) < 1e-6;
    });
  }

  const Picture picture{800, 600, [](int x, int) { return x < 400 ? qRgb(250, 0, 0) : qRgb(0, 0, 240); }};
};

// The same with the keyboard in the window, and with the zoom rectangle.
class RealZoomTest : public RealInputTest {
 protected:
  void SetUp() override {
    RealInputTest::SetUp();
    if (IsSkipped()) return;
    // A click brings the keyboard here. It frees the fit, and soon after another one it centres.
    Do(QStringLiteral("click 1"));
    ASSERT_TRUE(WaitFor([&] { return QGuiApplication::focusWindow() == window; }));
    window->Screen()->setFit(3, true);
    window->Screen()->setCenter(0.5, 0.5);
    ASSERT_TRUE(Reaches(-200, -150));
  }
  void TearDown() override {
    if (!IsSkipped()) Do(QStringLiteral("keyup Shift_L keyup Control_L mouseup 3"));
    RealInputTest::TearDown();
  }

  // Up to the release.
  void Drag(int x, int y, int toX, int toY) {
    Point(x, y);
    Do(QStringLiteral("mousedown 3"));
    Point(x + (toX > x ? 6 : -6), y);
    ASSERT_TRUE(WaitFor([&] { return window->Zoom()->IsActive(); }));
    Point(toX, toY);
  }
  void Release() {
    Do(QStringLiteral("mouseup 3"));
    ASSERT_TRUE(WaitFor([&] { return !window->Zoom()->IsActive(); }));
  }
  bool Scales(double scale) {
    return WaitFor([&] { return std::abs(window->Screen()->Scale() - scale) < 1e-6; });
  }
  bool Shows(Qt::CursorShape shape) {
    return WaitFor([&] { return window->cursor().shape() == shape; });
  }
};

}  // namespace windowtest
