#include "cpu/stages/CorrectionKernels.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "QTD/frame/ParallelSlices.h"
#include "cpu/stages/PixelSteps.h"

namespace CorrectionKernels {
namespace {

template <size_t kCount>
using Tables = std::array<const uint16_t*, kCount>;

// What one thread takes at a time: enough to keep the cost of sharing out small.
constexpr size_t kSliceBytes = size_t{1} << 20;

constexpr size_t kWord = sizeof(uint16_t);
constexpr size_t kGroup = sizeof(uint64_t) / kWord;  // samples that are read at once
constexpr size_t kGroups = 3;                        // of a block: whole pixels, of one or three samples
constexpr size_t kAhead = 1024;                      // bytes

// Four samples, the first of which belongs to table `kFirst`. One read for all of them saves more than wider
// writes would: look-ups are limited by the number of reads.
//
//  | w0 | w1 | w2 | w3 |
//  |0[w0]|1[w1]|2[w2]|0[w3]|    each by the table of its channel
template <size_t kFirst, size_t kCount>
inline void LookUpGroup(uint8_t* bytes, const Tables<kCount>& tables) {
  uint64_t group;
  std::memcpy(&group, bytes, sizeof(group));
  for (size_t n = 0; n < kGroup; ++n) {
    const auto word = static_cast<uint16_t>(group >> 8 * kWord * n);
    ImageKernels::StoreWord(tables[(kFirst + n) % kCount][word], bytes + kWord * n);
  }
}

// Twelve samples, whole pixels.
template <size_t kCount>
inline void LookUpBlock(uint8_t* bytes, const Tables<kCount>& tables) {
  constexpr size_t kStep = kGroup * kWord;
  LookUpGroup<0>(bytes, tables);
  LookUpGroup<kGroup % kCount>(bytes + kStep, tables);
  LookUpGroup<2 * kGroup % kCount>(bytes + 2 * kStep, tables);
}

// By pairs of blocks, then one by one.
template <size_t kCount>
void LookUpLine(uint8_t* bytes, size_t count, const Tables<kCount> tables) {
  constexpr size_t kBlock = kGroups * kGroup, kBlockBytes = kBlock * kWord;
  size_t left = count;
  for (; left >= 2 * kBlock; left -= 2 * kBlock, bytes += 2 * kBlockBytes) {
    // The look-ups keep the processor from reading ahead by itself: a quarter of the time. Asking for what
    // lies behind the line's end is harmless.
    hwy::Prefetch(bytes + kAhead);
    LookUpBlock(bytes, tables);
    LookUpBlock(bytes + kBlockBytes, tables);
  }
  for (size_t n = 0; n < left; ++n, bytes += kWord)
    ImageKernels::StoreWord(tables[n % kCount][ImageKernels::LoadWord(bytes)], bytes);
}

template <size_t kCount>
void Apply(const Lines& lines, const Tables<kCount>& tables) {
  const size_t count = lines.words / kCount * kCount;
  const size_t lineBytes = std::max<size_t>(1, count * kWord);
  QTD::ForSlices(lines.height, std::max<size_t>(1, kSliceBytes / lineBytes), [&](size_t first, size_t end) {
    for (size_t line = first; line < end; ++line) LookUpLine(lines.bytes + line * lines.pitch, count, tables);
  });
}

}  // namespace

void ApplyOne(const Lines& lines, const uint16_t* table) {
  Apply<1>(lines, {table});
}

void ApplyThree(const Lines& lines, const uint16_t* first, const uint16_t* second, const uint16_t* third) {
  Apply<3>(lines, {first, second, third});
}

}  // namespace CorrectionKernels
