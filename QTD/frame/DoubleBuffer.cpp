#include "QTD/frame/DoubleBuffer.h"

#include <cstdlib>
#include <cstring>

namespace QTD {

namespace {
using Guard = std::lock_guard<std::recursive_mutex>;
}  // namespace

DoubleBuffer::~DoubleBuffer() {
  DoubleBuffer::Free();
}

// Called with both locks held.
void DoubleBuffer::Release() {
  for (int i = 0; i < 2; ++i) {
    std::free(buffer[i]);
    buffer[i] = nullptr;
    writeCount[i] = 0;
  }
  size = 0;
}

bool DoubleBuffer::Allocate(int32_t newSize) {
  const Guard step(swapLock);
  const Guard guard(bufferLock);
  if (newSize <= 0) return false;
  Release();
  // Fresh pages from calloc are zero without being touched, so that an unused second buffer costs no memory.
  for (uint8_t*& block : buffer) block = static_cast<uint8_t*>(std::calloc(static_cast<size_t>(newSize), 1));
  if (!buffer[0] || !buffer[1]) {
    Release();
    return false;
  }
  size = newSize;
  return true;
}

void DoubleBuffer::Free() {
  const Guard step(swapLock);
  const Guard guard(bufferLock);
  Release();
}

void DoubleBuffer::Write(const void* source, int32_t bytes, int32_t offset) {
  const Guard guard(bufferLock);
  if (size == 0 || !source || bytes < 0 || offset < 0 || int64_t{offset} + bytes > size) return;
  const int back = 1 - index;
  // The source may lie in a buffer that was handed out as the front one.
  std::memmove(buffer[back] + offset, source, static_cast<size_t>(bytes));
  if (offset == 0) ++writeCount[back];
}

void DoubleBuffer::WriteLines(const void* source, int32_t sourcePitch, int32_t lineBytes, int32_t lines,
                              int32_t targetPitch) {
  const Guard guard(bufferLock);
  if (size == 0 || !source || lineBytes <= 0 || lines <= 0) return;
  if (sourcePitch < lineBytes || targetPitch < lineBytes) return;
  if (int64_t{lines - 1} * targetPitch + lineBytes > size) return;
  const int back = 1 - index;
  const auto* from = static_cast<const uint8_t*>(source);
  for (size_t line = 0; line < static_cast<size_t>(lines); ++line) {
    std::memmove(buffer[back] + line * static_cast<size_t>(targetPitch),
                 from + line * static_cast<size_t>(sourcePitch), static_cast<size_t>(lineBytes));
  }
  ++writeCount[back];
}

void DoubleBuffer::Swap() {
  const Guard guard(bufferLock);
  index = 1 - index;
  writeCount[1 - index] = 0;
}

uint8_t* DoubleBuffer::Front() const {
  const Guard guard(bufferLock);
  return buffer[index];
}

uint32_t DoubleBuffer::FrontCount() const {
  const Guard guard(bufferLock);
  return writeCount[index];
}

uint32_t DoubleBuffer::BackCount() const {
  const Guard guard(bufferLock);
  return writeCount[1 - index];
}

void DoubleBuffer::ClearFrontCount() {
  const Guard guard(bufferLock);
  writeCount[index] = 0;
}

int32_t DoubleBuffer::Size() const {
  const Guard guard(bufferLock);
  return size;
}

}  // namespace QTD
