// What the steps of edge-directed interpolation compute with. For sources that are compiled once for each
// instruction set, after <hwy/highway.h>.
#if defined(ZYN_DEMOSAICING_EDGE_DIRECTED_VECTORS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_EDGE_DIRECTED_VECTORS_H
#undef ZYN_DEMOSAICING_EDGE_DIRECTED_VECTORS_H
#else
#define ZYN_DEMOSAICING_EDGE_DIRECTED_VECTORS_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, 16>;
using Vector = hn::Vec<Floats>;

constexpr Floats kFloats;

HWY_INLINE Vector At(const float* place) {
  return hn::LoadU(kFloats, place);
}
HWY_INLINE void Put(Vector value, float* place) {
  hn::StoreU(value, kFloats, place);
}
HWY_INLINE Vector Times(float factor, Vector value) {
  return hn::Mul(hn::Set(kFloats, factor), value);
}
HWY_INLINE Vector Plus(float term, Vector value) {
  return hn::Add(hn::Set(kFloats, term), value);
}
HWY_INLINE Vector Cube(Vector value) {
  return hn::Mul(hn::Mul(value, value), value);
}
HWY_INLINE Vector Within(float least, Vector value, float most) {
  return hn::Min(hn::Max(value, hn::Set(kFloats, least)), hn::Set(kFloats, most));
}
// second + weight * (first - second)
HWY_INLINE Vector Mix(Vector weight, Vector first, Vector second) {
  return hn::Add(second, hn::Mul(weight, hn::Sub(first, second)));
}

// As many values as there are floats in a vector, and what they are as floats. The first steps only add
// samples: with 8 bits they are done with 16-bit integers, and their sums are the same as those of floats.
template <typename Value>
using Few = hn::Rebind<Value, Floats>;
template <typename Value>
HWY_INLINE hn::Vec<Few<Value>> FewAt(const Value* place) {
  return hn::LoadU(Few<Value>(), place);
}
HWY_INLINE Vector AsFloats(Vector values) {
  return values;
}
HWY_INLINE Vector AsFloats(hn::Vec<Few<int16_t>> values) {
  return hn::ConvertTo(kFloats, hn::PromoteTo(Few<int32_t>(), values));
}

// Whole vectors of values.
#if HWY_TARGET == HWY_SCALAR
template <typename Value>
using Many = hn::CappedTag<Value, 1>;
#else
template <typename Value>
using Many = hn::Repartition<Value, Floats>;
#endif

// Calls step(index) for whole vectors that cover the half line's indices from -8 to before `end`.
template <typename Value = float, typename Step>
HWY_INLINE void ForVectors(ptrdiff_t end, const Step& step) {
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(Many<Value>()));
  for (ptrdiff_t index = -std::max<ptrdiff_t>(lanes, 8); index < end; index += lanes) step(index);
}

// How rough seven places in a row are. Each kind of sample has coefficients that sum up to 0 and ignore
// slopes, so that neither a colour nor a gradient counts:
//   1 -3 -1  6 -1 -3  1
template <typename Values>
HWY_INLINE Values Rough(Values outerA, Values outerB, Values innerA, Values innerB, Values sameA,
                        Values sameB, Values centre) {
  const auto others = hn::Sub(hn::Add(outerA, outerB), hn::Add(innerA, innerB));
  const auto bend = hn::Sub(hn::Add(centre, centre), hn::Add(sameA, sameB));
  return hn::Abs(hn::Add(others, hn::Add(hn::Add(bend, bend), bend)));
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
