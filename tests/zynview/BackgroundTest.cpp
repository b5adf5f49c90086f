// Jobs that take long, and their answers.
#include "apps/zynview/sources/Background.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <thread>
#include <vector>

using zynview::Background;

TEST(ViewerBackground, does_the_jobs_in_order_and_answers_on_the_gui_thread) {
  Background background;
  const auto gui = std::this_thread::get_id();
  std::vector<int> answers;
  for (int i = 1; i <= 3; ++i) {
    background.Do([&, i]() -> Background::Answer {
      EXPECT_NE(std::this_thread::get_id(), gui);
      return [&, i] {
        EXPECT_EQ(std::this_thread::get_id(), gui);
        answers.push_back(i);
      };
    });
  }
  while (answers.size() < 3) QCoreApplication::processEvents();
  EXPECT_EQ(answers, (std::vector<int>{1, 2, 3}));
}

TEST(ViewerBackground, drops_what_is_left_at_its_end) {
  std::atomic<int> jobs{0}, answers{0};
  std::atomic<bool> mayEnd{false};
  std::thread release;
  {
    Background background;
    const auto job = [&]() -> Background::Answer {
      ++jobs;
      while (!mayEnd) std::this_thread::yield();
      return [&] { ++answers; };
    };
    background.Do(job);
    background.Do(job);
    while (jobs == 0) std::this_thread::yield();
    release = std::thread([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      mayEnd = true;
    });
  }
  release.join();
  QCoreApplication::processEvents();
  EXPECT_EQ(jobs, 1) << "the one that ran was waited for";
  EXPECT_EQ(answers, 0);
}

TEST(ViewerBackground, answers_nothing_once_it_has_ended) {
  Background background;
  std::atomic<int> jobs{0};
  int answers = 0;
  const auto job = [&]() -> Background::Answer {
    ++jobs;
    return [&] { ++answers; };
  };
  background.Do(job);
  while (jobs == 0) std::this_thread::yield();
  background.End();  // the answer is there, and has not been called
  background.Do(job);
  background.End();
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
  EXPECT_EQ(jobs, 1);
  EXPECT_EQ(answers, 0);
}
