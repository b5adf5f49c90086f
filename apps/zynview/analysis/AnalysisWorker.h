// The thread that looks into frames, so that the window stays at hand.
#pragma once

#include <QObject>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "analysis/Analysis.h"
#include "sources/FrameKeeper.h"

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
  void Work();
  bool CopyFrame();

  const FrameKeeper* keeper;
  const std::function<void(const Analysis& analysis)> onAnswer;
  std::unique_ptr<QObject> desk;  // on the GUI thread; answers that wait for it go away with it
  int pending = 0;                // GUI thread
  OwnFrame frame;                 // the worker's thread
  std::atomic<bool> stop{false};
  std::mutex lock;  // guards the two that follow
  AnalysisRequest next;
  int requests = 0;  // since the last one was taken
  std::condition_variable wake;
  std::thread thread;
};

}  // namespace zynview
