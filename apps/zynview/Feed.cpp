#include "Feed.h"

namespace zynview {

Feed::Feed(std::unique_ptr<FrameSource> frameSource, ZynDisplayProcessor* target)
    : source(std::move(frameSource)), display(target) {}

Feed::~Feed() {
  Stop();
}

void Feed::Start() {
  stop = false;
  thread = std::thread([this] {
    source->Run([this](const ZynImage& frame) {
      if (frame.imageData) {
        const uint32_t code = display->DisplayVideo(&frame);
        ++(code == 0 ? delivered : refused);
        if (code != 0) lastCode = code;
      }
      return !stop;
    });
    ended = true;
  });
}

void Feed::Stop() {
  stop = true;
  if (thread.joinable()) thread.join();
}

}  // namespace zynview
