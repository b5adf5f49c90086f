// The samples along a line.
#include "apps/zynview/analysis/LineProfile.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ZynPixelFormat.h"
#include "zynview/RandomFrame.h"

using zynview::LineProfile;
using zynview::PixelRow;
using zynview::PixelRowAt;
using zynview::ProfileSpan;
using zynview::SampleReader;

TEST(LineProfile, has_all_samples_of_its_line_from_left_to_right_in_every_format) {
  for (uint32_t i = 0; const PixelRow* row = PixelRowAt(i); ++i) {
    SCOPED_TRACE(row->name);
    const RandomFrame frame(row->code, 19, 6, 1, i);
    SampleReader reader(frame.image);
    for (int line = 0; line < 6; ++line) {
      FoundSamples found = FindSamples(frame.image, QRect(0, line, 19, 1));
      const LineProfile profile = zynview::ReadProfile(&reader, line);
      EXPECT_EQ(profile.line, line);
      EXPECT_EQ(profile.width, 19);
      EXPECT_EQ(profile.depth, row->depth);
      ASSERT_EQ(profile.curves.size(), found.size());
      for (const LineProfile::Curve& curve : profile.curves) {
        const std::vector<FoundSample>& wanted = found[curve.kind];
        ASSERT_EQ(curve.points.size(), wanted.size()) << curve.kind;
        for (std::size_t n = 0; n < wanted.size(); ++n) {
          EXPECT_EQ(curve.points[n].column, wanted[n].x);
          EXPECT_EQ(curve.points[n].value, wanted[n].value);
        }
      }
    }
  }
}

TEST(LineProfile, has_the_colours_of_a_mosaic_that_its_line_has) {
  const RandomFrame frame(ZYN_PIXEL_BAYERRG8, 8, 2, 0, 1);
  SampleReader reader(frame.image);
  const auto kinds = [&reader](int line) {
    std::string all;
    for (const LineProfile::Curve& curve : zynview::ReadProfile(&reader, line).curves) all += curve.kind;
    return all;
  };
  EXPECT_EQ(kinds(0), "RG");
  EXPECT_EQ(kinds(1), "GB");
}

TEST(LineProfile, is_empty_where_the_picture_has_no_such_line) {
  const RandomFrame frame(ZYN_PIXEL_MONO8, 8, 2, 0, 1);
  SampleReader reader(frame.image);
  EXPECT_TRUE(zynview::ReadProfile(&reader, 2).curves.empty());
  EXPECT_TRUE(zynview::ReadProfile(&reader, -1).curves.empty());
}

TEST(LineProfileSpread, is_the_range_of_the_samples_behind_each_column) {
  const LineProfile::Curve curve{'G', {{0, 5}, {2, 9}, {4, 7}, {6, 1}}};
  const std::vector<ProfileSpan> spans = zynview::Spread(curve, 8, 2);
  ASSERT_EQ(spans.size(), 2u);
  EXPECT_EQ(spans[0].least, 5);
  EXPECT_EQ(spans[0].most, 9);
  EXPECT_EQ(spans[1].least, 1);
  EXPECT_EQ(spans[1].most, 7);
}

TEST(LineProfileSpread, has_columns_without_samples_and_leaves_out_what_is_off_the_picture) {
  const LineProfile::Curve curve{'G', {{0, 5}, {3, 9}, {9, 7}}};
  const std::vector<ProfileSpan> spans = zynview::Spread(curve, 4, 8);
  ASSERT_EQ(spans.size(), 8u);
  EXPECT_TRUE(spans[0].any);
  EXPECT_TRUE(spans[6].any);
  EXPECT_EQ(std::count_if(spans.begin(), spans.end(), [](const ProfileSpan& each) { return each.any; }), 2);
  EXPECT_TRUE(zynview::Spread(curve, 4, 0).empty());
  EXPECT_EQ(zynview::Spread(curve, 0, 3).size(), 3u);
}
