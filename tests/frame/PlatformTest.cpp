#include "QTD/platform/Platform.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "QTD/platform/GuiThread.h"
#include "frame/GuiLoop.h"

namespace {

namespace platform = QTD::platform;

// The machine's own folder. What was not there before goes again, unless somebody has put something into it.
class MachinesFolder {
 public:
  MachinesFolder() {
    for (const char* folder : {kInner, kOuter}) {
      if (!QFileInfo(QLatin1String(folder)).isDir()) absent.push_back(folder);
    }
  }
  ~MachinesFolder() {
    for (const char* folder : absent) rmdir(folder);
  }
  MachinesFolder(const MachinesFolder&) = delete;
  MachinesFolder& operator=(const MachinesFolder&) = delete;

  bool CanBe() const {
    const char* const lowest = absent.empty() ? nullptr : absent.size() == 1 ? kOuter : "/etc";
    return !lowest || access(lowest, W_OK) == 0;
  }

 private:
  static constexpr const char* kOuter = "/etc/Tavrel";
  static constexpr const char* kInner = "/etc/Tavrel/ZynLog4cpp";
  std::vector<const char*> absent;
};

TEST(TraceFolder, is_the_machines_own_unless_the_environment_names_another) {
  const MachinesFolder machine;
  qunsetenv("ZYN_LOG_DIR");
  const std::string own = platform::TraceFolder();
  EXPECT_EQ(own, machine.CanBe() ? "/etc/Tavrel/ZynLog4cpp/" : "") << "a user who may not make it gets none";
  EXPECT_EQ(QFileInfo(QStringLiteral("/etc/Tavrel/ZynLog4cpp/")).isDir(), machine.CanBe());

  QTemporaryDir folder;
  qputenv("ZYN_LOG_DIR", folder.path().toUtf8());
  EXPECT_EQ(platform::TraceFolder(), folder.path().toStdString() + "/");
  qputenv("ZYN_LOG_DIR", folder.path().toUtf8() + "/");
  EXPECT_EQ(platform::TraceFolder(), folder.path().toStdString() + "/");
  qputenv("ZYN_LOG_DIR", "");
  EXPECT_EQ(platform::TraceFolder(), own);
  qunsetenv("ZYN_LOG_DIR");
}

TEST(TraceFolder, is_made_when_it_does_not_exist) {
  QTemporaryDir folder;
  const QString deep = folder.filePath(QStringLiteral("one/two"));
  qputenv("ZYN_LOG_DIR", deep.toUtf8());
  EXPECT_EQ(platform::TraceFolder(), deep.toStdString() + "/");
  EXPECT_TRUE(QFileInfo(deep).isDir());
  qputenv("ZYN_LOG_DIR", "/dev/null/folder");
  EXPECT_EQ(platform::TraceFolder(), "") << "a folder that cannot be made";
  qputenv("ZYN_LOG_DIR", "/dev/null");
  EXPECT_EQ(platform::TraceFolder(), "") << "a file is no folder";
  qunsetenv("ZYN_LOG_DIR");
}

TEST(NameCurrentThread, shows_the_name_cut_to_what_the_system_takes) {
  std::thread([] {
    char name[32] = {};
    platform::NameCurrentThread("QTD::Messenger");
    pthread_getname_np(pthread_self(), name, sizeof name);
    EXPECT_STREQ(name, "QTD::Messenger");
    platform::NameCurrentThread("QTD::Messenger of a display");
    pthread_getname_np(pthread_self(), name, sizeof name);
    EXPECT_STREQ(name, "QTD::Messenger ");
    platform::NameCurrentThread("");
    pthread_getname_np(pthread_self(), name, sizeof name);
    EXPECT_STREQ(name, "");
  }).join();
}

TEST(GuiThread, is_the_thread_of_the_application) {
  EXPECT_TRUE(platform::OnGuiThread());
  std::thread([] { EXPECT_FALSE(platform::OnGuiThread()); }).join();
}

TEST(GuiThread, answers_questions_of_other_threads) {
  EXPECT_EQ(platform::AskGuiThread([] { return 5; }), 5);
  test::RunAside([] {
    bool there = false;
    EXPECT_EQ(platform::AskGuiThread([&] {
                there = platform::OnGuiThread();
                return int64_t{1} << 40;
              }),
              int64_t{1} << 40);
    EXPECT_TRUE(there);
  });
}

TEST(GuiThread, runs_queued_jobs_later_in_their_order) {
  std::string order;
  std::thread([&] {
    platform::QueueOnGuiThread([&] { order += "a"; });
    platform::QueueOnGuiThread([&] { order += "b"; });
  }).join();
  EXPECT_EQ(order, "");
  test::DeliverPosted();
  EXPECT_EQ(order, "ab");
}

TEST(GuiThread, gives_up_with_0_when_the_application_is_about_to_quit) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  std::atomic<bool> done{false};
  int64_t answer = 7;
  std::thread thread([&] {
    answer = platform::AskGuiThread([] { return 5; });
    done = true;
  });
  // Tells of the end until the other thread has heard it, without handling the queued question.
  while (!done) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit", Qt::DirectConnection);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  thread.join();
  EXPECT_EQ(answer, 0);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(1)) << "well below the limit of any wait";
  test::DeliverPosted();
}

TEST(GuiThread, runs_queued_jobs_while_one_of_them_runs_an_event_loop) {
  std::string order;
  std::thread([&] {
    platform::QueueOnGuiThread([&] {
      order += "(";
      platform::QueueOnGuiThread([&] { order += "c"; });
      for (int i = 0; i < 500 && order.size() < 3; ++i) QCoreApplication::processEvents();
      order += ")";
    });
    platform::QueueOnGuiThread([&] { order += "b"; });
  }).join();
  test::DeliverPosted();
  EXPECT_EQ(order, "(bc)");
}

TEST(GuiThread, gives_up_with_0_when_it_does_not_come_to_the_question_in_time) {
  int64_t answer = 7;
  bool asked = false;
  std::thread([&] {
    answer = platform::AskGuiThread([&] {
      asked = true;
      return 5;
    });
  }).join();  // this thread waits for the other one: without a limit both would wait for ever
  EXPECT_EQ(answer, 0);
  EXPECT_FALSE(asked);
  test::DeliverPosted();
  EXPECT_TRUE(asked) << "the question stays queued";
}

}  // namespace
