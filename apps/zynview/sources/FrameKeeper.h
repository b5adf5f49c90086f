// Keeps a copy of a camera frame, when somebody wants one.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "ZynImage.h"

namespace zynview {

// The frames pass on the thread of their source; a copy is made of the next one after each `Want` and of no
// other. Any thread may call any operation.
class FrameKeeper {
 public:
  void Want() { wanted = true; }

  // The pixels of `frame` are read before the call returns.
  void Offer(const ZynImage& frame);

  // The frames before belong to another source.
  void Forget();

  // Counts the frames that were kept; 0 as long as there is none.
  uint64_t Serial() const { return serial; }

  // Whether the frame that was kept last is the last one that has passed.
  bool HasLast() const { return hasLast; }

  // Shows the frame that was kept last. The record and its pixels are good within `look` only, which holds up
  // the next copy: look shortly. False when there is none.
  bool Look(const std::function<void(const ZynImage& frame)>& look) const;

 private:
  std::atomic<bool> wanted{false};
  std::atomic<uint64_t> serial{0};
  std::atomic<bool> hasLast{false};
  std::vector<uint8_t> spare;  // the thread of the frames alone, between two copies
  mutable std::mutex lock;     // guards what follows
  ZynImage record{};
  std::vector<uint8_t> pixels;
  bool hasFrame = false;
};

// A frame with pixels of its own.
struct OwnFrame {
  ZynImage record{};  // with `imageData` null
  std::vector<uint8_t> pixels;
};
OwnFrame CopyOf(const ZynImage& frame);

}  // namespace zynview
