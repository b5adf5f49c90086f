// How edge-directed interpolation takes samples from an image and puts results into another. For sources that
// are compiled once for each instruction set, after <hwy/highway.h>.
#if defined(ZYN_DEMOSAICING_EDGE_DIRECTED_SAMPLES_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZYN_DEMOSAICING_EDGE_DIRECTED_SAMPLES_H
#undef ZYN_DEMOSAICING_EDGE_DIRECTED_SAMPLES_H
#else
#define ZYN_DEMOSAICING_EDGE_DIRECTED_SAMPLES_H
#endif

#include <algorithm>
#include <cstring>
#include <type_traits>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "demosaicing/EdgeDirectedTile.h"
#include "demosaicing/EdgeDirectedVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// A tile with its half lines: its samples on their way in and out.
template <typename Value>
struct EdgeSamples {
  using Sample = std::conditional_t<std::is_same<Value, int16_t>::value, uint8_t, uint16_t>;
  using Work = EdgeWorkspace<Value>;

  const Mosaic& mosaic;
  const Picture& picture;
  const EdgeTile& tile;
  const bool pastCaches;
  Work& work;
  ptrdiff_t half;  // half the tile's width, rounded up
  float toUnits, fromUnits, most;

  EdgeSamples(const Mosaic& source, const Picture& target, const EdgeTile& place, bool storePastCaches,
              Work& workspace)
      : mosaic(source),
        picture(target),
        tile(place),
        pastCaches(storePastCaches),
        work(workspace),
        half(static_cast<ptrdiff_t>((place.right - place.left + 1) / 2)),
        toUnits(1.0f / static_cast<float>(1u << (source.depth - 8))),
        fromUnits(static_cast<float>(1u << (source.depth - 8))),
        most(static_cast<float>((1u << source.depth) - 1)) {}

  bool InRedLine(ptrdiff_t line) const { return (static_cast<size_t>(line) & 1) == mosaic.redY; }
  ptrdiff_t Shift(ptrdiff_t line) const {
    return static_cast<ptrdiff_t>(InRedLine(line) ? mosaic.redX : 1 - mosaic.redX);
  }

  Value Loaded(const uint8_t* line, ptrdiff_t place) const {
    Sample sample;
    std::memcpy(&sample, line + Mirrored(place, mosaic.width) * sizeof(Sample), sizeof(Sample));
    if constexpr (sizeof(Sample) == 1) return sample;
    return static_cast<Value>(std::min(static_cast<float>(sample), most) * toUnits);
  }

  // Parts a line of samples into its half lines, for the indices from -8 to before half + 8.
  HWY_NOINLINE void LoadLine(ptrdiff_t line) const {
    const uint8_t* const from = mosaic.bytes + Mirrored(line, mosaic.height) * mosaic.pitch;
    typename Work::Samples& samples = work.samples[line];
    const bool sitesFirst = Shift(line) == 0;
    HalfLine<Value>& even = sitesFirst ? samples.site : samples.green;
    HalfLine<Value>& odd = sitesFirst ? samples.green : samples.site;
    const auto left = static_cast<ptrdiff_t>(tile.left);
    const ptrdiff_t end = half + 8;
    const auto one = [&](ptrdiff_t index) {
      *(even + index) = Loaded(from, left + 2 * index);
      *(odd + index) = Loaded(from, left + 2 * index + 1);
    };

    ptrdiff_t index = -8;
    while (index < end && left + 2 * index < 0) one(index++);
#if HWY_TARGET != HWY_SCALAR
    const auto width = static_cast<ptrdiff_t>(mosaic.width);
    const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(Many<Value>()));
    const uint8_t* const later = mosaic.bytes + Mirrored(line + 2, mosaic.height) * mosaic.pitch;
    for (; index < end && left + 2 * (index + lanes) <= width; index += lanes) {
      const size_t place = static_cast<size_t>(left + 2 * index) * sizeof(Sample);
      hwy::Prefetch(later + place);
      Part(from + place, even + index, odd + index);
    }
#endif
    while (index < end) one(index++);
  }

