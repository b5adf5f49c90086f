// How often each value of a colour occurs.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/SampleReader.h"

namespace zynview {

// In the depth of the camera: 256 bins for 8 bits, 65536 for 16. A value beyond the depth, which stray bits
// of a word can make, counts as the greatest one.
class Histogram {
 public:
  struct Curve {
    char kind;
    std::vector<uint32_t> bins;

    uint32_t AtBottom() const { return bins.front(); }
    uint32_t AtTop() const { return bins.back(); }
  };

  Histogram() = default;
  explicit Histogram(const SampleReader& reader);
  // What the reader has read last.
  void Add(const std::vector<SampleRun>& runs, const std::vector<uint16_t>& values);

  const std::vector<Curve>& Curves() const { return curves; }  // in the order of `SampleReader::Kinds`
  uint32_t Bins() const { return bins; }

 private:
  uint32_t bins = 0;
  std::vector<Curve> curves;
};

// The bins spread over `columns` of a drawing: the mean of the bins that a column stands for, so that the
// drawing has the same shape in each width. Never empty columns: with more columns than bins, a bin has
// several.
std::vector<double> Spread(const std::vector<uint32_t>& bins, int columns);

}  // namespace zynview
