// Ends the test program when a scope takes too long: a GUI thread that hangs cannot be stopped otherwise.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace display_test {

class Watchdog {
 public:
  explicit Watchdog(std::string scope, std::chrono::seconds patience = std::chrono::seconds(60))
      : what(std::move(scope)), thread([this, patience] {
          std::unique_lock<std::mutex> guard(lock);
          if (ended.wait_for(guard, patience, [this] { return over; })) return;
          std::fprintf(stderr, "hangs: %s\n", what.c_str());
          std::abort();
        }) {}
  ~Watchdog() {
    {
      const std::lock_guard<std::mutex> guard(lock);
      over = true;
    }
    ended.notify_all();
    thread.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  const std::string what;
  std::mutex lock;  // guards `over`
  std::condition_variable ended;
  bool over = false;
  std::thread thread;
};

}  // namespace display_test
