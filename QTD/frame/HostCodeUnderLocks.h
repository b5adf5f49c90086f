// Marks where the library may call host code with locks of its own held.
#pragma once

#include <mutex>

namespace QTD {

// Code of the host's that runs inside such a scope must not wait without a limit for another thread of the
// host's: that one may be waiting for one of the locks. What the library itself waits for there, on the
// host's behalf, is bounded. Each thread has its own scopes, which may nest.
class HostCodeUnderLocks {
 public:
  HostCodeUnderLocks() { ++depth; }
  ~HostCodeUnderLocks() { --depth; }
  HostCodeUnderLocks(const HostCodeUnderLocks&) = delete;
  HostCodeUnderLocks& operator=(const HostCodeUnderLocks&) = delete;

  static bool IsActive() { return depth > 0; }  // on the calling thread

 private:
  inline static thread_local int depth = 0;
};

// Holds a lock and says so.
class HostCodeLock {
 public:
  explicit HostCodeLock(std::recursive_mutex& mutex) : guard(mutex) {}
  HostCodeLock(const HostCodeLock&) = delete;
  HostCodeLock& operator=(const HostCodeLock&) = delete;

 private:
  std::lock_guard<std::recursive_mutex> guard;
  HostCodeUnderLocks scope;
};

}  // namespace QTD
