// A display with a picture on the screen, for the tests of commands.
#pragma once

#include <algorithm>
#include <string>

#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

// The fraction of a picture at the window's centre that leaves no gap at an edge: of a picture that is longer
// than the window. Others are centred.
inline double HeldFraction(double fraction, double length, double window) {
  if (length <= window) return 0.5;
  const double least = window / 2 / length;
  return std::min(std::max(fraction, least), 1 - least);
}

class PictureTest : public DisplayTest {
 protected:
  static constexpr int kWidth = 1000, kHeight = 800;

  // The screen learns the picture's size from the first image.
  void Show() {
    Start(image);
    display->DisplayVideo(&image.record);
    ASSERT_TRUE(WaitForImages(1));
    ASSERT_TRUE(WaitFor([this] { return Screen()->isReady(); }));
    Settle(20);
  }
  uint32_t Run(const char* name, QTD::ARGUMENTS* args = nullptr) { return display->RunCommand(name, args); }
  uint32_t Run(const char* name, QTD::ARGUMENTS&& args) { return display->RunCommand(name, &args); }
  QTDWindow* Window() { return display->Viewer()->Window(); }
  QTDScreen* Screen() { return Window()->Screen(); }
  QTD::DrawObjects& Objects() { return Window()->Objects(); }
  bool Has(const char* id) {
    QTD::PROPERTIES object;
    return Objects().get(id, &object);
  }
  std::string Attribute(const char* id, const char* name) {
    QTD::PROPERTIES object;
    return Objects().get(id, &object) ? object.GetString(name, "absent") : "no object";
  }

  HostImage image{ZYN_PIXEL_MONO8, kWidth, kHeight};
};

}  // namespace display_test
