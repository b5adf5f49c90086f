#include "demosaicing/PairWindow.h"

#include <algorithm>

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/PairWindow.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

size_t SplitPairs(const uint8_t*, uint32_t, size_t, uint16_t*, uint16_t*) {
  return 0;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::CappedTag<uint8_t, 64>;
using Words = hn::Repartition<uint16_t, Bytes>;

//   e o e o e o ...   ->   e e e ...   o o o ...
struct SplitBytes {
  static constexpr size_t kPairBytes = 2;
  HWY_INLINE void operator()(const uint8_t* from, uint16_t* even, uint16_t* odd) const {
    const auto pairs = hn::BitCast(Words(), hn::LoadU(Bytes(), from));
    hn::StoreU(hn::And(pairs, hn::Set(Words(), uint16_t{0xFF})), Words(), even);
    hn::StoreU(hn::ShiftRight<8>(pairs), Words(), odd);
  }
};

struct SplitWords {
  static constexpr size_t kPairBytes = 4;
  HWY_INLINE void operator()(const uint8_t* from, uint16_t* even, uint16_t* odd) const {
    const auto most = hn::Set(Words(), greatest);
    const auto lower = hn::BitCast(Words(), hn::LoadU(Bytes(), from));
    const auto upper = hn::BitCast(Words(), hn::LoadU(Bytes(), from + hn::Lanes(Bytes())));
    hn::StoreU(hn::Min(hn::ConcatEven(Words(), upper, lower), most), Words(), even);
    hn::StoreU(hn::Min(hn::ConcatOdd(Words(), upper, lower), most), Words(), odd);
  }
  uint16_t greatest;
};

template <typename Split>
HWY_INLINE void Run(const Split& split, const uint8_t* from, size_t pairs, uint16_t* even, uint16_t* odd) {
  const size_t lanes = hn::Lanes(Words());
  const auto one = [&](size_t pair) { split(from + pair * Split::kPairBytes, even + pair, odd + pair); };
  for (size_t pair = 0; pair + lanes <= pairs; pair += lanes) one(pair);
  if (pairs % lanes != 0) one(pairs - lanes);
}

// Whole vectors, the last of which ends with the pairs and may do some a second time. Returns how many were
// split: all, or none when there is not even one vector of them.
size_t SplitPairs(const uint8_t* from, uint32_t depth, size_t pairs, uint16_t* even, uint16_t* odd) {
  if (pairs < hn::Lanes(Words())) return 0;
  if (depth == 8) {
    Run(SplitBytes(), from, pairs, even, odd);
  } else {
    Run(SplitWords{static_cast<uint16_t>(Greatest(depth))}, from, pairs, even, odd);
  }
  return pairs;
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {
namespace {

HWY_EXPORT(SplitPairs);

}  // namespace

void ReadPairs(const Mosaic& mosaic, ptrdiff_t line, size_t column, size_t pairs, PairLine* to) {
  const uint8_t* const from = mosaic.bytes + Mirrored(line, mosaic.height) * mosaic.pitch;
  uint16_t* const even = to->even.data() + PairLine::kMargin;
  uint16_t* const odd = to->odd.data() + PairLine::kMargin;
  const auto one = [&](ptrdiff_t pair) {
    const ptrdiff_t place = static_cast<ptrdiff_t>(column) + 2 * pair;
    even[pair] = SampleAt(from, mosaic.depth, Mirrored(place, mosaic.width));
    odd[pair] = SampleAt(from, mosaic.depth, Mirrored(place + 1, mosaic.width));
  };

  const size_t whole = std::min(pairs, (mosaic.width - column) / 2);
  const uint8_t* const start = from + column * SampleBytes(mosaic.depth);
  const size_t split = HWY_DYNAMIC_DISPATCH(SplitPairs)(start, mosaic.depth, whole, even, odd);
  one(-1);
  for (size_t pair = split; pair <= pairs; ++pair) one(static_cast<ptrdiff_t>(pair));
}

}  // namespace Demosaicing
#endif
