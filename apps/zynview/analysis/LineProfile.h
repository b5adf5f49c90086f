// The samples along a line of the picture.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/SampleReader.h"

namespace zynview {

struct LineProfile {
  struct Point {
    int column;
    uint16_t value;
  };
  struct Curve {
    char kind;
    std::vector<Point> points;  // from left to right
  };

  int line = -1;  // of the picture; -1: none
  int width = 0;  // of the picture
  int depth = 0;
  std::vector<Curve> curves;  // of the colours that this line has, in the order of `SampleReader::Kinds`
};

// A horizontal line from edge to edge; without curves where the picture has no such line.
LineProfile ReadProfile(SampleReader* reader, int line);

// What one column of a drawing shows: the range of the samples there.
struct ProfileSpan {
  bool any = false;
  uint16_t least = 0, most = 0;
};
std::vector<ProfileSpan> Spread(const LineProfile::Curve& curve, int width, int columns);

}  // namespace zynview
