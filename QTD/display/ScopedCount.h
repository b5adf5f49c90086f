// A count that may be raised by one until the end of a scope.
#pragma once

#include <atomic>

namespace QTD {

class ScopedCount {
 public:
  explicit ScopedCount(std::atomic<int>& countToRaise) : count(countToRaise) {}
  ~ScopedCount() {
    if (raised) --count;
  }
  ScopedCount(const ScopedCount&) = delete;
  ScopedCount& operator=(const ScopedCount&) = delete;

  // Again: no effect.
  void Raise() {
    if (!raised) ++count;
    raised = true;
  }

 private:
  std::atomic<int>& count;
  bool raised = false;
};

}  // namespace QTD
