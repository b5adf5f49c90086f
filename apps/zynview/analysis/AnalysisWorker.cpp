#include "analysis/AnalysisWorker.h"

#include <utility>

namespace zynview {

AnalysisWorker::AnalysisWorker(const FrameKeeper* frameKeeper,
                               std::function<void(const Analysis& analysis)> answer)
    : keeper(frameKeeper),
      onAnswer(std::move(answer)),
      desk(std::make_unique<GuiCall>([this] { HandOver(); })) {
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
    Answer answer;
    answer.requests = taken;
    answer.found = CopyFrame();
    if (answer.found) answer.analysis = Analyse(frame.record, request, stop);
    if (stop) return;
    {
      const std::lock_guard<std::mutex> guard(lock);
      answers.push_back(std::move(answer));
    }
    desk->Ask();
  }
}

// On the GUI thread, once for each answer.
void AnalysisWorker::HandOver() {
  Answer answer;
  {
    const std::lock_guard<std::mutex> guard(lock);
    if (answers.empty()) return;
    answer = std::move(answers.front());
    answers.pop_front();
  }
  pending -= answer.requests;
  if (answer.found) onAnswer(answer.analysis);
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
