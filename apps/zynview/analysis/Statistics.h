// Mean, deviation and range of the samples of each colour.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/SampleReader.h"

namespace zynview {

// Sums of whole numbers in 64 bits, which no image of the record's size can overflow: exact, in any order.
class Statistics {
 public:
  struct Row {
    char kind;
    uint64_t count = 0, sum = 0, squares = 0;
    uint32_t minimum = 0, maximum = 0;

    double Mean() const;  // 0 where nothing was counted
    // Of these very samples: the root of the mean square of what they differ from their mean.
    double Deviation() const;
  };

  Statistics() = default;
  explicit Statistics(const SampleReader& reader);
  // What the reader has read last.
  void Add(const std::vector<SampleRun>& runs, const std::vector<uint16_t>& values);

  const std::vector<Row>& Rows() const { return rows; }  // in the order of `SampleReader::Kinds`

 private:
  std::vector<Row> rows;
};

}  // namespace zynview
