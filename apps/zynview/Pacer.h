// Keeps a steady rate.
#pragma once

#include <chrono>
#include <thread>

namespace zynview {

class Pacer {
 public:
  // Frames per second; 0 means as fast as it goes.
  explicit Pacer(double rate)
      : period(rate > 0 ? std::chrono::duration<double>(1.0 / rate) : std::chrono::duration<double>(0)) {}

  // Waits until the next frame is due. A pause (a slow consumer) is not made up for.
  void Wait() {
    if (period.count() <= 0) return;
    const auto now = Clock::now();
    next = next < now - std::chrono::duration_cast<Clock::duration>(period) ? now : next;
    std::this_thread::sleep_until(next);
    next += std::chrono::duration_cast<Clock::duration>(period);
  }

 private:
  using Clock = std::chrono::steady_clock;
  std::chrono::duration<double> period;
  Clock::time_point next{};
};

}  // namespace zynview
