#include "demosaicing/Lines.h"

#include <algorithm>
#include <array>
#include <cstring>

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/Lines.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

size_t CopySamples(const uint8_t*, uint32_t, size_t, uint16_t*) {
  return 0;
}

#else

using Bytes = hn::CappedTag<uint8_t, 64>;
using Words = hn::Repartition<uint16_t, Bytes>;
using HalfBytes = hn::Rebind<uint8_t, Words>;

HWY_INLINE void CopyVector(const uint8_t* from, uint32_t depth, size_t sample, uint16_t* to) {
  if (depth == 8) {
    hn::StoreU(hn::PromoteTo(Words(), hn::LoadU(HalfBytes(), from + sample)), Words(), to + sample);
  } else {
    const auto words = hn::BitCast(Words(), hn::LoadU(Bytes(), from + 2 * sample));
    const auto greatest = hn::Set(Words(), static_cast<uint16_t>(Greatest(depth)));
    hn::StoreU(hn::Min(words, greatest), Words(), to + sample);
  }
}

// Whole vectors, the last of which ends with the samples and may do some a second time. Returns how many were
// copied: all, or none when there is not even one vector of them.
size_t CopySamples(const uint8_t* from, uint32_t depth, size_t count, uint16_t* to) {
  const size_t lanes = hn::Lanes(Words());
  if (count < lanes) return 0;
  for (size_t sample = 0; sample + lanes <= count; sample += lanes) CopyVector(from, depth, sample, to);
  CopyVector(from, depth, count - lanes, to);
  return count;
}

#endif  // HWY_TARGET == HWY_SCALAR

// The vectors that lie at multiples of their size in memory go past the caches; what is left at both ends is
// stored as usual.
void StreamBytes(uint8_t* to, const uint8_t* from, size_t count) {
  const hn::CappedTag<uint8_t, 64> bytes;
  const size_t lanes = hn::Lanes(bytes);
  const size_t over = reinterpret_cast<uintptr_t>(to) % lanes;
  const size_t head = std::min(count, over == 0 ? 0 : lanes - over);
  std::memcpy(to, from, head);
  size_t done = head;
  for (; done + lanes <= count; done += lanes) hn::Stream(hn::LoadU(bytes, from + done), bytes, to + done);
  std::memcpy(to + done, from + done, count - done);
}

// What is found behind `count` planar samples is not read: the last pixels go one by one.
template <typename Sample>
HWY_INLINE void Join(const uint16_t* first, const uint16_t* second, const uint16_t* third, uint16_t greatest,
                     size_t count, Sample* to) {
  const hn::CappedTag<uint16_t, 32> words;
  const hn::Rebind<Sample, decltype(words)> samples;
  const size_t lanes = hn::Lanes(words);
  const auto most = hn::Set(words, greatest);
  const auto sampled = [&](const uint16_t* channel) {
    const auto value = hn::Min(hn::LoadU(words, channel), most);
    if constexpr (sizeof(Sample) == 1) {
      return hn::DemoteTo(samples, hn::BitCast(hn::RebindToSigned<decltype(words)>(), value));
    } else {
      return value;
    }
  };
  size_t pixel = 0;
  for (; pixel + lanes <= count; pixel += lanes) {
    hn::StoreInterleaved3(sampled(first + pixel), sampled(second + pixel), sampled(third + pixel), samples,
                          to + 3 * pixel);
  }
  for (; pixel < count; ++pixel) {
    to[3 * pixel] = static_cast<Sample>(std::min(first[pixel], greatest));
    to[3 * pixel + 1] = static_cast<Sample>(std::min(second[pixel], greatest));
    to[3 * pixel + 2] = static_cast<Sample>(std::min(third[pixel], greatest));
  }
}

void JoinBytes(const uint16_t* first, const uint16_t* second, const uint16_t* third, size_t count,
               uint8_t* to) {
  Join(first, second, third, 0xFF, count, to);
}

void JoinWords(const uint16_t* first, const uint16_t* second, const uint16_t* third, uint32_t depth,
               size_t count, uint16_t* to) {
  Join(first, second, third, static_cast<uint16_t>(Greatest(depth)), count, to);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {
namespace {

HWY_EXPORT(CopySamples);
HWY_EXPORT(StreamBytes);
HWY_EXPORT(JoinBytes);
HWY_EXPORT(JoinWords);

}  // namespace

void ReadLine(const Mosaic& mosaic, ptrdiff_t line, ptrdiff_t column, size_t count, uint16_t* to) {
  const uint8_t* const from = mosaic.bytes + Mirrored(line, mosaic.height) * mosaic.pitch;
  const auto width = static_cast<ptrdiff_t>(mosaic.width);
  const ptrdiff_t end = column + static_cast<ptrdiff_t>(count);
  const ptrdiff_t inside = std::clamp<ptrdiff_t>(0, column, end);
  const ptrdiff_t behind = std::clamp(width, inside, end);
  const auto one = [&](ptrdiff_t place) {
    to[place - column] = SampleAt(from, mosaic.depth, Mirrored(place, mosaic.width));
  };

  for (ptrdiff_t place = column; place < inside; ++place) one(place);
  const auto within = static_cast<size_t>(behind - inside);
  if (within != 0) {
    const uint8_t* const start = from + static_cast<size_t>(inside) * SampleBytes(mosaic.depth);
    const size_t copied =
        HWY_DYNAMIC_DISPATCH(CopySamples)(start, mosaic.depth, within, to + (inside - column));
    for (ptrdiff_t place = inside + static_cast<ptrdiff_t>(copied); place < behind; ++place) one(place);
  }
  for (ptrdiff_t place = behind; place < end; ++place) one(place);
}

void WriteBytes(uint8_t* to, const uint8_t* from, size_t count, bool pastCaches) {
  if (pastCaches) {
    HWY_DYNAMIC_DISPATCH(StreamBytes)(to, from, count);
  } else {
    std::memcpy(to, from, count);
  }
}

void EndWrites(bool pastCaches) {
  if (pastCaches) hwy::FlushStream();
}

void WritePixels(const Picture& picture, uint32_t depth, size_t line, size_t column, size_t count,
                 const uint16_t* red, const uint16_t* green, const uint16_t* blue, bool pastCaches) {
  // The pixels are joined here, where words are aligned, and then copied to where they belong.
  constexpr size_t kAtOnce = 1024;
  alignas(64) std::array<uint16_t, 3 * kAtOnce> words;
  auto* const bytes = static_cast<uint8_t*>(static_cast<void*>(words.data()));
  const size_t pixelBytes = 3 * SampleBytes(depth);
  uint8_t* to = picture.bytes + line * picture.pitch + column * pixelBytes;
  const uint16_t* first = picture.blueFirst ? blue : red;
  const uint16_t* third = picture.blueFirst ? red : blue;
  while (count != 0) {
    const size_t now = std::min(count, kAtOnce);
    if (depth == 8) {
      HWY_DYNAMIC_DISPATCH(JoinBytes)(first, green, third, now, bytes);
    } else {
      HWY_DYNAMIC_DISPATCH(JoinWords)(first, green, third, depth, now, words.data());
    }
    WriteBytes(to, bytes, now * pixelBytes, pastCaches);
    to += now * pixelBytes;
    first += now;
    green += now;
    third += now;
    count -= now;
  }
}

}  // namespace Demosaicing
#endif
