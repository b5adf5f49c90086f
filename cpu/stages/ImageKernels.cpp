#include "cpu/stages/ImageKernels.h"

#include <algorithm>
#include <array>

#include "QTD/frame/ParallelSlices.h"
#include "cpu/stages/PixelSteps.h"

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "cpu/stages/ImageKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ImageKernels {
namespace HWY_NAMESPACE {
namespace {

template <typename Pixels>
HWY_INLINE void PixelByPixel(const Pixels& step, const uint8_t* from, uint8_t* to, size_t count) {
  for (size_t pixel = 0; pixel < count; ++pixel) {
    step.Pixel(from + pixel * Pixels::kSource, to + pixel * Pixels::kTarget);
  }
}

#if HWY_TARGET == HWY_SCALAR

template <typename Pixels>
HWY_INLINE void Line(const Pixels& step, const uint8_t* from, uint8_t* to, size_t count, bool) {
  PixelByPixel(step, from, to, count);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// Vectors of 16 bytes on every processor: wider ones are no faster here, as the loops wait for memory, and
// these leave fewer pixels at the ends of a line to be done twice.
constexpr size_t kVector = 16;
using Bytes = hn::FixedTag<uint8_t, kVector>;
using Words = hn::Repartition<uint16_t, Bytes>;
using Vector = hn::Vec<Bytes>;

// Where the vectors of a result go.
struct Store {
  HWY_INLINE void operator()(Vector bytes, uint8_t* to) const { hn::StoreU(bytes, Bytes(), to); }
};
struct StorePastCaches {
  HWY_INLINE void operator()(Vector bytes, uint8_t* to) const { hn::Stream(bytes, Bytes(), to); }
};

// For each byte of a result the byte of a source vector that it is taken from; 0x80 for none.
using Places = std::array<uint8_t, kVector>;
constexpr uint8_t kNone = 0x80;

HWY_INLINE Vector Load(const Places& places) {
  return hn::LoadU(Bytes(), places.data());
}

// One vector of samples becomes three: byte `n` of the result comes from sample n / 3.
template <size_t kSampleBytes>
struct Spreading {
  static constexpr std::array<Places, 3> Table() {
    std::array<Places, 3> table{};
    for (size_t n = 0; n < 3 * kVector; ++n) {
      const size_t sample = n / kSampleBytes / 3;
      table[n / kVector][n % kVector] = static_cast<uint8_t>(sample * kSampleBytes + n % kSampleBytes);
    }
    return table;
  }

  template <typename Put>
  static HWY_INLINE void Run(Vector grey, uint8_t* to, Put put) {
    static constexpr std::array<Places, 3> kTable = Table();
    for (size_t part = 0; part < 3; ++part) {
      put(hn::TableLookupBytes(grey, Load(kTable[part])), to + part * kVector);
    }
  }
};

// Three vectors of samples become three: in each pixel the first and the third sample change places. Pixels
// lie across the borders of the vectors, so that a result takes bytes from up to three of them.
template <size_t kSampleBytes>
struct Swapping {
  static constexpr std::array<std::array<Places, 3>, 3> Table() {
    std::array<std::array<Places, 3>, 3> table{};
    for (size_t n = 0; n < 3 * kVector; ++n) {
      const size_t sample = n / kSampleBytes, channel = sample % 3;
      const size_t origin = (sample - channel + 2 - channel) * kSampleBytes + n % kSampleBytes;
      for (size_t source = 0; source < 3; ++source) {
        const bool here = origin / kVector == source;
        table[n / kVector][source][n % kVector] = here ? static_cast<uint8_t>(origin % kVector) : kNone;
      }
    }
    return table;
  }

  template <typename Put>
  static HWY_INLINE void Run(Vector first, Vector second, Vector third, uint8_t* to, Put put) {
    static constexpr std::array<std::array<Places, 3>, 3> kTable = Table();
    for (size_t part = 0; part < 3; ++part) {
      const auto a = hn::TableLookupBytesOr0(first, Load(kTable[part][0]));
      const auto b = hn::TableLookupBytesOr0(second, Load(kTable[part][1]));
      const auto c = hn::TableLookupBytesOr0(third, Load(kTable[part][2]));
      put(hn::Or(hn::Or(a, b), c), to + part * kVector);
    }
  }
};

HWY_INLINE hn::Vec<Words> ReducedWords(const Reducing& step, const uint8_t* from) {
  const auto words = hn::BitCast(Words(), hn::LoadU(Bytes(), from));
  return hn::Min(hn::ShiftRightSame(words, step.shift), hn::Set(Words(), uint16_t{255}));
}

HWY_INLINE Vector ReducedBytes(const Reducing& step, const uint8_t* from) {
  const auto lower = hn::BitCast(Bytes(), ReducedWords(step, from));
  const auto upper = hn::BitCast(Bytes(), ReducedWords(step, from + kVector));
  return hn::ConcatEven(Bytes(), upper, lower);
}

// Blocks: the pixels of one or three result vectors. What a step does is drawn in PixelSteps.h.

template <typename Put>
HWY_INLINE void Block(const CopyByte&, const uint8_t* from, uint8_t* to, Put put) {
  put(hn::LoadU(Bytes(), from), to);
}

template <typename Put>
HWY_INLINE void Block(const Reduce& step, const uint8_t* from, uint8_t* to, Put put) {
  put(ReducedBytes(step, from), to);
}

template <typename Put>
HWY_INLINE void Block(const ReduceSpread& step, const uint8_t* from, uint8_t* to, Put put) {
  Spreading<1>::Run(ReducedBytes(step, from), to, put);
}

template <typename Put>
HWY_INLINE void Block(const Spread8&, const uint8_t* from, uint8_t* to, Put put) {
  Spreading<1>::Run(hn::LoadU(Bytes(), from), to, put);
}

template <typename Put>
HWY_INLINE void Block(const Spread16&, const uint8_t* from, uint8_t* to, Put put) {
  Spreading<2>::Run(hn::LoadU(Bytes(), from), to, put);
}

template <typename Put>
HWY_INLINE void Block(const ReduceSwap& step, const uint8_t* from, uint8_t* to, Put put) {
  Swapping<1>::Run(ReducedBytes(step, from), ReducedBytes(step, from + 2 * kVector),
                   ReducedBytes(step, from + 4 * kVector), to, put);
}

template <size_t kSampleBytes, typename Put>
HWY_INLINE void SwapBlock(const uint8_t* from, uint8_t* to, Put put) {
  const auto first = hn::LoadU(Bytes(), from);
  const auto second = hn::LoadU(Bytes(), from + kVector);
  const auto third = hn::LoadU(Bytes(), from + 2 * kVector);
  Swapping<kSampleBytes>::Run(first, second, third, to, put);
}

template <typename Put>
HWY_INLINE void Block(const Swap8&, const uint8_t* from, uint8_t* to, Put put) {
  SwapBlock<1>(from, to, put);
}

template <typename Put>
HWY_INLINE void Block(const Swap16&, const uint8_t* from, uint8_t* to, Put put) {
  SwapBlock<2>(from, to, put);
}

// The first pixel at the start of a vector in memory; `end` when there is none before it.
HWY_INLINE size_t FirstAligned(const uint8_t* line, size_t pixelBytes, size_t end) {
  const auto address = reinterpret_cast<uintptr_t>(line);
  size_t pixel = 0;
  while (pixel < end && (address + pixel * pixelBytes) % kVector != 0) ++pixel;
  return pixel;
}

// A line goes by whole blocks, the last of which ends with the line and may do some pixels a second time.
// With `pastCaches` only the first and the last block are stored as usual:
//
//   |usual|
//      |past|past|past|past|past|
//                             |usual|
template <typename Pixels>
HWY_INLINE void Line(const Pixels& step, const uint8_t* HWY_RESTRICT from, uint8_t* HWY_RESTRICT to,
                     size_t count, bool pastCaches) {
  constexpr size_t kSource = Pixels::kSource, kTarget = Pixels::kTarget;
  constexpr size_t kBlock = kTarget % 3 == 0 ? 3 * kVector / kTarget : kVector / kTarget;  // pixels
  if (count < kBlock) return PixelByPixel(step, from, to, count);

  size_t pixel = 0;
  const size_t aligned = pastCaches ? FirstAligned(to, kTarget, kBlock) : kBlock;
  if (aligned < kBlock) {
    if (aligned != 0) Block(step, from, to, Store());
    for (pixel = aligned; pixel + kBlock <= count; pixel += kBlock) {
      Block(step, from + pixel * kSource, to + pixel * kTarget, StorePastCaches());
    }
  }
  for (; pixel + kBlock <= count; pixel += kBlock) {
    Block(step, from + pixel * kSource, to + pixel * kTarget, Store());
  }
  if (pixel < count) Block(step, from + (count - kBlock) * kSource, to + (count - kBlock) * kTarget, Store());
}

#endif  // HWY_TARGET == HWY_SCALAR

template <typename Pixels>
HWY_INLINE void Lines(const Pixels& step, const Job& job, size_t first, size_t end, bool pastCaches) {
  for (size_t line = first; line < end; ++line) {
    Line(step, job.source + line * job.sourcePitch, job.target + line * job.targetPitch, job.width,
         pastCaches);
  }
  if (pastCaches) hwy::FlushStream();
}

// The lines from `first` to before `end`.
void RunLines(const Job& job, size_t first, size_t end, bool pastCaches) {
  const Reducing reducing{static_cast<int>(job.shift)};
  switch (job.step) {
    case Step::kReduce:
      return Lines(Reduce{reducing}, job, first, end, pastCaches);
    case Step::kReduceSwap:
      return Lines(ReduceSwap{reducing}, job, first, end, pastCaches);
    case Step::kReduceSpread:
      return Lines(ReduceSpread{reducing}, job, first, end, pastCaches);
    case Step::kSwap8:
      return Lines(Swap8(), job, first, end, pastCaches);
    case Step::kSwap16:
      return Lines(Swap16(), job, first, end, pastCaches);
    case Step::kSpread8:
      return Lines(Spread8(), job, first, end, pastCaches);
    case Step::kSpread16:
      return Lines(Spread16(), job, first, end, pastCaches);
    case Step::kCopy:
      return Lines(CopyByte(), job, first, end, pastCaches);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace ImageKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ImageKernels {
namespace {

HWY_EXPORT(RunLines);

// What one thread takes at a time, source and target together. Threads that work far from each other leave
// the memory its runs of neighbouring addresses: slices of 128 KiB were a fifth slower.
constexpr size_t kSliceBytes = size_t{1} << 20;

// From this many bytes of source and target together on, the result is stored past the caches, which could
// not keep it until somebody reads it; its lines are then not read before they are written. Saves a third of
// the time of 12-megapixel images.
constexpr size_t kPastCachesBytes = size_t{16} << 20;

}  // namespace

PixelBytes BytesOf(Step step) {
  switch (step) {
    case Step::kReduce:
      return {Reduce::kSource, Reduce::kTarget};
    case Step::kReduceSwap:
      return {ReduceSwap::kSource, ReduceSwap::kTarget};
    case Step::kReduceSpread:
      return {ReduceSpread::kSource, ReduceSpread::kTarget};
    case Step::kSwap8:
      return {Swap8::kSource, Swap8::kTarget};
    case Step::kSwap16:
      return {Swap16::kSource, Swap16::kTarget};
    case Step::kSpread8:
      return {Spread8::kSource, Spread8::kTarget};
    case Step::kSpread16:
      return {Spread16::kSource, Spread16::kTarget};
    case Step::kCopy:
      return {CopyByte::kSource, CopyByte::kTarget};
  }
  return {0, 0};
}

void RunJob(const Job& job) {
  const PixelBytes bytes = BytesOf(job.step);
  const size_t lineBytes = job.width * (bytes.source + bytes.target);
  const bool pastCaches = lineBytes * job.height >= kPastCachesBytes;
  const size_t sliceLines = std::max<size_t>(1, kSliceBytes / std::max<size_t>(1, lineBytes));
  QTD::ForSlices(job.height, sliceLines, [&](size_t first, size_t end) {
    HWY_DYNAMIC_DISPATCH(RunLines)(job, first, end, pastCaches);
  });
}

void CopyBlock(const uint8_t* source, uint8_t* target, size_t bytes) {
  constexpr size_t slice = kSliceBytes / 2;
  const Job lines{Step::kCopy, source, slice, target, slice, slice, bytes / slice, 0};
  RunJob(lines);
  std::copy_n(source + bytes / slice * slice, bytes % slice, target + bytes / slice * slice);
}

}  // namespace ImageKernels
#endif
