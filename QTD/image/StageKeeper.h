// A list of stages that are kept while they are in use.
#pragma once

namespace QTD {

// From `BeginUse` to `EndUse` the calling thread holds the chain's lock, and a stage that leaves the chain is
// freed behind the last `EndUse`, without the lock. They nest.
class StageKeeper {
 public:
  virtual void BeginUse() = 0;
  virtual void EndUse() = 0;

 protected:
  ~StageKeeper() = default;
};

}  // namespace QTD
