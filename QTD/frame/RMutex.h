// The recursive mutex of the whole library and its scope guard.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

namespace QTD {

// Waits until nobody holds `mutex`: try, yield, try. Destructors call it, so that a thread which is inside an
// operation at that moment may finish.
void WaitUntilFree(std::recursive_mutex& mutex);

class RMutex {
 public:
  RMutex() = default;
  RMutex(const RMutex&) = delete;
  RMutex& operator=(const RMutex&) = delete;
  virtual ~RMutex();

  // BasicLockable and Lockable, so that std::scoped_lock and std::unique_lock work on it.
  void lock() { mutex.lock(); }
  bool try_lock() { return mutex.try_lock(); }
  void unlock() { mutex.unlock(); }

  std::recursive_mutex mutex;
  std::string label;   // for a reader in a debugger; never read by the code
  uint32_t count = 0;  // likewise
};

class RMutexLock {
 public:
  // Locks at once; a null mutex is allowed and locks nothing.
  explicit RMutexLock(std::recursive_mutex* lockedMutex, const char* labelText = "");
  explicit RMutexLock(RMutex& lockedMutex, const char* labelText = "");
  ~RMutexLock();
  RMutexLock(const RMutexLock&) = delete;
  RMutexLock& operator=(const RMutexLock&) = delete;

 private:
  std::recursive_mutex* mutex;
  [[maybe_unused]] std::recursive_mutex* spare = nullptr;
  std::string label;
};

// Takes `mutex` by trying and yielding, never by blocking on it.
std::unique_lock<std::recursive_mutex> SpinLock(std::recursive_mutex& mutex);

}  // namespace QTD
