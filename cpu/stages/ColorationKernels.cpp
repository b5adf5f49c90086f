#include "cpu/stages/ColorationKernels.h"

#include <algorithm>
#include <cstring>

#include "QTD/frame/ParallelSlices.h"

namespace ColorationKernels {
namespace {

// Pixels that are compared before any of them is painted: their marks stay in registers and the first cache.
constexpr size_t kBlock = 128;

constexpr size_t kPictureBytes = 3;
constexpr uint8_t kLow = 1, kHigh = 2;

// What one thread takes at a time, source and picture together.
constexpr size_t kSliceBytes = size_t{1} << 20;

// The colours by mark, and what stays of the pixel below them.
struct Paint {
  explicit Paint(const Job& job) {
    std::copy_n(job.lowColor, kPictureBytes, color[kLow]);
    std::copy_n(job.highColor, kPictureBytes, color[kHigh]);
  }
  uint8_t color[3][kPictureBytes] = {};
  uint8_t kept[3] = {0xFF, 0, 0};
};

// The value of each pixel becomes a mark; false when no pixel has one.
//
//   source   S0 S1 ...  or  S0 S1 S2 | S0 S1 S2 ...     1 or 2 bytes each
//   marks    0: between the thresholds, 1: below, 2: above
template <typename Sample, size_t kSamples>
bool Compare(const uint8_t* source, size_t count, int32_t low, int32_t high, uint8_t* marks) {
  uint8_t any = 0;
  for (size_t pixel = 0; pixel < count; ++pixel) {
    Sample samples[kSamples];
    std::memcpy(samples, source + pixel * sizeof samples, sizeof samples);
    int32_t value = 0;
    for (size_t n = 0; n < kSamples; ++n) value += samples[n];
    const uint8_t mark = value < low ? kLow : value > high ? kHigh : uint8_t{0};
    marks[pixel] = mark;
    any = static_cast<uint8_t>(any | mark);
  }
  return any != 0;
}

//   picture  P0 P1 P2 | P0 P1 P2 | ...     marked pixels take the bytes of their colour
void Mark(uint8_t* picture, size_t count, const uint8_t* marks, const Paint& paint) {
  for (size_t pixel = 0; pixel < count; ++pixel) {
    const uint8_t* const color = paint.color[marks[pixel]];
    const uint8_t kept = paint.kept[marks[pixel]];
    for (size_t n = 0; n < kPictureBytes; ++n) {
      uint8_t& byte = picture[pixel * kPictureBytes + n];
      byte = static_cast<uint8_t>((byte & kept) | color[n]);
    }
  }
}

template <typename Sample, size_t kSamples>
void Lines(const Job& job, const Paint& paint, size_t first, size_t end) {
  uint8_t marks[kBlock];
  for (size_t line = first; line < end; ++line) {
    const uint8_t* source = job.source + line * job.sourcePitch;
    uint8_t* picture = job.picture + line * job.picturePitch;
    for (size_t pixel = 0; pixel < job.width; pixel += kBlock) {
      const size_t count = std::min(kBlock, job.width - pixel);
      if (Compare<Sample, kSamples>(source, count, job.low, job.high, marks)) {
        Mark(picture, count, marks, paint);
      }
      source += count * sizeof(Sample) * kSamples;
      picture += count * kPictureBytes;
    }
  }
}

void RunLines(const Job& job, const Paint& paint, size_t first, size_t end) {
  switch (job.values) {
    case Values::kByte:
      return Lines<uint8_t, 1>(job, paint, first, end);
    case Values::kWord:
      return Lines<uint16_t, 1>(job, paint, first, end);
    case Values::kByteSum:
      return Lines<uint8_t, 3>(job, paint, first, end);
    case Values::kWordSum:
      return Lines<uint16_t, 3>(job, paint, first, end);
  }
}

}  // namespace

size_t BytesOf(Values values) {
  switch (values) {
    case Values::kByte:
      return 1;
    case Values::kWord:
      return 2;
    case Values::kByteSum:
      return 3;
    case Values::kWordSum:
      return 6;
  }
  return 0;
}

void RunJob(const Job& job) {
  const Paint paint(job);
  const size_t lineBytes = job.width * (BytesOf(job.values) + kPictureBytes);
  const size_t sliceLines = std::max<size_t>(1, kSliceBytes / std::max<size_t>(1, lineBytes));
  QTD::ForSlices(job.height, sliceLines, [&](size_t first, size_t end) { RunLines(job, paint, first, end); });
}

}  // namespace ColorationKernels
