// The first half of the best interpolation: the missing one of green and colour at every place, once along x
// and once along y. For sources that are compiled once for each instruction set.
#if defined(ZYN_DEMOSAICING_BEST_DIRECTIONS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_BEST_DIRECTIONS_H
#undef ZYN_DEMOSAICING_BEST_DIRECTIONS_H
#else
#define ZYN_DEMOSAICING_BEST_DIRECTIONS_H
#endif

#include "demosaicing/BestVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// At a place c of a direction, its own kind's samples are two places apart, the other kind's lie between
// them:
//
//   c''  o'  c  o  c''        bend L(c) = 2 c - (c'' + c'')
//
// The other kind at c is the mean of its two neighbours plus a quarter of its own bend there, which is not
// known, but is likely a multiple of L(c): slope * L(c). At sites the slope of green comes from the bends
// around: O is the mean of the greens' bends beside c, T the own bends, smoothed nearly as O is. With the
// sums over 3 x 3 sites of this colour,
//
//   slope = sum(L O) / sum(L T)
//
// is what would be found if the bends of the results were compared with L, and the results computed again,
// over and over. It is drawn towards 1 the more, the less it explains. At greens the slope of the colour
// comes from the sums of the two sites beside, read the other way round: there sum(L O) / sum(O O) takes its
// place, as O is then the smoothed one.
enum Product : size_t { kLO, kOO, kOT, kTT, kLT, kProducts };

constexpr float kSmoothMiddle = 0.55f, kSmoothSide = 0.225f;
constexpr float kPrior = 27.0f;  // 3 for each place of the window
constexpr float kLeastSlope = -1.0f, kMostSlope = 2.5f;
constexpr float kTrust = 1.5f;

HWY_INLINE V Bend(V middle, V before, V behind) {
  return (middle + middle) - (before + behind);
}

// The products at a site: of its bend and those before and behind it, and the bends of the greens between.
HWY_INLINE void PutProducts(V bend, V bendBefore, V bendBehind, V greenBefore, V greenBehind, float* to,
                            ptrdiff_t entry) {
  const V other = Number(0.5f) * (greenBefore + greenBehind);
  const V smooth = Number(kSmoothMiddle) * bend + Number(kSmoothSide) * (bendBefore + bendBehind);
  Put(bend * other, Numbered(to, kLO), entry);
  Put(other * other, Numbered(to, kOO), entry);
  Put(other * smooth, Numbered(to, kOT), entry);
  Put(smooth * smooth, Numbered(to, kTT), entry);
  Put(bend * smooth, Numbered(to, kLT), entry);
}

// What `by` times a slope leaves of `what`: their squares, and their product.
struct Explained {
  V what, product, by;
};

HWY_INLINE V Slope(V dividend, V divisor, const Explained& sums) {
  const V zero = hn::Zero(Floats()), one = Number(1.0f), prior = Number(kPrior);
  V slope = (dividend + prior) / (hn::Max(divisor, zero) + prior);
  slope = hn::Min(hn::Max(slope, Number(kLeastSlope)), Number(kMostSlope));
  const V errorOfOne = ((sums.what - (sums.product + sums.product)) + sums.by) + prior;
  const V product = slope * sums.product;
  const V error = hn::Max((sums.what - (product + product)) + (slope * slope) * sums.by, zero) + prior;
  const V better = hn::Max(errorOfOne - error, zero);
  return one + ((slope - one) * better) / (better + Number(kTrust) * error);
}

// Adds up the lines of a site's window. Keeps the sums that the greens beside will need.
HWY_INLINE V SlopeAtSite(const Lines3& lines, float* sums, ptrdiff_t entry) {
  const V lo = Sum(lines, entry, kLO), oo = Sum(lines, entry, kOO), ot = Sum(lines, entry, kOT),
          tt = Sum(lines, entry, kTT), lt = Sum(lines, entry, kLT);
  Put(lo, Numbered(sums, kLO), entry);
  Put(oo, Numbered(sums, kOO), entry);
  Put(ot, Numbered(sums, kOT), entry);
  Put(tt, Numbered(sums, kTT), entry);
  return Slope(lo, lt, {oo, ot, tt});
}

// From the sums of the sites beside.
HWY_INLINE V SlopeAtGreen(const float* before, const float* behind, ptrdiff_t entry) {
  const auto mean = [&](Product product) {
    return Number(0.5f) * (Get(Numbered(before, product), entry) + Get(Numbered(behind, product), entry));
  };
  const V oo = mean(kOO);
  return Slope(mean(kLO), oo, {mean(kTT), mean(kOT), oo});
}

HWY_INLINE V Estimate(V before, V behind, V slope, V bend) {
  return Number(0.5f) * (before + behind) + (Number(0.25f) * slope) * bend;
}

// Along x, within one line.
void SumBeside(const BestLine& line) {
  for (const size_t half : {kSites, kGreens}) {
    const float* const own = line.Of<BestWorkspace::kSample>(0, half);
    float* const bend = line.workspace.Scratch(half);
    ForEntries(line, [&](ptrdiff_t entry) {
      Put(Bend(Get(own, entry), Get(own, entry - 1), Get(own, entry + 1)), bend, entry);
    });
  }
  const float* const own = line.workspace.Scratch(kSites);
  const float* const green = line.workspace.Scratch(kGreens) + Left(line, kSites);
  float* const products = line.workspace.Scratch(2);
  ForEntries(line, [&](ptrdiff_t entry) {
    PutProducts(Get(own, entry), Get(own, entry - 1), Get(own, entry + 1), Get(green, entry),
                Get(green, entry + 1), products, entry);
  });
  float* const sums = line.Of<BestWorkspace::kBesideSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t product = 0; product < kProducts; ++product) {
      Put(Sum3(Numbered(products, product), entry), Numbered(sums, product), entry);
    }
  });
}

