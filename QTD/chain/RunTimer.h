// The average duration of a chain's recent runs.
#pragma once

#include <atomic>
#include <cstdint>

// Times are milliseconds of a steady clock. One thread at a time starts and stops it; any thread may read.
class RunTimer {
 public:
  void Reset();
  void Start(int64_t now);   // also counts the run, even when it is never stopped
  double Stop(int64_t now);  // answers the new average

  int64_t Total() const { return total; }
  int64_t Count() const { return count; }
  double Average() const { return average; }

 private:
  std::atomic<int64_t> start{0};
  std::atomic<int64_t> total{0};
  std::atomic<int64_t> count{0};
  std::atomic<double> average{0.0};
};
