#include "pixels/RawSample.h"

#include <algorithm>
#include <string_view>

#include "pixels/PixelTable.h"

namespace zynview {

namespace {

// A line of an image: the bytes that are there.
struct Line {
  const uint8_t* bytes;
  uint64_t size;
};

// Up to 16 bits from bit `first` of the line on, the lowest one first.
bool ReadBits(const Line& line, uint64_t first, unsigned count, uint32_t* value) {
  const uint64_t byte = first / 8, end = (first + count + 7) / 8;
  if (end > line.size) return false;
  uint32_t bits = 0;
  for (uint64_t i = byte; i < end; ++i) bits |= uint32_t{line.bytes[i]} << (8 * (i - byte));
  *value = (bits >> (first % 8)) & ((1u << count) - 1);
  return true;
}

// Two samples in three bytes:   s0[high]   s1[low] s0[low]   s1[high]
// A last one without a partner has the first two of them.
bool ReadPaired(const Line& line, uint32_t x, int depth, uint32_t* value) {
  const auto low = static_cast<unsigned>(depth - 8);
  const uint64_t pair = uint64_t{x} / 2 * 3;
  const bool second = x % 2 != 0;
  if (pair + (second ? 3 : 2) > line.size) return false;
  const uint32_t high = line.bytes[pair + (second ? 2 : 0)];
  const uint32_t middle = static_cast<uint32_t>(line.bytes[pair + 1]) >> (second ? 4 : 0);
  *value = high << low | (middle & ((1u << low) - 1));
  return true;
}

bool ReadMosaic(const Line& line, const PixelRow& row, uint32_t x, uint32_t y, RawSample* sample) {
  RawSample::Part part{row.MosaicKind(x, y), 0};
  const auto slot = static_cast<unsigned>(row.slot);
  const bool read = row.slot == kPaired ? ReadPaired(line, x, row.depth, &part.value)
                                        : ReadBits(line, uint64_t{x} * slot, slot, &part.value);
  sample->parts[0] = part;
  sample->count = 1;
  return read;
}

// The samples of a pixel stand together; with two Y, those of two pixels do, which share the others.
bool ReadGroup(const Line& line, const PixelRow& row, uint32_t x, RawSample* sample) {
  const std::string_view kinds(row.samples);
  const uint32_t together = row.PixelsTogether();
  const auto slot = static_cast<unsigned>(row.slot);
  const uint64_t start = uint64_t{x} / together * together * row.StorageBits();
  uint32_t passed = 0;  // Y of the pixels before
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (together == 2 && kinds[i] == 'Y' && passed++ != x % 2) continue;
    RawSample::Part part{kinds[i], 0};
    if (!ReadBits(line, start + i * slot, slot, &part.value)) return false;
    sample->parts[sample->count++] = part;
  }
  // As one says it: Y U V, R G B.
  constexpr std::string_view kOrder = "LYUVRGBA";
  std::sort(sample->parts.begin(), sample->parts.begin() + static_cast<std::ptrdiff_t>(sample->count),
            [kOrder](const RawSample::Part& a, const RawSample::Part& b) {
              return kOrder.find(a.kind) < kOrder.find(b.kind);
            });
  return true;
}

}  // namespace

bool ReadSample(const ZynImage& image, uint32_t x, uint32_t y, RawSample* sample) {
  const PixelRow* row = FindPixel(image.pixelType);
  if (!row || !image.imageData || x >= image.width || y >= image.height) return false;
  const uint32_t stored = image.origin == 1 ? image.height - 1 - y : y;
  const uint64_t begin = uint64_t{stored} * image.linePitch;
  if (begin >= image.imageSize) return false;
  const Line line{image.imageData + begin, std::min<uint64_t>(image.linePitch, image.imageSize - begin)};
  *sample = RawSample();
  sample->depth = row->depth;
  if (row->IsMosaic()) return ReadMosaic(line, *row, x, y, sample);
  if (row->slot != kPaired) return ReadGroup(line, *row, x, sample);
  sample->parts[0].kind = 'L';
  sample->count = 1;
  return ReadPaired(line, x, row->depth, &sample->parts[0].value);
}

QString RawSample::Text() const {
  QString text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += QStringLiteral("  ");
    const bool grey = parts[i].kind == 'L';
    text += grey ? QStringLiteral("grey") : QString(QLatin1Char(parts[i].kind));
    text += QStringLiteral(" %1").arg(parts[i].value);
  }
  return count > 0 ? text + QStringLiteral(" of %1").arg((1u << depth) - 1) : text;
}

}  // namespace zynview
