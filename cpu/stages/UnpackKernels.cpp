#include "cpu/stages/UnpackKernels.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "QTD/frame/ParallelSlices.h"
#include "cpu/stages/PackedGroups.h"

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "cpu/stages/UnpackKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace UnpackKernels {
namespace HWY_NAMESPACE {
namespace {

// A block is what is unpacked at once: `kSamples` samples from `kBytes` bytes. It reads `kReadBytes`.

#if HWY_TARGET == HWY_SCALAR

template <typename Layout>
struct Block {
  static constexpr size_t kSamples = Layout::kGroupSamples, kBytes = Layout::kGroupBytes;
  static constexpr size_t kReadBytes = kBytes;

  static HWY_INLINE void Unpack(const uint8_t* from, uint16_t* to) { Layout::Group(from, to); }
  static HWY_INLINE void UnpackPastCaches(const uint8_t* from, uint16_t* to) { Layout::Group(from, to); }
};

#else

namespace hn = hwy::HWY_NAMESPACE;

// Vectors of 16 bytes on every processor: the loops wait for memory, and a vector of packed bytes must not
// reach far behind its samples.
constexpr size_t kVector = 16, kLanes = kVector / 2;
using Bytes = hn::FixedTag<uint8_t, kVector>;
using Words = hn::Repartition<uint16_t, Bytes>;
using Vector = hn::Vec<Words>;

using Places = std::array<uint8_t, kVector>;   // for each byte of a vector the source byte that it becomes
using Factors = std::array<uint16_t, kLanes>;  // one for each word

template <typename Layout>
struct Spread;

// Each word takes the two bytes that its sample lies in. The product throws out the bits above the sample,
// the shift those below:
//
//   10 bits, p1:  b2 b1 = |p2..p1........p0|  *16 ->  |p1........p0....|  >>6 ->  |......p1........|
template <size_t kBits>
struct Spread<Stream<kBits>> {
  static constexpr Places SourceBytes() {
    Places places{};
    for (size_t n = 0; n < kVector; ++n) places[n] = static_cast<uint8_t>(n / 2 * kBits / 8 + n % 2);
    return places;
  }
  static constexpr Factors Products() {
    Factors factors{};
    for (size_t n = 0; n < kLanes; ++n) {
      factors[n] = static_cast<uint16_t>(1u << (16 - kBits - n * kBits % 8));
    }
    return factors;
  }
  static HWY_INLINE Vector Samples(Vector words) {
    static constexpr Factors kProducts = Products();
    return hn::ShiftRight<16 - kBits>(hn::Mul(words, hn::LoadU(Words(), kProducts.data())));
  }
};

// Each word takes its sample's high byte and the middle byte below it. The shift brings the high bits into
// place; the low ones come from the middle byte, for the second sample from its upper half:
//
//   10 bits:  p0 = |b0......--p1--p0|  >>6 ->  |......b0......--|  and the low bits of  |b0......--p1--p0|
//             p1 = |b2......--p1--p0|  >>6 ->  |......b2......--|  and the low bits of  |....b2......--p1|
template <size_t kBits>
struct Spread<Grouped<kBits>> {
  static constexpr Places SourceBytes() {
    Places places{};
    for (size_t n = 0; n < kLanes; ++n) {
      places[2 * n] = static_cast<uint8_t>(n / 2 * 3 + 1);
      places[2 * n + 1] = static_cast<uint8_t>(n / 2 * 3 + n % 2 * 2);
    }
    return places;
  }
  static HWY_INLINE Vector Samples(Vector words) {
    const Vector lowMask = hn::Set(Words(), static_cast<uint16_t>(Grouped<kBits>::kLowMask));
    const Vector low = hn::OddEven(hn::ShiftRight<4>(words), words);
    return hn::Or(hn::And(lowMask, low), hn::AndNot(lowMask, hn::ShiftRight<16 - kBits>(words)));
  }
};

template <typename Layout>
struct Block {
  static constexpr size_t kSamples = kLanes;
  static constexpr size_t kBytes = kLanes / Layout::kGroupSamples * Layout::kGroupBytes;
  static constexpr size_t kReadBytes = kVector;

