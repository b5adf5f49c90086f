// The middle of the best interpolation: green at the sites, from the estimates along x and along y. For
// sources that are compiled once for each instruction set.
#if defined(ZYN_DEMOSAICING_BEST_GREEN_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_BEST_GREEN_H
#undef ZYN_DEMOSAICING_BEST_GREEN_H
#else
#define ZYN_DEMOSAICING_BEST_GREEN_H
#endif

#include "demosaicing/BestVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// How much green minus colour changes along a direction, from one neighbour of a place to the other, and its
// sum over the five places of the line around it.
void SumRoughness(const BestLine& line) {
  float* const along[] = {line.workspace.Scratch(0), line.workspace.Scratch(1)};
  float* const across[] = {line.workspace.Scratch(2), line.workspace.Scratch(3)};
  for (const size_t half : {kSites, kGreens}) {
    const float* const beside = line.Of<BestWorkspace::kDifference>(0, Other(half)) + Left(line, half);
    const float* const above = line.Of<BestWorkspace::kDifferenceY>(-1, Other(half));
    const float* const below = line.Of<BestWorkspace::kDifferenceY>(1, Other(half));
    float* const toAlong = along[half];
    float* const toAcross = across[half];
    ForEntries(line, [&](ptrdiff_t entry) {
      Put(hn::AbsDiff(Get(beside, entry), Get(beside, entry + 1)), toAlong, entry);
      Put(hn::AbsDiff(Get(above, entry), Get(below, entry)), toAcross, entry);
    });
  }
  for (const size_t half : {kSites, kGreens}) {
    for (const bool acrossLines : {false, true}) {
      const float* const own = acrossLines ? across[half] : along[half];
      const float* const other = (acrossLines ? across : along)[Other(half)] + Left(line, half);
      float* const to = line.Of<BestWorkspace::kRoughness>(0, half + (acrossLines ? 2 : 0));
      ForEntries(line, [&](ptrdiff_t entry) {
        Put(((Get(own, entry - 1) + Get(own, entry + 1)) + (Get(other, entry) + Get(other, entry + 1))) +
                Get(own, entry),
            to, entry);
      });
    }
  }
}

// A direction counts by the third power of its roughness over the 5 x 5 places around a place.
void WeighDirections(const BestLine& line) {
  for (const size_t direction : {size_t{0}, size_t{1}}) {
    Lines5 sums;
    for (size_t i = 0; i < 5; ++i) {
      sums[i] = line.Of<BestWorkspace::kRoughness>(static_cast<ptrdiff_t>(i) - 2, 2 * direction + i % 2);
    }
    float* const to = direction == 0 ? line.Of<BestWorkspace::kWeight>() : line.Of<BestWorkspace::kWeightY>();
    ForEntries(line, [&](ptrdiff_t entry) {
      const V rough = Sum(sums, entry) + Number(1.0f);
      Put(Number(1.0f) / (rough * rough * rough), to, entry);
    });
  }
}

// Green from one side of a site c: green minus slope times colour, smoothed over the places 0, 1 and 2 of
// that side, plus slope times c. Each place has its sample, and green minus colour D; 0 and 2 are of c's
// colour, 1 is green.
struct Side {
  V sample1, difference1, sample2, difference2;
};
constexpr float kHere = 0.5f, kNext = 0.4f, kNextButOne = 0.1f;

HWY_INLINE V FromSide(V sample, V difference, V slope, const Side& side) {
  const V differences = (Number(kHere) * difference + Number(kNextButOne) * side.difference2) +
                        slope * (Number(kNext) * side.difference1);
  const V samples =
      (Number(kHere) * sample + Number(kNextButOne) * side.sample2) + Number(kNext) * side.sample1;
  return (differences + slope * sample) + (Number(1.0f) - slope) * samples;
}

// Green at the sites, from four sides. A side has the weight that its direction has two places further.
void MixGreen(const BestLine& line) {
  const float* const sites = line.Of<BestWorkspace::kSample>(0, kSites);
  const float* const besideSamples = line.Of<BestWorkspace::kSample>(0, kGreens) + Left(line, kSites);
  const float* const differences = line.Of<BestWorkspace::kDifference>(0, kSites);
  const float* const besideDifferences = line.Of<BestWorkspace::kDifference>(0, kGreens) + Left(line, kSites);
  const float* const slopes = line.Of<BestWorkspace::kSlope>(0, 0);
  const float* const slopesY = line.Of<BestWorkspace::kSlope>(0, 1);
  const float* const weights = line.Of<BestWorkspace::kWeight>();
  std::array<const float*, 5> samplesY, differencesY;
  for (size_t i = 0; i < 5; ++i) {
    const ptrdiff_t below = static_cast<ptrdiff_t>(i) - 2;
    samplesY[i] = line.Of<BestWorkspace::kSample>(below, i % 2);
    differencesY[i] = line.Of<BestWorkspace::kDifferenceY>(below, i % 2);
  }
  const float* const weightsAbove = line.Of<BestWorkspace::kWeightY>(-2);
  const float* const weightsBelow = line.Of<BestWorkspace::kWeightY>(2);
  float* const green = line.Of<BestWorkspace::kGreen>();
  const V zero = hn::Zero(Floats()), greatest = Number(line.greatest);

  ForEntries(line, [&](ptrdiff_t entry) {
    const V sample = Get(sites, entry);
    const V slope = Get(slopes, entry), slopeY = Get(slopesY, entry);
    const V difference = Get(differences, entry), differenceY = Get(differencesY[2], entry);
    const auto beside = [&](ptrdiff_t near, ptrdiff_t far) {
      return FromSide(sample, difference, slope,
                      {Get(besideSamples, entry + near), Get(besideDifferences, entry + near),
                       Get(sites, entry + far), Get(differences, entry + far)});
    };
    const auto above = [&](size_t near, size_t far) {
      return FromSide(sample, differenceY, slopeY,
                      {Get(samplesY[near], entry), Get(differencesY[near], entry), Get(samplesY[far], entry),
                       Get(differencesY[far], entry)});
    };
    const V weightLeft = Get(weights, entry - 1), weightRight = Get(weights, entry + 1);
    const V weightUp = Get(weightsAbove, entry), weightDown = Get(weightsBelow, entry);
    const V sum = (weightLeft * beside(0, -1) + weightRight * beside(1, 1)) +
                  (weightUp * above(1, 0) + weightDown * above(3, 4));
    const V all = (weightLeft + weightRight) + (weightUp + weightDown);
    Put(hn::Min(hn::Max(sum / all, zero), greatest), green, entry);
  });
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
