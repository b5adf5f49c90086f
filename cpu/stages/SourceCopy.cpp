#include "cpu/stages/SourceCopy.h"

#include <cstring>

namespace {

bool Overlap(const uint8_t* one, size_t oneBytes, const uint8_t* other, size_t otherBytes) {
  const auto first = reinterpret_cast<uintptr_t>(one);
  const auto second = reinterpret_cast<uintptr_t>(other);
  return first < second ? second - first < oneBytes : first - second < otherBytes;
}

}  // namespace

const uint8_t* SourceCopy::Detach(const uint8_t* source, size_t sourceBytes, const uint8_t* target,
                                  size_t targetBytes) {
  if (!Overlap(source, sourceBytes, target, targetBytes)) return source;
  if (blockBytes < sourceBytes) {
    block.reset(static_cast<uint8_t*>(std::malloc(sourceBytes)));
    blockBytes = block ? sourceBytes : 0;
  }
  if (!block) return nullptr;
  std::memcpy(block.get(), source, sourceBytes);
  return block.get();
}

void SourceCopy::Release() {
  block.reset();
  blockBytes = 0;
}
