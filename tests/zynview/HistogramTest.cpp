// How often each value occurs, against counting pixel by pixel.
#include "apps/zynview/analysis/Histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "ZynPixelFormat.h"
#include "apps/zynview/analysis/Analysis.h"
#include "zynview/RandomFrame.h"

using zynview::Histogram;
using zynview::PixelRow;
using zynview::PixelRowAt;

namespace {

Histogram Count(const ZynImage& image, const QRect& region) {
  const std::atomic<bool> stop{false};
  return zynview::Analyse(image, {region, -1}, stop).histogram;
}

}  // namespace

TEST(Histogram, counts_each_colour_of_every_format_in_its_own_depth) {
  for (uint32_t i = 0; const PixelRow* row = PixelRowAt(i); ++i) {
    SCOPED_TRACE(row->name);
    const RandomFrame frame(row->code, 21, 9, 1, i);
    const QRect region(2, 1, 30, 6);
    FoundSamples found = FindSamples(frame.image, region);
    const Histogram histogram = Count(frame.image, region);
    ASSERT_EQ(histogram.Bins(), 1u << row->depth);
    ASSERT_EQ(histogram.Curves().size(), found.size());
    for (const Histogram::Curve& curve : histogram.Curves()) {
      std::vector<uint32_t> wanted(histogram.Bins());
      for (const FoundSample& sample : found[curve.kind])
        ++wanted[std::min<std::size_t>(sample.value, wanted.size() - 1)];
      EXPECT_EQ(curve.bins, wanted) << curve.kind;
    }
  }
}

TEST(Histogram, tells_how_many_samples_are_at_both_ends) {
  RandomFrame frame(ZYN_PIXEL_MONO12, 6, 1, 0, 1);
  const uint16_t values[] = {0, 0, 1, 4094, 4095, 0xFFFF};
  for (std::size_t i = 0; i < 6; ++i) {
    frame.bytes[2 * i] = static_cast<uint8_t>(values[i]);
    frame.bytes[2 * i + 1] = static_cast<uint8_t>(values[i] >> 8);
  }
  const Histogram histogram = Count(frame.image, QRect());
  ASSERT_EQ(histogram.Curves().size(), 1u);
  EXPECT_EQ(histogram.Curves()[0].AtBottom(), 2u);
  EXPECT_EQ(histogram.Curves()[0].AtTop(), 2u) << "stray bits count as the greatest value";
}

TEST(Histogram, has_no_curves_for_a_format_that_is_not_known) {
  RandomFrame frame(ZYN_PIXEL_MONO8, 4, 4, 0, 1);
  frame.image.pixelType = 0x01080063;
  EXPECT_TRUE(Count(frame.image, QRect()).Curves().empty());
  EXPECT_EQ(Histogram().Bins(), 0u);
}

TEST(Spread, is_the_mean_of_the_bins_behind_each_column) {
  EXPECT_EQ(zynview::Spread({4, 2, 0, 6}, 2), (std::vector<double>{3, 3}));
  EXPECT_EQ(zynview::Spread({4, 2, 9, 6, 3}, 2), (std::vector<double>{3, 6}));
}

TEST(Spread, repeats_a_bin_that_has_several_columns) {
  EXPECT_EQ(zynview::Spread({4, 2}, 6), (std::vector<double>{4, 4, 4, 2, 2, 2}));
}

TEST(Spread, has_every_bin_in_one_column_and_no_empty_column) {
  std::vector<uint32_t> bins(65536);
  bins[65535] = 7;
  for (const int columns : {1, 3, 320, 1000, 65535}) {
    const std::vector<double> spread = zynview::Spread(bins, columns);
    ASSERT_EQ(spread.size(), static_cast<std::size_t>(columns));
    EXPECT_GT(spread.back(), 0) << columns;
    EXPECT_EQ(std::count_if(spread.begin(), spread.end(), [](double each) { return each > 0; }), 1);
  }
}

TEST(Spread, of_nothing_is_nothing) {
  EXPECT_TRUE(zynview::Spread(std::vector<uint32_t>(), 10).empty());
  EXPECT_TRUE(zynview::Spread({1, 2}, 0).empty());
  EXPECT_TRUE(zynview::Spread({1, 2}, -5).empty());
}
