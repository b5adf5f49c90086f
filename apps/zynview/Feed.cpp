#include "Feed.h"

namespace zynview {

Feed::Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target, FrameKeeper* frameKeeper)
    : source(std::move(frameSource)), display(target), keeper(frameKeeper) {}

Feed::~Feed() {
  Stop();
}

void Feed::Start() {
  stop = false;
  thread = std::thread([this] {
    source->Run([this](const ZynImage& frame) {
      if (frame.imageData && !stop) HandOver(frame);
      return !stop;
    });
    ended = true;
  });
}

void Feed::HandOver(const ZynImage& frame) {
  const bool pauses = paused;
  if (pauses && holding) return;
  if (pauses) keeper->Want();
  const uint32_t code = display->DisplayVideo(&frame);
  if (code == 0) keeper->Offer(frame);
  ++(code == 0 ? delivered : refused);
  if (code != 0) lastCode = code;
  holding = pauses && code == 0;
}

void Feed::Stop() {
  stop = true;
  if (thread.joinable()) thread.join();
}

}  // namespace zynview
