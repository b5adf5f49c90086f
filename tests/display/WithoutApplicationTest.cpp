// A program that has not made its QApplication (yet) uses a display.
#include <thread>

#include "tests/display/DisplayFixture.h"
#include "tests/display/Watchdog.h"
#include "tests/display/WithoutApplication.h"

namespace display_test {

TEST(WithoutApplication, messages_are_answered_at_once) {
  if (QCoreApplication::instance()) return RunWithoutApplication();
  const Watchdog watchdog("a message without an application", std::chrono::seconds(20));
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  QTDDisplay display(nullptr, false);
  EXPECT_EQ(display.RunCommand("@anything", nullptr), 0u);
  QTD::ARGUMENTS args{{"inputImageFormat", QTD::ToText(static_cast<const void*>(&image.record))}};
  EXPECT_EQ(display.RunCommand("@init.display", &args), 0u);
  EXPECT_EQ(display.GetProcessor(), nullptr);
  EXPECT_EQ(display.Initialize(&image.record), Composed(1));
  std::thread([&] { EXPECT_EQ(display.RunCommand("@anything", nullptr), 0u); }).join();
}

}  // namespace display_test
