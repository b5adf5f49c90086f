#include "analysis/LineProfile.h"

#include <algorithm>

namespace zynview {

LineProfile ReadProfile(SampleReader* reader, int line) {
  LineProfile profile;
  profile.line = line;
  profile.width = reader->Picture().width();
  profile.depth = reader->Depth();
  const std::vector<SampleRun>& runs = reader->Read(line, 0, profile.width);
  for (const char kind : reader->Kinds()) {
    LineProfile::Curve curve{kind, {}};
    for (const SampleRun& run : runs) {
      if (run.kind != kind) continue;
      int column = run.column;
      for (std::size_t i = 0; i < run.count; ++i, column += run.columnStep)
        curve.points.push_back({column, reader->Values()[run.first + i * run.step]});
    }
    // A mosaic may have a colour in several of its columns.
    std::sort(curve.points.begin(), curve.points.end(),
              [](const LineProfile::Point& a, const LineProfile::Point& b) { return a.column < b.column; });
    if (!curve.points.empty()) profile.curves.push_back(std::move(curve));
  }
  return profile;
}

std::vector<ProfileSpan> Spread(const LineProfile::Curve& curve, int width, int columns) {
  std::vector<ProfileSpan> spans(static_cast<std::size_t>(std::max(columns, 0)));
  if (spans.empty()) return spans;
  for (const LineProfile::Point& point : curve.points) {
    if (point.column < 0 || point.column >= width) continue;
    ProfileSpan& span = spans[static_cast<std::size_t>(int64_t{point.column} * columns / width)];
    span.least = span.any ? std::min(span.least, point.value) : point.value;
    span.most = std::max(span.most, point.value);
    span.any = true;
  }
  return spans;
}

}  // namespace zynview
