// How much memory the process holds.
#pragma once

#include <cstdint>
#include <fstream>

// In bytes, at this moment.
inline int64_t ResidentBytes() {
  std::ifstream status("/proc/self/statm");
  int64_t total = 0, resident = 0;
  status >> total >> resident;
  return resident * 4096;
}
