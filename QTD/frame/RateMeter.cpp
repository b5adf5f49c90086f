#include "QTD/frame/RateMeter.h"

#include <chrono>

namespace QTD {

namespace {
constexpr double window = 1000.0;  // milliseconds

double RateOf(int64_t events, double elapsed) {
  if (elapsed >= -1e-7 && elapsed <= 1e-7) return 0;
  return static_cast<double>(events) * 1000.0 / elapsed;
}
}  // namespace

int64_t TickMilliseconds() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void RateMeter::Tick(bool counted) {
  TickAt(counted, TickMilliseconds());
}

// Each field is read and written by itself: ticks of two threads at once may count a little wrong for one
// window.
void RateMeter::TickAt(bool counted, int64_t now) {
  last = now;
  const double elapsed = static_cast<double>(now) - static_cast<double>(start);
  if (counted) {
    ++count;
    ++total;
  }
  if (interval < window && elapsed > interval) rate = RateOf(count, elapsed);
  if (elapsed >= window) {
    rate = RateOf(count, elapsed);
    start = static_cast<int64_t>(static_cast<double>(now) - elapsed / 2);
    count = count >> 1;
  }
}

void RateMeter::Reset() {
  ResetAt(TickMilliseconds());
}

void RateMeter::ResetAt(int64_t now) {
  rate = 0;
  total = 0;
  count = 0;
  reserved = 0;
  start = now;
  last = now;
}

}  // namespace QTD
