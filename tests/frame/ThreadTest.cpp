#include "QTD/frame/Thread.h"

#include <gtest/gtest.h>

#include <system_error>
#include <vector>

#include "frame/Waiting.h"
#include "frame/Worker.h"

namespace {

using namespace waiting;
using thread_test::Worker;

TEST(Thread, is_idle_until_started) {
  Worker worker;
  EXPECT_FALSE(worker.IsRunning());
  worker.Wait(0);
  worker.RequestStop();
  worker.StopAndWait();
  worker.Terminate(7, 0);
  EXPECT_EQ(worker.ExitCode(), 7u);
  EXPECT_EQ(worker.starts, 0);
}

TEST(Thread, base_operations_let_it_run_on) {
  QTD::Thread thread;
  EXPECT_TRUE(thread.OnStart());
  EXPECT_TRUE(thread.OnStop());
  EXPECT_FALSE(thread.Loop());
}

TEST(Thread, runs_start_passes_and_stop_on_its_own_thread) {
  std::vector<std::string> order;
  std::vector<std::thread::id> threads;
  const auto note = [&](const char* what) {
    order.push_back(what);
    threads.push_back(std::this_thread::get_id());
  };
  Worker worker;
  worker.onStart = [&] { return note("start"), true; };
  worker.loop = [&] { return note("pass"), worker.passes == 2; };
  worker.onStop = [&] { return note("stop"), true; };
  EXPECT_TRUE(worker.Start(nullptr));
  worker.Wait(-1);
  EXPECT_EQ(order, (std::vector<std::string>{"start", "pass", "pass", "stop"}));
  for (const auto id : threads) {
    EXPECT_EQ(id, threads[0]);
    EXPECT_NE(id, std::this_thread::get_id());
  }
  EXPECT_FALSE(worker.IsRunning());
  EXPECT_EQ(worker.ExitCode(), 0u);
}

TEST(Thread, refused_start_skips_the_passes_and_still_stops) {
  Worker worker;
  worker.onStart = [] { return false; };
  worker.Start(nullptr);
  worker.Wait(-1);
  EXPECT_EQ(worker.passes, 0);
  EXPECT_EQ(worker.stops, 1);
}

TEST(Thread, start_while_running_answers_false) {
  Worker worker;
  EXPECT_TRUE(worker.Start(nullptr));
  EXPECT_FALSE(worker.Start("other"));
  ASSERT_TRUE(Eventually([&] { return worker.passes > 0; }));
  EXPECT_FALSE(worker.Start(nullptr));
  worker.StopAndWait();
  EXPECT_EQ(worker.starts, 1);
  EXPECT_TRUE(worker.Start(nullptr));
  worker.StopAndWait();
  EXPECT_EQ(worker.starts, 2);
}

TEST(Thread, start_does_not_wait_for_the_pass_in_progress) {
  Worker worker;
  std::atomic<bool> inside{false}, leave{false};
  worker.loop = [&] { return inside = true, Eventually([&] { return leave.load(); }); };
  worker.Start(nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  InTime("Start during a pass", [&] { EXPECT_FALSE(worker.Start(nullptr)); });
  leave = true;
}

TEST(Thread, counts_as_running_as_soon_as_start_returns) {
  Worker worker;
  worker.onStart = [] { return SleepMilliseconds(20), true; };
  worker.Start(nullptr);
  EXPECT_TRUE(worker.IsRunning());
}

TEST(Thread, stop_asked_for_right_after_start_is_not_lost) {
  for (int i = 0; i < 200; ++i) {
    Worker worker;
    worker.Start(i % 2 ? "named" : nullptr);
    worker.RequestStop();
    worker.Wait(20000);
    ASSERT_FALSE(worker.IsRunning());
  }
}

TEST(Thread, stop_asked_for_by_a_pass_is_kept_when_the_pass_answers_false) {
  Worker worker;
  worker.loop = [&] { return worker.RequestStop(), false; };
  worker.Start(nullptr);
  worker.Wait(20000);
  EXPECT_FALSE(worker.IsRunning());
  EXPECT_EQ(worker.passes, 1);
}

TEST(Thread, request_stop_waits_for_the_pass_in_progress) {
  Worker worker;
  std::atomic<bool> inside{false}, passed{false};
  worker.loop = [&] {
    inside = true;
    SleepMilliseconds(50);
    passed = true;
    return false;
  };
  worker.Start(nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  worker.RequestStop();
  EXPECT_TRUE(passed);
  const int passes = worker.passes;
  worker.Wait(-1);
  EXPECT_EQ(worker.passes, passes) << "no pass begins after RequestStop has returned";
}

TEST(Thread, passes_are_a_millisecond_apart) {
  Worker worker;
  std::vector<std::chrono::steady_clock::time_point> times;
  worker.loop = [&] { return times.push_back(std::chrono::steady_clock::now()), times.size() == 21; };
  worker.Start(nullptr);
  worker.Wait(-1);
  ASSERT_EQ(times.size(), 21u);
  EXPECT_GE(times.back() - times.front(), std::chrono::milliseconds(20));
}

TEST(Thread, pause_sleeps_a_millisecond_or_only_yields) {
  QTD::Thread thread;
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) thread.Pause(false);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
  auto fastest = std::chrono::steady_clock::duration::max();
  for (int i = 0; i < 100; ++i) {
    const auto start = std::chrono::steady_clock::now();
    thread.Pause(true);
    fastest = std::min(fastest, std::chrono::steady_clock::now() - start);
  }
  EXPECT_LT(fastest, std::chrono::milliseconds(1));
}

TEST(Thread, wait_has_no_limit_for_0_and_minus_1) {
  for (const int unlimited : {0, -1}) {
    Worker worker;
    worker.loop = [] { return SleepMilliseconds(60), true; };
    worker.Start(nullptr);
    worker.Wait(unlimited);
    EXPECT_FALSE(worker.IsRunning()) << unlimited;
    EXPECT_EQ(worker.stops, 1);
  }
}

TEST(Thread, wait_gives_up_at_its_deadline) {
  Worker worker;
  worker.Start(nullptr);
  const auto begin = std::chrono::steady_clock::now();
  worker.Wait(30);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
  EXPECT_TRUE(worker.IsRunning());
  InTime("a deadline in the past", [&] { worker.Wait(-5); });
  EXPECT_TRUE(worker.IsRunning());
}

TEST(Thread, waiting_on_the_thread_itself_returns_at_once) {
  Worker worker;
  std::atomic<bool> passed{false};
  worker.loop = [&] {
    worker.Wait(-1);
    worker.StopAndWait();
    worker.Terminate(5, 0);
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_FALSE(worker.Start(nullptr));
    passed = true;
    return false;
  };
  worker.Start(nullptr);
  EXPECT_TRUE(Eventually([&] { return !worker.IsRunning(); }));
  EXPECT_TRUE(passed);
  EXPECT_EQ(worker.stops, 1);
  EXPECT_EQ(worker.ExitCode(), 5u);
}

TEST(Thread, shows_its_name_and_keeps_it_for_a_null_name) {
  Worker worker;
  std::string shown;
  worker.loop = [&] { return shown = NameOfThisThread(), true; };
  worker.Start("first");
  worker.Wait(-1);
  EXPECT_EQ(shown, "first");
  shown.clear();
  worker.Start(nullptr);
  worker.Wait(-1);
  EXPECT_EQ(shown, "first");
  worker.Start("second");
  worker.Wait(-1);
  EXPECT_EQ(shown, "second");
}

TEST(Thread, run_works_on_the_callers_thread) {
  Worker worker;
  std::thread::id runner;
  worker.loop = [&] {
    runner = std::this_thread::get_id();
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_EQ(worker.Run(), 0u) << "a run inside the run ends at once";
    return true;
  };
  EXPECT_EQ(worker.Run(), 0u);
  EXPECT_EQ(runner, std::this_thread::get_id());
  EXPECT_EQ(worker.passes, 1);
  EXPECT_EQ(worker.stops, 1);
  EXPECT_FALSE(worker.IsRunning());
}

TEST(Thread, run_beside_a_running_thread_returns_at_once) {
  Worker worker;
  worker.Start(nullptr);
  InTime("a second Run", [&] { EXPECT_EQ(worker.Run(), 0u); });
  worker.StopAndWait();
  EXPECT_EQ(worker.starts, 1);
}

TEST(Thread, run_of_a_subclass_that_returns_early_counts_as_ended) {
  class Short : public QTD::Thread {
   public:
    ~Short() override { StopAndWait(); }
    uint32_t Run() override { return 3; }
  };
  Short thread;
  thread.Start(nullptr);
  thread.Wait(20000);
  EXPECT_FALSE(thread.IsRunning());
}

TEST(Thread, start_throws_when_no_thread_can_be_made_and_stays_idle) {
  pthread_attr_t usual, absurd;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  ASSERT_EQ(pthread_attr_init(&absurd), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&absurd, size_t{1} << 47), 0);
  ASSERT_EQ(pthread_setattr_default_np(&absurd), 0);
  Worker worker;
  EXPECT_THROW(worker.Start(nullptr), std::system_error);
  pthread_setattr_default_np(&usual);
  EXPECT_FALSE(worker.IsRunning());
  worker.Wait(-1);
  EXPECT_TRUE(worker.Start(nullptr));
}

TEST(Thread, many_threads_may_start_and_stop_it) {
  Worker worker;
  InTime("starts and stops from four threads", [&] {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&worker, t] {
        for (int i = 0; i < 100; ++i) {
          worker.Start(i % 10 ? nullptr : "shared");
          if (t % 2) worker.RequestStop();
          worker.Wait(1);
          if (i % 7 == 0) worker.StopAndWait();
          worker.IsRunning();
        }
      });
    }
    for (auto& thread : threads) thread.join();
    worker.StopAndWait();
  });
  EXPECT_FALSE(worker.IsRunning());
  EXPECT_EQ(worker.starts, worker.stops);
}

}  // namespace
