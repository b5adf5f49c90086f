// The mean of the last few values.
#pragma once

#include <cstdint>
#include <vector>

#include "QTD/frame/RMutex.h"

namespace QTD {

// Any thread may call any operation.
class AverageValue {
 public:
  void Push(double value);  // keeps fewer than `capacity` values
  double Average();
  void Reset(double value);  // capacity 4, three copies of `value`
  double Last();

 private:
  int32_t capacity = 2;
  double last = 0;
  std::vector<double> values;
  RMutex lock;  // guards all of the above
};

}  // namespace QTD
