// Tests of programs that have no QApplication, or that end it themselves.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <string>

namespace display_test {

// Runs the present test once more, in a process of its own without an application. What a host leaves over on
// purpose is its own leak, and not looked for.
inline void RunWithoutApplication(bool leavesOver = false) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = std::string(test.test_suite_name()) + "." + test.name();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("ZYN_TEST_WITHOUT_APPLICATION"), QStringLiteral("1"));
  if (leavesOver) {
    const QString options = QStringLiteral("ASAN_OPTIONS");
    environment.insert(options, environment.value(options) + QStringLiteral(":detect_leaks=0"));
  }
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

}  // namespace display_test
