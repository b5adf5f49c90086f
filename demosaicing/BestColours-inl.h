// The last part of the best interpolation: red and blue, by what they have to do with green around a place.
// For sources that are compiled once for each instruction set.
#if defined(ZYN_DEMOSAICING_BEST_COLOURS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_BEST_COLOURS_H
#undef ZYN_DEMOSAICING_BEST_COLOURS_H
#else
#define ZYN_DEMOSAICING_BEST_COLOURS_H
#endif

#include "demosaicing/BestVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// For each site the line colour = slope * green + offset that fits best to the 5 x 5 sites of its colour
// around it. The slope is that of the second differences, which makes the result smooth where green is; it is
// drawn towards 1 where it explains little, as above.
enum ColourSum : size_t { kBendGreen2, kBendBoth, kBendColour2, kG, kC, kGG, kGC, kCC, kColourSumCount };

constexpr float kColourPrior = 25.0f;  // 1 for each site of the window
constexpr float kColourTrust = 0.1f;
constexpr float kLeastFit = -3.0f, kMostFit = 3.0f;
constexpr float kWindow = 1.0f / 25.0f;
constexpr float kLeastVariance = 0.01f;

void SumColours(const BestLine& line) {
  const float* const colours = line.Of<BestWorkspace::kSample>(0, kSites);
  const float* const coloursAbove = line.Of<BestWorkspace::kSample>(-2, kSites);
  const float* const coloursBelow = line.Of<BestWorkspace::kSample>(2, kSites);
  const float* const greens = line.Of<BestWorkspace::kGreen>();
  const float* const greensAbove = line.Of<BestWorkspace::kGreen>(-2);
  const float* const greensBelow = line.Of<BestWorkspace::kGreen>(2);
  float* const products = line.workspace.Scratch(0);
  const auto bend = [](V middle, const float* from, const float* above, const float* below, ptrdiff_t entry) {
    return Number(4.0f) * middle -
           ((Get(from, entry - 1) + Get(from, entry + 1)) + (Get(above, entry) + Get(below, entry)));
  };
  ForEntries(line, [&](ptrdiff_t entry) {
    const V green = Get(greens, entry), colour = Get(colours, entry);
    const V bendGreen = bend(green, greens, greensAbove, greensBelow, entry);
    const V bendColour = bend(colour, colours, coloursAbove, coloursBelow, entry);
    Put(bendGreen * bendGreen, Numbered(products, kBendGreen2), entry);
    Put(bendGreen * bendColour, Numbered(products, kBendBoth), entry);
    Put(bendColour * bendColour, Numbered(products, kBendColour2), entry);
    Put(green, Numbered(products, kG), entry);
    Put(colour, Numbered(products, kC), entry);
    Put(green * green, Numbered(products, kGG), entry);
    Put(green * colour, Numbered(products, kGC), entry);
    Put(colour * colour, Numbered(products, kCC), entry);
  });
  float* const sums = line.Of<BestWorkspace::kColourSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t sum = 0; sum < kColourSumCount; ++sum) {
      Put(Sum5(Numbered(products, sum), entry), Numbered(sums, sum), entry);
    }
  });
}

// The fits, which count the more the less of the colour's variance they leave.
void FitColours(const BestLine& line) {
  Lines5 sums;
  for (size_t i = 0; i < 5; ++i)
    sums[i] = line.Of<BestWorkspace::kColourSums>(2 * static_cast<ptrdiff_t>(i) - 4);
  float* const fits = line.workspace.Scratch(0);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V one = Number(1.0f), prior = Number(kColourPrior), window = Number(kWindow);
    const V x = Sum(sums, entry, kBendGreen2) + prior, y = Sum(sums, entry, kBendBoth) + prior;
    V slope = y / x;
    const V error = hn::Max((Sum(sums, entry, kBendColour2) + prior) - slope * y, hn::Zero(Floats()));
    const V beyond = slope - one;
    const V better = x * (beyond * beyond);
    slope = one + (beyond * better) / ((better + Number(kColourTrust) * error) + Number(0.001f));
    slope = hn::Min(hn::Max(slope, Number(kLeastFit)), Number(kMostFit));

    const V g = Sum(sums, entry, kG), c = Sum(sums, entry, kC);
    const V offset = (c - slope * g) * window;
    const V gg = Sum(sums, entry, kGG) - (g * g) * window;
    const V gc = Sum(sums, entry, kGC) - (g * c) * window;
    const V cc = Sum(sums, entry, kCC) - (c * c) * window;
    const V product = slope * gc;
    const V variance = ((cc - (product + product)) + (slope * slope) * gg) * window;
    const V weight = one / hn::Max(variance, Number(kLeastVariance));
    Put(weight, Numbered(fits, 0), entry);
    Put(slope * weight, Numbered(fits, 1), entry);
    Put(offset * weight, Numbered(fits, 2), entry);
  });
  float* const fitSums = line.Of<BestWorkspace::kFitSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t fit = 0; fit < 3; ++fit) {
      Put(Sum5(Numbered(fits, fit), entry), Numbered(fitSums, fit), entry);
    }
  });
}

