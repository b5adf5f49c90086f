// The shutdown of the trace while other threads write to it.
#include <log4cpp/AppenderSkeleton.hh>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "frame/LoggingFixture.h"
#include "frame/Waiting.h"

namespace {

using test::LoggingTest;
using waiting::Eventually;
using waiting::InTime;
using waiting::SleepMilliseconds;

// Where a line stays until it is let go.
class SlowAppender : public log4cpp::AppenderSkeleton {
 public:
  SlowAppender() : log4cpp::AppenderSkeleton("slow") {}
  void close() override {}
  bool requiresLayout() const override { return false; }
  void setLayout(log4cpp::Layout*) override {}

  std::atomic<bool> entered{false}, letGo{false};

 protected:
  void _append(const log4cpp::LoggingEvent&) override {
    entered = true;
    while (!letGo) std::this_thread::yield();
  }
};

// Another thread that begins a line of the trace and ends it when told.
class Line {
 public:
  Line() {
    thread = std::thread([this] {
      const QTD::TraceLine line(QTD::LogCategory());
      wanted = static_cast<bool>(line);
      begun = true;
      while (!end) std::this_thread::yield();
      ended = true;
    });
    EXPECT_TRUE(Eventually([&] { return begun.load(); }));
  }
  ~Line() { End(); }
  void End() {
    end = true;
    if (thread.joinable()) thread.join();
  }

  std::atomic<bool> wanted{false}, begun{false}, end{false}, ended{false};

 private:
  std::thread thread;
};

}  // namespace

// From the look at the category on: this may be gone a moment after the shutdown.
TEST_F(LoggingTest, its_end_waits_for_a_line_that_has_looked_at_the_category) {
  Configure(Settings("DEBUG"));
  Init();
  Line line;
  ASSERT_TRUE(line.wanted);
  std::atomic<bool> waited{false};
  std::thread thread([&] {
    QTD::ShutdownLogging();
    waited = line.ended.load();
  });
  EXPECT_TRUE(Eventually([] { return !IsTraceOn(); })) << "no new line begins";
  SleepMilliseconds(30);
  EXPECT_EQ(Trace(), "");
  line.End();
  thread.join();
  EXPECT_TRUE(waited);
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, its_end_does_not_wait_for_a_line_that_is_not_written) {
  Configure(Settings("INFO"));
  Init();
  Line line;
  EXPECT_FALSE(line.wanted);
  QTD::ShutdownLogging();
  EXPECT_FALSE(line.ended);
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n");
}

TEST_F(LoggingTest, an_exception_from_an_argument_does_not_keep_its_end_waiting) {
  Configure(Settings("DEBUG"));
  Init();
  const auto argument = []() -> int { throw 1; };
  EXPECT_THROW(ZYN_TRACE(QTD::LogCategory(), "%d", argument()), int);
  QTD::ShutdownLogging();
  EXPECT_EQ(Trace(), "INFO DisplayQt: <- Exit\n") << "which is left out when a line does not end";
}

// Its appender holds a lock of the log library: the exit line would wait for it for ever.
TEST_F(LoggingTest, its_end_gives_up_on_a_line_that_does_not_end) {
  Configure(Settings("DEBUG"));
  Init();
  SlowAppender slow;
  QTD::LogCategory().addAppender(slow);
  std::thread writer([] { ZYN_TRACE(QTD::LogCategory(), "stays"); });
  ASSERT_TRUE(Eventually([&] { return slow.entered.load(); }));
  InTime("the shutdown beside a line that does not end", [] { QTD::ShutdownLogging(); });
  EXPECT_FALSE(IsTraceOn());
  slow.letGo = true;
  writer.join();
  QTD::LogCategory().removeAllAppenders();
}

TEST_F(LoggingTest, ends_while_several_threads_write) {
  for (int round = 0; round < 20; ++round) {
    Configure(Settings("DEBUG"));
    Init();
    std::atomic<bool> stop{false};
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
      writers.emplace_back([&] {
        while (!stop) ZYN_TRACE(QTD::LogCategory(), "line");
      });
    }
    EXPECT_TRUE(Eventually([&] { return !Trace().empty(); }));
    QTD::ShutdownLogging();
    const std::string atTheEnd = Trace();
    stop = true;
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(Trace(), atTheEnd) << "no line comes after the shutdown";
    EXPECT_EQ(atTheEnd.substr(atTheEnd.rfind("INFO")), "INFO DisplayQt: <- Exit\n");
    std::remove(Path("trace").c_str());
  }
}
