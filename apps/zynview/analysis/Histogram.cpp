#include "analysis/Histogram.h"

#include <algorithm>
#include <numeric>

namespace zynview {

Histogram::Histogram(const SampleReader& reader) {
  if (reader.Depth() == 0) return;
  bins = 1u << std::min(reader.Depth(), 16);
  for (const char kind : reader.Kinds()) curves.push_back({kind, std::vector<uint32_t>(bins)});
}

void Histogram::Add(const std::vector<SampleRun>& runs, const std::vector<uint16_t>& values) {
  for (const SampleRun& run : runs) {
    const auto curve = std::find_if(curves.begin(), curves.end(),
                                    [&run](const Curve& each) { return each.kind == run.kind; });
    if (curve == curves.end()) continue;
    const uint32_t top = bins - 1;
    uint32_t* counts = curve->bins.data();
    const uint16_t* value = values.data() + run.first;
    for (std::size_t i = 0; i < run.count; ++i, value += run.step) ++counts[std::min<uint32_t>(*value, top)];
  }
}

std::vector<double> Spread(const std::vector<uint32_t>& bins, int columns) {
  std::vector<double> spread;
  if (bins.empty()) return spread;
  const auto all = static_cast<uint64_t>(std::max(columns, 0));
  for (uint64_t i = 0; i < all; ++i) {
    const uint64_t first = i * bins.size() / all, next = (i + 1) * bins.size() / all;
    const uint64_t end = std::max(next, first + 1);
    const uint64_t sum = std::accumulate(bins.begin() + static_cast<std::ptrdiff_t>(first),
                                         bins.begin() + static_cast<std::ptrdiff_t>(end), uint64_t{0});
    spread.push_back(static_cast<double>(sum) / static_cast<double>(end - first));
  }
  return spread;
}

}  // namespace zynview
