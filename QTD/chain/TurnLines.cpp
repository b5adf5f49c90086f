#include "QTD/chain/TurnLines.h"

#include <algorithm>
#include <cstddef>

#include "QTD/image/ImageRecord.h"

// line 0      a a a . .        c c c . .
// line 1      b b b . .   ->   b b b . .      . padding: linePitch - the line's bytes
// line 2      c c c            a a a
bool TurnLines(const ZynImage& image) {
  if (!image.imageData || !QTD::LinesFit(image)) return false;
  const size_t pitch = image.linePitch;
  const size_t bytes = static_cast<size_t>(QTD::LineBytes(image));
  if (bytes > pitch) return false;
  uint8_t* upper = image.imageData;
  uint8_t* lower = image.imageData + pitch * (image.height > 0 ? image.height - 1 : 0);
  for (; upper < lower; upper += pitch, lower -= pitch) std::swap_ranges(upper, upper + bytes, lower);
  return true;
}
