// A chain's lock, taken without waiting for it.
#pragma once

#include <mutex>

#include "QTD/chain/QTDProcessor.h"

namespace QTD {

// For who holds locks of the controller off the GUI thread: a stage that the host runs by itself may be
// waiting for these, and the chain is not to be had until it has returned. Then the caller gives its own
// locks up and comes again.
class ChainTry {
 public:
  explicit ChainTry(QTDProcessor* chain) : needed(chain != nullptr) {
    if (chain) guard = std::unique_lock<RMutex>(chain->ChainLock(), std::try_to_lock);
  }

  explicit operator bool() const { return !needed || guard.owns_lock(); }  // true also without a chain

 private:
  const bool needed;
  std::unique_lock<RMutex> guard;
};

}  // namespace QTD
