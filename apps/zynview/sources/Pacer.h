// Keeps a steady rate.
#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

namespace zynview {

class Pacer {
 public:
  // Frames per second; 0 means as fast as it goes.
  explicit Pacer(double rate)
      : period(rate > 0 ? std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(std::min(1.0 / rate, kLongest)))
                        : Clock::duration::zero()) {}

  // Waits until the next frame is due. A pause (a slow consumer) is not made up for. At least ten times a
  // second `goesOn` is asked; false when it says so.
  template <typename GoesOn>
  bool Wait(const GoesOn& goesOn) {
    next = std::max(next, Clock::now() - period);
    for (auto now = Clock::now(); now < next; now = Clock::now()) {
      std::this_thread::sleep_until(std::min(next, now + kPatience));
      if (!goesOn()) return false;
    }
    next += period;
    return true;
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr double kLongest = 1e6;  // seconds
  static constexpr std::chrono::milliseconds kPatience{100};

  Clock::duration period;
  Clock::time_point next{};
};

}  // namespace zynview
