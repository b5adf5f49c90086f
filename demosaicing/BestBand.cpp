#include "demosaicing/BestBand.h"

#include <algorithm>
#include <new>

#include "demosaicing/Lines.h"

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time. All compute the same: sums and products are never joined into one operation, and
// divisions are exact.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/BestBand.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>

#include "demosaicing/BestColours-inl.h"
#include "demosaicing/BestDirections-inl.h"
#include "demosaicing/BestGreen-inl.h"
#include "demosaicing/BestVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

using Doubles = hn::Rebind<int32_t, Floats>;  // lanes of 32 bits, each a pair of samples of 16

// The samples of a line in units of 8 bits: s n s n ... -> s s ...  n n ...
void SplitLine(const BestLine& line, const uint16_t* words, float unit) {
  const bool odd = line.Odd() != 0;
  float* const even = line.Of<BestWorkspace::kSample>(0, odd ? kGreens : kSites);
  float* const uneven = line.Of<BestWorkspace::kSample>(0, odd ? kSites : kGreens);
  ForEntries(line, [&](ptrdiff_t entry) {
    const hn::RebindToUnsigned<Doubles> tag;
    const auto pairs =
        hn::LoadU(tag, static_cast<const uint32_t*>(static_cast<const void*>(words + 2 * entry)));
    const auto first = hn::BitCast(Doubles(), hn::And(pairs, hn::Set(tag, 0xFFFFu)));
    const auto second = hn::BitCast(Doubles(), hn::ShiftRight<16>(pairs));
    Put(hn::ConvertTo(Floats(), first) * Number(unit), even, entry);
    Put(hn::ConvertTo(Floats(), second) * Number(unit), uneven, entry);
  });
}

// The way back, rounded and within the depth.
void JoinLine(const BestLine& line, const float* sites, const float* greens, float scale, uint16_t* words) {
  const float* const even = line.Odd() != 0 ? greens : sites;
  const float* const uneven = line.Odd() != 0 ? sites : greens;
  ForEntries(line, [&](ptrdiff_t entry) {
    const auto rounded = [&](const float* from) {
      const V within = hn::Min(hn::Max(Get(from, entry), hn::Zero(Floats())), Number(line.greatest));
      return hn::ConvertTo(Doubles(), within * Number(scale) + Number(0.5f));
    };
    const auto pairs = hn::Or(rounded(even), hn::ShiftLeft<16>(rounded(uneven)));
    hn::StoreU(pairs, Doubles(), static_cast<int32_t*>(static_cast<void*>(words + 2 * entry)));
  });
}

// A step makes its part of a line `delay` lines above the one that was read last; those that it needs from
// below have been made by then.
struct Step {
  void (*make)(const BestLine& line);
  ptrdiff_t delay;
};
constexpr Step kSteps[] = {
    {BendAbove, 2},
    {SumAbove, 4},
    {SumBeside, 4},
    {EstimateBeside, 6},
    {EstimateAboveAtSites, 6},
    {EstimateAboveAtGreens, 7},
    {SumRoughness, 8},
    {WeighDirections, 10},
    {MixGreen, 12},
    {SumColours, 14},
    {FitColours, 16},
    {MeanFits, 18},
    {MixAtSites, 19},
};

void FillBand(const Mosaic& mosaic, const Picture& picture, const BestBand& band, BestWorkspace& workspace) {
  const auto scale = static_cast<float>(1 << (mosaic.depth - 8));
  const ptrdiff_t start = band.left - BestWorkspace::kSurroundings;
  const auto redX = static_cast<ptrdiff_t>(mosaic.redX), redY = static_cast<ptrdiff_t>(mosaic.redY);
  BestLine line{workspace, 0, (band.right - band.left + 1) / 2 + BestWorkspace::kSurroundings,
                static_cast<float>(Greatest(mosaic.depth)) / scale};
  // The first columns of the picture may belong to the band's pairs and not to the picture.
  const ptrdiff_t first = std::max(band.left, redX);
  const auto count = static_cast<size_t>(band.right - first);

  const bool pastCaches = GoesPastCaches(mosaic);
  for (ptrdiff_t newest = band.top - kBestReach; newest < band.bottom + kBestReach; ++newest) {
    line.line = newest;
    uint16_t* const words = workspace.Words(0);
    ReadLine(mosaic, newest - redY, start - redX, static_cast<size_t>(2 * line.entries), words);
    SplitLine(line, words, 1.0f / scale);
    for (const Step& step : kSteps) {
      line.line = newest - step.delay;
      // Further above nobody needs it.
      if (line.line >= band.top - (kBestReach - step.delay)) step.make(line);
    }
    line.line = newest - kBestReach;
    if (line.line < band.top) continue;

    float* const ownAtGreens = workspace.Scratch(0);
    float* const otherAtGreens = workspace.Scratch(1);
    MixAtGreens(line, ownAtGreens, otherAtGreens);
    const float* const sites = line.Of<BestWorkspace::kSample>(0, kSites);
    const float* const greens = line.Of<BestWorkspace::kSample>(0, kGreens);
    uint16_t* const own = workspace.Words(0);
    uint16_t* const green = workspace.Words(1);
    uint16_t* const other = workspace.Words(2);
    JoinLine(line, sites, ownAtGreens, scale, own);
    JoinLine(line, line.Of<BestWorkspace::kGreen>(), greens, scale, green);
    JoinLine(line, line.Of<BestWorkspace::kOther>(), otherAtGreens, scale, other);
    const bool redLine = line.Odd() == 0;
    const ptrdiff_t skip = first - start;
    WritePixels(picture, mosaic.depth, static_cast<size_t>(line.line - redY),
                static_cast<size_t>(first - redX), count, (redLine ? own : other) + skip, green + skip,
                (redLine ? other : own) + skip, pastCaches);
  }
  EndWrites(pastCaches);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {
namespace {

HWY_EXPORT(FillBand);

template <typename T>
hwy::AlignedFreeUniquePtr<T[]> Zeroes(size_t count) {
  auto made = hwy::AllocateAligned<T>(count);
  if (!made) throw std::bad_alloc();
  std::fill_n(made.get(), count, T{0});
  return made;
}

}  // namespace

BestWorkspace::BestWorkspace()
    : floats(Zeroes<float>((First(kPlanes) + kScratches) * static_cast<size_t>(kStride))),
      words(Zeroes<uint16_t>(3 * 2 * static_cast<size_t>(kEntries))) {}

void InterpolateBestBand(const Mosaic& mosaic, const Picture& picture, const BestBand& band,
                         BestWorkspace& workspace) {
  HWY_DYNAMIC_DISPATCH(FillBand)(mosaic, picture, band, workspace);
}

}  // namespace Demosaicing
#endif
