// A flag that is set for the length of a scope.
#pragma once

namespace QTD {

class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flagToSet) : flag(flagToSet) { flag = true; }
  ~ScopedFlag() { flag = false; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;

 private:
  bool& flag;
};

}  // namespace QTD