void EstimateBeside(const BestLine& line) {
  Lines3 lines;
  for (size_t i = 0; i < 3; ++i)
    lines[i] = line.Of<BestWorkspace::kBesideSums>(2 * static_cast<ptrdiff_t>(i) - 2);
  const float* const sites = line.Of<BestWorkspace::kSample>(0, kSites);
  const float* const greens = line.Of<BestWorkspace::kSample>(0, kGreens);
  const float* const besideSites = greens + Left(line, kSites);
  const float* const besideGreens = sites + Left(line, kGreens);
  float* const sums = line.workspace.Scratch(0);
  const float* const sumsBeside = sums + Left(line, kGreens);
  float* const slopes = line.Of<BestWorkspace::kSlope>(0, 0);
  float* const atSites = line.Of<BestWorkspace::kDifference>(0, kSites);
  float* const atGreens = line.Of<BestWorkspace::kDifference>(0, kGreens);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V value = Get(sites, entry), slope = SlopeAtSite(lines, sums, entry);
    const V green = Estimate(Get(besideSites, entry), Get(besideSites, entry + 1), slope,
                             Bend(value, Get(sites, entry - 1), Get(sites, entry + 1)));
    Put(slope, slopes, entry);
    Put(green - value, atSites, entry);
  });
  ForEntries(line, [&](ptrdiff_t entry) {
    const V value = Get(greens, entry), slope = SlopeAtGreen(sumsBeside, sumsBeside + 1, entry);
    const V colour = Estimate(Get(besideGreens, entry), Get(besideGreens, entry + 1), slope,
                              Bend(value, Get(greens, entry - 1), Get(greens, entry + 1)));
    Put(value - colour, atGreens, entry);
  });
}

// Along y, the same columns of lines above and below. The neighbours in the next lines are of the other half.
template <BestWorkspace::Plane plane>
HWY_INLINE Lines5 Column(const BestLine& line, size_t half) {
  Lines5 lines;
  for (size_t i = 0; i < 5; ++i) {
    lines[i] = line.Of<plane>(static_cast<ptrdiff_t>(i) - 2, i % 2 == 0 ? half : Other(half));
  }
  return lines;
}

void BendAbove(const BestLine& line) {
  for (const size_t half : {kSites, kGreens}) {
    const Lines5 samples = Column<BestWorkspace::kSample>(line, half);
    float* const bend = line.Of<BestWorkspace::kBend>(0, half);
    ForEntries(line, [&](ptrdiff_t entry) {
      Put(Bend(Get(samples[2], entry), Get(samples[0], entry), Get(samples[4], entry)), bend, entry);
    });
  }
}

void SumAbove(const BestLine& line) {
  const Lines5 bends = Column<BestWorkspace::kBend>(line, kSites);
  float* const products = line.workspace.Scratch(0);
  ForEntries(line, [&](ptrdiff_t entry) {
    PutProducts(Get(bends[2], entry), Get(bends[0], entry), Get(bends[4], entry), Get(bends[1], entry),
                Get(bends[3], entry), products, entry);
  });
  float* const sums = line.Of<BestWorkspace::kAboveSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t product = 0; product < kProducts; ++product) {
      Put(Sum3(Numbered(products, product), entry), Numbered(sums, product), entry);
    }
  });
}

void EstimateAboveAtSites(const BestLine& line) {
  Lines3 lines;
  for (size_t i = 0; i < 3; ++i)
    lines[i] = line.Of<BestWorkspace::kAboveSums>(2 * static_cast<ptrdiff_t>(i) - 2);
  const Lines5 samples = Column<BestWorkspace::kSample>(line, kSites);
  float* const sums = line.Of<BestWorkspace::kSharedSums>();
  float* const slopes = line.Of<BestWorkspace::kSlope>(0, 1);
  float* const differences = line.Of<BestWorkspace::kDifferenceY>(0, kSites);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V value = Get(samples[2], entry), slope = SlopeAtSite(lines, sums, entry);
    const V green = Estimate(Get(samples[1], entry), Get(samples[3], entry), slope,
                             Bend(value, Get(samples[0], entry), Get(samples[4], entry)));
    Put(slope, slopes, entry);
    Put(green - value, differences, entry);
  });
}

void EstimateAboveAtGreens(const BestLine& line) {
  const float* const sumsAbove = line.Of<BestWorkspace::kSharedSums>(-1);
  const float* const sumsBelow = line.Of<BestWorkspace::kSharedSums>(1);
  const Lines5 samples = Column<BestWorkspace::kSample>(line, kGreens);
  float* const differences = line.Of<BestWorkspace::kDifferenceY>(0, kGreens);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V value = Get(samples[2], entry), slope = SlopeAtGreen(sumsAbove, sumsBelow, entry);
    const V colour = Estimate(Get(samples[1], entry), Get(samples[3], entry), slope,
                              Bend(value, Get(samples[0], entry), Get(samples[4], entry)));
    Put(value - colour, differences, entry);
  });
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
