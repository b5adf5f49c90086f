#include "QTD/stages/UnpackedStage.h"

#include <chrono>
#include <thread>

#include "QTD/frame/LivePointers.h"
#include "QTD/image/ImageProcessorData.h"
#include "QTD/image/StageAnswers.h"

namespace QTD {

namespace {

constexpr std::chrono::microseconds kTurn{50};

using Chains = LivePointers<ZynComponent>;

}  // namespace

ChainLink::ChainLink(ZynComponent* chainComponent)
    : component(chainComponent), known(Chains::Instance().Find(chainComponent) != nullptr) {}

void ChainLink::End() {
  leaving = true;
  while (calls > 0) std::this_thread::sleep_for(kTurn);
}

UnpackedStage::UnpackedStage(ChainLink& chainLink) : link(chainLink) {
  ++link.calls;
  try {
    if (Enter()) stage = chain->FindProcessor("image.unpacked");
  } catch (...) {  // a host's chain
  }
  // A coloration under that name has no values of its own, and may be the very one that asks.
  if (dynamic_cast<ZynDisplayQT::ExposureColoration*>(stage)) stage = nullptr;
}

UnpackedStage::~UnpackedStage() {
  --link.calls;  // from here on the coloration may be gone
  scope.reset();
  if (keeper) keeper->EndUse();
}

// The chain with its lock held; null when there is none, or the coloration leaves.
ZynImgProcessingChain* UnpackedStage::Enter() {
  bool locked = false;
  while (!locked) {
    if (!link.known) {
      locked = link.component && Lock(*link.component);
      if (!link.component) return nullptr;
    } else if (!Chains::Instance().Visit(link.component,
                                         [&](ZynComponent& component) { locked = Lock(component); })) {
      return nullptr;
    }
    if (locked) break;
    if (link.leaving) return nullptr;
    std::this_thread::sleep_for(kTurn);
  }
  return chain;
}

// False when another thread holds the chain's lock. A host's own chain may have none.
bool UnpackedStage::Lock(ZynComponent& component) {
  auto* const found = dynamic_cast<ZynImgProcessingChain*>(&component);
  if (auto* const data = dynamic_cast<ImageProcessorData*>(&component)) {
    guard = std::unique_lock<std::recursive_mutex>(data->OperationLock().mutex, std::try_to_lock);
    if (!guard) return false;
  }
  chain = found;
  keeper = dynamic_cast<StageKeeper*>(&component);
  if (keeper) {
    keeper->BeginUse();
    guard.unlock();
  }
  if (found) scope.emplace();
  return true;
}

const ZynImage* UnpackedStage::Out(RecordHold& hold) const {
  try {
    return stage ? HeldOutOf(*stage, hold) : nullptr;
  } catch (...) {  // a host's stage
    return nullptr;
  }
}

std::optional<ZynImage> UnpackedStage::Info(bool source) const {
  try {
    return stage ? CopiedInfoOf(*stage, source) : std::nullopt;
  } catch (...) {  // a host's stage
    return std::nullopt;
  }
}

void UnpackedStage::Enable(bool on) const {
  try {
    if (stage) stage->Enable(on);
  } catch (...) {  // a host's stage
  }
}

}  // namespace QTD
