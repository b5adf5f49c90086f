#include "QTD/frame/RMutex.h"

#include <thread>

namespace QTD {

std::unique_lock<std::recursive_mutex> SpinLock(std::recursive_mutex& mutex) {
  std::unique_lock<std::recursive_mutex> held(mutex, std::defer_lock);
  while (!held.try_lock()) std::this_thread::yield();
  return held;
}

void WaitUntilFree(std::recursive_mutex& mutex) {
  SpinLock(mutex);
}

RMutex::~RMutex() {
  WaitUntilFree(mutex);
}

RMutexLock::RMutexLock(std::recursive_mutex* lockedMutex, const char* labelText)
    : mutex(lockedMutex), label(labelText) {
  if (mutex) mutex->lock();
}

RMutexLock::RMutexLock(RMutex& lockedMutex, const char* labelText)
    : RMutexLock(&lockedMutex.mutex, labelText) {}

RMutexLock::~RMutexLock() {
  if (mutex) mutex->unlock();
}

}  // namespace QTD
