// The tables of colour correction: gain, offset and gamma for each channel, one entry for each sample value.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

// One thread at a time.
class ColorLUT {
 public:
  static constexpr int32_t kMostChannels = 4;
  static constexpr size_t kColours = 3;         // channels that have a gain and an offset
  static constexpr size_t kWordValues = 65536;  // what a 16-bit sample can hold

  ColorLUT() = default;
  ColorLUT(const ColorLUT&) = delete;
  ColorLUT& operator=(const ColorLUT&) = delete;

  // Frees what exists, sets gains, offsets and gamma back and makes identity tables. A size other than 2 to
  // the power 8, 10, 12, 14, 16 is stored as 0: no tables. Without memory throws std::bad_alloc, and has no
  // tables.
  void Allocate(int32_t wantedSize, int32_t wantedChannels);

  // Back to the constructed state.
  void Free();

  // Fills the tables of the first three channels from gain, offset and gamma. The power works on the sample
  // value itself, not on a value between 0 and 1: gamma 2 makes 256 of 16.
  void Compute();

  // The entries of table `channel` as 16-bit words, one for every value of a 16-bit sample: values behind the
  // table take its last entry, so that no index needs a test. Null without that table. They follow `Compute`.
  const uint16_t* Words(size_t channel) const { return words[channel].get(); }

  std::array<double, kColours> gain{1.0, 1.0, 1.0};
  std::array<double, kColours> offset{};  // fractions of the largest sample value
  double gamma = 1.0;
  int32_t size = 0;
  int32_t channels = 1;
  std::array<std::unique_ptr<uint32_t[]>, kMostChannels> tables;  // `size + 1` entries each
  // Kept: identity tables of the same size, which nothing reads.
  std::array<std::unique_ptr<uint32_t[]>, kMostChannels> spareTables;

 private:
  void FillWords(size_t channel);
  std::array<std::unique_ptr<uint16_t[]>, kMostChannels> words;  // `kWordValues` each
};
