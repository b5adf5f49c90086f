#include "QTD/display/LiveObjects.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>

#include "QTD/display/GuiThread.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/frame/Messenger.h"
#include "QTD/platform/GuiThread.h"
#include "QTD/platform/Platform.h"

namespace QTD {

namespace {

constexpr int kRetryMilliseconds = 1;

auto FindThread(std::vector<std::pair<std::thread::id, int>>& calls) {
  return std::find_if(calls.begin(), calls.end(),
                      [](const auto& call) { return call.first == std::this_thread::get_id(); });
}

}  // namespace

// Never destroyed: hosts may call until the very end of the process.
LiveObjects& LiveObjects::Displays() {
  static LiveObjects& displays = *new LiveObjects;
  return displays;
}

LiveObjects& LiveObjects::Controllers() {
  static LiveObjects& controllers = *new LiveObjects;
  return controllers;
}

void LiveObjects::Add(const void* object) {
  std::lock_guard<std::mutex> guard(lock);
  objects[object] = Calls{};
}

bool LiveObjects::Enter(const void* object) {
  std::lock_guard<std::mutex> guard(lock);
  const auto found = objects.find(object);
  if (found == objects.end()) return false;
  auto& calls = found->second.byThread;
  const auto own = FindThread(calls);
  // A call that is already under way may go on calling while the object closes.
  if (own != calls.end()) {
    ++own->second;
    return true;
  }
  if (found->second.closing) return false;
  calls.emplace_back(std::this_thread::get_id(), 1);
  return true;
}

void LiveObjects::Leave(const void* object) {
  std::lock_guard<std::mutex> guard(lock);
  const auto found = objects.find(object);
  if (found == objects.end()) return;
  auto& calls = found->second.byThread;
  const auto own = FindThread(calls);
  if (own == calls.end() || --own->second > 0) return;
  *own = calls.back();
  calls.pop_back();
  left.notify_all();
}

bool LiveObjects::IsInside(const void* object) {
  std::lock_guard<std::mutex> guard(lock);
  const auto found = objects.find(object);
  return found != objects.end() && FindThread(found->second.byThread) != found->second.byThread.end();
}

bool LiveObjects::Retire(const void* object, std::function<void()> destroy, std::function<bool()> isUsed) {
  {
    std::unique_lock<std::mutex> guard(lock);
    const auto found = objects.find(object);
    if (found == objects.end() || found->second.closing) return false;
    found->second.closing = true;
    if (platform::HasEnded()) {
      AwaitOthers(guard, found->second);
      return true;
    }
  }
  if (!QCoreApplication::instance() || platform::OnGuiThread()) {
    FinishRetirement(object, destroy, isUsed);
  } else {
    platform::QueueOnGuiThread(
        [this, object, destroy, isUsed] { FinishRetirement(object, destroy, isUsed); });
  }
  return true;
}

void LiveObjects::FinishRetirement(const void* object, const std::function<void()>& destroy,
                                   const std::function<bool()>& isUsed) {
  // Further up the stack this thread is still using the object, or holds locks for which others may wait:
  // come back when it has returned.
  const bool busy =
      IsInside(object) || Messenger::IsDelivering() || HostCodeUnderLocks::IsActive() || (isUsed && isUsed());
  if (busy && QCoreApplication::instance()) {
    QTimer::singleShot(kRetryMilliseconds, QCoreApplication::instance(),
                       [this, object, destroy, isUsed] { FinishRetirement(object, destroy, isUsed); });
    return;
  }
  Remove(object);
  destroy();
}

void LiveObjects::Remove(const void* object) {
  std::unique_lock<std::mutex> guard(lock);
  const auto found = objects.find(object);
  if (found == objects.end()) return;
  found->second.closing = true;
  AwaitOthers(guard, found->second);
  objects.erase(object);
}

// Map nodes stay where they are while others come and go.
void LiveObjects::AwaitOthers(std::unique_lock<std::mutex>& guard, Calls& closed) {
  auto& calls = closed.byThread;
  const auto othersHaveLeft = [&calls] {
    return std::all_of(calls.begin(), calls.end(),
                       [](const auto& call) { return call.first == std::this_thread::get_id(); });
  };
  const bool gui = platform::OnGuiThread();
  while (!othersHaveLeft()) {
    if (!gui) {
      left.wait(guard);
      continue;
    }
    // A call under way may itself wait for this thread, or for a receiver that does.
    guard.unlock();
    WaitABit();
    guard.lock();
  }
}

}  // namespace QTD
