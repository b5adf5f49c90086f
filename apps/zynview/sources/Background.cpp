#include "sources/Background.h"

namespace zynview {

Background::Background() : thread([this] { Work(); }) {}

void Background::End() {
  {
    const std::lock_guard<std::mutex> guard(lock);
    stop = true;
    changed.notify_all();
  }
  if (thread.joinable()) thread.join();
}

void Background::Do(Job job) {
  const std::lock_guard<std::mutex> guard(lock);
  jobs.push_back(std::move(job));
  changed.notify_all();
}

void Background::Work() {
  for (;;) {
    Job job;
    {
      std::unique_lock<std::mutex> guard(lock);
      changed.wait(guard, [this] { return stop || !jobs.empty(); });
      if (stop) return;
      job = std::move(jobs.front());
      jobs.pop_front();
    }
    Answer answer = job();
    if (!answer) continue;
    const std::lock_guard<std::mutex> guard(lock);
    answers.push_back(std::move(answer));
    call.Ask();
  }
}

void Background::CallAnswer() {
  Answer answer;
  {
    const std::lock_guard<std::mutex> guard(lock);
    if (stop) return;
    answer = std::move(answers.front());
    answers.pop_front();
  }
  answer();
}

}  // namespace zynview
