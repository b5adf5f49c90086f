#include "sources/FrameKeeper.h"

namespace zynview {

namespace {

// Neither pixels nor attachments of the frame belong to its copy.
ZynImage Bare(ZynImage record) {
  record.imageData = nullptr;
  record.ownedData = nullptr;
  record.attachments = nullptr;
  return record;
}

}  // namespace

void FrameKeeper::Offer(const ZynImage& frame) {
  if (!frame.imageData) return;
  if (!wanted.exchange(false)) {
    hasLast = false;
    return;
  }
  // Copied without the lock: whoever looks at the frame before waits for an exchange of pointers only.
  spare.assign(frame.imageData, frame.imageData + frame.imageSize);
  const std::lock_guard<std::mutex> guard(lock);
  pixels.swap(spare);
  record = Bare(frame);
  hasFrame = true;
  ++serial;
  hasLast = true;
}

void FrameKeeper::Forget() {
  const std::lock_guard<std::mutex> guard(lock);
  hasFrame = false;
  hasLast = false;
}

bool FrameKeeper::Look(const std::function<void(const ZynImage& frame)>& look) const {
  const std::lock_guard<std::mutex> guard(lock);
  if (!hasFrame) return false;
  ZynImage frame = record;
  frame.imageData = const_cast<uint8_t*>(pixels.data());
  look(frame);
  return true;
}

OwnFrame CopyOf(const ZynImage& frame) {
  OwnFrame copy;
  copy.pixels.assign(frame.imageData, frame.imageData + frame.imageSize);
  copy.record = Bare(frame);
  return copy;
}

}  // namespace zynview
