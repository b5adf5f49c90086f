// A host's thread inside a parameter call of a component, which a destructor must wait for.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "QTD/frame/ComponentImpl.h"

namespace test {

// The call stays in a handler of its own for a moment longer than `Begin` lasts, and so runs while whoever
// began it destroys the component. The component must be deleted before this.
class CallUnderWay : public ZynDisplayCommand {
 public:
  ~CallUnderWay() override {
    if (thread.joinable()) thread.join();
  }

  // Comes back when the other thread is inside.
  void Begin(QTD::ComponentImpl& component) {
    component.SetParameterHandlers(this, nullptr);
    thread = std::thread([&component] { component.SetParameterInt("under.way", 1); });
    while (!inside) std::this_thread::yield();
  }
  // Whether the handler has answered.
  bool HasEnded() const { return ended; }

 private:
  uint32_t RunCommand(const char*, QTD::ARGUMENTS*) override {
    inside = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ended = true;
    return 0;
  }

  std::atomic<bool> inside{false}, ended{false};
  std::thread thread;
};

}  // namespace test
