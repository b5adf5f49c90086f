// The two frame buffers between the host's threads and the GUI thread.
#pragma once

#include <cstdint>
#include <mutex>

namespace QTD {

// Any thread may call any operation. Lock order: `SwapLock`, then the buffer's own.
class DoubleBuffer {
 public:
  DoubleBuffer() = default;
  DoubleBuffer(const DoubleBuffer&) = delete;
  DoubleBuffer& operator=(const DoubleBuffer&) = delete;
  virtual ~DoubleBuffer();

  // Two zeroed blocks of `size` bytes; false (and no change) for a size not above 0, false (and size 0) when
  // memory is short. Freed blocks count as size 0.
  virtual bool Allocate(int32_t size);
  virtual void Free();

  // Copies into the back buffer. What does not fit is dropped. A write at offset 0 counts as a frame.
  void Write(const void* source, int32_t bytes, int32_t offset);
  // The same for `lines` lines of `lineBytes` bytes each, whose starts lie `sourcePitch` and `targetPitch`
  // apart. What lies between the lines is neither read nor written.
  void WriteLines(const void* source, int32_t sourcePitch, int32_t lineBytes, int32_t lines,
                  int32_t targetPitch);
  void Swap();  // the back buffer becomes the front buffer; clears the new back buffer's count

  // Reading side. Hold `SwapLock` as long as the bytes are in use.
  uint8_t* Front() const;
  uint32_t FrontCount() const;  // for tests; nobody else asks
  uint32_t BackCount() const;
  void ClearFrontCount();
  int32_t Size() const;

  // Held across a whole step by the users: across a frame's two writes, across swap and processing.
  std::recursive_mutex& SwapLock() { return swapLock; }

 private:
  void Release();

  int index = 0;                    // the front buffer
  uint32_t writeCount[2] = {0, 0};  // frames written into each buffer since it was last cleared
  uint8_t* buffer[2] = {nullptr, nullptr};
  int32_t size = 0;
  mutable std::recursive_mutex bufferLock;  // guards all of the above and the copy; taken after `swapLock`
  std::recursive_mutex swapLock;            // a whole step of a user; taken before `bufferLock`
};

}  // namespace QTD
