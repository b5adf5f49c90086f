// How many frames come and are shown in a second.
#pragma once

#include <cstdint>
#include <deque>

namespace zynview {

// Counted over the last twenty frames or so: fast sources are followed at once, slow ones do not read as none
// between two of their frames.
class RateMeter {
 public:
  static constexpr int64_t kLongest = 10000;  // milliseconds; what is older does not count
  static constexpr uint64_t kEnough = 20;     // frames

  // A source begins at this time; it counts from 0 again.
  void Start(int64_t milliseconds) { readings = {{milliseconds, 0, 0}}; }

  // The counters at a later time.
  void Note(int64_t milliseconds, uint64_t delivered, uint64_t shown) {
    readings.push_back({milliseconds, delivered, shown});
    while (readings.size() > 2 && (milliseconds - readings[1].milliseconds >= kLongest ||
                                   delivered - readings[1].delivered >= kEnough)) {
      readings.pop_front();
    }
  }

  double Delivered() const { return PerSecond(&Reading::delivered); }
  double Shown() const { return PerSecond(&Reading::shown); }

 private:
  struct Reading {
    int64_t milliseconds;
    uint64_t delivered, shown;
  };

  double PerSecond(uint64_t Reading::*count) const {
    if (readings.empty() || readings.back().milliseconds <= readings.front().milliseconds) return 0;
    return 1000.0 * static_cast<double>(readings.back().*count - readings.front().*count) /
           static_cast<double>(readings.back().milliseconds - readings.front().milliseconds);
  }

  std::deque<Reading> readings;
};

}  // namespace zynview
