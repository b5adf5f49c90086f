#include "sources/Feed.h"

namespace zynview {

namespace {

// Whether a display that is prepared for one takes the other.
bool IsAlike(const ZynImage& a, const ZynImage& b) {
  return a.pixelType == b.pixelType && a.width == b.width && a.height == b.height && a.origin == b.origin &&
         a.linePitch == b.linePitch;
}

}  // namespace

Feed::Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target, FrameKeeper* frameKeeper,
           Preparation::Prepare prepare, Errands* lateWork)
    : source(std::move(frameSource)), display(target), keeper(frameKeeper), errands(lateWork) {
  if (prepare) preparation = std::make_unique<Preparation>(std::move(prepare));
}

Feed::~Feed() {
  Stop();
  if (!errands) return;
  // The source is the errand's last: it goes away there.
  const auto late = std::make_shared<std::thread>(std::move(thread));
  errands->Do([late, last = std::move(source)] {
    if (late->joinable()) late->join();
  });
}

void Feed::Start() {
  Stop();
  stop = false;
  holding = false;
  delivered = refused = 0;
  prepared = source->Format();
  isPrepared = true;
  if (preparation) preparation->Open();
  run = std::make_shared<Run>();
  ended = std::make_shared<std::atomic<bool>>(false);
  const auto before = std::make_shared<std::thread>(std::move(thread));
  // Of this feed nothing is touched any more once the run is stopped.
  thread = std::thread([this, before, frames = source, mine = run, over = ended] {
    if (before->joinable()) before->join();
    frames->Run([this, mine](const ZynImage& frame) {
      if (mine->stopped) return false;
      const std::lock_guard<std::mutex> guard(mine->lock);
      if (!mine->stopped && frame.imageData) HandOver(frame);
      return !mine->stopped.load();
    });
    *over = true;
  });
}

bool Feed::IsDropped() {
  if (!paused || !holding || source->CanHold()) return false;
  int left = passes;
  while (left > 0) {
    if (passes.compare_exchange_weak(left, left - 1)) return false;
  }
  return true;
}

bool Feed::IsPreparedFor(const ZynImage& frame) {
  if (!preparation) return true;
  if (!IsAlike(frame, prepared)) {
    isPrepared = preparation->Ask(frame);
    prepared = frame;
    prepared.imageData = nullptr;
  }
  return isPrepared;
}

void Feed::HandOver(const ZynImage& frame) {
  const bool pauses = paused;
  if (IsDropped()) return;
  if (!IsPreparedFor(frame)) {
    if (!stop) ++refused;
    return;
  }
  if (pauses) keeper->Want();
  const uint32_t code = display->DisplayVideo(&frame);
  if (code == 0) keeper->Offer(frame);
  ++(code == 0 ? delivered : refused);
  if (code != 0) lastCode = code;
  holding = pauses && code == 0;
}

void Feed::Stop() {
  stop = true;
  if (preparation) preparation->Close();
  if (run) {
    run->stopped = true;
    const std::lock_guard<std::mutex> guard(run->lock);  // until the last frame is handed over
  }
  if (!errands && thread.joinable()) thread.join();
}

void Feed::SetPaused(bool on) {
  passes = 0;
  paused = on;
  source->Hold(on);
}

void Feed::Step(int frames) {
  if (!paused) {
    // The pause alone shows one frame more of a live source.
    SetPaused(true);
    if (!source->CanHold()) return;
  } else if (!source->CanHold()) {
    ++passes;
    return;
  }
  source->Step(frames);
}

}  // namespace zynview
