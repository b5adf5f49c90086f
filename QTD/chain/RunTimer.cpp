#include "QTD/chain/RunTimer.h"

#include <cmath>

namespace {

// From this many runs on, older runs lose half their weight, so that the average follows the recent past.
constexpr int64_t kFullWindow = 21;

}  // namespace

void RunTimer::Reset() {
  start = 0;
  total = 0;
  count = 0;
  average = 0.0;
}

void RunTimer::Start(int64_t now) {
  start = now;
  ++count;
}

double RunTimer::Stop(int64_t now) {
  total += now - start;
  const int64_t runs = count;
  const double mean = runs == 0 ? 0.0 : static_cast<double>(total) / static_cast<double>(runs);
  average = mean;
  if (runs >= kFullWindow) {
    // 21 becomes 10: the total shrinks by the same proportion, or the average would jump.
    const int64_t kept = runs / 2;
    count = kept;
    total = std::llround(mean * static_cast<double>(kept));
  }
  return mean;
}
