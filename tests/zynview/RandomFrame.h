// Frames of random bytes in blocks of exactly their size, and what is in them: found pixel by pixel.
#pragma once

#include <QRect>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "apps/zynview/pixels/PixelTable.h"
#include "apps/zynview/pixels/RawSample.h"
#include "apps/zynview/sources/FrameSource.h"

// A read beyond the block is seen by the address sanitizer.
struct RandomFrame {
  std::unique_ptr<uint8_t[]> bytes;
  ZynImage image{};

  RandomFrame(uint32_t code, uint32_t width, uint32_t height, uint32_t padding, uint32_t seed)
      : RandomFrame(
            zynview::MakeRecord(code, width, height, zynview::LineBytes(code, width) + padding, nullptr),
            seed) {}
  RandomFrame(const ZynImage& record, uint32_t seed)
      : bytes(std::make_unique<uint8_t[]>(record.imageSize)), image(record) {
    std::mt19937 random(seed);
    for (uint32_t i = 0; i < record.imageSize; ++i) bytes[i] = static_cast<uint8_t>(random());
    image.imageData = bytes.get();
  }
};

struct FoundSample {
  int x, y;
  uint32_t value;
};
using FoundSamples = std::map<char, std::vector<FoundSample>>;

// The samples of a region by their colours, line by line. Two pixels that share U and V have them once, in
// the column of the first one.
inline FoundSamples FindSamples(const ZynImage& image, const QRect& region) {
  FoundSamples found;
  const zynview::PixelRow* row = zynview::FindPixel(image.pixelType);
  const bool shares = row && std::string(row->name).find("422") != std::string::npos;
  for (int y = region.top(); y <= region.bottom(); ++y) {
    for (int x = region.left(); x <= region.right(); ++x) {
      zynview::RawSample sample, left;
      if (x < 0 || y < 0) continue;
      const auto column = static_cast<uint32_t>(x), line = static_cast<uint32_t>(y);
      if (!zynview::ReadSample(image, column, line, &sample)) continue;
      const bool partner =
          shares && x % 2 == 1 && x > region.left() && zynview::ReadSample(image, column - 1, line, &left);
      for (std::size_t i = 0; i < sample.count; ++i) {
        const char kind = sample.parts[i].kind;
        if (kind == 'A' || (kind != 'Y' && partner)) continue;
        found[kind].push_back({shares && kind != 'Y' ? x / 2 * 2 : x, y, sample.parts[i].value});
      }
    }
  }
  return found;
}
