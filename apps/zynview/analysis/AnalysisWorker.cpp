#include "analysis/AnalysisWorker.h"

#include <utility>

namespace zynview {

AnalysisWorker::AnalysisWorker(const FrameKeeper* frameKeeper,
                               std::function<void(const Analysis& analysis)> answer)
    : keeper(frameKeeper), onAnswer(std::move(answer)), desk(std::make_unique<QObject>()) {
  thread = std::thread([this] { Work(); });
}

AnalysisWorker::~AnalysisWorker() {
  {
    const std::lock_guard<std::mutex> guard(lock);
    stop = true;
  }
  wake.notify_one();
  thread.join();
}

void AnalysisWorker::Ask(const AnalysisRequest& request) {
  ++pending;
  {
    const std::lock_guard<std::mutex> guard(lock);
    next = request;
    ++requests;
  }
  wake.notify_one();
}

void AnalysisWorker::Work() {
  for (;;) {
    AnalysisRequest request;
    int taken = 0;
    {
      std::unique_lock<std::mutex> guard(lock);
      wake.wait(guard, [this] { return stop || requests > 0; });
      if (stop) return;
      request = next;
      taken = std::exchange(requests, 0);
    }
    // Shared by the event, so that the bins are not copied.
    auto analysis = std::make_shared<Analysis>();
    const bool found = CopyFrame();
    if (found) *analysis = Analyse(frame.record, request, stop);
    if (stop) return;
    QMetaObject::invokeMethod(
        desk.get(),
        [this, analysis, taken, found] {
          pending -= taken;
          if (found) onAnswer(*analysis);
        },
        Qt::QueuedConnection);
  }
}

// Into memory that stays from frame to frame; the keeper is held up for the copy alone.
bool AnalysisWorker::CopyFrame() {
  const bool found = keeper->Look([this](const ZynImage& kept) {
    frame.record = kept;
    frame.pixels.assign(kept.imageData, kept.imageData + kept.imageSize);
  });
  frame.record.imageData = frame.pixels.data();
  return found;
}

}  // namespace zynview
