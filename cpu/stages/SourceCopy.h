// Keeps a stage's source apart from its target where the two share memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

// One block, made when the first such source comes and kept for the next ones. One thread at a time.
class SourceCopy {
 public:
  // `source` itself where the two ranges are apart, else a copy of it; null when memory is short.
  const uint8_t* Detach(const uint8_t* source, size_t sourceBytes, const uint8_t* target, size_t targetBytes);

  void Release();

 private:
  struct FreeBlock {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };

  std::unique_ptr<uint8_t, FreeBlock> block;
  size_t blockBytes = 0;
};
