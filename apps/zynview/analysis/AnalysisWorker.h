// The thread that looks into frames, so that the window stays at hand.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "analysis/Analysis.h"
#include "sources/FrameKeeper.h"
#include "sources/GuiCall.h"

namespace zynview {

// Takes the frame that the keeper has at that time: a frame that nobody had the time for is left out.
class AnalysisWorker {
 public:
  // `answer` is called on the GUI thread, which makes and deletes the worker; never after the end of it. The
  // keeper is not owned.
  AnalysisWorker(const FrameKeeper* frameKeeper, std::function<void(const Analysis& analysis)> answer);
  ~AnalysisWorker();  // breaks off what is under way and waits for the thread

  // GUI thread. A request takes the place of one that has not begun yet.
  void Ask(const AnalysisRequest& request);
  // GUI thread. From `Ask` until the answer was handed over.
  bool IsBusy() const { return pending > 0; }

 private:
  // What became of requests, on its way to the GUI thread; without a frame there is no analysis.
  struct Answer {
    int requests = 0;
    bool found = false;
    Analysis analysis;
  };

  void Work();
  void HandOver();
  bool CopyFrame();

  const FrameKeeper* keeper;
  const std::function<void(const Analysis& analysis)> onAnswer;
  std::unique_ptr<GuiCall> desk;  // answers that wait for it go away with it
  int pending = 0;                // GUI thread
  OwnFrame frame;                 // the worker's thread
  std::atomic<bool> stop{false};
  std::mutex lock;  // guards the three that follow
  AnalysisRequest next;
  int requests = 0;  // since the last one was taken
  std::deque<Answer> answers;
  std::condition_variable wake;
  std::thread thread;
};

}  // namespace zynview
