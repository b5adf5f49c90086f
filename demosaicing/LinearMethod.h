// The frame of the methods that compute each line of the picture from a few lines of the mosaic, by one
// function for a line of a tile.
#pragma once

#include <algorithm>
#include <memory>

#include "QTD/frame/ParallelSlices.h"
#include "demosaicing/Method.h"
#include "demosaicing/PairWindow.h"

namespace Demosaicing {

// What sets the lines of one picture apart. A line holds green and one of the other colours, here "its own".
struct LineKind {
  uint32_t depth;
  bool greenFirst;  // the even places of the line are green
  bool ownThird;    // in the picture the line's own colour is the third of three samples, else the first
};

inline LineKind KindOf(const Mosaic& mosaic, const Picture& picture, size_t line) {
  const bool redLine = line % 2 == mosaic.redY;
  const bool redFirst = mosaic.redX == 0;
  return {mosaic.depth, redLine != redFirst, redLine == picture.blueFirst};
}

// Joined pixels of a line of a tile, and room for those that its last vector adds; in the units in which they
// are made.
union TilePixels {
  static constexpr size_t kBytes = 2 * 3 * (kTileColumns + 64);
  alignas(64) uint8_t bytes[kBytes];
  uint16_t words[kBytes / 2];
  uint32_t doubleWords[kBytes / 4];
};

template <size_t kReach>
class LinearMethod : public Method {
 public:
  // Computes the pixels of `pairs` pairs of places of the line in the middle of the window.
  using LineFunction = void (*)(const PairWindow<kReach>& window, size_t pairs, const LineKind& kind,
                                TilePixels* pixels);

  explicit LinearMethod(LineFunction function)
      : lineFunction(function), lanes(std::make_unique<Lane[]>(QTD::kMostThreads)) {}

  void Run(const Mosaic& mosaic, const Picture& picture) override {
    const size_t sampleBytes = SampleBytes(mosaic.depth);
    const size_t lineBytes = 4 * mosaic.width * sampleBytes;
    const size_t sliceLines = std::max<size_t>(1, kSliceBytes / lineBytes);
    const bool pastCaches = GoesPastCaches(mosaic);
    QTD::ForSlicesInLanes(mosaic.height, sliceLines, [&](size_t lane, size_t first, size_t end) {
      PairWindow<kReach>& window = lanes[lane].window;
      TilePixels& pixels = lanes[lane].pixels;
      ForTiles(mosaic.width, [&](size_t column, size_t columns) {
        window.Start(mosaic, column, columns, first);
        for (size_t line = first; line < end; ++line) {
          window.Next();
          lineFunction(window, (columns + 1) / 2, KindOf(mosaic, picture, line), &pixels);
          WriteBytes(picture.bytes + line * picture.pitch + column * 3 * sampleBytes, pixels.bytes,
                     columns * 3 * sampleBytes, pastCaches);
        }
      });
      EndWrites(pastCaches);
    });
  }

 private:
  // What one thread takes at a time, mosaic and picture together.
  static constexpr size_t kSliceBytes = size_t{1} << 20;

  struct Lane {
    PairWindow<kReach> window;
    TilePixels pixels;
  };

  const LineFunction lineFunction;
  const std::unique_ptr<Lane[]> lanes;  // one for each thread
};

}  // namespace Demosaicing
