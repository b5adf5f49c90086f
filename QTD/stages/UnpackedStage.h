// What an exposure coloration judges pictures by: the chain's stage "image.unpacked".
#pragma once

#include <atomic>
#include <mutex>
#include <optional>

#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/image/HeldRecords.h"
#include "QTD/image/StageKeeper.h"
#include "ZynComponent.h"
#include "ZynImgProcessor.h"

namespace QTD {

// The chain that a coloration was made for. Any thread.
class ChainLink {
 public:
  // Null or no chain: there is no stage then. A chain of this library is not followed when it has gone; a
  // host's own has to live as long as the coloration.
  explicit ChainLink(ZynComponent* chainComponent);
  ChainLink(const ChainLink&) = delete;
  ChainLink& operator=(const ChainLink&) = delete;

  // First in the coloration's destructor: who waits for the chain goes on without a stage, and this waits for
  // them.
  void End();

 private:
  friend class UnpackedStage;

  ZynComponent* component;    // not owned
  const bool known;           // a chain of this library
  std::atomic<int> calls{0};  // that ask the chain, or wait for it
  std::atomic<bool> leaving{false};
};

// Found anew for every use, since a host may have taken it out. While this lives the chain's lock is held,
// and so is taken before any stage's; a stage that leaves meanwhile, the coloration too, is freed at the end
// of this.
class UnpackedStage {
 public:
  explicit UnpackedStage(ChainLink& chainLink);
  ~UnpackedStage();
  UnpackedStage(const UnpackedStage&) = delete;
  UnpackedStage& operator=(const UnpackedStage&) = delete;

  ZynImgProcessor* Stage() const { return stage; }

  // What the stage answers, nothing without one and where it throws. It may be a host's: to be asked before
  // the coloration takes its own lock, which another thread may need for the answer.
  const ZynImage* Out(RecordHold& hold) const;  // good as long as it is held
  std::optional<ZynImage> Info(bool source) const;
  void Enable(bool on) const;

 private:
  ZynImgProcessingChain* Enter();
  bool Lock(ZynComponent& component);

  ChainLink& link;
  ZynImgProcessingChain* chain = nullptr;
  StageKeeper* keeper = nullptr;                 // of a chain of this library
  std::unique_lock<std::recursive_mutex> guard;  // of another one that has a lock
  std::optional<HostCodeUnderLocks> scope;       // while either is held: the stage may be a host's
  ZynImgProcessor* stage = nullptr;
};

}  // namespace QTD