  static HWY_INLINE Vector Samples(const uint8_t* from) {
    static constexpr Places kPlaces = Spread<Layout>::SourceBytes();
    const auto bytes = hn::LoadU(Bytes(), from);
    const auto words = hn::TableLookupBytes(bytes, hn::LoadU(Bytes(), kPlaces.data()));
    return Spread<Layout>::Samples(hn::BitCast(Words(), words));
  }
  static HWY_INLINE void Unpack(const uint8_t* from, uint16_t* to) { hn::StoreU(Samples(from), Words(), to); }
  static HWY_INLINE void UnpackPastCaches(const uint8_t* from, uint16_t* to) {
    hn::Stream(Samples(from), Words(), to);
  }
};

#endif  // HWY_TARGET == HWY_SCALAR

// Where a run of samples comes from and goes to. `source` is at the start of a group.
struct Place {
  size_t source;  // offset in the source
  uint16_t* target;
};

// `count` samples behind the first `skip` of a block, which may reach beyond the source.
template <typename Layout>
HWY_INLINE void PartOfBlock(const Job& job, const Place& at, size_t skip, size_t count) {
  uint8_t bytes[Block<Layout>::kReadBytes] = {};
  uint16_t samples[Block<Layout>::kSamples];
  if (at.source < job.sourceBytes) {
    std::memcpy(bytes, job.source + at.source, std::min(sizeof(bytes), job.sourceBytes - at.source));
  }
  Block<Layout>::Unpack(bytes, samples);
  std::memcpy(at.target, samples + skip, count * sizeof(uint16_t));
}

// Samples before the first word at the start of a vector in memory.
HWY_INLINE size_t SamplesToVector(const uint16_t* target) {
  return (0 - reinterpret_cast<uintptr_t>(target)) % 16 / sizeof(uint16_t);
}

// A run goes by whole blocks, what is left over by parts of blocks. With `pastCaches`, where its groups allow
// it, it has a part in front, so that the blocks begin where vectors do:
//
//   |part|past|past|past|past|past|part|
template <typename Layout>
HWY_INLINE void Run(const Job& job, Place at, size_t count, bool pastCaches) {
  using B = Block<Layout>;
  const auto advance = [&](size_t samples) {
    at.source += samples / Layout::kGroupSamples * Layout::kGroupBytes;
    at.target += samples;
    count -= samples;
  };
  const auto unpackParts = [&](size_t samples) {
    while (samples != 0) {
      const size_t part = std::min(samples, B::kSamples);
      PartOfBlock<Layout>(job, at, 0, part);
      advance(part);
      samples -= part;
    }
  };
  if (pastCaches) {
    const size_t lead = SamplesToVector(at.target);
    pastCaches = lead % Layout::kGroupSamples == 0 && lead <= count;
    if (pastCaches) unpackParts(lead);
  }
  const size_t within = at.source + B::kReadBytes <= job.sourceBytes
                            ? (job.sourceBytes - at.source - B::kReadBytes) / B::kBytes + 1
                            : 0;
  if (const size_t blocks = std::min(count / B::kSamples, within)) {
    const uint8_t* HWY_RESTRICT from = job.source + at.source;
    uint16_t* HWY_RESTRICT to = at.target;
    if (pastCaches) {
      for (size_t n = 0; n < blocks; ++n) B::UnpackPastCaches(from + n * B::kBytes, to + n * B::kSamples);
    } else {
      for (size_t n = 0; n < blocks; ++n) B::Unpack(from + n * B::kBytes, to + n * B::kSamples);
    }
    advance(blocks * B::kSamples);
  }
  unpackParts(count);
}

// A line of an image that is one stream: it may begin amid a group.
template <typename Layout>
HWY_INLINE void LineOfStream(const Job& job, size_t line, bool pastCaches) {
  const size_t sample = line * job.width, begun = sample % Layout::kGroupSamples;
  Place at{sample / Layout::kGroupSamples * Layout::kGroupBytes, job.target + line * job.targetPitch};
  size_t count = job.width;
  if (begun != 0) {
    const size_t rest = std::min(count, Layout::kGroupSamples - begun);
    PartOfBlock<Layout>(job, at, begun, rest);
    at = {at.source + Layout::kGroupBytes, at.target + rest};
    count -= rest;
  }
  Run<Layout>(job, at, count, pastCaches);
}

template <typename Layout>
HWY_INLINE void Lines(const Job& job, size_t first, size_t end, bool pastCaches) {
  const size_t lineBytes = LineBytes(job.packing, job.width);
  const bool oneStream = IsOneStream(job.packing, job.width);
  for (size_t line = first; line < end; ++line) {
    if (oneStream) {
      LineOfStream<Layout>(job, line, pastCaches);
    } else {
      Run<Layout>(job, {line * lineBytes, job.target + line * job.targetPitch}, job.width, pastCaches);
    }
  }
  if (pastCaches) hwy::FlushStream();
}

// The lines from `first` to before `end`.
void RunLines(const Job& job, size_t first, size_t end, bool pastCaches) {
  switch (job.packing) {
    case Packing::kMono10g:
      return Lines<Grouped<10>>(job, first, end, pastCaches);
    case Packing::kMono12g:
      return Lines<Grouped<12>>(job, first, end, pastCaches);
    case Packing::kMono10p:
      return Lines<Stream<10>>(job, first, end, pastCaches);
    case Packing::kMono12p:
      return Lines<Stream<12>>(job, first, end, pastCaches);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace UnpackKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace UnpackKernels {
namespace {

HWY_EXPORT(RunLines);

// The same limits as in ImageKernels.cpp: what one thread takes at a time, source and target together, and
// the size from which on the result is stored past the caches.
constexpr size_t kSliceBytes = size_t{1} << 20;
constexpr size_t kPastCachesBytes = size_t{16} << 20;

}  // namespace

size_t LineBytes(Packing packing, size_t width) {
  switch (packing) {
    case Packing::kMono10g:
    case Packing::kMono12g:
      return (width * 3 + 1) >> 1;
    case Packing::kMono10p:
      return (width * 5) >> 2;
    case Packing::kMono12p:
      return (width * 3) >> 1;
  }
  return 0;
}

bool IsOneStream(Packing packing, size_t width) {
  return packing == Packing::kMono12p && width % 4 != 0;
}

void RunJob(const Job& job) {
  const bool oneStream = IsOneStream(job.packing, job.width);
  const size_t lineBytes = LineBytes(job.packing, job.width) + job.width * sizeof(uint16_t);
  const bool pastCaches = lineBytes * job.height >= kPastCachesBytes;
  const size_t sliceLines =
      oneStream ? job.height : std::max<size_t>(1, kSliceBytes / std::max<size_t>(1, lineBytes));
  QTD::ForSlices(job.height, std::max<size_t>(1, sliceLines), [&](size_t first, size_t end) {
    HWY_DYNAMIC_DISPATCH(RunLines)(job, first, end, pastCaches);
  });
}

}  // namespace UnpackKernels
#endif
