// A flag, plain or atomic, that is set for the length of a scope.
#pragma once

namespace QTD {

template <typename Flag>
class ScopedFlag {
 public:
  explicit ScopedFlag(Flag& flagToSet) : flag(flagToSet) { flag = true; }
  ~ScopedFlag() { flag = false; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;

 private:
  Flag& flag;
};

}  // namespace QTD