// The mean of the 5 x 5 fits around a site, and what it leaves of the site's colour, its rest.
enum Fit : size_t { kFitSlope, kFitOffset, kFitRest };

void MeanFits(const BestLine& line) {
  Lines5 sums;
  for (size_t i = 0; i < 5; ++i)
    sums[i] = line.Of<BestWorkspace::kFitSums>(2 * static_cast<ptrdiff_t>(i) - 4);
  const float* const colours = line.Of<BestWorkspace::kSample>(0, kSites);
  const float* const greens = line.Of<BestWorkspace::kGreen>();
  float* const slopes = line.Of<BestWorkspace::kFit>(0, kFitSlope);
  float* const offsets = line.Of<BestWorkspace::kFit>(0, kFitOffset);
  float* const rests = line.Of<BestWorkspace::kFit>(0, kFitRest);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V part = Number(1.0f) / Sum(sums, entry, 0);
    const V slope = Sum(sums, entry, 1) * part, offset = Sum(sums, entry, 2) * part;
    Put(slope, slopes, entry);
    Put(offset, offsets, entry);
    Put(Get(colours, entry) - (slope * Get(greens, entry) + offset), rests, entry);
  });
}

// Four values around a place in two pairs, mixed so that the pair that changes less counts more. `change`
// holds how much green changes along the pairs.
struct Pair {
  V before, behind, change;
};
HWY_INLINE V Mixed(const Pair& one, const Pair& two) {
  const V flat = Number(4.0f);
  const V roughOne = (hn::AbsDiff(one.before, one.behind) + one.change) + flat;
  const V roughTwo = (hn::AbsDiff(two.before, two.behind) + two.change) + flat;
  const V weightOne = roughTwo * roughTwo, weightTwo = roughOne * roughOne;
  return (Number(0.5f) * (weightOne * (one.before + one.behind) + weightTwo * (two.before + two.behind))) /
         (weightOne + weightTwo);
}

HWY_INLINE V Change(V here, V before, V behind) {
  return hn::AbsDiff(here, before) + hn::AbsDiff(here, behind);
}

HWY_INLINE V Within(V value, float greatest) {
  return hn::Min(hn::Max(value, hn::Zero(Floats())), Number(greatest));
}

