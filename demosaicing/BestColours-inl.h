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

// How the colour of a site changes with green: the slope that fits best to the second differences, bends, of
// the 3 x 3 sites of this colour around it. It is drawn towards 1 where it explains little, as above.
enum ColourSum : size_t { kGreenSquare, kBoth, kColourSquare, kColourSums };

constexpr float kColourPrior = 9.0f;  // 1 for each site of the window
constexpr float kColourTrust = 0.1f;
constexpr float kLeastFit = -3.0f, kMostFit = 3.0f;

void SumColours(const BestLine& line) {
  struct Cross {
    const float* middle;
    const float* above;
    const float* below;
  };
  const Cross colours = {line.Of<BestWorkspace::kSample>(0, kSites),
                         line.Of<BestWorkspace::kSample>(-2, kSites),
                         line.Of<BestWorkspace::kSample>(2, kSites)};
  const Cross greens = {line.Of<BestWorkspace::kGreen>(), line.Of<BestWorkspace::kGreen>(-2),
                        line.Of<BestWorkspace::kGreen>(2)};
  const auto bend = [](const Cross& at, ptrdiff_t entry) {
    return Number(4.0f) * Get(at.middle, entry) - ((Get(at.middle, entry - 1) + Get(at.middle, entry + 1)) +
                                                   (Get(at.above, entry) + Get(at.below, entry)));
  };
  float* const products = line.workspace.Scratch(0);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V green = bend(greens, entry), colour = bend(colours, entry);
    Put(green * green, Numbered(products, kGreenSquare), entry);
    Put(green * colour, Numbered(products, kBoth), entry);
    Put(colour * colour, Numbered(products, kColourSquare), entry);
  });
  float* const sums = line.Of<BestWorkspace::kColourSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t sum = 0; sum < kColourSums; ++sum) {
      Put(Sum3(Numbered(products, sum), entry), Numbered(sums, sum), entry);
    }
  });
}

// Slopes by their weights, and the weights: a slope counts the more the less it leaves unexplained.
void FitColours(const BestLine& line) {
  Lines3 lines;
  for (size_t i = 0; i < 3; ++i)
    lines[i] = line.Of<BestWorkspace::kColourSums>(2 * static_cast<ptrdiff_t>(i) - 2);
  float* const fits = line.workspace.Scratch(0);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V zero = hn::Zero(Floats()), one = Number(1.0f), prior = Number(kColourPrior);
    const V square = Sum(lines, entry, kGreenSquare), both = Sum(lines, entry, kBoth),
            colourSquare = Sum(lines, entry, kColourSquare);
    const V x = square + prior, y = both + prior;
    V slope = y / x;
    const V error = hn::Max((colourSquare + prior) - slope * y, zero);
    const V beyond = slope - one;
    const V better = x * (beyond * beyond);
    slope = one + (beyond * better) / ((better + Number(kColourTrust) * error) + Number(0.001f));
    slope = hn::Min(hn::Max(slope, Number(kLeastFit)), Number(kMostFit));

    const V product = slope * both;
    const V left = hn::Max((colourSquare - (product + product)) + (slope * slope) * square, zero) + prior;
    const V weight = one / left;
    Put(weight, Numbered(fits, 0), entry);
    Put(slope * weight, Numbered(fits, 1), entry);
  });
  float* const sums = line.Of<BestWorkspace::kFitSums>();
  ForEntries(line, [&](ptrdiff_t entry) {
    for (size_t fit = 0; fit < 2; ++fit) Put(Sum3(Numbered(fits, fit), entry), Numbered(sums, fit), entry);
  });
}

// The mean of the 3 x 3 slopes around a site.
void MeanFits(const BestLine& line) {
  Lines3 lines;
  for (size_t i = 0; i < 3; ++i)
    lines[i] = line.Of<BestWorkspace::kFitSums>(2 * static_cast<ptrdiff_t>(i) - 2);
  float* const slopes = line.Of<BestWorkspace::kFit>();
  ForEntries(line, [&](ptrdiff_t entry) { Put(Sum(lines, entry, 1) / Sum(lines, entry, 0), slopes, entry); });
}

// A place that lies before or behind the one of interest: its colour, and its green.
struct Place {
  V colour, green;
};

// Two places in a line through the one of interest, which has a green of its own, and a slope: what the slope
// times green leaves of the colours, their rests; and how rough that line is, by the rests and by green.
struct Through {
  HWY_INLINE Through(V here, V slope, const Place& before, const Place& behind) {
    const V restBefore = before.colour - slope * before.green,
            restBehind = behind.colour - slope * behind.green;
    rests = restBefore + restBehind;
    rough = (hn::AbsDiff(restBefore, restBehind) +
             (hn::AbsDiff(here, before.green) + hn::AbsDiff(here, behind.green))) +
            Number(4.0f);
  }
  V rests, rough;
};

