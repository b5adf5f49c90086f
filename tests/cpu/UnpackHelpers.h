// For tests of the unpack stage: the packed formats, the stage made ready, and what it must give.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "QTD/image/PixelFormats.h"
#include "cpu/stages/CPUIPUnpack.h"
#include "tests/cpu/ReadyStage.h"
#include "tests/cpu/StagePicture.h"

// The 20 packed codes, by the names of the table.
inline std::vector<uint32_t> PackedCodes() {
  std::vector<uint32_t> codes;
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(number);
    const std::string name = row->name;
    if (name.find("Mono") != 0 && name.find("Bayer") != 0) continue;
    if (name.find("Brio") != std::string::npos) continue;
    if (name.back() == 'p' || name.find("Packed") != std::string::npos) codes.push_back(row->code);
  }
  return codes;
}

class OpenUnpack : public CPUIPUnpack {
 public:
  explicit OpenUnpack(ZynComponent* parentComponent = nullptr) : CPUIPUnpack(parentComponent) {}
  const std::string& Name() const { return name; }
  uint32_t LastError() const { return lastError; }
};

struct ReadyUnpack {
  explicit ReadyUnpack(const ZynImage& source) { EXPECT_EQ(stage.Init(&source, nullptr), 0u); }
  uint32_t Run(const ZynImage& source) { return stage.ProcessImage(&source, nullptr, nullptr); }
  OpenUnpack stage;
};

// The words of all lines without their padding.
inline std::vector<uint16_t> SamplesOf(const ZynImage& image) {
  const std::vector<uint8_t> bytes = PixelsOf(image);
  std::vector<uint16_t> words(bytes.size() / 2);
  std::memcpy(words.data(), bytes.data(), bytes.size());
  return words;
}

inline bool IsBlack(const ZynImage& image) {
  return std::all_of(image.imageData, image.imageData + image.imageSize,
                     [](uint8_t byte) { return byte == 0; });
}

// Bit by bit: where each bit of a sample lies, counted from the lowest bit of the first byte.
inline std::vector<uint16_t> ExpectedSamples(const ZynImage& source) {
  const uint32_t group = source.pixelType & 0xFF00;
  const uint64_t bits = group == 0x1200 || group == 0x2200 ? 10 : 12;
  const bool grouped = (group & 0xF000) == 0x1000;
  const uint64_t width = source.width;
  const uint64_t lineBits = grouped          ? (3 * width + 1) / 2 * 8
                            : bits == 10     ? 5 * width / 4 * 8
                            : width % 4 == 0 ? 3 * width / 2 * 8
                                             : 12 * width;
  std::vector<uint16_t> samples;
  for (uint64_t line = 0; line < source.height; ++line) {
    for (uint64_t x = 0; x < width; ++x) {
      uint32_t value = 0;
      for (uint64_t bit = 0; bit < bits; ++bit) {
        uint64_t place = line * lineBits;
        if (!grouped) {
          place += x * bits + bit;
        } else {
          place += x / 2 * 24;
          // High bits in the first or third byte, low ones in the lower or upper half of the second.
          place += bit >= bits - 8 ? x % 2 * 16 + (bit - (bits - 8)) : 8 + x % 2 * 4 + bit;
        }
        if (place / 8 >= source.imageSize) continue;
        value |= (source.imageData[place / 8] >> place % 8 & 1u) << bit;
      }
      samples.push_back(static_cast<uint16_t>(value));
    }
  }
  return samples;
}
