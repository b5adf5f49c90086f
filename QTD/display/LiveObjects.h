// Which displays are alive, and which calls are under way in them.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace QTD {

// Hosts are careless: they delete a display while their camera thread is inside it, or call one that is gone.
// Every call from outside enters here first and is refused for an object that is not alive; deletion waits
// for the calls that are under way. Any thread; costs no allocation in the steady state.
class LiveObjects {
 public:
  // Displays and controllers are known apart: a host may mistake one for the other.
  static LiveObjects& Displays();
  static LiveObjects& Controllers();

  void Add(const void* object);
  bool Enter(const void* object);  // false: not alive
  void Leave(const void* object);
  bool IsInside(const void* object);  // this thread

  // Ends the life of `object`: no call enters any more; when none is under way, `destroy` runs on the GUI
  // thread. That is at once when this is the GUI thread and it is not itself inside a call, a notification or
  // host code that runs under locks, nor is the object used as `isUsed` knows; else a moment later from the
  // event loop. False when the object is not alive.
  // Once Qt has ended the object is left behind, closed: it could be taken apart with Qt's help only.
  bool Retire(const void* object, std::function<void()> destroy, std::function<bool()> isUsed = {});

  // For objects that are deleted directly: refuses further calls and waits for those of other threads. On the
  // GUI thread events are handled meanwhile.
  void Remove(const void* object);

 private:
  struct Calls {
    std::vector<std::pair<std::thread::id, int>> byThread;  // threads inside, with the depth of each
    bool closing = false;
  };

  void AwaitOthers(std::unique_lock<std::mutex>& guard, Calls& closed);
  void FinishRetirement(const void* object, const std::function<void()>& destroy,
                        const std::function<bool()>& isUsed);

  std::mutex lock;  // guards `objects`
  std::condition_variable left;
  std::unordered_map<const void*, Calls> objects;
};

// One call into an object.
class LiveCall {
 public:
  LiveCall(LiveObjects& livingObjects, const void* calledObject)
      : objects(livingObjects), object(livingObjects.Enter(calledObject) ? calledObject : nullptr) {}
  ~LiveCall() {
    if (object) objects.Leave(object);
  }
  LiveCall(const LiveCall&) = delete;
  LiveCall& operator=(const LiveCall&) = delete;
  explicit operator bool() const { return object != nullptr; }

 private:
  LiveObjects& objects;
  const void* object;
};

}  // namespace QTD
