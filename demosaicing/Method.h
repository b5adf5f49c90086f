// What the component and the interpolation methods agree on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Demosaicing {

// A checked source: one sample for each place, in bytes (`depth` 8) or 16-bit words (10 to 16). Every line
// lies within the host's buffer. Samples may use more bits than `depth` says.
struct Mosaic {
  const uint8_t* bytes;
  size_t pitch;
  size_t width, height;
  uint32_t depth;
  // The place of red in the cell of 2x2 places, 0 or 1 each; blue is at the other place of the other line,
  // green at the two that remain.
  size_t redX, redY;
};

// A checked target of the same size and sample type: three samples for each pixel, red first or blue first.
struct Picture {
  uint8_t* bytes;
  size_t pitch;
  bool blueFirst;
};

// An interpolation method, made for images of one size and depth; it has its workspaces from the start.
class Method {
 public:
  Method() = default;
  Method(const Method&) = delete;
  Method& operator=(const Method&) = delete;
  virtual ~Method() = default;

  // Fills the picture. Allocates and throws nothing. One thread at a time; works on several itself.
  virtual void Run(const Mosaic& mosaic, const Picture& picture) = 0;
};

// The methods, one file each. Throw std::bad_alloc without memory.
std::unique_ptr<Method> MakeGradientCorrected(size_t width, size_t height, uint32_t depth);  // 0
std::unique_ptr<Method> MakeBilinear(size_t width, size_t height, uint32_t depth);           // 1
std::unique_ptr<Method> MakeEdgeDirected(size_t width, size_t height, uint32_t depth);       // 2
std::unique_ptr<Method> MakeBest(size_t width, size_t height, uint32_t depth);               // 3

// Mirrors an index that lies outside [0, count) at the first or the last place, neither of which is repeated:
// the place that stands in for it has the same colour. A single place stands in for all others.
inline size_t Mirrored(ptrdiff_t index, size_t count) {
  if (count == 1) return 0;
  const auto last = static_cast<ptrdiff_t>(count) - 1;
  while (index < 0 || index > last) index = index < 0 ? -index : 2 * last - index;
  return static_cast<size_t>(index);
}

}  // namespace Demosaicing
