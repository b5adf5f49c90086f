// Waiting in tests: never for ever, and never by a fixed sleep.
#pragma once

#include <pthread.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

namespace waiting {

constexpr auto limit = std::chrono::seconds(20);

// Whether `condition` comes true in time.
inline bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

// Runs `step` on a thread of its own and waits for its end. A step that hangs ends the test program: its
// thread cannot be stopped, and still uses the caller's variables.
inline void InTime(const char* what, std::function<void()> step) {
  auto done = std::make_shared<std::promise<void>>();
  auto end = done->get_future();
  std::thread thread([done, step = std::move(step)] {
    step();
    done->set_value();
  });
  if (end.wait_for(limit) != std::future_status::ready) {
    std::fprintf(stderr, "hangs: %s\n", what);
    std::abort();
  }
  thread.join();
}

inline void SleepMilliseconds(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

inline std::string NameOfThisThread() {
  char text[32] = "";
  pthread_getname_np(pthread_self(), text, sizeof text);
  return text;
}

}  // namespace waiting
