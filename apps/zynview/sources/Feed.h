// The thread that brings frames from a source to the display, as a camera's driver does.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "ZynDisplay.h"
#include "sources/CameraControls.h"
#include "sources/Errands.h"
#include "sources/FrameKeeper.h"
#include "sources/FrameSource.h"
#include "sources/Preparation.h"

namespace zynview {

// GUI thread, where nothing else is said.
class Feed {
 public:
  // The frames that the display takes pass `frameKeeper` as well; neither is owned. The display is prepared
  // for the source's own format; before a frame of another one, `prepare` is called on the GUI thread, and
  // the frame is refused where it answers false. Without it all frames are handed over as they are.
  // A source may take long to come to rest, and to go away: with `errands`, which are not owned, nobody waits
  // for that. Without them `Stop` and the destructor do.
  Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target, FrameKeeper* frameKeeper,
       Preparation::Prepare prepare = nullptr, Errands* lateWork = nullptr);
  ~Feed();  // stops

  void Start();  // also again; counts from 0 then
  void Stop();   // when it is back, the last frame is handed over

  // While it pauses, a source that can be held stays on its frame. The frames of others are dropped; the next
  // one that comes is shown and kept still.
  void SetPaused(bool on);
  bool IsPaused() const { return paused; }
  bool IsHolding() const { return holding; }  // pauses, and the keeper has the frame that the display shows

  // Pauses, and shows the frame so many further, or before; of a live source the next one.
  void Step(int frames);

  FrameSource& Source() const { return *source; }
  // Null for a source without anything to set. They keep the source in being.
  std::shared_ptr<CameraControls> Controls() const { return {source, source->Controls()}; }
  uint64_t Delivered() const { return delivered; }  // frames that the display took
  uint64_t Refused() const { return refused; }      // frames that it answered with a code
  uint32_t LastCode() const { return lastCode; }
  bool Ended() const { return *ended; }  // the source has nothing more

 private:
  // What `Stop` needs of one run: the thread goes on without the feed while its source comes to rest.
  struct Run {
    std::mutex lock;  // held while a frame is handed over
    // Set before `Stop` takes the lock: no further frame takes it then, however fast they come.
    std::atomic<bool> stopped{false};
  };

  // The thread of the frames, all three.
  void HandOver(const ZynImage& frame);
  bool IsDropped();
  bool IsPreparedFor(const ZynImage& frame);

  std::shared_ptr<FrameSource> source;
  ZynDisplayProcessor* display;
  FrameKeeper* keeper;
  std::unique_ptr<Preparation> preparation;  // null: not wanted
  ZynImage prepared{};                       // the thread of the frames, while it runs
  bool isPrepared = false;                   // the same
  Errands* errands;                          // null: none
  std::shared_ptr<Run> run;                  // null before the first start
  std::thread thread;
  std::atomic<bool> stop{false}, paused{false}, holding{false};
  std::shared_ptr<std::atomic<bool>> ended = std::make_shared<std::atomic<bool>>(false);
  std::atomic<int> passes{0};  // frames that a live source may show while it pauses
  std::atomic<uint64_t> delivered{0}, refused{0};
  std::atomic<uint32_t> lastCode{0};
};

}  // namespace zynview
