#include "cpu/screen/RgbLine.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "cpu/screen/RgbLine.cpp"
#include <hwy/foreach_target.h>
// Must come after foreach_target.h.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace rgb_line {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Converts as many pixels as whole vectors can be loaded for; answers how many.
//
//   R0 G0 B0 R1 G1 B1 R2 G2 B2 R3 G3 B3 R4 ...     loaded: a quarter of it is used by the next vector again
//   R0 .. B3 x x x x | R4 .. B7 x x x x | ...       spread: 12 bytes to each block of 16
//   B0 G0 R0 ff B1 G1 R1 ff B2 G2 R2 ff ...         turned within the blocks: 0xffRRGGBB
size_t ConvertVectors(const uint8_t* HWY_RESTRICT rgb, uint32_t* HWY_RESTRICT pixels, size_t count) {
#if HWY_TARGET == HWY_SCALAR
  (void)rgb, (void)pixels, (void)count;
  return 0;
#else
  const hn::ScalableTag<uint32_t> words;
  const hn::Repartition<uint8_t, decltype(words)> bytes;
  const size_t lanes = hn::Lanes(words);

  HWY_ALIGN int32_t spreadLanes[hn::MaxLanes(words)];
  for (size_t i = 0; i < lanes; ++i)
    spreadLanes[i] = static_cast<int32_t>(i / 4 * 3 + std::min<size_t>(i % 4, 2));
  const auto spread = hn::SetTableIndices(words, spreadLanes);
  HWY_ALIGN constexpr uint8_t kTurned[16] = {2, 1, 0, 0, 5, 4, 3, 3, 8, 7, 6, 6, 11, 10, 9, 9};
  const auto turned = hn::LoadDup128(bytes, kTurned);
  const auto opaque = hn::Set(words, 0xFF000000u);

  size_t i = 0;
  for (; 3 * i + 4 * lanes <= 3 * count; i += lanes) {
    const auto loaded = hn::BitCast(words, hn::LoadU(bytes, rgb + 3 * i));
    const auto blocks = hn::BitCast(bytes, hn::TableLookupLanes(loaded, spread));
    const auto colors = hn::BitCast(words, hn::TableLookupBytes(blocks, turned));
    hn::StoreU(hn::Or(colors, opaque), words, pixels + i);
  }
  return i;
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace rgb_line
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rgb_line {
HWY_EXPORT(ConvertVectors);
}  // namespace rgb_line

namespace {

uint32_t PixelAt(const uint8_t* rgb) {
  return 0xFF000000u | static_cast<uint32_t>(rgb[0]) << 16 | static_cast<uint32_t>(rgb[1]) << 8 | rgb[2];
}

}  // namespace

void ConvertRgbLine(const uint8_t* rgb, uint32_t* pixels, size_t count) {
  size_t i = HWY_DYNAMIC_DISPATCH(rgb_line::ConvertVectors)(rgb, pixels, count);
  for (; i < count; ++i) pixels[i] = PixelAt(rgb + 3 * i);
}

//   offsets   o0          o1          ...
//   loaded    R0 G0 B0 x  R1 G1 B1 x  ...     4 bytes at each offset, x the byte behind the pixel
//   turned    B0 G0 R0 ff B1 G1 R1 ff ...
void GatherRgbLine(const uint8_t* rgb, const uint8_t* next, const uint32_t* offsets, uint32_t* pixels,
                   size_t roomy, size_t count) {
  size_t i = 0;
  for (; i < roomy; ++i) {
    if (i % 4 == 0) __builtin_prefetch(next + offsets[i]);
    uint32_t loaded;
    std::memcpy(&loaded, rgb + offsets[i], sizeof loaded);
    pixels[i] = 0xFF000000u | __builtin_bswap32(loaded) >> 8;
  }
  for (; i < count; ++i) pixels[i] = PixelAt(rgb + offsets[i]);
}
#endif
