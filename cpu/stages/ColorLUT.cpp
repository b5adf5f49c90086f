#include "cpu/stages/ColorLUT.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double kNear = 1e-7;           // closer values count as equal
constexpr double kLeastToPower = 0.004;  // stands for values that have no power
constexpr int32_t kSizes[] = {1 << 8, 1 << 10, 1 << 12, 1 << 14, 1 << 16};

bool IsActiveGamma(double gamma) {
  return !(std::abs(gamma - 1.0) <= kNear) && !(std::abs(gamma) <= kNear);
}

// Rounded half away from zero and clamped, in an order in which no value passes the integer's range. What is
// not a number becomes 0.
uint32_t Entry(double value, int32_t top) {
  if (!(value > 0.0)) return 0;
  if (value >= top) return static_cast<uint32_t>(top);
  return static_cast<uint32_t>(std::floor(value + 0.5));
}

std::unique_ptr<uint32_t[]> IdentityTable(size_t entries) {
  std::unique_ptr<uint32_t[]> table(new uint32_t[entries]);
  std::iota(table.get(), table.get() + entries, 0u);
  return table;
}

}  // namespace

void ColorLUT::Free() {
  gain.fill(1.0);
  offset.fill(0.0);
  gamma = 1.0;
  size = 0;
  channels = 1;
  for (auto& table : tables) table.reset();
  for (auto& table : spareTables) table.reset();
  for (auto& table : words) table.reset();
}

void ColorLUT::Allocate(int32_t wantedSize, int32_t wantedChannels) {
  Free();
  channels = std::clamp(wantedChannels, 1, kMostChannels);
  if (std::find(std::begin(kSizes), std::end(kSizes), wantedSize) == std::end(kSizes)) return;
  const size_t entries = static_cast<size_t>(wantedSize) + 1;
  try {
    for (size_t channel = 0; channel < static_cast<size_t>(channels); ++channel) {
      tables[channel] = IdentityTable(entries);
      spareTables[channel] = IdentityTable(entries);
      words[channel].reset(new uint16_t[kWordValues]);
    }
  } catch (...) {
    Free();
    throw;
  }
  size = wantedSize;
  for (size_t channel = 0; channel < static_cast<size_t>(channels); ++channel) FillWords(channel);
}

void ColorLUT::Compute() {
  if (size == 0) return;
  const int32_t top = size - 1;
  const bool power = IsActiveGamma(gamma);
  const size_t count = std::min(static_cast<size_t>(channels), kColours);
  for (size_t channel = 0; channel < count; ++channel) {
    uint32_t* const table = tables[channel].get();
    const double shift = top * offset[channel];
    for (int32_t value = 0; value <= size; ++value) {
      double corrected = value * gain[channel] + shift;
      if (power) corrected = std::pow(corrected > 0 ? corrected : kLeastToPower, gamma);
      table[value] = Entry(corrected, top);
    }
    FillWords(channel);
  }
}

// An identity of 65536 values has one entry more than words have values; no sample reaches it.
void ColorLUT::FillWords(size_t channel) {
  const uint32_t* const table = tables[channel].get();
  uint16_t* const result = words[channel].get();
  const size_t entries = std::min(static_cast<size_t>(size) + 1, kWordValues);
  std::transform(table, table + entries, result, [](uint32_t entry) { return static_cast<uint16_t>(entry); });
  std::fill(result + entries, result + kWordValues, result[entries - 1]);
}
