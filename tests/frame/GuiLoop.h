// The GUI thread's side of tests with several threads.
#pragma once

#include <QCoreApplication>
#include <atomic>
#include <thread>

namespace test {

// Delivers all that is posted by now, and what the receivers post in turn. One round of the event loop may do
// less.
inline void DeliverPosted() {
  for (int i = 0; i < 3; ++i) QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

// Runs `work` on another thread while this one, the GUI thread, handles events.
template <typename Work>
void RunAside(Work work) {
  std::atomic<bool> done{false};
  std::thread thread([&] {
    work();
    done = true;
  });
  while (!done) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  thread.join();
  DeliverPosted();
}

}  // namespace test
