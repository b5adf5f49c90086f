// The thread that brings frames from a source to the display, as a camera's driver does.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "FrameSource.h"
#include "ZynDisplay.h"

namespace zynview {

class Feed {
 public:
  Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target);
  ~Feed();  // stops

  void Start();
  void Stop();  // waits until the last frame is handed over

  const FrameSource& Source() const { return *source; }
  uint64_t Delivered() const { return delivered; }  // frames that the display took
  uint64_t Refused() const { return refused; }      // frames that it answered with a code
  uint32_t LastCode() const { return lastCode; }
  bool Ended() const { return ended; }  // the source has nothing more

 private:
  std::unique_ptr<FrameSource> source;
  ZynDisplayProcessor* display;  // not owned
  std::thread thread;
  std::atomic<bool> stop{false}, ended{false};
  std::atomic<uint64_t> delivered{0}, refused{0};
  std::atomic<uint32_t> lastCode{0};
};

}  // namespace zynview
