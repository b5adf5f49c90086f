// What the steps of the best interpolation share. For sources that are compiled once for each instruction
// set, after <hwy/highway.h>.
#if defined(ZYN_DEMOSAICING_BEST_VECTORS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_BEST_VECTORS_H
#undef ZYN_DEMOSAICING_BEST_VECTORS_H
#else
#define ZYN_DEMOSAICING_BEST_VECTORS_H
#endif

#include <hwy/highway.h>

#include "demosaicing/BestBand.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, 16>;
using V = hn::Vec<Floats>;

// A line that a step makes: of a workspace, with half lines of `entries` entries.
struct BestLine {
  BestWorkspace& workspace;
  ptrdiff_t line;
  ptrdiff_t entries;
  float greatest;  // the greatest sample

  ptrdiff_t Odd() const { return line & 1; }

  // The half line of a plane, `below` lines below this one.
  template <BestWorkspace::Plane plane>
  float* Of(ptrdiff_t below = 0, size_t half = 0) const {
    return workspace.Line<plane>(line + below, half);
  }
};

// The two halves of a line, and where their entries have their neighbours along x: those of site j are greens
// j + Left(kSites) and the one behind it.
enum Half : size_t { kSites, kGreens };
constexpr size_t Other(size_t half) {
  return half == kSites ? kGreens : kSites;
}
HWY_INLINE ptrdiff_t Left(const BestLine& line, size_t half) {
  return half == kSites ? line.Odd() - 1 : -line.Odd();
}

HWY_INLINE V Get(const float* from, ptrdiff_t entry) {
  return hn::LoadU(Floats(), from + entry);
}
HWY_INLINE void Put(V value, float* to, ptrdiff_t entry) {
  hn::StoreU(value, Floats(), to + entry);
}
HWY_INLINE V Number(float value) {
  return hn::Set(Floats(), value);
}

// All sums of several entries are made from outside in, so that a mirrored scene has the mirrored result.
// There are no running sums: a result must not depend on where a band begins.
HWY_INLINE V Sum3(const float* from, ptrdiff_t entry) {
  return (Get(from, entry - 1) + Get(from, entry + 1)) + Get(from, entry);
}

// The same across lines, of each the half line `number` behind the given one.
using Lines3 = std::array<const float*, 3>;
using Lines5 = std::array<const float*, 5>;
HWY_INLINE V Sum(const Lines3& lines, ptrdiff_t entry, size_t number = 0) {
  entry += static_cast<ptrdiff_t>(number) * BestWorkspace::kStride;
  return (Get(lines[0], entry) + Get(lines[2], entry)) + Get(lines[1], entry);
}
HWY_INLINE V Sum(const Lines5& lines, ptrdiff_t entry, size_t number = 0) {
  entry += static_cast<ptrdiff_t>(number) * BestWorkspace::kStride;
  return ((Get(lines[0], entry) + Get(lines[4], entry)) + (Get(lines[1], entry) + Get(lines[3], entry))) +
         Get(lines[2], entry);
}

// Several half lines, one behind the other.
HWY_INLINE const float* Numbered(const float* first, size_t number) {
  return first + static_cast<ptrdiff_t>(number) * BestWorkspace::kStride;
}
HWY_INLINE float* Numbered(float* first, size_t number) {
  return first + static_cast<ptrdiff_t>(number) * BestWorkspace::kStride;
}

// Calls work(entry) for the whole vectors of a line.
template <typename Work>
HWY_INLINE void ForEntries(const BestLine& line, const Work& work) {
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(Floats()));
  for (ptrdiff_t entry = 0; entry < line.entries; entry += lanes) work(entry);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
