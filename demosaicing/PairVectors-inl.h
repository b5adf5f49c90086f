// Vectors of samples, and the way from them to joined pixels. For sources that are compiled once for each
// instruction set, after <hwy/highway.h>.
#if defined(ZYN_DEMOSAICING_PAIR_VECTORS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_PAIR_VECTORS_H
#undef ZYN_DEMOSAICING_PAIR_VECTORS_H
#else
#define ZYN_DEMOSAICING_PAIR_VECTORS_H
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "demosaicing/LinearMethod.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Lanes of 16 and of 32 bits. There is one sample in each lane.
using Narrow = hn::CappedTag<int16_t, 32>;
using Wide = hn::CappedTag<int32_t, 16>;

// The depths up to this one are computed in narrow lanes.
constexpr uint32_t kNarrowDepth = HWY_TARGET == HWY_SCALAR ? 8 : 12;

template <class D>
HWY_INLINE hn::Vec<D> LoadSamples(D tag, const uint16_t* from) {
  const hn::Rebind<uint16_t, D> words;
  if constexpr (sizeof(hn::TFromD<D>) == 2) {
    return hn::BitCast(tag, hn::LoadU(words, from));
  } else {
    return hn::PromoteTo(tag, hn::LoadU(words, from));
  }
}

// The places of a line of the mosaic whose columns hold the own colour in the line of interest ("colour"),
// and the other ones ("green"), and where their neighbours to the left and to the right are.
//
//   green at odd places:  C0 G0 C1 G1   left of C1 is G0, right of it G1; left of G0 is C0, right of it C1
//
//   green at even places: G0 C0 G1 C1   left of C0 is G0, right of it G1; left of G1 is C0, right of it C1
template <class D>
struct Places {
  HWY_INLINE Places(const PairLine& line, bool greenFirst)
      : colour(greenFirst ? line.Odd() : line.Even()),
        green(greenFirst ? line.Even() : line.Odd()),
        toLeft(greenFirst ? 0 : 1) {}

  // Pair `k` and the ones behind it.
  HWY_INLINE hn::Vec<D> Colour(ptrdiff_t k) const { return LoadSamples(D(), colour + k); }
  HWY_INLINE hn::Vec<D> Green(ptrdiff_t k) const { return LoadSamples(D(), green + k); }
  // Sums of the places to the left and to the right of those in Colour(k), and of those in Green(k).
  HWY_INLINE hn::Vec<D> BesideColour(ptrdiff_t k) const { return Green(k - toLeft) + Green(k + 1 - toLeft); }
  HWY_INLINE hn::Vec<D> BesideGreen(ptrdiff_t k) const { return Colour(k - 1 + toLeft) + Colour(k + toLeft); }

 private:
  const uint16_t* const colour;
  const uint16_t* const green;
  const ptrdiff_t toLeft;
};

// What a method gives for a run of pairs; lanes may lie outside the depth.
template <class D>
struct Pairs {
  hn::Vec<D> colour, greenAtColour,
      otherAtColour;                           // at the places of the line's own colour; it is kept there
  hn::Vec<D> ownAtGreen, green, otherAtGreen;  // at the green places
};

// A pair of pixels as it lies in memory, first sample in `a`'s lower half, last one in `c`'s upper half.
//
//   a = s0 | s1    b = s2 | t0    c = t1 | t2     for the pixels s and t
template <class V>
struct JoinedPairs {
  V a, b, c;
};

// One line as vectors: what it takes to put its pairs into pixels.
template <class D, bool kGreenFirst, bool kOwnThird>
struct Joining {
  using V = hn::Vec<D>;
  static constexpr int kHalfBits = static_cast<int>(sizeof(hn::TFromD<D>)) * 4;

  HWY_INLINE V Within(V value) const {
    return hn::Min(hn::Max(value, hn::Zero(D())), hn::Set(D(), greatest));
  }

  HWY_INLINE Pairs<D> Within(const Pairs<D>& run) const {
    return {run.colour, Within(run.greenAtColour), Within(run.otherAtColour), Within(run.ownAtGreen),
            run.green,  Within(run.otherAtGreen)};
  }

  // All samples fit into half a lane.
  HWY_INLINE void Store(const Pairs<D>& run, hn::TFromD<hn::RebindToUnsigned<D>>* to) const {
    const hn::RebindToUnsigned<D> tag;
    const auto first = [](V own, V other) { return kOwnThird ? other : own; };
    const auto third = [](V own, V other) { return kOwnThird ? own : other; };
    const V cFirst = first(run.colour, run.otherAtColour), cThird = third(run.colour, run.otherAtColour);
    const V gFirst = first(run.ownAtGreen, run.otherAtGreen),
            gThird = third(run.ownAtGreen, run.otherAtGreen);
    const auto join = [&](V lower, V upper) {
      return hn::BitCast(tag, hn::Or(lower, hn::ShiftLeft<kHalfBits>(upper)));
    };
    if constexpr (kGreenFirst) {
      hn::StoreInterleaved3(join(gFirst, run.green), join(gThird, cFirst), join(run.greenAtColour, cThird),
                            tag, to);
    } else {
      hn::StoreInterleaved3(join(cFirst, run.greenAtColour), join(cThird, gFirst), join(run.green, gThird),
                            tag, to);
    }
  }

