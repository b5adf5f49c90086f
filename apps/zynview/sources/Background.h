// A thread for what takes long: opening files and cameras, and looking for cameras.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "sources/GuiCall.h"

namespace zynview {

class Background {
 public:
  // A job runs on the thread; what it answers is called on the GUI thread afterwards, from its event loop.
  using Answer = std::function<void()>;
  using Job = std::function<Answer()>;

  // GUI thread, all four. At the end the job that runs is waited for; other jobs and all answers that have
  // not been called yet are dropped, and what is wanted afterwards, too.
  Background();
  ~Background() { End(); }
  void Do(Job job);
  void End();

 private:
  void Work();
  void CallAnswer();  // GUI thread

  std::mutex lock;  // guards what follows
  std::condition_variable changed;
  std::deque<Job> jobs;
  std::deque<Answer> answers;
  bool stop = false;
  GuiCall call{[this] { CallAnswer(); }};
  std::thread thread;  // last: it uses all the others
};

}  // namespace zynview
