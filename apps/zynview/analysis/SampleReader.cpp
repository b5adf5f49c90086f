#include "analysis/SampleReader.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace zynview {

namespace {

constexpr std::string_view kOrder = "LYUVRGBW";
// No mosaic repeats later than this.
constexpr uint32_t kMosaic = 4;

int Held(uint64_t number) {
  return static_cast<int>(std::min<uint64_t>(number, std::numeric_limits<int>::max()));
}

// Samples of `slot` bits from bit `first` on, the lowest one first. Touches the bytes of these bits alone.
void UnpackStream(const uint8_t* bytes, uint64_t first, unsigned slot, std::size_t count, uint16_t* out) {
  bytes += first / 8;
  if (slot == 8) {
    std::copy(bytes, bytes + count, out);
    return;
  }
  if (slot == 16) {
    for (std::size_t i = 0; i < count; ++i)
      out[i] = static_cast<uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    return;
  }
  uint64_t bits = 0;
  unsigned held = 0;
  if (count > 0 && first % 8 != 0) {
    bits = *bytes++ >> (first % 8);
    held = static_cast<unsigned>(8 - first % 8);
  }
  for (std::size_t i = 0; i < count; ++i) {
    for (; held < slot; held += 8) bits |= uint64_t{*bytes++} << held;
    out[i] = static_cast<uint16_t>(bits & ((1u << slot) - 1));
    bits >>= slot;
    held -= slot;
  }
}

// Two samples in three bytes:   s0[high]   s1[low] s0[low]   s1[high]
void UnpackPaired(const uint8_t* bytes, std::size_t first, int depth, std::size_t count, uint16_t* out) {
  const auto low = static_cast<unsigned>(depth - 8);
  const unsigned mask = (1u << low) - 1;
  for (std::size_t i = first; i < first + count; ++i) {
    const uint8_t* pair = bytes + i / 2 * 3;
    const bool second = i % 2 != 0;
    const unsigned high = pair[second ? 2 : 0], middle = static_cast<unsigned>(pair[1]) >> (second ? 4 : 0);
    *out++ = static_cast<uint16_t>(high << low | (middle & mask));
  }
}

std::string KindsOf(const PixelRow& row) {
  std::string all(row.samples), ordered;
  std::copy_if(kOrder.begin(), kOrder.end(), std::back_inserter(ordered),
               [&all](char kind) { return all.find(kind) != std::string::npos; });
  return ordered;
}

}  // namespace

SampleReader::SampleReader(const ZynImage& source)
    : image(source), row(source.imageData ? FindPixel(source.pixelType) : nullptr) {
  if (!row) return;
  picture = QRect(0, 0, Held(image.width), Held(image.height));
  kinds = KindsOf(*row);
}

QRect SampleReader::Stored() const {
  if (!row || image.linePitch == 0) return {};
  const uint64_t lines = (uint64_t{image.imageSize} + image.linePitch - 1) / image.linePitch;
  const int height = std::min(picture.height(), Held(lines));
  return {0, image.origin == 1 ? picture.height() - height : 0, picture.width(), height};
}

SampleReader::Line SampleReader::LineAt(int y) const {
  const uint64_t stored =
      image.origin == 1 ? uint64_t{image.height} - 1 - static_cast<uint64_t>(y) : static_cast<uint64_t>(y);
  const uint64_t begin = stored * image.linePitch;
  if (begin >= image.imageSize) return {nullptr, 0};
  return {image.imageData + begin, std::min<uint64_t>(image.linePitch, image.imageSize - begin)};
}

// The pixels of a line that have all their samples.
int SampleReader::Readable(const Line& line) const {
  const uint64_t bits = line.size * 8;
  if (row->slot == kPaired) return Held(line.size / 3 * 2 + (line.size % 3 == 2 ? 1 : 0));
  const auto slot = static_cast<uint64_t>(row->slot);
  if (row->IsMosaic()) return Held(bits / slot);
  const std::string_view samples(row->samples);
  const uint64_t together = row->PixelsTogether(), group = together * row->StorageBits();
  const uint64_t used = samples.size() * slot;
  const uint64_t whole = bits < used ? 0 : (bits - used) / group + 1;
  if (together == 1) return Held(whole);
  // The first pixel of a pair does without the second Y.
  const uint64_t first = samples.back() == 'Y' ? used - slot : used;
  return Held(whole * 2 + (bits >= whole * group + first ? 1 : 0));
}

