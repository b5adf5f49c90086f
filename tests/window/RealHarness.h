// A picture under a real pointer and a real keyboard: the X server's events instead of ones that were made
// here.
#pragma once

#include <QProcess>
#include <cmath>

#include "Harness.h"

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
    ASSERT_EQ(0, QProcess::execute(QStringLiteral("xdotool"), what.split(QLatin1Char(' '))))
        << qPrintable(what);
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

}  // namespace windowtest
