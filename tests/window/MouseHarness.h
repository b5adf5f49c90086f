// A picture under the mouse.
#pragma once

#include <cmath>
#include <string>

#include "Harness.h"

namespace windowtest {

// A 800 by 600 picture in the 400 by 300 window, one to one: its corner lies at (-200, -150).
class MouseTest : public ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    Show(picture);
  }

  QTD::RectD View() { return window->Screen()->Picture(); }
  bool At(double x, double y) {
    const QTD::RectD view = View();
    return std::abs(view.x - x) < 1e-6 && std::abs(view.y - y) < 1e-6;
  }
  // Without the code and what the messenger adds.
  static QTD::ARGUMENTS Keys(QTD::ARGUMENTS arguments) {
    arguments.erase("code");
    arguments.erase("from");
    return arguments;
  }

  const Picture picture{800, 600};
};

}  // namespace windowtest