const std::vector<SampleRun>& SampleReader::Read(int y, int left, int right) {
  runs.clear();
  values.clear();
  if (!row || y < 0 || y >= picture.height()) return runs;
  const Line line = LineAt(y);
  left = std::max(left, 0);
  right = std::min({right, picture.width(), Readable(line)});
  if (left >= right) return runs;
  if (row->IsMosaic()) {
    ReadMosaic(line, y, left, right);
  } else if (row->PixelsTogether() == 2) {
    ReadPairs(line, left, right);
  } else {
    ReadPixels(line, left, right);
  }
  return runs;
}

void SampleReader::ReadMosaic(const Line& line, int y, int left, int right) {
  const auto count = static_cast<std::size_t>(right - left), first = static_cast<std::size_t>(left);
  values.resize(count);
  if (row->slot == kPaired) {
    UnpackPaired(line.bytes, first, row->depth, count, values.data());
  } else {
    const auto slot = static_cast<unsigned>(row->slot);
    UnpackStream(line.bytes, uint64_t{first} * slot, slot, count, values.data());
  }
  const std::size_t columns = std::min(row->MosaicColumns(), kMosaic);
  for (std::size_t i = 0; i < std::min(columns, count); ++i) {
    const int column = left + static_cast<int>(i);
    const char kind = row->MosaicKind(static_cast<uint32_t>(column), static_cast<uint32_t>(y));
    runs.push_back(
        {kind, i, columns, (count - i + columns - 1) / columns, column, static_cast<int>(columns)});
  }
}

void SampleReader::ReadPixels(const Line& line, int left, int right) {
  const auto count = static_cast<std::size_t>(right - left), first = static_cast<std::size_t>(left);
  const std::string_view samples(row->samples);
  const std::size_t each = samples.size();
  values.resize(count * each);
  if (row->slot == kPaired) {
    UnpackPaired(line.bytes, first, row->depth, count, values.data());
  } else {
    const auto slot = static_cast<unsigned>(row->slot);
    const uint64_t storage = row->StorageBits();
    if (storage == each * slot) {
      UnpackStream(line.bytes, first * storage, slot, count * each, values.data());
    } else {
      for (std::size_t i = 0; i < count; ++i)
        UnpackStream(line.bytes, (first + i) * storage, slot, each, values.data() + i * each);
    }
  }
  for (std::size_t i = 0; i < each; ++i) {
    if (samples[i] != 'A') runs.push_back({samples[i], i, each, count, left, 1});
  }
}

// Four samples for two pixels. U and V stand in the column of the first one.
void SampleReader::ReadPairs(const Line& line, int left, int right) {
  const std::string_view samples(row->samples);
  const std::size_t each = samples.size();
  const auto slot = static_cast<unsigned>(row->slot);
  const int firstPair = left / 2, endPair = (right + 1) / 2;
  const auto pairs = static_cast<std::size_t>(endPair - firstPair);
  const uint64_t firstSlot = static_cast<uint64_t>(firstPair) * each;
  // Of the last pair the second Y may be missing.
  values.resize(std::min<uint64_t>(pairs * each, line.size * 8 / slot - firstSlot));
  UnpackStream(line.bytes, firstSlot * slot, slot, values.size(), values.data());
  int passed = 0;  // Y of the pixels before
  for (std::size_t i = 0; i < each; ++i) {
    if (samples[i] != 'Y') {
      runs.push_back({samples[i], i, each, pairs, firstPair * 2, 2});
      continue;
    }
    const int place = passed++;
    const bool skipsFirst = firstPair * 2 + place < left, skipsLast = endPair * 2 - 2 + place >= right;
    const std::size_t missing = (skipsFirst ? 1 : 0) + (skipsLast ? 1 : 0);
    if (missing >= pairs) continue;
    runs.push_back({'Y', i + (skipsFirst ? each : 0), each, pairs - missing,
                    firstPair * 2 + place + (skipsFirst ? 2 : 0), 2});
  }
}

}  // namespace zynview
