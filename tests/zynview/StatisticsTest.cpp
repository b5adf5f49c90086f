// Mean, deviation and range, against plain sums pixel by pixel.
#include "apps/zynview/analysis/Statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ZynPixelFormat.h"
#include "apps/zynview/analysis/Analysis.h"
#include "zynview/RandomFrame.h"

using zynview::PixelRow;
using zynview::PixelRowAt;
using zynview::Statistics;

namespace {

const std::atomic<bool> kGoOn{false};

Statistics Count(const ZynImage& image, const QRect& region) {
  return zynview::Analyse(image, {region, -1}, kGoOn).statistics;
}

void Compare(const ZynImage& image, const QRect& region) {
  FoundSamples found = FindSamples(image, region);
  const Statistics statistics = Count(image, region);
  for (const Statistics::Row& row : statistics.Rows()) {
    SCOPED_TRACE(row.kind);
    const std::vector<FoundSample>& samples = found[row.kind];
    ASSERT_EQ(row.count, samples.size());
    if (samples.empty()) continue;
    long double sum = 0, squares = 0;
    uint32_t least = 0xFFFFFFFF, most = 0;
    for (const FoundSample& each : samples) {
      sum += each.value;
      least = std::min(least, each.value);
      most = std::max(most, each.value);
    }
    const long double mean = sum / static_cast<long double>(samples.size());
    for (const FoundSample& each : samples) squares += (each.value - mean) * (each.value - mean);
    const auto deviation = std::sqrt(squares / static_cast<long double>(samples.size()));
    EXPECT_EQ(row.minimum, least);
    EXPECT_EQ(row.maximum, most);
    EXPECT_NEAR(row.Mean(), static_cast<double>(mean), 1e-9);
    EXPECT_NEAR(row.Deviation(), static_cast<double>(deviation), 1e-9);
  }
}

// The samples of a grey picture of 16 bits.
RandomFrame Grey(uint32_t width, uint32_t height) {
  return {ZYN_PIXEL_MONO16, width, height, 0, 1};
}

void Set(RandomFrame& frame, std::size_t pixel, uint32_t value) {
  frame.bytes[2 * pixel] = static_cast<uint8_t>(value);
  frame.bytes[2 * pixel + 1] = static_cast<uint8_t>(value >> 8);
}

}  // namespace

TEST(Statistics, are_right_for_every_colour_of_every_format_and_regions_partly_off_the_picture) {
  for (uint32_t i = 0; const PixelRow* row = PixelRowAt(i); ++i) {
    SCOPED_TRACE(row->name);
    const RandomFrame frame(row->code, 23, 9, 1, i);
    for (const QRect& region : {QRect(0, 0, 23, 9), QRect(3, 2, 1, 1), QRect(-4, -4, 9, 7),
                                QRect(20, 5, 40, 40), QRect(1, 1, 7, 5)})
      Compare(frame.image, region);
    const RandomFrame single(row->code, 1, 1, 0, i);
    Compare(single.image, QRect(0, 0, 1, 1));
  }
}

TEST(Statistics, of_one_value_have_no_deviation) {
  RandomFrame frame = Grey(50, 40);
  for (std::size_t i = 0; i < 2000; ++i) Set(frame, i, 65535);
  const Statistics statistics = Count(frame.image, QRect());
  const Statistics::Row& row = statistics.Rows().at(0);
  EXPECT_EQ(row.Mean(), 65535.0);
  EXPECT_EQ(row.Deviation(), 0.0);
  EXPECT_EQ(row.minimum, 65535u);
}

// Where sums of floating point numbers lose the last bits: a large picture, bright, with a small deviation.
TEST(Statistics, lose_nothing_in_large_bright_pictures) {
  const uint32_t kWidth = 3000, kHeight = 2000;
  RandomFrame frame = Grey(kWidth, kHeight);
  for (std::size_t i = 0; i < std::size_t{kWidth} * kHeight; ++i) Set(frame, i, i % 4 == 0 ? 65001 : 65000);
  const Statistics statistics = Count(frame.image, QRect());
  const Statistics::Row& row = statistics.Rows().at(0);
  EXPECT_EQ(row.count, 6000000u);
  EXPECT_EQ(row.sum, 6000000u * 65000ull + 1500000u);
  EXPECT_DOUBLE_EQ(row.Mean(), 65000.25);
  EXPECT_NEAR(row.Deviation(), std::sqrt(0.25 * 0.75), 1e-12);
}

TEST(Statistics, hold_the_largest_sums_that_a_record_can_have) {
  // Half of 2^31 samples at 0, half at the top: the squares fill nearly 63 bits.
  Statistics::Row row{'L'};
  row.count = 1ull << 31;
  row.sum = (1ull << 30) * 65535;
  row.squares = (1ull << 30) * 65535 * 65535;
  EXPECT_DOUBLE_EQ(row.Mean(), 32767.5);
  EXPECT_DOUBLE_EQ(row.Deviation(), 32767.5);
}

TEST(Statistics, of_nothing_are_zero) {
  const RandomFrame frame = Grey(4, 4);
  const Statistics statistics = Count(frame.image, QRect(10, 10, 5, 5));
  const Statistics::Row& row = statistics.Rows().at(0);
  EXPECT_EQ(row.count, 0u);
  EXPECT_EQ(row.Mean(), 0.0);
  EXPECT_EQ(row.Deviation(), 0.0);
}

TEST(Analyse, takes_the_whole_picture_where_no_region_is_marked) {
  const RandomFrame frame = Grey(7, 5);
  const zynview::Analysis whole = zynview::Analyse(frame.image, {}, kGoOn);
  EXPECT_TRUE(whole.isWhole);
  EXPECT_EQ(whole.region, QRect(0, 0, 7, 5));
  EXPECT_EQ(whole.statistics.Rows().at(0).count, 35u);
  const zynview::Analysis part = zynview::Analyse(frame.image, {QRect(5, 3, 9, 9), 4}, kGoOn);
  EXPECT_FALSE(part.isWhole);
  EXPECT_EQ(part.region, QRect(5, 3, 2, 2));
  EXPECT_EQ(part.profile.line, 4);
}

TEST(Analyse, does_not_go_through_lines_that_a_record_only_claims) {
  RandomFrame frame = Grey(4, 4);
  frame.image.height = 2000000000;
  frame.image.origin = 1;
  EXPECT_EQ(zynview::Analyse(frame.image, {}, kGoOn).statistics.Rows().at(0).count, 16u);
}

TEST(Analyse, breaks_off_when_it_is_told_to) {
  const RandomFrame frame = Grey(4, 4);
  const std::atomic<bool> stop{true};
  EXPECT_EQ(zynview::Analyse(frame.image, {}, stop).statistics.Rows().at(0).count, 0u);
}
