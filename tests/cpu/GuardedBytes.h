// Memory between two pages that nobody may touch: what is read or written outside ends the test at once.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <new>

class GuardedBytes {
 public:
  // Where the bytes lie against the forbidden pages.
  enum Border { kAtEnd, kAtStart };

  explicit GuardedBytes(size_t byteCount, Border border = kAtEnd) : count(byteCount) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t inner = (byteCount + page - 1) / page * page;
    mapped = inner + 2 * page;
    void* const block = mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) throw std::bad_alloc();
    base = static_cast<uint8_t*>(block);
    if (inner != 0 && mprotect(base + page, inner, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
    bytes = border == kAtEnd ? base + page + inner - byteCount : base + page;
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes() { munmap(base, mapped); }

  uint8_t* data() { return bytes; }
  size_t size() const { return count; }
  uint8_t& operator[](size_t index) { return bytes[index]; }

 private:
  size_t count;
  size_t mapped = 0;
  uint8_t* base = nullptr;
  uint8_t* bytes = nullptr;
};
