// The lines around the one that is being interpolated, with the two kinds of places of each line apart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "demosaicing/Lines.h"

namespace Demosaicing {

// A part of a picture's columns that is worked on at a time: few enough that all lines of a window stay in
// the first cache, and that workspaces have a size of their own, whatever the picture's. A tile begins at an
// even column.
constexpr size_t kTileColumns = 2048;

// Calls work(column, columns) for the tiles that make up `width`.
template <typename Work>
void ForTiles(size_t width, const Work& work) {
  for (size_t column = 0; column < width; column += kTileColumns) {
    work(column, width - column < kTileColumns ? width - column : kTileColumns);
  }
}

// The even and the odd places of a line of a tile. Each part begins at a multiple of 64 bytes, and has a
// margin of as many bytes on both sides.
//
//   columns of the tile   -2 -1 |  0  1  2  3  4  5 ...
//   even                   *    |  *     *     *            even[k] is column 2k
//   odd                       * |     *     *     *         odd[k] is column 2k + 1
struct PairLine {
  static constexpr size_t kMargin = 32;
  static constexpr size_t kPairs = kTileColumns / 2;

  const uint16_t* Even() const { return even.data() + kMargin; }
  const uint16_t* Odd() const { return odd.data() + kMargin; }

  alignas(64) std::array<uint16_t, kMargin + kPairs + kMargin> even{};
  alignas(64) std::array<uint16_t, kMargin + kPairs + kMargin> odd{};
};

// Reads the part of a line from the even `column` on: `pairs` pairs, and one more on both sides. What lies
// outside the mosaic is mirrored, samples above the depth count as its greatest (see `ReadLine`).
void ReadPairs(const Mosaic& mosaic, ptrdiff_t line, size_t column, size_t pairs, PairLine* to);

// One line of a tile and `kReach` lines above and below it.
//
//   window.Start(mosaic, column, columns, first);
//   for (size_t line = first; line < end; ++line) {
//     window.Next();
//     ... window.Line(0) is `line`, window.Line(-1) the one above it
//   }
template <size_t kReach>
class PairWindow {
 public:
  // Reads what `line` will need before it, and after it but for the last line.
  void Start(const Mosaic& source, size_t firstColumn, size_t columns, size_t line) {
    mosaic = &source;
    column = firstColumn;
    pairs = (columns + 1) / 2;
    next = static_cast<ptrdiff_t>(line) - static_cast<ptrdiff_t>(kReach);
    newest = 0;
    for (size_t i = 0; i < 2 * kReach; ++i) Next();
  }

  // Moves on by one line.
  void Next() {
    newest = newest + 1 == kLines ? 0 : newest + 1;
    ReadPairs(*mosaic, next++, column, pairs, &lines[newest]);
  }

  // Where the next call of `Next` will read. Lines of a tile lie too far apart for the processor to foresee
  // them: whoever works on a line asks for this memory meanwhile, little by little.
  const uint8_t* Ahead() const {
    return mosaic->bytes + Mirrored(next, mosaic->height) * mosaic->pitch +
           column * SampleBytes(mosaic->depth);
  }

  // The line at `offset`, -kReach to kReach.
  const PairLine& Line(ptrdiff_t offset) const {
    const auto back = static_cast<size_t>(static_cast<ptrdiff_t>(kReach) - offset);
    return lines[newest >= back ? newest - back : newest + kLines - back];
  }

 private:
  static constexpr size_t kLines = 2 * kReach + 1;

  std::array<PairLine, kLines> lines;
  const Mosaic* mosaic = nullptr;
  size_t column = 0, pairs = 0;
  ptrdiff_t next = 0;  // line
  size_t newest = 0;   // index of the line that was read last
};

}  // namespace Demosaicing
