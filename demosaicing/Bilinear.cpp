// Method 1: bilinear interpolation, the rounded mean of the two or four nearest places of a colour.
#include "demosaicing/LinearMethod.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/Bilinear.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>

#include "demosaicing/PairVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

//   d   v   d      at a place of colour:  green (h + v + 2) >> 2        the other colour (d + 2) >> 2
//   h   c   h
//   d   v   d      at a green place:      the line's own (h + 1) >> 1   the other colour (v + 1) >> 1
//
// h and v are sums of two places, d of four: those of 12-bit samples fit into 15 bits.
template <class D>
struct BilinearFilters {
  using V = hn::Vec<D>;

  HWY_INLINE BilinearFilters(const PairWindow<1>& window, bool greenFirst)
      : above(window.Line(-1), greenFirst),
        line(window.Line(0), greenFirst),
        below(window.Line(1), greenFirst) {}

  HWY_INLINE Pairs<D> operator()(ptrdiff_t k) const {
    const V one = hn::Set(D(), 1), two = hn::Set(D(), 2);
    Pairs<D> run;
    run.colour = line.Colour(k);
    run.greenAtColour = hn::ShiftRight<2>((line.BesideColour(k) + two) + (above.Colour(k) + below.Colour(k)));
    run.otherAtColour = hn::ShiftRight<2>((above.BesideColour(k) + two) + below.BesideColour(k));
    run.ownAtGreen = hn::ShiftRight<1>(line.BesideGreen(k) + one);
    run.green = line.Green(k);
    run.otherAtGreen = hn::ShiftRight<1>((above.Green(k) + one) + below.Green(k));
    return run;
  }

 private:
  const Places<D> above, line, below;
};

void BilinearLine(const PairWindow<1>& window, size_t pairs, const LineKind& kind, TilePixels* pixels) {
  if (kind.depth <= kNarrowDepth) {
    RunLine(BilinearFilters<Narrow>(window, kind.greenFirst), Narrow(), window, pairs, kind, pixels);
  } else {
    RunLine(BilinearFilters<Wide>(window, kind.greenFirst), Wide(), window, pairs, kind, pixels);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {
namespace {

HWY_EXPORT(BilinearLine);

void Line(const PairWindow<1>& window, size_t pairs, const LineKind& kind, TilePixels* pixels) {
  HWY_DYNAMIC_DISPATCH(BilinearLine)(window, pairs, kind, pixels);
}

}  // namespace

std::unique_ptr<Method> MakeBilinear(size_t, size_t, uint32_t) {
  return std::make_unique<LinearMethod<1>>(Line);
}

}  // namespace Demosaicing
#endif
