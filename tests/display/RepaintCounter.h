// Counts how often a window is asked to paint itself.
#pragma once

#include <QEvent>
#include <QObject>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include "tests/display/PictureFixture.h"

namespace display_test {

class RepaintCounter : public QObject {
 public:
  explicit RepaintCounter(QObject* watched) { watched->installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::UpdateRequest) ++count;
    return false;
  }
  int count = 0;
};

// Repaint requests that `action` makes. A request is posted at once, so that the queue needs emptying only.
inline int Repaints(QTDWindow& window, const std::function<void()>& action) {
  Settle();
  RepaintCounter counter(&window);
  action();
  QCoreApplication::sendPostedEvents();
  Settle();
  return counter.count;
}

// As if the viewer were taking a picture in on another thread. Ends by itself after some seconds, so that
// whoever waits for it is found out and does not hang.
class DrawingInProgress {
 public:
  explicit DrawingInProgress(QTDViewer& viewer) {
    std::atomic<bool> held{false};
    thread = std::thread([this, &viewer, &held] {
      std::lock_guard<std::recursive_mutex> guard(viewer.*(&OpenViewer::lock));
      held = true;
      for (int wait = 0; wait < 3000 && !released; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    while (!held) std::this_thread::yield();
  }
  ~DrawingInProgress() { End(); }
  DrawingInProgress(const DrawingInProgress&) = delete;
  DrawingInProgress& operator=(const DrawingInProgress&) = delete;
  void End() {
    released = true;
    if (thread.joinable()) thread.join();
  }

 private:
  struct OpenViewer : QTDViewer {
    using QTDViewer::lock;
  };
  std::atomic<bool> released{false};
  std::thread thread;
};

}  // namespace display_test
