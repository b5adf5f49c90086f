// The viewer's table of pixel formats.
#include "apps/zynview/pixels/PixelTable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "ZynPixelFormat.h"

using zynview::FindPixel;
using zynview::PixelCode;
using zynview::PixelNameOf;
using zynview::PixelRow;
using zynview::PixelRowAt;

namespace {

constexpr uint32_t kFormats = 133;

}  // namespace

TEST(PixelTable, holds_the_133_formats_in_the_order_of_their_numbers) {
  std::set<std::string> names;
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow* row = PixelRowAt(i);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->code & 0xFF, i + 1) << row->name;
    names.insert(row->name);
  }
  EXPECT_EQ(names.size(), kFormats);
  EXPECT_EQ(PixelRowAt(kFormats), nullptr);
}

TEST(PixelTable, finds_a_format_by_its_name_whatever_the_case) {
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow* row = PixelRowAt(i);
    const QString name = QString::fromLatin1(row->name);
    EXPECT_EQ(PixelCode(name), row->code);
    EXPECT_EQ(PixelCode(name.toUpper()), row->code);
    EXPECT_EQ(PixelNameOf(row->code), name);
    EXPECT_EQ(FindPixel(row->code), row);
  }
}

TEST(PixelTable, names_an_unknown_code_by_its_digits) {
  EXPECT_EQ(PixelCode(QStringLiteral("Mono9")), 0u);
  EXPECT_EQ(FindPixel(0x010801FF), nullptr);
  EXPECT_EQ(PixelNameOf(0x010801FF), QStringLiteral("0x010801ff"));
}

TEST(PixelTable, knows_one_sample_for_each_place_of_a_mosaic) {
  EXPECT_TRUE(FindPixel(ZYN_PIXEL_BAYERGR12P)->IsMosaic());
  EXPECT_TRUE(FindPixel(ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8)->IsMosaic());
  EXPECT_FALSE(FindPixel(ZYN_PIXEL_MONO8)->IsMosaic());
  EXPECT_FALSE(FindPixel(ZYN_PIXEL_BGRA8)->IsMosaic());
}

// The code's second byte is the storage of a pixel, the upper half of its third byte the packing.
TEST(PixelTable, stores_samples_within_the_bits_that_the_code_names) {
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow& row = *PixelRowAt(i);
    SCOPED_TRACE(row.name);
    const bool pairs = ((row.code >> 12) & 0xF) == 1;
    EXPECT_EQ(row.slot == zynview::kPaired, pairs);
    if (pairs) continue;
    const std::string samples = row.IsMosaic() ? "L" : row.samples;
    const bool twoPixels = samples == "UYVY" || samples == "YUYV";
    const auto bits = static_cast<uint32_t>(row.slot) * static_cast<uint32_t>(samples.size());
    const uint32_t storage = row.StorageBits() * (twoPixels ? 2u : 1u);
    // Three samples of 10 bits leave two bits of a 32-bit word over.
    EXPECT_EQ(storage - bits, row.code == ZYN_PIXEL_RGB_10_BRIO_PACKED ? 2u : 0u);
    EXPECT_GE(row.slot, row.depth);
  }
}

TEST(PixelTable, calls_plain_what_a_display_can_show_as_it_is) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR12}) {
    EXPECT_TRUE(FindPixel(code)->IsPlain()) << FindPixel(code)->name;
  }
  for (const uint32_t code :
       {ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO8_BRIOPACKED, ZYN_PIXEL_RGB_8_BRIO_PACKED, ZYN_PIXEL_RGBA8,
        ZYN_PIXEL_YUV422_8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8}) {
    EXPECT_FALSE(FindPixel(code)->IsPlain()) << FindPixel(code)->name;
  }
}
