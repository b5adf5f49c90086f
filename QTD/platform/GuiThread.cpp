#include "QTD/platform/GuiThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "QTD/platform/Platform.h"

namespace QTD::platform {
namespace {

constexpr std::chrono::seconds kPatience{2};

// What the threads hand to each other. The events and signals between them carry nothing, so that all of it
// passes through one lock of ours.
std::mutex& lock = *new std::mutex;                               // guards `jobs`, `quits` and all answers
std::condition_variable& changed = *new std::condition_variable;  // an answer was given, or `quits` changed
std::deque<std::function<void()>>& jobs = *new std::deque<std::function<void()>>;
uint32_t quits = 0;  // how often a waiting thread was told that the application is about to quit

std::atomic<bool> ended{false};

struct Answer {
  bool given = false;
  int64_t value = 0;
};

QCoreApplication* Application() {
  return HasEnded() || QCoreApplication::closingDown() ? nullptr : QCoreApplication::instance();
}

std::function<void()> NextJob() {
  const std::lock_guard<std::mutex> guard(lock);
  if (jobs.empty()) return nullptr;
  std::function<void()> job = std::move(jobs.front());
  jobs.pop_front();
  return job;
}

// Lives on the GUI thread; an event wakes it.
class Courier : public QObject {
 public:
  explicit Courier(const QCoreApplication& application) { moveToThread(application.thread()); }

 protected:
  bool event(QEvent* event) override {
    // One by one, and nothing is locked meanwhile: a job may run an event loop of its own, which goes on
    // here.
    while (const std::function<void()> job = NextJob()) {
      try {
        job();
      } catch (...) {
        // Nothing may leave an event handler; the other jobs go on.
      }
    }
    return QObject::event(event);
  }
};

}  // namespace

// Static objects go in the reverse order: this one before all that Qt has made by now, of which the main
// thread's own data count most.
void WatchForTheEnd() {
  static struct AtTheEnd {
    ~AtTheEnd() { ended = true; }
  } atTheEnd;
}

bool HasEnded() {
  return ended;
}

bool OnGuiThread() {
  const QCoreApplication* const application = Application();
  return application && application->thread() == QThread::currentThread();
}

void QueueOnGuiThread(std::function<void()> job) {
  const QCoreApplication* const application = Application();
  if (!application) return;
  // Never destroyed, like what it hands over: threads may call until the very end of the process.
  static Courier& courier = *new Courier(*application);
  auto* const wake = new QEvent(QEvent::User);
  {
    const std::lock_guard<std::mutex> guard(lock);
    jobs.push_back(std::move(job));
  }
  QCoreApplication::postEvent(&courier, wake);
}

int64_t AskGuiThread(std::function<int64_t()> question) {
  if (OnGuiThread()) return question();
  const QCoreApplication* const application = Application();
  if (!application) return 0;

  std::unique_lock<std::mutex> held(lock);
  const uint32_t quitsBefore = quits;
  held.unlock();
  const QMetaObject::Connection quitting = QObject::connect(application, &QCoreApplication::aboutToQuit, [] {
    const std::lock_guard<std::mutex> guard(lock);
    ++quits;
    changed.notify_all();
  });
  const auto answer = std::make_shared<Answer>();  // the question may be asked when nobody waits any more
  QueueOnGuiThread([answer, asked = std::move(question)] {
    const int64_t value = asked();
    const std::lock_guard<std::mutex> guard(lock);
    *answer = {true, value};
    changed.notify_all();
  });

  held.lock();
  changed.wait_for(held, kPatience, [&] { return answer->given || quits != quitsBefore; });
  const int64_t value = answer->value;
  held.unlock();
  QObject::disconnect(quitting);
  return value;
}

}  // namespace QTD::platform
