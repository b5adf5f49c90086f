#include "analysis/Statistics.h"

#include <algorithm>
#include <cmath>

namespace zynview {

Statistics::Statistics(const SampleReader& reader) {
  for (const char kind : reader.Kinds()) rows.push_back({kind});
}

void Statistics::Add(const std::vector<SampleRun>& runs, const std::vector<uint16_t>& values) {
  for (const SampleRun& run : runs) {
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&run](const Row& each) { return each.kind == run.kind; });
    if (row == rows.end() || run.count == 0) continue;
    const uint16_t* value = values.data() + run.first;
    uint64_t sum = 0, squares = 0;
    uint32_t minimum = *value, maximum = *value;
    for (std::size_t i = 0; i < run.count; ++i, value += run.step) {
      const uint32_t sample = *value;
      sum += sample;
      squares += uint64_t{sample} * sample;
      minimum = std::min(minimum, sample);
      maximum = std::max(maximum, sample);
    }
    row->minimum = row->count == 0 ? minimum : std::min(row->minimum, minimum);
    row->maximum = std::max(row->maximum, maximum);
    row->count += run.count;
    row->sum += sum;
    row->squares += squares;
  }
}

double Statistics::Row::Mean() const {
  return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count);
}

// About the whole part of the mean all sums are exact and small, so that nothing is lost in a difference of
// great numbers. With n samples, w the whole part and r the rest, sum = n w + r:
//   the sum of (v - w)^2 is squares - 2 w sum + n w^2, and the variance is (that - r^2 / n) / n.
double Statistics::Row::Deviation() const {
  if (count == 0) return 0;
  const uint64_t whole = sum / count, rest = sum % count;
  // Modulo 2^64, which the result is below.
  const uint64_t about = squares - 2 * whole * sum + count * whole * whole;
  const auto n = static_cast<double>(count), r = static_cast<double>(rest);
  return std::sqrt(std::max(0.0, (static_cast<double>(about) - r * r / n) / n));
}

}  // namespace zynview
