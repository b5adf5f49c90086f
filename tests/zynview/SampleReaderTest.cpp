// All samples of a line, against those that are read pixel by pixel.
#include "apps/zynview/analysis/SampleReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "ZynPixelFormat.h"
#include "zynview/RandomFrame.h"

using zynview::PixelRow;
using zynview::PixelRowAt;
using zynview::SampleReader;
using zynview::SampleRun;

namespace {

using Place = std::tuple<char, int, int, uint32_t>;  // colour, line, column, value

std::vector<Place> ReadRegion(const ZynImage& image, const QRect& region) {
  SampleReader reader(image);
  std::vector<Place> places;
  for (int y = region.top(); y <= region.bottom(); ++y) {
    for (const SampleRun& run : reader.Read(y, region.left(), region.right() + 1)) {
      for (std::size_t i = 0; i < run.count; ++i) {
        places.emplace_back(run.kind, y, run.column + static_cast<int>(i) * run.columnStep,
                            reader.Values().at(run.first + i * run.step));
      }
    }
  }
  std::sort(places.begin(), places.end());
  return places;
}

std::vector<Place> Wanted(const ZynImage& image, const QRect& region) {
  std::vector<Place> places;
  for (const auto& [kind, samples] : FindSamples(image, region)) {
    for (const FoundSample& each : samples) places.emplace_back(kind, each.y, each.x, each.value);
  }
  std::sort(places.begin(), places.end());
  return places;
}

template <typename Check>
void ForEachFormat(Check check) {
  int formats = 0;
  for (uint32_t i = 0; const PixelRow* row = PixelRowAt(i); ++i, ++formats) {
    SCOPED_TRACE(row->name);
    check(*row);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_EQ(formats, 133);
}

}  // namespace

TEST(SampleReader, finds_what_each_pixel_has_in_every_format_and_odd_sizes) {
  ForEachFormat([](const PixelRow& row) {
    for (const QSize size :
         {QSize(1, 1), QSize(2, 1), QSize(3, 2), QSize(5, 3), QSize(13, 7), QSize(16, 4)}) {
      for (const uint32_t padding : {0u, 3u}) {
        const RandomFrame frame(row.code, static_cast<uint32_t>(size.width()),
                                static_cast<uint32_t>(size.height()), padding, 11);
        EXPECT_EQ(ReadRegion(frame.image, QRect(QPoint(), size)), Wanted(frame.image, QRect(QPoint(), size)))
            << size.width() << 'x' << size.height() << " padding " << padding;
      }
    }
  });
}

TEST(SampleReader, begins_and_ends_at_any_column) {
  ForEachFormat([](const PixelRow& row) {
    const RandomFrame frame(row.code, 11, 5, 2, 3);
    for (int left = 0; left < 11; ++left) {
      for (int right = left; right < 11; ++right) {
        const QRect region(QPoint(left, 1), QPoint(right, 4));
        EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region)) << left << " to " << right;
      }
    }
  });
}

TEST(SampleReader, leaves_out_what_is_off_the_picture) {
  ForEachFormat([](const PixelRow& row) {
    const RandomFrame frame(row.code, 9, 6, 1, 5);
    for (const QRect& region : {QRect(-3, -2, 7, 5), QRect(5, 4, 100, 100), QRect(-5, -5, 50, 50),
                                QRect(9, 0, 3, 3), QRect(0, 6, 3, 3), QRect(-4, 0, 4, 3)}) {
      EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region))
          << region.x() << ' ' << region.y();
    }
  });
}

// The block has as many bytes as the record tells; the rest of it does not fit together.
TEST(SampleReader, reads_no_byte_behind_the_image_whatever_its_record_claims) {
  ForEachFormat([](const PixelRow& row) {
    const ZynImage true_record = zynview::MakeRecord(row.code, 10, 4, 0, nullptr);
    for (uint32_t size = 1; size <= true_record.imageSize; size += size < 24 ? 1 : 7) {
      ZynImage record = true_record;
      record.imageSize = size;
      RandomFrame frame(record, size);
      const QRect region(0, 0, 14, 6);
      for (const uint32_t origin : {0u, 1u}) {
        frame.image.origin = origin;
        EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region)) << size << " bytes";
      }
      frame.image.width = 0xFFFFFFFF;
      frame.image.height = 5;
      EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region)) << size << " bytes, wide";
      frame.image.linePitch = 3;
      EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region)) << size << " bytes, pitch 3";
      frame.image.linePitch = 0;
      EXPECT_TRUE(ReadRegion(frame.image, region).empty());
      frame.image.linePitch = 0xFFFFFFFF;
      frame.image.height = 0xFFFFFFFF;
      EXPECT_EQ(ReadRegion(frame.image, region), Wanted(frame.image, region)) << size << " bytes, long lines";
    }
  });
}

TEST(SampleReader, has_the_lines_that_have_bytes) {
  RandomFrame frame(ZYN_PIXEL_MONO8, 8, 10, 0, 1);
  EXPECT_EQ(SampleReader(frame.image).Stored(), QRect(0, 0, 8, 10));
  frame.image.height = 1000000000;
  EXPECT_EQ(SampleReader(frame.image).Stored(), QRect(0, 0, 8, 10));
  frame.image.origin = 1;
  EXPECT_EQ(SampleReader(frame.image).Stored(), QRect(0, 999999990, 8, 10));
  SampleReader reader(frame.image);
  EXPECT_EQ(reader.Read(999999990, 0, 8).size(), 1u);
  EXPECT_TRUE(reader.Read(999999989, 0, 8).empty());
  frame.image.linePitch = 0;
  EXPECT_TRUE(SampleReader(frame.image).Stored().isEmpty());
}

TEST(SampleReader, names_the_colours_of_a_format_in_their_usual_order) {
  const auto kinds = [](uint32_t code) {
    const RandomFrame frame(code, 4, 4, 0, 1);
    return SampleReader(frame.image).Kinds();
  };
  EXPECT_EQ(kinds(ZYN_PIXEL_MONO12PACKED), "L");
  EXPECT_EQ(kinds(ZYN_PIXEL_BAYERGB8), "RGB");
  EXPECT_EQ(kinds(ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8), "RGBW");
  EXPECT_EQ(kinds(ZYN_PIXEL_BGRA8), "RGB");
  EXPECT_EQ(kinds(ZYN_PIXEL_YUV422_8_UYVY), "YUV");
  EXPECT_EQ(kinds(0x01080063), "");
}

TEST(SampleReader, reads_nothing_of_a_format_that_it_does_not_know_nor_without_pixels) {
  RandomFrame frame(ZYN_PIXEL_MONO8, 4, 4, 0, 1);
  ZynImage unknown = frame.image;
  unknown.pixelType = 0x01080063;
  EXPECT_TRUE(SampleReader(unknown).Read(0, 0, 4).empty());
  EXPECT_EQ(SampleReader(unknown).Depth(), 0);
  ZynImage empty = frame.image;
  empty.imageData = nullptr;
  EXPECT_TRUE(SampleReader(empty).Read(0, 0, 4).empty());
  EXPECT_EQ(SampleReader(frame.image).Depth(), 8);
}
