#include "QTD/frame/Logging.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <QDir>
#include <cstdlib>
#include <string>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/platform/Platform.h"
#include "frame/LoggingFixture.h"

namespace {

constexpr const char* kSucceeded = "ZynLog4Cpp: PropertyConfigurator::configure succeeded!\n";
constexpr const char* kFailed = "ZynLog4Cpp: PropertyConfigurator::configure failed, logging is disabled!\n";

using test::LoggingTest;

TEST_F(LoggingTest, runs_silently_without_a_file) {
  const std::string said = Init();
  EXPECT_EQ(said, "ZynLog4Cpp: trying to load " + Path("zynlog4cpp.property") + "\n" + kFailed);
  EXPECT_FALSE(IsTraceOn());
  ZYN_TRACE(QTD::LogCategory(), "dropped");
  QTD::LogCategory().info("dropped");
  QTD::ComponentImpl component;
  EXPECT_EQ(component.SetParameterInt("a", 1), 0u);
}

TEST_F(LoggingTest, writes_the_lines_of_a_valid_file_in_order) {
  Configure(Settings("DEBUG"));
  EXPECT_EQ(Init(), "ZynLog4Cpp: trying to load " + Path("zynlog4cpp.property") + "\n" + kSucceeded);
  QTD::LogCategory().info("DisplayQt: -> Enter");
  ZYN_TRACE(QTD::LogCategory(), "QTDProcessor::ProcessImage(): proc->Out: imageID is %llu",
            18446744073709551615ull);
  ZYN_TRACE(QTD::LogCategory(), "plain");
  QTD::ShutdownLogging();
  EXPECT_EQ(Trace(),
            "INFO DisplayQt: -> Enter\n"
            "DEBUG QTDProcessor::ProcessImage(): proc->Out: imageID is 18446744073709551615\n"
            "DEBUG plain\n"
            "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, does_nothing_but_the_priority_test_while_debug_is_off) {
  Configure(Settings("INFO"));
  Init();
  int evaluated = 0;
  ZYN_TRACE(QTD::LogCategory(), "%d", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  QTD::ShutdownLogging();
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, traces_nothing_after_the_shutdown) {
  Configure(Settings("DEBUG"));
  Init();
  ASSERT_TRUE(IsTraceOn());
  QTD::ShutdownLogging();
  EXPECT_FALSE(IsTraceOn());
  int evaluated = 0;
  ZYN_TRACE(QTD::LogCategory(), "%d", ++evaluated);
  QTD::LogCategory().info("late");
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, says_goodbye_once) {
  Configure(Settings("DEBUG"));
  Init();
  QTD::ShutdownLogging();
  QTD::ShutdownLogging();
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, starts_again_after_a_shutdown) {
  Configure(Settings("DEBUG"));
  Init();
  QTD::ShutdownLogging();
  EXPECT_NE(Init().find(kSucceeded), std::string::npos);
  EXPECT_TRUE(IsTraceOn());
  QTD::ShutdownLogging();
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\nINFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, survives_wrong_files) {
  const std::string wrong[] = {
      "log4cpp.rootCategory=BOGUS\n",
      "log4cpp.rootCategory=DEBUG, absent\n",
      "log4cpp.rootCategory=DEBUG, a\nlog4cpp.appender.a=NoSuchAppender\n",
      Settings("DEBUG") + "log4cpp.appender.file.threshold=BOGUS\n",
      "no assignment\n",
  };
  for (const std::string& settings : wrong) {
    Configure(settings);
    EXPECT_NE(Init().find(kFailed), std::string::npos) << settings;
    ZYN_TRACE(QTD::LogCategory(), "text");
    QTD::ShutdownLogging();
  }
}

// What such a file had set up before its error was met stays in the log library, but nothing is written
// there.
TEST_F(LoggingTest, is_off_after_a_file_that_was_wrong_half_way) {
  const std::string appender =
      "log4cpp.appender.file=FileAppender\nlog4cpp.appender.file.fileName=" + Path("trace") +
      "\nlog4cpp.appender.file.layout=BasicLayout\n";
  const std::string wrong[] = {
      appender + "log4cpp.rootCategory=DEBUG, file\nlog4cpp.category.ZynDisplayQt=BOGUS\n",
      appender + "log4cpp.rootCategory=DEBUG, file, absent\n",
      "log4cpp.rootCategory=DEBUG, absent\n",
  };
  for (const std::string& settings : wrong) {
    Configure(settings);
    EXPECT_NE(Init().find(kFailed), std::string::npos) << settings;
    EXPECT_EQ(log4cpp::Category::getRootPriority(), log4cpp::Priority::DEBUG) << "the host's own matter";
    EXPECT_FALSE(IsTraceOn()) << settings;
    int evaluated = 0;
    ZYN_TRACE(QTD::LogCategory(), "%d", ++evaluated);
    QTD::TraceInfo("DisplayQt: -> Enter");
    EXPECT_EQ(evaluated, 0);
    QTD::ShutdownLogging();
    EXPECT_EQ(Trace(), "") << settings;
    log4cpp::Category::setRootPriority(log4cpp::Priority::INFO);
  }
}

TEST_F(LoggingTest, is_on_again_with_a_good_file) {
  Init();
  EXPECT_FALSE(IsTraceOn());
  Configure(Settings("DEBUG"));
  Init();
  EXPECT_TRUE(IsTraceOn());
  QTD::TraceInfo("DisplayQt: -> Enter");
  QTD::ShutdownLogging();
  QTD::TraceInfo("late");
  EXPECT_EQ(Trace(), "INFO DisplayQt: -> Enter\nINFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, looks_in_the_current_folder_when_the_machines_folder_cannot_be_made) {
  qputenv("ZYN_LOG_DIR", "/dev/null/folder");
  Configure(Settings("DEBUG"));
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.path()));
  const std::string said = Init();
  QDir::setCurrent(before);
  EXPECT_EQ(said, std::string("ZynLog4Cpp: trying to load zynlog4cpp.property\n") + kSucceeded);
}

TEST_F(LoggingTest, takes_a_path_of_any_length) {
  QString deep = folder.path();
  for (int i = 0; i < 6; ++i) deep += QLatin1Char('/') + QString(120, QLatin1Char('d'));
  ASSERT_GT(deep.size(), 520);
  qputenv("ZYN_LOG_DIR", deep.toUtf8());
  EXPECT_EQ(Init(), "ZynLog4Cpp: trying to load " + deep.toStdString() + "/zynlog4cpp.property\n" + kFailed);
}

TEST_F(LoggingTest, gives_every_component_the_one_category) {
  struct Component : QTD::ComponentImpl {
    using ComponentImpl::log;
  };
  Component one;
  EXPECT_EQ(&one.log, &QTD::LogCategory());
  EXPECT_EQ(&QTD::LogCategory(), &log4cpp::Category::getInstance("ZynDisplayQt"));
}

// A host's leftover object may be destroyed when the categories are gone. Functions of this kind run after
// the destructors of all static objects, those of the log library among them.
bool leftOver = false;
[[gnu::destructor]] void DestroyLeftOver() {
  if (!leftOver) return;
  int evaluated = 0;
  ZYN_TRACE(QTD::LogCategory(), "late %d", ++evaluated);
  QTD::ComponentImpl late;
  std::_Exit(late.SetParameterInt("a", 1) == 0 && evaluated == 0 ? 7 : 1);
}

TEST(LoggingDeathTest, leaves_a_destroyed_category_alone_at_the_end_of_the_process) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(
      {
        QTD::InitLogging();
        QTD::LogCategory().setPriority(log4cpp::Priority::DEBUG);
        QTD::ShutdownLogging();
        leftOver = true;
        std::exit(1);
      },
      testing::ExitedWithCode(7), "");
}

TEST(DebugChannel, is_the_system_log_at_debug_priority) {
  openlog(nullptr, LOG_PERROR, LOG_USER);  // shows on the error stream too what goes to the system log
  const auto said = [](int mask) {
    const int before = setlogmask(mask);
    testing::internal::CaptureStderr();
    QTD::platform::DebugChannel("100%s of a line\n");
    setlogmask(before);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_NE(said(LOG_MASK(LOG_DEBUG)).find("100%s of a line"), std::string::npos);
  EXPECT_EQ(said(LOG_UPTO(LOG_INFO)), "");
  closelog();
  openlog(nullptr, 0, LOG_USER);
}

TEST(DebugChannel, is_the_error_stream_only_when_asked_for) {
  const auto said = [](const char* value) {
    qputenv("ZYN_DEBUG_CHANNEL", value);
    testing::internal::CaptureStderr();
    QTD::platform::DebugChannel("100%s of a line\n");
    qunsetenv("ZYN_DEBUG_CHANNEL");
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(said("stderr"), "100%s of a line\n");
  EXPECT_EQ(said("stdout"), "");
  EXPECT_EQ(said(""), "");
}

}  // namespace