  hn::TFromD<D> greatest;
};

#if HWY_TARGET != HWY_SCALAR
// The lower or the upper half of narrow lanes, widened.
template <bool kUpper>
HWY_INLINE Pairs<Wide> Widened(const Pairs<Narrow>& run) {
  const auto half = [](hn::Vec<Narrow> value) {
    const hn::Half<Narrow> tag;
    if constexpr (kUpper) {
      return hn::PromoteTo(Wide(), hn::UpperHalf(tag, value));
    } else {
      return hn::PromoteTo(Wide(), hn::LowerHalf(tag, value));
    }
  };
  return {half(run.colour),     half(run.greenAtColour), half(run.otherAtColour),
          half(run.ownAtGreen), half(run.green),         half(run.otherAtGreen)};
}
#endif

// Asks for the memory of `pairs` pairs from `pair` on of the line that comes next; touches nothing.
template <size_t kPairBytes>
HWY_INLINE void Prefetch(const uint8_t* ahead, size_t pair, size_t pairs) {
  for (size_t byte = 0; byte < pairs * kPairBytes; byte += 64)
    hwy::Prefetch(ahead + pair * kPairBytes + byte);
}

template <bool kGreenFirst, bool kOwnThird, class Filters>
HWY_INLINE void RunKind(const Filters& filters, Narrow, size_t pairs, uint32_t depth, const uint8_t* ahead,
                        TilePixels* pixels) {
  const Joining<Narrow, kGreenFirst, kOwnThird> joining{static_cast<int16_t>(Greatest(depth))};
  const size_t lanes = hn::Lanes(Narrow());
#if HWY_TARGET != HWY_SCALAR
  if (depth > 8) {
    const Joining<Wide, kGreenFirst, kOwnThird> joiningWide{static_cast<int32_t>(Greatest(depth))};
    for (size_t pair = 0; pair < pairs; pair += lanes) {
      Prefetch<4>(ahead, pair, lanes);
      const Pairs<Narrow> run = joining.Within(filters(static_cast<ptrdiff_t>(pair)));
      joiningWide.Store(Widened<false>(run), pixels->doubleWords + 3 * pair);
      joiningWide.Store(Widened<true>(run), pixels->doubleWords + 3 * (pair + lanes / 2));
    }
    return;
  }
#endif
  for (size_t pair = 0; pair < pairs; pair += lanes) {
    Prefetch<2>(ahead, pair, lanes);
    joining.Store(joining.Within(filters(static_cast<ptrdiff_t>(pair))), pixels->words + 3 * pair);
  }
}

template <bool kGreenFirst, bool kOwnThird, class Filters>
HWY_INLINE void RunKind(const Filters& filters, Wide, size_t pairs, uint32_t depth, const uint8_t* ahead,
                        TilePixels* pixels) {
  const Joining<Wide, kGreenFirst, kOwnThird> joining{static_cast<int32_t>(Greatest(depth))};
  const size_t lanes = hn::Lanes(Wide());
  for (size_t pair = 0; pair < pairs; pair += lanes) {
    Prefetch<4>(ahead, pair, lanes);
    joining.Store(joining.Within(filters(static_cast<ptrdiff_t>(pair))), pixels->doubleWords + 3 * pair);
  }
}

// Computes a line of a tile: filters(k) gives pair `k` and those behind it. Works by whole vectors; what lies
// behind the last pair is computed from anything.
template <class D, class Filters, size_t kReach>
HWY_INLINE void RunLine(const Filters& filters, D tag, const PairWindow<kReach>& window, size_t pairs,
                        const LineKind& kind, TilePixels* pixels) {
  const uint8_t* const ahead = window.Ahead();
  if (kind.greenFirst) {
    if (kind.ownThird) return RunKind<true, true>(filters, tag, pairs, kind.depth, ahead, pixels);
    return RunKind<true, false>(filters, tag, pairs, kind.depth, ahead, pixels);
  }
  if (kind.ownThird) return RunKind<false, true>(filters, tag, pairs, kind.depth, ahead, pixels);
  return RunKind<false, false>(filters, tag, pairs, kind.depth, ahead, pixels);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
