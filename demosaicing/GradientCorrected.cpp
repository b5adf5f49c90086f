// Method 0: gradient-corrected linear interpolation on 5x5 places. H. S. Malvar, L. He, R. Cutler:
// "High-quality linear interpolation for demosaicing of Bayer-patterned color images", ICASSP 2004.
#include "demosaicing/LinearMethod.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/GradientCorrected.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>

#include "demosaicing/PairVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// The places that the filters look at, around the one in the middle, c. At each place stand the sums of those
// with the same letter: h and v two each, H and V two each, d four.
//
//           V               weights in 16ths, rounded: (sum + 8) >> 4         c   h   v   H   V   d
//       d   v   d           at a place of colour:  green                      8   4   4  -2  -2   0
//   H   h   c   h   H                              the other colour          12   0   0  -3  -3   4
//       d   v   d           at a green place:      the line's own colour     10   8   0  -2   1  -2
//           V                                      the other colour          10   0   8   1  -2  -2
//
// The sums of 12-bit samples do not fit into 16 bits. The filters are therefore computed in steps that do,
// and that end in the same number: (4 a + b) >> (2 + n) is (a + (b >> 2)) >> n. The greatest step has 7
// samples, the least one minus 6.
template <class D>
struct GradientFilters {
  using V = hn::Vec<D>;

  HWY_INLINE GradientFilters(const PairWindow<2>& window, bool greenFirst)
      : farAbove(window.Line(-2), greenFirst),
        above(window.Line(-1), greenFirst),
        line(window.Line(0), greenFirst),
        below(window.Line(1), greenFirst),
        farBelow(window.Line(2), greenFirst) {}

  HWY_INLINE Pairs<D> operator()(ptrdiff_t k) const {
    Pairs<D> run;
    run.colour = line.Colour(k);
    run.green = line.Green(k);
    AtColour(k, &run);
    AtGreen(k, &run);
    return run;
  }

 private:
  HWY_INLINE void AtColour(ptrdiff_t k, Pairs<D>* run) const {
    const V c = run->colour;
    const V near = line.BesideColour(k) + (above.Colour(k) + below.Colour(k));
    const V far = (line.Colour(k - 1) + line.Colour(k + 1)) + (farAbove.Colour(k) + farBelow.Colour(k));
    const V diagonal = above.BesideColour(k) + below.BesideColour(k);
    const V one = hn::Set(D(), 1), two = hn::Set(D(), 2);
    // (8c + 4(h + v) - 2(H + V) + 8) >> 4
    run->greenAtColour = hn::ShiftRight<2>(((c + c) + (near + two)) - hn::ShiftRight<1>(far + one));
    // (12c + 4d - 3(H + V) + 8) >> 4
    run->otherAtColour = hn::ShiftRight<2>(((c + c) + (c + two)) + (diagonal - far) + hn::ShiftRight<2>(far));
  }

  HWY_INLINE void AtGreen(ptrdiff_t k, Pairs<D>* run) const {
    const V c = run->green;
    const V farH = line.Green(k - 1) + line.Green(k + 1);
    const V farV = farAbove.Green(k) + farBelow.Green(k);
    const V middle = c - (above.BesideGreen(k) + below.BesideGreen(k));
    const V cOne = c + hn::Set(D(), 1);
    // (10c + 8h - 2H + V - 2d + 8) >> 4
    run->ownAtGreen = hn::ShiftRight<1>((line.BesideGreen(k) + cOne) +
                                        hn::ShiftRight<2>((middle - farH) + hn::ShiftRight<1>(farV)));
    // (10c + 8v - 2V + H - 2d + 8) >> 4
    run->otherAtGreen = hn::ShiftRight<1>((above.Green(k) + below.Green(k) + cOne) +
                                          hn::ShiftRight<2>((middle - farV) + hn::ShiftRight<1>(farH)));
  }

  const Places<D> farAbove, above, line, below, farBelow;
};

void GradientLine(const PairWindow<2>& window, size_t pairs, const LineKind& kind, TilePixels* pixels) {
  if (kind.depth <= kNarrowDepth) {
    RunLine(GradientFilters<Narrow>(window, kind.greenFirst), Narrow(), window, pairs, kind, pixels);
  } else {
    RunLine(GradientFilters<Wide>(window, kind.greenFirst), Wide(), window, pairs, kind, pixels);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {
namespace {

HWY_EXPORT(GradientLine);

void Line(const PairWindow<2>& window, size_t pairs, const LineKind& kind, TilePixels* pixels) {
  HWY_DYNAMIC_DISPATCH(GradientLine)(window, pairs, kind, pixels);
}

}  // namespace

std::unique_ptr<Method> MakeGradientCorrected(size_t, size_t, uint32_t) {
  return std::make_unique<LinearMethod<2>>(Line);
}

}  // namespace Demosaicing
#endif