#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void Part(const uint8_t* from, int16_t* even, int16_t* odd) const {
    const Many<int16_t> words;
    const Many<uint16_t> pairs;
    const auto both = hn::BitCast(pairs, hn::LoadU(Many<uint8_t>(), from));
    hn::StoreU(hn::BitCast(words, hn::And(both, hn::Set(pairs, uint16_t{0xFF}))), words, even);
    hn::StoreU(hn::BitCast(words, hn::ShiftRight<8>(both)), words, odd);
  }

  HWY_INLINE void Part(const uint8_t* from, float* even, float* odd) const {
    const Few<uint32_t> pairs;
    const Few<int32_t> whole;
    const auto both = hn::BitCast(pairs, hn::LoadU(Many<uint8_t>(), from));
    const auto put = [&](hn::Vec<Few<uint32_t>> samples, float* to) HWY_ATTR {
      const auto value = hn::ConvertTo(kFloats, hn::BitCast(whole, samples));
      Put(Times(toUnits, hn::Min(value, hn::Set(kFloats, most))), to);
    };
    put(hn::And(both, hn::Set(pairs, 0xFFFFu)), even);
    put(hn::ShiftRight<16>(both), odd);
  }
#endif

  // A sample in the low 16 bits of each number, of a plane's value and of a computed one, which is rounded to
  // the nearest: a sum with 1.5 * 2^23 has no places behind the point. 8-bit ones are limited when stored.
  static HWY_INLINE hn::Vec<Few<int32_t>> Exact(hn::Vec<Few<int16_t>> values) {
    return hn::PromoteTo(Few<int32_t>(), values);
  }
  HWY_INLINE hn::Vec<Few<int32_t>> Exact(Vector values) const {
    return hn::BitCast(Few<int32_t>(), Plus(12582912.0f, Times(fromUnits, values)));
  }
  HWY_INLINE hn::Vec<Few<int32_t>> Rounded(Vector values) const {
    if constexpr (sizeof(Sample) == 1) return hn::BitCast(Few<int32_t>(), Plus(12582912.0f, values));
    return Exact(Within(0.0f, values, most * toUnits));
  }

  // Stores samples of two places, one half line each, in their order.
  static HWY_INLINE void Store(hn::Vec<Few<int32_t>> even, hn::Vec<Few<int32_t>> odd, uint8_t* channel,
                               ptrdiff_t index) {
    uint8_t* const to = channel + 2 * index * static_cast<ptrdiff_t>(sizeof(Sample));
#if HWY_TARGET == HWY_SCALAR
    const auto sample = [](hn::Vec<Few<int32_t>> number) {
      const int32_t value = hn::GetLane(number);
      if (sizeof(Sample) == 2) return static_cast<Sample>(value);
      return static_cast<Sample>(std::clamp<int16_t>(static_cast<int16_t>(value), 0, 255));
    };
    const Sample samples[] = {sample(even), sample(odd)};
    std::memcpy(to, samples, sizeof samples);
#else
    const auto first = hn::And(even, hn::Set(Few<int32_t>(), 0xFFFF));
    const auto both = hn::Or(first, hn::ShiftLeft<16>(odd));
    if constexpr (sizeof(Sample) == 1) {
      const Many<int16_t> words;
      const hn::Rebind<uint8_t, decltype(words)> bytes;
      hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(words, both)), bytes, to);
    } else {
      const Many<uint8_t> bytes;
      hn::StoreU(hn::BitCast(bytes, both), bytes, to);
    }
#endif
  }

  // Puts the three channels of a line into the picture.
  HWY_NOINLINE void WriteLine(ptrdiff_t line) const {
    const auto samples = [&](size_t number) {
      return static_cast<const Sample*>(static_cast<const void*>(work.channels[number].data()));
    };
    const Sample* const first = samples(picture.blueFirst ? 2 : 0);
    const Sample* const second = samples(1);
    const Sample* const third = samples(picture.blueFirst ? 0 : 2);
    auto* const pixels = static_cast<Sample*>(static_cast<void*>(work.pixels.data()));
    const size_t count = tile.right - tile.left;
    const hn::CappedTag<Sample, 64> tag;
    for (size_t index = 0; index < count; index += hn::Lanes(tag)) {
      hn::StoreInterleaved3(hn::LoadU(tag, first + index), hn::LoadU(tag, second + index),
                            hn::LoadU(tag, third + index), tag, pixels + 3 * index);
    }
    constexpr size_t kPixel = 3 * sizeof(Sample);
    Copy(work.pixels.data(), picture.bytes + static_cast<size_t>(line) * picture.pitch + tile.left * kPixel,
         count * kPixel);
  }

  void Copy(const uint8_t* from, uint8_t* to, size_t count) const {
    size_t done = 0;
    if (pastCaches) {
      const hn::CappedTag<uint8_t, 64> tag;
      const size_t lanes = hn::Lanes(tag);
      while (reinterpret_cast<uintptr_t>(to + done) % lanes != 0 && done < count) ++done;
      std::memcpy(to, from, done);
      for (; done + lanes <= count; done += lanes) hn::Stream(hn::LoadU(tag, from + done), tag, to + done);
    }
    std::memcpy(to + done, from + done, count - done);
  }
};

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#endif
