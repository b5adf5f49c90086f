#include "QTD/stages/UnpackedStage.h"

#include <chrono>
#include <thread>

#include "QTD/frame/LivePointers.h"
#include "QTD/image/ImageProcessorData.h"

namespace QTD {

namespace {

constexpr std::chrono::microseconds kTurn{50};

bool IsKnown(const ZynComponent* component) {
  return LivePointers<ZynComponent>::Instance().Find(component) != nullptr;
}

template <typename Ask>
const ZynImage* Answer(ZynImgProcessor* stage, const Ask& ask) {
  try {
    return stage ? ask(*stage) : nullptr;
  } catch (...) {  // a host's stage
    return nullptr;
  }
}

}  // namespace

ChainLink::ChainLink(ZynComponent* chainComponent)
    : component(chainComponent), known(IsKnown(chainComponent)) {}

void ChainLink::End() {
  leaving = true;
  while (calls > 0) std::this_thread::sleep_for(kTurn);
}

ZynImgProcessingChain* ChainLink::Chain() const {
  return known && !IsKnown(component) ? nullptr : dynamic_cast<ZynImgProcessingChain*>(component);
}

UnpackedStage::UnpackedStage(ChainLink& chainLink) : link(chainLink) {
  ++link.calls;
  try {
    ZynImgProcessingChain* const chain = link.Chain();
    if (chain && Lock(*chain)) stage = chain->FindProcessor("image.unpacked");
  } catch (...) {  // a host's chain
  }
  // A coloration under that name has no values of its own, and may be the very one that asks.
  if (dynamic_cast<ZynDisplayQT::ExposureColoration*>(stage)) stage = nullptr;
}

UnpackedStage::~UnpackedStage() {
  if (guard.owns_lock()) guard.unlock();
  --link.calls;  // from here on the coloration may be gone
}

// False when the coloration leaves. A host's own chain may have no lock.
bool UnpackedStage::Lock(ZynImgProcessingChain& chain) {
  auto* const data = dynamic_cast<ImageProcessorData*>(&chain);
  if (!data) return true;
  guard = std::unique_lock<std::recursive_mutex>(data->OperationLock().mutex, std::defer_lock);
  while (!guard.try_lock()) {
    if (link.leaving) return false;
    std::this_thread::sleep_for(kTurn);
  }
  return true;
}

const ZynImage* UnpackedStage::Out() const {
  return Answer(stage, [](ZynImgProcessor& asked) { return asked.Out(); });
}

const ZynImage* UnpackedStage::Info(bool source) const {
  return Answer(stage, [source](ZynImgProcessor& asked) { return asked.GetImageInfo(source); });
}

}  // namespace QTD
