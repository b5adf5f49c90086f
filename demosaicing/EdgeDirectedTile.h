// The tiles of edge-directed interpolation: what one thread does at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "demosaicing/Method.h"

namespace Demosaicing {

// The pixels from (left, top) to before (right, bottom). `left` is even; at most kEdgeTileWidth wide. Tiles
// do not change the result: each computes what it needs from around itself.
struct EdgeTile {
  size_t left, right;
  size_t top, bottom;
};

constexpr size_t kEdgeTileWidth = 2048;

// A number for every second place of a line, those of one kind: of its coloured sites (red or blue) or of its
// greens. Number 0 belongs to the tile's first two pixels; there is room for whole vectors on both sides.
template <typename Value>
struct HalfLine {
  static constexpr ptrdiff_t kBefore = 64, kBehind = 64;

  Value* operator+(ptrdiff_t index) { return values.data() + kBefore + index; }
  const Value* operator+(ptrdiff_t index) const { return values.data() + kBefore + index; }

  alignas(64) std::array<Value, kBefore + kEdgeTileWidth / 2 + kBehind> values;
};

// The latest `kKept` lines, a power of two; lines above the picture have negative numbers.
template <typename Line, size_t kKept>
struct LatestLines {
  Line& operator[](ptrdiff_t line) { return lines[static_cast<size_t>(line) & (kKept - 1)]; }

  std::array<Line, kKept> lines;
};

// The lines that a tile works on, in the order in which they are made. `Value` is int16_t for 8-bit samples,
// and float for all others, which are scaled to the range of 8-bit ones.
template <typename Value>
struct EdgeWorkspace {
  struct Samples {
    HalfLine<Value> site, green;
  };
  // At sites: how rough the picture is along x and along y; and the sums of the lines above and below.
  struct Roughness {
    HalfLine<Value> x, y;
  };
  // At sites: the weight of the neighbours along x against those along y; how the colour bends; green as it
  // is estimated first.
  struct Estimates {
    HalfLine<float> weight, bend, green;
  };
  // At sites: of the differences of colour and of green their products and squares; and the sums of three
  // lines.
  struct Products {
    HalfLine<float> products, squares;
  };
  // At sites: green, and the colours as linear functions of it.
  struct Fits {
    HalfLine<float> green, slope, offset, otherSlope, otherOffset;
  };

  LatestLines<Samples, 16> samples;
  LatestLines<Roughness, 4> roughness;
  Roughness roughnessSums;
  LatestLines<Estimates, 8> estimates;
  LatestLines<Products, 8> products;
  Products productSums;
  LatestLines<Fits, 4> fits;
  // Samples of a finished line: three channels, then pixels.
  alignas(64) std::array<std::array<uint8_t, 2 * (kEdgeTileWidth + 128)>, 3> channels;
  alignas(64) std::array<uint8_t, 6 * (kEdgeTileWidth + 128)> pixels;
};

// Fills the tile's pixels, past the caches if so told. Allocates and throws nothing. The workspace has been
// cleared once: what lies beside the tile is computed along, from numbers that must be harmless.
void InterpolateEdgeTile(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
                         EdgeWorkspace<int16_t>& workspace);  // 8 bits
void InterpolateEdgeTile(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
                         EdgeWorkspace<float>& workspace);  // 10 bits and more

}  // namespace Demosaicing
