// The recursive mutex that waits for its holder at the end, and the scope guard of recursive mutexes.
//
// Which mutex: an `RMutex` guards the operations of an object that may go while another thread is still
// inside one of them, since its destructor waits. A `std::recursive_mutex` does where the owner's destructor
// waits by itself (`WaitUntilFree`, or for the calls under way), or where nobody is left by then. A
// `std::mutex` does for a few lines that call nothing else.
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
  // Kept for a reader in a debugger; the code never reads them.
  std::string label;
  uint32_t count = 0;
};

class RMutexLock {
 public:
  // Locks at once; a null mutex is allowed and locks nothing. The label is not copied: a literal.
  explicit RMutexLock(std::recursive_mutex* lockedMutex, const char* labelText = "");
  explicit RMutexLock(RMutex& lockedMutex, const char* labelText = "");
  ~RMutexLock();
  RMutexLock(const RMutexLock&) = delete;
  RMutexLock& operator=(const RMutexLock&) = delete;

 private:
  std::recursive_mutex* mutex;
  // Kept for a reader in a debugger; the code never reads them.
  [[maybe_unused]] std::recursive_mutex* spare = nullptr;
  [[maybe_unused]] const char* label;
};

// Takes `mutex` by trying and yielding, never by blocking on it.
std::unique_lock<std::recursive_mutex> SpinLock(std::recursive_mutex& mutex);

}  // namespace QTD
