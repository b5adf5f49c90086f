#include "QTD/frame/AverageValue.h"

#include <numeric>

namespace QTD {

void AverageValue::Push(double value) {
  const RMutexLock guard(lock);
  if (capacity >= 2) {
    values.push_back(value);
    while (values.size() >= static_cast<size_t>(capacity)) values.erase(values.begin());
  }
  last = value;
}

double AverageValue::Average() {
  const RMutexLock guard(lock);
  if (capacity == 1 || values.empty()) return last;
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void AverageValue::Reset(double value) {
  const RMutexLock guard(lock);
  last = value;
  capacity = 4;
  values.assign(3, value);
}

double AverageValue::Last() {
  const RMutexLock guard(lock);
  return last;
}

}  // namespace QTD