// The colour by green and the rests, of which those of the smoother line count more.
HWY_INLINE V Mixed(V here, V slope, const Through& one, const Through& two) {
  const V weightOne = two.rough * two.rough, weightTwo = one.rough * one.rough;
  const V rest = (Number(0.5f) * (weightOne * one.rests + weightTwo * two.rests)) / (weightOne + weightTwo);
  return slope * here + rest;
}

// The third colour at a site, from the four sites of that colour around it.
//
//   nw    ne
//      c
//   sw    se
void MixAtSites(const BestLine& line) {
  const ptrdiff_t left = Left(line, kSites);
  const float* const slopesAbove = line.Of<BestWorkspace::kFit>(-1) + left;
  const float* const slopesBelow = line.Of<BestWorkspace::kFit>(1) + left;
  const float* const coloursAbove = line.Of<BestWorkspace::kSample>(-1, kSites) + left;
  const float* const coloursBelow = line.Of<BestWorkspace::kSample>(1, kSites) + left;
  const float* const greens = line.Of<BestWorkspace::kGreen>();
  const float* const greensAbove = line.Of<BestWorkspace::kGreen>(-1) + left;
  const float* const greensBelow = line.Of<BestWorkspace::kGreen>(1) + left;
  float* const others = line.Of<BestWorkspace::kOther>();
  ForEntries(line, [&](ptrdiff_t entry) {
    const V here = Get(greens, entry);
    const V slope = Number(0.25f) * ((Get(slopesAbove, entry) + Get(slopesBelow, entry + 1)) +
                                     (Get(slopesAbove, entry + 1) + Get(slopesBelow, entry)));
    const auto above = [&](ptrdiff_t at) -> Place { return {Get(coloursAbove, at), Get(greensAbove, at)}; };
    const auto below = [&](ptrdiff_t at) -> Place { return {Get(coloursBelow, at), Get(greensBelow, at)}; };
    Put(Mixed(here, slope, Through(here, slope, above(entry), below(entry + 1)),
              Through(here, slope, above(entry + 1), below(entry))),
        others, entry);
  });
}

// Both colours at the greens. The line's own colour has its sites to the left and right, the other one above
// and below; the two places that are left have what was found above.
void MixAtGreens(const BestLine& line, float* ownColours, float* otherColours) {
  const ptrdiff_t left = Left(line, kGreens);
  const float* const greens = line.Of<BestWorkspace::kSample>(0, kGreens);
  const float* const greensBeside = line.Of<BestWorkspace::kGreen>() + left;
  const float* const greensAbove = line.Of<BestWorkspace::kGreen>(-1);
  const float* const greensBelow = line.Of<BestWorkspace::kGreen>(1);
  const float* const slopesBeside = line.Of<BestWorkspace::kFit>() + left;
  const float* const slopesAbove = line.Of<BestWorkspace::kFit>(-1);
  const float* const slopesBelow = line.Of<BestWorkspace::kFit>(1);
  const float* const sitesBeside = line.Of<BestWorkspace::kSample>(0, kSites) + left;
  const float* const sitesAbove = line.Of<BestWorkspace::kSample>(-1, kSites);
  const float* const sitesBelow = line.Of<BestWorkspace::kSample>(1, kSites);
  const float* const othersBeside = line.Of<BestWorkspace::kOther>() + left;
  const float* const othersAbove = line.Of<BestWorkspace::kOther>(-1);
  const float* const othersBelow = line.Of<BestWorkspace::kOther>(1);
  ForEntries(line, [&](ptrdiff_t entry) {
    const V here = Get(greens, entry);
    const V greenLeft = Get(greensBeside, entry), greenRight = Get(greensBeside, entry + 1);
    const V greenAbove = Get(greensAbove, entry), greenBelow = Get(greensBelow, entry);
    const V own = Number(0.5f) * (Get(slopesBeside, entry) + Get(slopesBeside, entry + 1));
    Put(Mixed(
            here, own,
            Through(here, own, {Get(sitesBeside, entry), greenLeft},
                    {Get(sitesBeside, entry + 1), greenRight}),
            Through(here, own, {Get(othersAbove, entry), greenAbove}, {Get(othersBelow, entry), greenBelow})),
        ownColours, entry);
    const V other = Number(0.5f) * (Get(slopesAbove, entry) + Get(slopesBelow, entry));
    Put(Mixed(
            here, other,
            Through(here, other, {Get(othersBeside, entry), greenLeft},
                    {Get(othersBeside, entry + 1), greenRight}),
            Through(here, other, {Get(sitesAbove, entry), greenAbove}, {Get(sitesBelow, entry), greenBelow})),
        otherColours, entry);
  });
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
