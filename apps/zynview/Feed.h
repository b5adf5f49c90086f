// The thread that brings frames from a source to the display, as a camera's driver does.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "FrameKeeper.h"
#include "FrameSource.h"
#include "ZynDisplay.h"

namespace zynview {

class Feed {
 public:
  // The frames that the display takes pass `frameKeeper` as well; neither is owned.
  Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target, FrameKeeper* frameKeeper);
  ~Feed();  // stops

  void Start();
  void Stop();  // waits until the last frame is handed over

  // While it pauses, the frames of the source are dropped; the next one that comes is shown and kept still.
  void SetPaused(bool on) { paused = on; }
  bool IsPaused() const { return paused; }
  bool IsHolding() const { return holding; }  // pauses, and the keeper has the frame that the display shows

  const FrameSource& Source() const { return *source; }
  uint64_t Delivered() const { return delivered; }  // frames that the display took
  uint64_t Refused() const { return refused; }      // frames that it answered with a code
  uint32_t LastCode() const { return lastCode; }
  bool Ended() const { return ended; }  // the source has nothing more

 private:
  void HandOver(const ZynImage& frame);

  std::unique_ptr<FrameSource> source;
  ZynDisplayProcessor* display;
  FrameKeeper* keeper;
  std::thread thread;
  std::atomic<bool> stop{false}, ended{false}, paused{false}, holding{false};
  std::atomic<uint64_t> delivered{0}, refused{0};
  std::atomic<uint32_t> lastCode{0};
};

}  // namespace zynview
