// What the display tells: images that it has processed, and the mouse.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "ZynDisplay.h"
#include "sources/GuiCall.h"

namespace zynview {

// The display calls `RunCommand` on its messenger's thread and on the GUI thread; the counters are read
// anywhere. The two calls about the mouse come on the GUI thread, from its event loop, so that they may do
// whatever they like with the display.
class Notifications : public ZynDisplayCommand {
 public:
  std::function<void(int x, int y)> onMove;  // in pixels of the display's window
  std::function<void()> onRightClick;

  Notifications();

  // Both on the GUI thread. Nothing is called any more after `Leave`.
  void Join(ZynDisplayProcessor* target);
  void Leave();

  // Movements of the mouse come only while they are asked for; the flags belong to the display's window,
  // which `Initialize` may make anew.
  void AskForMovements();

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override;

  std::atomic<uint64_t> shown{0}, failed{0};
  std::atomic<int> lastResult{0};

 private:
  void HearMouse(const QTD::ARGUMENTS& args);
  void HandMoveOver();

  ZynDisplayProcessor* display = nullptr;   // not owned
  std::unique_ptr<GuiCall> moved, clicked;  // what waits for them goes away with them
  std::mutex lock;                          // guards the three
  int x = 0, y = 0;
  bool moveIsQueued = false;
};

}  // namespace zynview
