#include "cpu/screen/TextLine.h"

#include <limits>

bool NextTabStop(int x, int width, int fontHeight, int* stop) {
  const int64_t distance = int64_t{4} * fontHeight;
  if (distance <= 0) return false;
  const int64_t next = x + (width / distance + 1) * distance;
  if (next > std::numeric_limits<int>::max()) return false;
  *stop = static_cast<int>(next);
  return true;
}
