// Records with given samples in any pixel code, and back.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"

struct RecordDeleter {
  void operator()(ZynImage* record) const { QTD::ImageDelete(record); }
};
using Record = std::unique_ptr<ZynImage, RecordDeleter>;

// Samples in the order of memory: line by line from line 0, all channels of a pixel next to each other.
using Samples = std::vector<uint32_t>;

// A record of ImageCreate without content; a bottom-up one has `origin` 1.
inline Record MakeRecord(uint32_t width, uint32_t height, uint32_t code, bool bottomUp = false) {
  const int32_t lines = static_cast<int32_t>(height);
  return Record(QTD::ImageCreate(nullptr, width, bottomUp ? -lines : lines, code));
}

// The bits of a line's samples one behind the other, low bits first ("10p", "12p").
inline std::vector<uint8_t> PackLowFirst(const uint32_t* samples, uint32_t count, uint32_t depth) {
  std::vector<uint8_t> bytes;
  uint64_t bits = 0;
  uint32_t held = 0;
  for (uint32_t i = 0; i < count; ++i) {
    bits |= uint64_t{samples[i]} << held;
    for (held += depth; held >= 8; held -= 8, bits >>= 8) bytes.push_back(static_cast<uint8_t>(bits));
  }
  if (held != 0) bytes.push_back(static_cast<uint8_t>(bits));
  bytes.resize(count * depth / 8);  // a line that ends within a byte ends without it
  return bytes;
}

// Two samples in three bytes, the low bits of both in the middle one ("10Packed", "12Packed").
inline std::vector<uint8_t> PackInThrees(const uint32_t* samples, uint32_t count, uint32_t depth) {
  std::vector<uint8_t> bytes;
  const uint32_t low = depth - 8, mask = (1u << low) - 1;
  for (uint32_t i = 0; i < count; i += 2) {
    const uint32_t second = i + 1 < count ? samples[i + 1] : 0;
    bytes.push_back(static_cast<uint8_t>(samples[i] >> low));
    bytes.push_back(static_cast<uint8_t>((samples[i] & mask) | (second & mask) << 4));
    if (i + 1 < count) bytes.push_back(static_cast<uint8_t>(second >> low));
  }
  return bytes;
}

// A record of any code but "..Brio..": unpacked lines stand at the record's pitch, packed ones directly
// behind each other. `samples` has width * height values (times the channels of colour; for UYVY two bytes a
// pixel as they lie in memory).
inline Record MakeRecord(uint32_t width, uint32_t height, uint32_t code, const Samples& samples,
                         bool bottomUp = false) {
  Record record = MakeRecord(width, height, code, bottomUp);
  if (!record || !record->imageData) return record;
  const size_t perLine = samples.size() / height;
  const uint32_t group = QTD::PixelGroup(code);
  const bool lowFirst = group == 0x2200 || group == 0x2300;
  const bool inThrees = group == 0x1200 || group == 0x1300;
  const uint32_t packedDepth =
      group == 0x2300 || group == 0x1300 ? 12 : 10;  // the table has 10 for "Mono12p"
  uint8_t* packedEnd = record->imageData;
  for (uint32_t y = 0; y < height; ++y) {
    const uint32_t* const line = samples.data() + y * perLine;
    if (lowFirst || inThrees) {
      const std::vector<uint8_t> bytes =
          lowFirst ? PackLowFirst(line, width, packedDepth) : PackInThrees(line, width, packedDepth);
      std::memcpy(packedEnd, bytes.data(), bytes.size());
      packedEnd += bytes.size();
      continue;
    }
    uint8_t* const target = record->imageData + size_t{y} * record->linePitch;
    for (size_t x = 0; x < perLine; ++x) {
      if (record->bitDepth > 8) {
        const uint16_t sample = static_cast<uint16_t>(line[x]);
        std::memcpy(target + 2 * x, &sample, sizeof sample);
      } else {
        target[x] = static_cast<uint8_t>(line[x]);
      }
    }
  }
  return record;
}

// The samples of a record of an unpacked format.
inline Samples SamplesOf(const ZynImage& record) {
  Samples samples;
  const uint32_t bytes = record.bitDepth > 8 ? 2 : 1;
  const uint32_t perLine = record.width * record.bitsPerPixel / (8 * bytes);
  for (uint32_t y = 0; y < record.height; ++y) {
    const uint8_t* const line = record.imageData + size_t{y} * record.linePitch;
    for (uint32_t x = 0; x < perLine; ++x) {
      uint16_t sample = line[x * bytes];
      if (bytes == 2) std::memcpy(&sample, line + size_t{2} * x, sizeof sample);
      samples.push_back(sample);
    }
  }
  return samples;
}

// Values that are spread over 0 to `top`, both among them, without order.
inline Samples Scattered(size_t count, uint32_t top, uint32_t seed = 1) {
  Samples samples(count);
  uint32_t state = seed;
  for (uint32_t& sample : samples) {
    state = state * 1664525 + 1013904223;
    sample = static_cast<uint32_t>(uint64_t{state >> 8} * (uint64_t{top} + 1) >> 24);
  }
  if (count > 1) {
    samples.front() = top;
    samples.back() = 0;
  }
  return samples;
}
