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
           Preparation::Prepare prepare)
    : source(std::move(frameSource)), display(target), keeper(frameKeeper) {
  if (prepare) preparation = std::make_unique<Preparation>(std::move(prepare));
}

Feed::~Feed() {
  Stop();
}

void Feed::Start() {
  Stop();
  stop = false;
  ended = holding = false;
  delivered = refused = 0;
  prepared = source->Format();
  isPrepared = true;
  if (preparation) preparation->Open();
  thread = std::thread([this] {
    source->Run([this](const ZynImage& frame) {
      if (frame.imageData && !stop) HandOver(frame);
      return !stop;
    });
    ended = true;
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
  if (thread.joinable()) thread.join();
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
