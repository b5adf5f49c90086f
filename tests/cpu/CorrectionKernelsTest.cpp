// Tables over the samples of images, against a loop over single samples.
#include "cpu/stages/CorrectionKernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "tests/cpu/GuardedBytes.h"

namespace {

using Table = std::vector<uint16_t>;

// Values without order, so that a wrong table or place shows.
Table RandomTable(uint32_t seed) {
  std::minstd_rand random(seed);
  Table table(65536);
  for (uint16_t& entry : table) entry = static_cast<uint16_t>(random() >> 8);
  return table;
}

struct Case {
  size_t words, height, pitch, tables;
  GuardedBytes::Border border;
  uint32_t seed;
};

void ExpectModel(const Case& test) {
  static const Table tables[3] = {RandomTable(11), RandomTable(12), RandomTable(13)};
  // The last line may end with its samples.
  GuardedBytes memory(test.height == 0 ? 0 : (test.height - 1) * test.pitch + 2 * test.words, test.border);
  std::minstd_rand random(test.seed);
  for (size_t i = 0; i < memory.size(); ++i)
    memory[i] = test.seed == 0 ? 0xFF : static_cast<uint8_t>(random() >> 8);

  std::vector<uint8_t> expected(memory.data(), memory.data() + memory.size());
  const size_t used = test.words / test.tables * test.tables;
  for (size_t line = 0; line < test.height; ++line) {
    for (size_t n = 0; n < used; ++n) {
      uint8_t* const at = expected.data() + line * test.pitch + 2 * n;
      const uint16_t entry = tables[n % test.tables][static_cast<size_t>(at[0] | at[1] << 8)];
      at[0] = static_cast<uint8_t>(entry & 0xFF);
      at[1] = static_cast<uint8_t>(entry >> 8);
    }
  }

  const CorrectionKernels::Lines lines{memory.data(), test.pitch, test.words, test.height};
  if (test.tables == 1) {
    CorrectionKernels::ApplyOne(lines, tables[0].data());
  } else {
    CorrectionKernels::ApplyThree(lines, tables[0].data(), tables[1].data(), tables[2].data());
  }
  ASSERT_EQ(std::vector<uint8_t>(memory.data(), memory.data() + memory.size()), expected)
      << test.words << " words, pitch " << test.pitch << ", " << test.tables << " tables";
}

TEST(CorrectionKernels, every_width_and_pitch_gives_what_single_samples_give) {
  for (size_t width = 1; width <= 130; ++width) {
    for (const size_t tables : {1u, 3u}) {
      for (const auto border : {GuardedBytes::kAtEnd, GuardedBytes::kAtStart}) {
        for (const size_t padding : {0u, 1u, 2u, 3u, 64u}) {  // odd ones leave lines at odd addresses
          ExpectModel({width * tables, 3, width * tables * 2 + padding, tables, border, 5});
        }
      }
    }
  }
}

TEST(CorrectionKernels, extremes_are_entries_like_others) {
  for (const size_t tables : {1u, 3u}) ExpectModel({39, 2, 80, tables, GuardedBytes::kAtEnd, 0});
}

TEST(CorrectionKernels, samples_behind_the_last_whole_pixel_stay) {
  for (const size_t words : {1u, 2u, 4u, 5u, 13u, 14u, 25u, 26u}) {
    ExpectModel({words, 3, words * 2, 3, GuardedBytes::kAtEnd, 6});
  }
}

TEST(CorrectionKernels, no_lines_and_no_samples_are_no_work) {
  ExpectModel({0, 3, 16, 1, GuardedBytes::kAtEnd, 1});
  ExpectModel({0, 3, 16, 3, GuardedBytes::kAtEnd, 1});
  ExpectModel({12, 0, 24, 3, GuardedBytes::kAtEnd, 1});
}

TEST(CorrectionKernels, large_images_are_shared_out_among_threads) {
  ExpectModel({3 * 1021, 700, 3 * 2042 + 6, 3, GuardedBytes::kAtEnd, 7});
  ExpectModel({4099, 600, 8198, 1, GuardedBytes::kAtEnd, 8});
}

}  // namespace
