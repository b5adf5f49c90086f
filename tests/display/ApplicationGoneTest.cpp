// A program deletes its QApplication while a display lives, on a widget that it never deletes, or ends
// without having deleted either.
#include <cstdlib>

#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/Watchdog.h"
#include "tests/display/WithoutApplication.h"

namespace display_test {
namespace {

// What is left until the process ends; nothing of it is lost.
QWidget* widget = nullptr;
ZynDisplay* display = nullptr;

// Shows a picture, in an application that nobody deletes.
QApplication* ShowAPicture(bool opengl) {
  static int argc = 1;
  static char name[] = "test";
  static char* argv[] = {name, nullptr};
  auto* const application = new QApplication(argc, argv);
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 50);
  widget = new QWidget;
  widget->resize(200, 150);
  widget->show();
  display = ZynDisplay_CreateComponent();
  QTDDisplay* const controller = static_cast<ZynDisplayImpl*>(display)->Controller();
  controller->SetParameterInt("system.opengl", opengl);
  EXPECT_EQ(ZynDisplay_Initialize(display, widget, nullptr, &image.record), 0u);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return controller->Viewer() && controller->Viewer()->Window()->hasImage(); }));
  Settle(100);
  return application;
}

void OutliveTheApplication(bool opengl) {
  delete ShowAPicture(opengl);
}

}  // namespace

class ApplicationGone : public testing::TestWithParam<bool> {};

TEST_P(ApplicationGone, the_display_can_be_deleted) {
  if (QCoreApplication::instance()) return RunWithoutApplication();
  const Watchdog watchdog("a display behind the application", std::chrono::seconds(40));
  OutliveTheApplication(GetParam());
  ZynDisplay_DeleteComponent(display);
  EXPECT_EQ(ZynDisplay_GetComponent(display), nullptr);
  display = nullptr;
}

TEST_P(ApplicationGone, the_display_may_be_left_over) {
  if (QCoreApplication::instance()) return RunWithoutApplication(true);
  const Watchdog watchdog("the end of the application", std::chrono::seconds(40));
  OutliveTheApplication(GetParam());
  EXPECT_NE(ZynDisplay_GetComponent(display), nullptr);
}

// As a static object of the host's does it: what Qt itself keeps in such objects is gone by then.
TEST_P(ApplicationGone, the_display_can_be_deleted_behind_the_end_of_main) {
  if (QCoreApplication::instance()) return RunWithoutApplication(true);
  const Watchdog watchdog("a display behind the end of main", std::chrono::seconds(40));
  ASSERT_EQ(std::atexit([] { ZynDisplay_DeleteComponent(display); }), 0);
  ShowAPicture(GetParam());
  EXPECT_NE(ZynDisplay_GetComponent(display), nullptr);
  std::exit(HasFailure() ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Variants, ApplicationGone, testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "on_the_card_on_the_screen" : "on_the_processor");
});

}  // namespace display_test
