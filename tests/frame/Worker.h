// A thread for tests.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "QTD/frame/Thread.h"

namespace thread_test {

// A thread whose operations do what the test says.
class Worker : public QTD::Thread {
 public:
  ~Worker() override { StopAndWait(); }

  bool OnStart() override {
    ++starts;
    return onStart();
  }
  bool Loop() override {
    ++passes;
    return loop();
  }
  bool OnStop() override {
    ++stops;
    return onStop();
  }
  void SetName(const std::string& text) { name = text; }

  std::function<bool()> onStart = [] { return true; };
  std::function<bool()> loop = [] { return false; };
  std::function<bool()> onStop = [] { return true; };
  std::atomic<int> starts{0}, passes{0}, stops{0};
};

}  // namespace thread_test
