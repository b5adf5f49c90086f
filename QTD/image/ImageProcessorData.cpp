#include "QTD/image/ImageProcessorData.h"

#include <limits>

#include "QTD/image/ImageRecord.h"

namespace QTD {

ImageProcessorData::~ImageProcessorData() {
  ImageProcessorData::Reset();
}

ZynImage* ImageProcessorData::Out() {
  return out;
}

ZynImage* ImageProcessorData::GetImageInfo(bool source) {
  return source || outputInfo == nullptr ? sourceInfo : outputInfo;
}

bool ImageProcessorData::Enable(bool on) {
  int32_t count = enableCount.load();
  int32_t next;
  do {
    if (on) {
      next = count < std::numeric_limits<int32_t>::max() ? count + 1 : count;
    } else {
      next = count > 0 ? count - 1 : 0;
    }
  } while (!enableCount.compare_exchange_weak(count, next));
  return next > 0;
}

bool ImageProcessorData::IsEnabled() {
  return enableCount > 0;
}

bool ImageProcessorData::IsReady() {
  return ready;
}

uint32_t ImageProcessorData::Reset() {
  const RMutexLock guard(lock);
  if (outputInfo == sourceInfo) outputInfo = nullptr;  // a stage that works in place has one record for both
  ImageDelete(sourceInfo);
  ImageDelete(outputInfo);
  out = nullptr;
  enableCount = 1;
  ready = false;
  return 0;
}

ZynComponent* ImageProcessorData::GetParent() {
  return parent;
}

}  // namespace QTD
