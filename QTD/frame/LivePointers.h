// Which objects of a class exist.
#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

namespace QTD {

// A component's parameters are texts that a host can overwrite. A pointer read from one is followed only when
// an object of the class lies there. Any thread.
template <typename Object>
class LivePointers {
 public:
  static LivePointers& Instance() {
    // Never destroyed: objects may live until the very end of the process.
    static LivePointers& instance = *new LivePointers;
    return instance;
  }

  void Add(Object* object) {
    const std::lock_guard<std::mutex> guard(lock);
    objects.push_back(object);
  }

  void Remove(Object* object) {
    const std::lock_guard<std::mutex> guard(lock);
    objects.erase(std::remove(objects.begin(), objects.end(), object), objects.end());
  }

  // Null when no such object lies there.
  Object* Find(const void* pointer) {
    const std::lock_guard<std::mutex> guard(lock);
    return FindLocked(pointer);
  }

  // Calls `use` with the object, which cannot go meanwhile: it must be short, and wait for nothing. False
  // when no such object lies there.
  template <typename Use>
  bool Visit(const void* pointer, const Use& use) {
    const std::lock_guard<std::mutex> guard(lock);
    Object* const object = FindLocked(pointer);
    if (object) use(*object);
    return object != nullptr;
  }

 private:
  Object* FindLocked(const void* pointer) {
    const auto found = std::find(objects.begin(), objects.end(), pointer);
    return found == objects.end() ? nullptr : *found;
  }

  std::mutex lock;  // guards `objects`
  std::vector<Object*> objects;
};

}  // namespace QTD
