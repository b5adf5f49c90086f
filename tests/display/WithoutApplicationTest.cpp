// A program that has not made its QApplication (yet) uses a display.
#include <QCoreApplication>
#include <QProcess>
#include <thread>

#include "tests/display/DisplayFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

// Runs the present test once more, in a process of its own without an application.
void RunWithoutApplication() {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = std::string(test.test_suite_name()) + "." + test.name();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("ZYN_TEST_WITHOUT_APPLICATION"), QStringLiteral("1"));
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::ForwardedChannels);
  process.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=") + QString::fromStdString(name)});
  if (!process.waitForFinished(60000)) {
    process.kill();
    process.waitForFinished();
    FAIL() << "hangs";
  }
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0);
}

}  // namespace

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
