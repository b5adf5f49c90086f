// A pixel format in the table of docs/cpu-and-gl.md, and pictures in it with known samples.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "QTD/image/PixelFormats.h"
#include "gl/models/UnpackModel.h"
#include "support/FlatScene.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {
namespace equality {

using flat_scene::Kind;
using Samples = std::vector<uint32_t>;

inline std::vector<std::string> ShownFormats() {
  std::vector<std::string> names;
  for (uint32_t n = 1; n <= QTD::kPixelRows; ++n) {
    const std::string name = QTD::FindPixelRow(n)->name;
    const Kind kind(name);
    if (!kind.trueSense && (kind.mono || kind.bayer || kind.colour || kind.uyvy)) names.push_back(name);
  }
  return names;
}

struct MatrixFormat {
  explicit MatrixFormat(const std::string& formatName) : name(formatName) {}

  const std::string name;
  const Kind kind{name};
  const uint32_t code = QTD::FindPixelRowByName(name.c_str())->code;
  const uint32_t depth = kind.uyvy ? 8 : kind.depth;
  const uint32_t top = (1u << depth) - 1;
  const uint32_t nativeCode = kind.uyvy
                                  ? uint32_t{ZYN_PIXEL_RGB8}
                                  : (kind.bayer ? QTD::DemosaicedFormat(QTD::UnpackedFormat(code), false)
                                                : QTD::UnpackedFormat(code));
  const uint32_t channels = kind.mono ? 1 : 3;
  // GR and GB have the edge step on the card. It looks for differences of a twentieth of the texel's range,
  // which samples of 10 bits don't reach there.
  const bool mosaicGR = kind.bayer && name[5] == 'G';
  const bool edgeStep = mosaicGR && depth != 10;

  const char* Family() const {
    if (kind.uyvy) return "YUV 4:2:2";
    if (kind.colour) return depth == 8 ? "colour, 8 bits" : "colour, 10 to 16 bits";
    if (kind.mono)
      return kind.lsb      ? "monochrome, bit stream"
             : kind.packed ? "monochrome, pairs"
             : depth == 8  ? "monochrome, 8 bits"
                           : "monochrome, 10 to 16 bits";
    if (edgeStep) return depth == 8 ? "Bayer GR GB, 8 bits" : "Bayer GR GB, 12 to 16 bits";
    return depth == 8 ? "Bayer RG BG, 8 bits"
           : mosaicGR ? "Bayer GR GB, 10 bits"
                      : "Bayer RG BG, 10 to 16 bits";
  }
  // Rows of a bit stream that don't end with a byte: each variant has its own idea of where the next begins.
  bool HasBrokenRows(uint32_t width) const { return kind.lsb && width * depth % 8 != 0; }

  // Scattered values, with the smallest and the largest among them.
  Samples Scattered(size_t count, uint32_t most, uint32_t seed) const {
    Samples samples(count);
    uint32_t state = seed * 2654435761u + 12345;
    for (uint32_t& sample : samples) {
      state = state * 1664525 + 1013904223;
      const uint32_t drawn = state >> 8;
      sample = drawn % 8 == 0 ? 0 : drawn % 8 == 1 ? most : drawn / 8 % (most + 1);
    }
    return samples;
  }

  // Makes a picture and tells the samples that lie in it. Of bit streams the bytes are scattered, and the
  // samples are what the card's model finds in them.
  Samples Fill(HostImage& picture, uint32_t seed) const {
    const uint32_t width = picture.record.width, height = picture.record.height;
    if (kind.lsb || kind.uyvy) {
      const Samples bytes = Scattered(picture.pixels.size(), 255, seed);
      std::transform(bytes.begin(), bytes.end(), picture.pixels.begin(),
                     [](uint32_t byte) { return static_cast<uint8_t>(byte); });
      if (kind.uyvy) return {};
      return model::UnpackedSamples(picture.pixels, std::max<size_t>(1, size_t{width} * depth / 8), width,
                                    height, depth);
    }
    const uint32_t perLine = width * (kind.colour ? 3 : 1);
    Samples samples = Scattered(size_t{perLine} * height, top, seed);
    std::vector<uint8_t> bytes;
    bytes.reserve(picture.pixels.size());
    for (uint32_t y = 0; y < height; ++y) {
      const uint32_t* const line = samples.data() + size_t{y} * perLine;
      for (uint32_t x = 0; x < perLine; ++x) {
        if (kind.packed) {
          const bool pair = x + 1 < perLine;
          flat_scene::PutPacked(bytes, line[x], pair ? line[x + 1] : 0, pair, depth);
          ++x;
        } else {
          bytes.push_back(static_cast<uint8_t>(line[x]));
          if (depth > 8) bytes.push_back(static_cast<uint8_t>(line[x] >> 8));
        }
      }
    }
    EXPECT_EQ(bytes.size(), picture.pixels.size());
    bytes.resize(picture.pixels.size());
    picture.pixels = bytes;
    picture.record.imageData = picture.pixels.data();
    return samples;
  }
};

}  // namespace equality
}  // namespace display_test
