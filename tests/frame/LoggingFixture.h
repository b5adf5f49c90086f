// A folder with the trace's settings and its file.
#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>
#include <log4cpp/Category.hh>
#include <log4cpp/Priority.hh>
#include <sstream>
#include <string>

#include "QTD/frame/Logging.h"

namespace test {

class LoggingTest : public testing::Test {
 protected:
  LoggingTest() {
    qputenv("ZYN_LOG_DIR", folder.path().toUtf8());
    qputenv("ZYN_DEBUG_CHANNEL", "stderr");
  }
  ~LoggingTest() override {
    QTD::ShutdownLogging();
    QTD::LogCategory().setPriority(log4cpp::Priority::NOTSET);
    log4cpp::Category::setRootPriority(log4cpp::Priority::INFO);
    qunsetenv("ZYN_LOG_DIR");
    qunsetenv("ZYN_DEBUG_CHANNEL");
  }

  std::string Path(const char* name) const { return folder.filePath(QLatin1String(name)).toStdString(); }

  // A trace file of lines "PRIORITY text", at `priority` and above.
  std::string Settings(const std::string& priority) const {
    return "log4cpp.rootCategory=ERROR\nlog4cpp.category.ZynDisplayQt=" + priority +
           ", file\nlog4cpp.appender.file=FileAppender\nlog4cpp.appender.file.fileName=" + Path("trace") +
           "\nlog4cpp.appender.file.layout=PatternLayout\n"
           "log4cpp.appender.file.layout.ConversionPattern=%p %m%n\n";
  }
  void Configure(const std::string& settings) const {
    std::ofstream(Path("zynlog4cpp.property")) << settings;
  }

  // Whether a debug line would be written.
  static bool IsTraceOn() { return static_cast<bool>(QTD::TraceLine(QTD::LogCategory())); }

  std::string Trace() const {
    std::stringstream text;
    text << std::ifstream(Path("trace")).rdbuf();
    return text.str();
  }

  // What `InitLogging` says on the debug channel.
  static std::string Init() {
    testing::internal::CaptureStderr();
    QTD::InitLogging();
    return testing::internal::GetCapturedStderr();
  }

  QTemporaryDir folder;
};

}  // namespace test
