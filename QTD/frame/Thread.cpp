#include "QTD/frame/Thread.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "QTD/platform/Platform.h"

namespace QTD {

namespace {
using Clock = std::chrono::steady_clock;
constexpr auto passInterval = std::chrono::milliseconds(1);
constexpr int namingDelay = 10;  // passes' worth; a debugger that attaches sees the name from then on
}  // namespace

// One run of a thread. The native thread holds a share of it, so that it can end, or find itself abandoned,
// when the object is gone: after each call of the object's operations it looks here first.
struct Thread::Native {
  Native(const std::string& threadName, LockedPasses passes) : name(threadName), lockedPasses(passes) {}

  const std::string name;
  const LockedPasses lockedPasses;
  std::recursive_mutex lock;             // held for each pass of `Loop`, and by `RequestStop`
  std::atomic<std::thread::id> owner{};  // the thread that runs it, once it does
  bool claimed = false;                  // `Run` has begun; guarded by the object's `handleLock`

  std::mutex stateLock;  // makes each change of the flags below one step; the atomic ones are read without it
  std::atomic<bool> running{true};
  std::atomic<bool> stopRequested{false};
  std::atomic<bool> abandoned{false};  // the object must not be touched any more
  bool startOver = false;              // begin anew instead of ending

  bool IsOwnThread() const { return owner.load() == std::this_thread::get_id(); }
  bool MayGoOn() const { return running && !stopRequested && !abandoned; }

  void AskToStop() {
    const std::lock_guard<std::mutex> guard(stateLock);
    stopRequested = true;
    startOver = false;
  }

  bool AskToStartOver() {
    const std::lock_guard<std::mutex> guard(stateLock);
    if (!running) return false;
    startOver = stopRequested;
    return true;
  }

  // False when the run shall begin anew. After true the object may be gone.
  bool End() {
    const std::lock_guard<std::mutex> guard(stateLock);
    stopRequested = false;
    if (startOver && !abandoned) {
      startOver = false;
      return false;
    }
    running = false;
    return true;
  }

  // For a `Run` of a subclass that did not come to `End`.
  void Finish() {
    const std::lock_guard<std::mutex> guard(stateLock);
    running = false;
  }

  void Abandon() {
    const std::lock_guard<std::mutex> guard(stateLock);
    if (!running) return;
    abandoned = true;
    running = false;
  }

  // Calls an operation of the object unless the thread is abandoned; `otherwise` also stands for an
  // exception. Abandoned between the look and the call is as good as abandoned inside the operation: no lock
  // can tell the two apart, and holding one during the operation would make `Terminate` wait for it. What
  // follows for the owner stands at `Terminate`.
  template <typename Operation>
  bool Call(bool otherwise, Operation operation) {
    if (abandoned) return otherwise;
    try {
      return operation();
    } catch (...) {
      return otherwise;
    }
  }

  void ShowName() const {
    if (name.empty()) return;
    for (int i = 0; i < namingDelay && MayGoOn(); ++i) std::this_thread::sleep_for(passInterval);
    platform::NameCurrentThread(name);
  }
};

Thread::Thread() : Thread(LockedPasses::yes) {}

Thread::Thread(LockedPasses passes) : lockedPasses(passes) {}

Thread::~Thread() {
  Thread::RequestStop();
  Thread::Wait(-1);
  // Deleted by code that runs on the thread itself: nobody can wait, so the thread ends without its object.
  if (const auto native = Current()) native->Abandon();
}

std::shared_ptr<Thread::Native> Thread::Current() const {
  const std::lock_guard<std::mutex> guard(handleLock);
  return handle;
}

bool Thread::IsRunning() const {
  const auto native = Current();
  return native && native->running;
}

bool Thread::OnStart() {
  return true;
}

bool Thread::OnStop() {
  return true;
}

bool Thread::Loop() {
  return false;
}

// The run is marked as running here, not by the new thread, so that a stop asked for right after is not lost.
bool Thread::Start(const char* threadName) {
  const std::lock_guard<std::mutex> guard(handleLock);
  if (handle && handle->running) return false;
  if (threadName) name = threadName;
  const auto native = std::make_shared<Native>(name, lockedPasses);
  exitCode = 0;
  handle = native;
  try {
    std::thread([this, native] {
      native->owner = std::this_thread::get_id();
      native->Call(false, [this] { return Run() == 0; });
      native->Finish();
    }).detach();
  } catch (...) {
    handle.reset();
    throw;
  }
  return true;
}

// The run that the calling thread may carry out: the one that `Start` made for it, or a new one when nothing
// runs.
std::shared_ptr<Thread::Native> Thread::Claim() {
  const std::lock_guard<std::mutex> guard(handleLock);
  if (handle && handle->running) {
    if (!handle->IsOwnThread() || handle->claimed) return nullptr;
  } else {
    exitCode = 0;
    handle = std::make_shared<Native>(name, lockedPasses);
    handle->owner = std::this_thread::get_id();
  }
  handle->claimed = true;
  return handle;
}

// Touches `this` only through `Native::Call`.
uint32_t Thread::Run() {
  const std::shared_ptr<Native> native = Claim();
  if (!native) return 0;
  native->ShowName();
  do {
    const bool started = native->Call(false, [this] { return OnStart(); });
    while (started && native->MayGoOn()) {
      std::unique_lock<std::recursive_mutex> pass(native->lock, std::defer_lock);
      if (native->lockedPasses == LockedPasses::yes) pass.lock();
      if (!native->MayGoOn()) break;
      // A result of false does not take back a stop that was asked for during the pass.
      if (native->Call(true, [this] { return Loop(); })) native->stopRequested = true;
      if (pass.owns_lock()) pass.unlock();
      native->Call(false, [this] { return Pause(false), true; });
    }
    native->Call(false, [this] { return OnStop(); });
  } while (!native->End());
  return 0;
}

void Thread::Pause(bool yieldOnly) {
  if (yieldOnly) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_until(Clock::now() + passInterval);
  }
}

void Thread::RequestStop() {
  const auto native = Current();
  if (!native) return;
  const std::lock_guard<std::recursive_mutex> pass(native->lock);
  native->AskToStop();
}

bool Thread::StartOver() {
  const auto native = Current();
  return native && native->AskToStartOver();
}

void Thread::Wait(int32_t milliseconds) {
  const auto native = Current();
  if (!native || native->IsOwnThread()) return;
  const bool limited = milliseconds != 0 && milliseconds != -1;
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  while (native->running) {
    if (limited && Clock::now() >= deadline) return;
    Pause(false);
  }
}

void Thread::StopAndWait() {
  RequestStop();
  Wait(-1);
  const std::lock_guard<std::mutex> guard(handleLock);
  if (handle && !handle->running) handle.reset();
}

// The stop is asked for without waiting for the pass in progress, which may be the one that never ends.
void Thread::Terminate(uint32_t code, uint32_t waitMilliseconds) {
  const auto native = Current();
  if (native) {
    native->AskToStop();
    Wait(waitMilliseconds == UINT32_MAX
             ? -1
             : static_cast<int32_t>(std::min<uint32_t>(waitMilliseconds, INT32_MAX)));
    if (!native->IsOwnThread()) {
      native->Abandon();
      const std::lock_guard<std::mutex> guard(handleLock);
      if (handle == native) handle.reset();
    }
  }
  exitCode = code;
}

}  // namespace QTD
