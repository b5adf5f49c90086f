// A thread with a cooperative stop.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace QTD {

// `Loop` runs again and again, one millisecond apart, until it answers true or a stop is asked for. Threads
// are detached: `Wait` polls. The destructor of the most derived class must stop the thread (`StopAndWait`)
// before its own members go, since the thread calls the virtual operations. An exception that leaves one of
// them ends the thread, not the process. Any thread may call any operation, the thread itself included.
class Thread {
 public:
  Thread();
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  virtual ~Thread();

  virtual uint32_t Run();
  virtual bool OnStart();
  virtual bool OnStop();
  virtual bool Loop();                         // true ends the thread
  virtual bool Start(const char* threadName);  // false while it runs; null keeps the name
  virtual void RequestStop();                  // waits for the pass of `Loop` in progress
  virtual void Pause(bool yieldOnly);
  virtual void StopAndWait();
  // Asks for a stop; a thread that does not stop in time is abandoned, never killed. Limits as for `Wait`.
  // The object then counts as idle, but the abandoned thread may still be inside one of `OnStart`, `Loop`,
  // `OnStop` and `Pause`, or at the point of entering it; when that one returns, it ends without touching the
  // object again. Nobody can tell when. So after a `Terminate` with a limit the owner must not destroy the
  // object, nor anything that those operations use, nor leave to them what a new `Start` uses as well, unless
  // it knows that the operation had begun and lives on what it keeps alive itself. If it does not know, it
  // must let the object live until the process ends.
  virtual void Terminate(uint32_t code, uint32_t waitMilliseconds);
  virtual void Wait(int32_t milliseconds);  // 0 and -1: no limit. On the thread itself: returns at once.

  // From `Start` to the end of `Run`. Unless the thread was abandoned, it has returned from its last call of
  // an operation before this turns false; so to poll it is as good as `Wait`.
  bool IsRunning() const;
  uint32_t ExitCode() const { return exitCode; }  // for tests; nobody else asks

 protected:
  // Whether the passes of `Loop` exclude `RequestStop`. A class whose `Loop` calls foreign code says `no`: it
  // would otherwise wait for that code whenever it asks for a stop.
  enum class LockedPasses { yes, no };
  explicit Thread(LockedPasses passes);

  // Makes a run that was asked to stop, but has not ended yet, begin anew; false when there is no run.
  bool StartOver();

  std::string name;  // guarded by `handleLock`; a constructor may set it without

 private:
  struct Native;
  std::shared_ptr<Native> Current() const;
  std::shared_ptr<Native> Claim();

  const LockedPasses lockedPasses;
  mutable std::mutex handleLock;   // guards `handle` and `name`
  std::shared_ptr<Native> handle;  // null when no thread was started
  std::atomic<uint32_t> exitCode{0};
};

}  // namespace QTD
