// For tests of what happens where there is no OpenGL.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QProcess>
#include <string>

namespace test {

inline bool HasOpenGL() {
  return QGuiApplication::platformName() == QLatin1String("xcb") &&
         qgetenv("QT_XCB_GL_INTEGRATION") != QByteArrayLiteral("none");
}

// Runs the present test once more, in a process of its own that has none.
inline void RunWithoutOpenGL() {
  const testing::TestInfo& present = *testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = std::string(present.test_suite_name()) + "." + present.name();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("none"));
  environment.remove(QStringLiteral("GTEST_FILTER"));
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::ForwardedChannels);
  process.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=") + QString::fromStdString(name)});
  if (!process.waitForFinished(120000)) {
    process.kill();
    process.waitForFinished();
    FAIL() << "hangs";
  }
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0);
}

}  // namespace test
