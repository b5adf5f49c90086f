// A display as the host holds it, with a picture of known size.
#pragma once

#include <string>
#include <utility>

#include "QTD/display/ZynDisplayImpl.h"
#include "tests/display/RepaintCounter.h"

namespace display_test {

class HostPictureTest : public testing::Test {
 protected:
  HostPictureTest() {
    parent.resize(200, 150);
    parent.show();
    display = ZynDisplay_CreateComponent();
  }
  ~HostPictureTest() override { ZynDisplay_DeleteComponent(display); }

  ZynDisplayImpl* Impl() { return static_cast<ZynDisplayImpl*>(display); }
  QTDDisplay* Controller() { return Impl()->Controller(); }
  ZynComponent* Component() { return ZynDisplay_GetComponent(display); }
  QTDWindow* Window() { return Controller()->Viewer()->Window(); }
  std::string Parameter(const char* name) { return Impl()->Parameters().GetString(name, "absent"); }

  void Show() {
    ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
    ASSERT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
    ASSERT_TRUE(WaitFor([&] { return Window()->Screen()->isReady() && Window()->hasImage(); }));
    Settle(20);
  }
  // The window's middle at (80, 60) is the picture's at (500, 400). No event may be handled afterwards.
  void ShowAt(double scale) {
    Show();
    Window()->Screen()->setWindowSize(160, 120);
    Window()->Screen()->setFit(0, false);
    Window()->Screen()->setScale(scale);
    Window()->Screen()->setCenter(0.5, 0.5);
    ASSERT_DOUBLE_EQ(Window()->Screen()->Scale(), scale);
  }
  std::pair<int64_t, int64_t> Translated(uint32_t x, uint32_t y, int direction) {
    EXPECT_EQ(display->TranslatePosition(&x, &y, direction), 0u);
    return {static_cast<int32_t>(x), static_cast<int32_t>(y)};
  }
  uint32_t Mouse(const char* code, const char* left) {
    QTD::ARGUMENTS args{{"code", code}, {"left", left}, {"win.x", "1"}, {"win.y", "2"}};
    return Impl()->RunCommand("notification.mouse", &args);
  }

  QWidget parent;
  HostImage image{ZYN_PIXEL_MONO8, 1000, 800};
  ZynDisplay* display = nullptr;
};

}  // namespace display_test