// The third colour at a site, from the four sites of that colour around it.
//
//   nw    ne
//      c
//   sw    se
void MixAtSites(const BestLine& line) {
  const ptrdiff_t left = Left(line, kSites);
  const auto around = [&](ptrdiff_t below, size_t fit) {
    return line.Of<BestWorkspace::kFit>(below, fit) + left;
  };
  const float* const slopesAbove = around(-1, kFitSlope);
  const float* const slopesBelow = around(1, kFitSlope);
  const float* const offsetsAbove = around(-1, kFitOffset);
  const float* const offsetsBelow = around(1, kFitOffset);
  const float* const restsAbove = around(-1, kFitRest);
  const float* const restsBelow = around(1, kFitRest);
  const float* const greens = line.Of<BestWorkspace::kGreen>();
  const float* const greensAbove = line.Of<BestWorkspace::kGreen>(-1) + left;
  const float* const greensBelow = line.Of<BestWorkspace::kGreen>(1) + left;
  float* const values = line.Of<BestWorkspace::kOther>(0, 0);
  float* const rests = line.Of<BestWorkspace::kOther>(0, 1);
  const auto mean = [](const float* above, const float* below, ptrdiff_t entry) {
    return Number(0.25f) *
           ((Get(above, entry) + Get(below, entry + 1)) + (Get(above, entry + 1) + Get(below, entry)));
  };
  ForEntries(line, [&](ptrdiff_t entry) {
    const V green = Get(greens, entry);
    const auto pair = [&](ptrdiff_t before, ptrdiff_t behind) -> Pair {
      return {Get(restsAbove, before), Get(restsBelow, behind),
              Change(green, Get(greensAbove, before), Get(greensBelow, behind))};
    };
    const V rest = Mixed(pair(entry, entry + 1), pair(entry + 1, entry));
    const V fit = mean(slopesAbove, slopesBelow, entry) * green + mean(offsetsAbove, offsetsBelow, entry);
    Put(rest, rests, entry);
    Put(Within(fit + rest, line.greatest), values, entry);
  });
}

// Both colours at the greens. The line's own colour has its sites to the left and right, the other one above
// and below; the rests at the two places that are left are those from above.
void MixAtGreens(const BestLine& line, float* ownValues, float* otherValues) {
  const ptrdiff_t left = Left(line, kGreens);
  const float* const greens = line.Of<BestWorkspace::kSample>(0, kGreens);
  const float* const greensBeside = line.Of<BestWorkspace::kGreen>() + left;
  const float* const greensAbove = line.Of<BestWorkspace::kGreen>(-1);
  const float* const greensBelow = line.Of<BestWorkspace::kGreen>(1);
  const float* const slopesBeside = line.Of<BestWorkspace::kFit>(0, kFitSlope) + left;
  const float* const slopesAbove = line.Of<BestWorkspace::kFit>(-1, kFitSlope);
  const float* const slopesBelow = line.Of<BestWorkspace::kFit>(1, kFitSlope);
  const float* const offsetsBeside = line.Of<BestWorkspace::kFit>(0, kFitOffset) + left;
  const float* const offsetsAbove = line.Of<BestWorkspace::kFit>(-1, kFitOffset);
  const float* const offsetsBelow = line.Of<BestWorkspace::kFit>(1, kFitOffset);
  const float* const restsBeside = line.Of<BestWorkspace::kFit>(0, kFitRest) + left;
  const float* const restsAbove = line.Of<BestWorkspace::kFit>(-1, kFitRest);
  const float* const restsBelow = line.Of<BestWorkspace::kFit>(1, kFitRest);
  const float* const otherBeside = line.Of<BestWorkspace::kOther>(0, 1) + left;
  const float* const otherAbove = line.Of<BestWorkspace::kOther>(-1, 1);
  const float* const otherBelow = line.Of<BestWorkspace::kOther>(1, 1);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V green = Get(greens, entry), half = Number(0.5f);
    const V changeX = Change(green, Get(greensBeside, entry), Get(greensBeside, entry + 1));
    const V changeY = Change(green, Get(greensAbove, entry), Get(greensBelow, entry));
    const V ownRest = Mixed({Get(restsBeside, entry), Get(restsBeside, entry + 1), changeX},
                            {Get(otherAbove, entry), Get(otherBelow, entry), changeY});
    const V otherRest = Mixed({Get(otherBeside, entry), Get(otherBeside, entry + 1), changeX},
                              {Get(restsAbove, entry), Get(restsBelow, entry), changeY});
    const V ownSlope = half * (Get(slopesBeside, entry) + Get(slopesBeside, entry + 1));
    const V ownOffset = half * (Get(offsetsBeside, entry) + Get(offsetsBeside, entry + 1));
    const V otherSlope = half * (Get(slopesAbove, entry) + Get(slopesBelow, entry));
    const V otherOffset = half * (Get(offsetsAbove, entry) + Get(offsetsBelow, entry));
    Put(Within((ownSlope * green + ownOffset) + ownRest, line.greatest), ownValues, entry);
    Put(Within((otherSlope * green + otherOffset) + otherRest, line.greatest), otherValues, entry);
  });
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
