// The bands of the best interpolation: what one thread does at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <hwy/aligned_allocator.h>

#include "demosaicing/Method.h"

namespace Demosaicing {

// All coordinates of this method count from a place of red: the picture's column x is column x + redX, its
// line y is line y + redY. In even lines the even places are red, in odd lines the odd places are blue; a
// line's red or blue places are its sites, the other ones its greens.
//
//   line 0:   S N S N     sites S[0], S[1], greens N[0], N[1]       left of S[j] is N[j - 1 + odd]
//   line 1:   N S N S     S[j] and N[j] of neighbouring lines       left of N[j] is S[j - odd]
//   line 2:   S N S N     are in one column                         (odd: 1 in odd lines, else 0)

// The pixels from (left, top) to before (right, bottom); `left` is a multiple of kBestBandWidth, which is
// also the greatest width. Bands do not change the result: each computes what it needs from around itself.
struct BestBand {
  ptrdiff_t left, right;
  ptrdiff_t top, bottom;
};

constexpr ptrdiff_t kBestBandWidth = 1048;

// How far the samples lie from a pixel that they have an influence on.
constexpr ptrdiff_t kBestReach = 20;

// The half lines that a band works on: of each plane, as many of the latest lines as the steps look back.
class BestWorkspace {
 public:
  enum Plane {
    kSample,       // the samples, at sites and at greens
    kBend,         // the second difference along y, at sites and at greens
    kBesideSums,   // at sites, five sums of products of second differences along x, within the line
    kAboveSums,    // the same of those along y
    kSharedSums,   // those of them that the greens above and below need, added up over the lines
    kDifference,   // green minus the line's own colour along x, at sites and at greens
    kDifferenceY,  // green minus the column's own colour along y, at sites and at greens
    kSlope,        // how green changes with the colour along x and along y
    kRoughness,    // how much the differences along x and along y change, within the line; at both
    kWeight,       // the weight of the direction x
    kWeightY,      // the weight of the direction y
    kGreen,        // green at sites
    kColourSums,   // at sites, three sums of products of second differences, within the line
    kFitSums,      // the weights of the slopes around, and the slopes by their weights, within the line
    kFit,          // how the site's colour changes with green
    kOther,        // the site's third colour
    kPlanes
  };

  // How many lines are kept, and how many half lines each has.
  struct Shape {
    size_t kept, halves;
  };
  static constexpr std::array<Shape, kPlanes> kShapes = {{{22, 2},
                                                          {5, 2},
                                                          {5, 5},
                                                          {5, 5},
                                                          {3, 4},
                                                          {7, 2},
                                                          {9, 2},
                                                          {7, 2},
                                                          {5, 4},
                                                          {3, 1},
                                                          {5, 1},
                                                          {10, 1},
                                                          {5, 3},
                                                          {5, 2},
                                                          {4, 1},
                                                          {3, 1}}};
  static constexpr size_t kScratches = 7;

  BestWorkspace();  // throws std::bad_alloc

  // A half line. Entry 0 belongs to the first two columns of the band's surroundings; kEntries of them and
  // kMargin more on both sides may be touched.
  template <Plane plane>
  float* Line(ptrdiff_t line, size_t half = 0) {
    constexpr Shape shape = kShapes[plane];
    // Lines above the picture have negative numbers.
    const size_t row = (static_cast<size_t>(line + 2 * kBestReach)) % shape.kept;
    return Half(First(plane) + row * shape.halves + half);
  }
  // Half lines for use within a step.
  float* Scratch(size_t number) { return Half(First(kPlanes) + number); }
  // Samples of a whole line as they are read, and of each channel as they are written.
  uint16_t* Words(size_t number) { return words.get() + number * static_cast<size_t>(2 * kEntries); }

  // As many columns belong to the surroundings on both sides; the entries of both are whole vectors.
  static constexpr ptrdiff_t kSurroundings = kBestReach;
  static constexpr ptrdiff_t kEntries = kBestBandWidth / 2 + kSurroundings;
  static_assert(kEntries % 16 == 0);
  static constexpr ptrdiff_t kMargin = 16;
  // From a half line to the next one of the same line and plane, and to the next scratch line.
  static constexpr ptrdiff_t kStride = kEntries + 2 * kMargin;

 private:
  static constexpr size_t First(size_t plane) {
    size_t first = 0;
    for (size_t before = 0; before < plane; ++before) first += kShapes[before].kept * kShapes[before].halves;
    return first;
  }
  float* Half(size_t number) { return floats.get() + number * static_cast<size_t>(kStride) + kMargin; }

  hwy::AlignedFreeUniquePtr<float[]> floats;
  hwy::AlignedFreeUniquePtr<uint16_t[]> words;
};

// Fills the band. Allocates and throws nothing.
void InterpolateBestBand(const Mosaic& mosaic, const Picture& picture, const BestBand& band,
                         BestWorkspace& workspace);

}  // namespace Demosaicing
