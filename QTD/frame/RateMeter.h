// Events per second over a window of 500 to 1000 milliseconds, without storing events.
#pragma once

#include <atomic>
#include <cstdint>

namespace QTD {

// Milliseconds of a steady clock.
int64_t TickMilliseconds();

// Without locks: any thread may call any operation, and ticks at the same time cost at most a little
// accuracy.
class RateMeter {
 public:
  RateMeter() { Reset(); }

  void Tick(bool counted);
  void TickAt(bool counted, int64_t now);  // the same at a given time
  void Reset();
  void ResetAt(int64_t now);

  double Rate() const { return rate; }
  int64_t Total() const { return total; }
  int64_t Count() const { return count; }
  // A window that is no older than this keeps the rate as it is; 0 at first. For tests; nobody else sets one.
  void SetInterval(double milliseconds) { interval = milliseconds; }

 private:
  std::atomic<int64_t> total{0};  // events ever
  std::atomic<int64_t> start{0};  // window start, milliseconds
  std::atomic<int64_t> last{0};   // last call, milliseconds
  std::atomic<int64_t> count{0};  // events in the window
  std::atomic<int64_t> reserved{0};
  std::atomic<double> rate{0};      // events per second
  std::atomic<double> interval{0};  // milliseconds
};

}  // namespace QTD
