// Threads for what may take long and nobody waits for, such as taking leave of a camera that does not answer.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <thread>

namespace zynview {

// GUI thread.
class Errands {
 public:
  Errands() = default;
  ~Errands();  // waits for all of them

  Errands(const Errands&) = delete;
  Errands& operator=(const Errands&) = delete;

  // Each on a thread of its own, at once. What an errand holds goes away there, too.
  void Do(std::function<void()> errand);

 private:
  struct Errand {
    std::atomic<bool> done{false};
    std::thread thread;
  };
  std::list<Errand> errands;
};

}  // namespace zynview
