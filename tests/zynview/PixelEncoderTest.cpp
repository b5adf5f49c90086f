// Pictures in the bytes of each pixel format.
#include "apps/zynview/pixels/PixelEncoder.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "ZynPixelFormat.h"
#include "apps/zynview/pixels/PixelTable.h"
#include "apps/zynview/sources/FrameSource.h"
#include "apps/zynview/sources/Scene.h"
#include "support/FlatScene.h"
#include "support/TestData.h"

using zynview::ColourPicture;
using zynview::EncodePicture;
using zynview::PixelRow;
using zynview::PixelRowAt;
using zynview::WidthStep;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kFormats = 133;

ColourPicture Flat(uint32_t width, uint32_t height, uint32_t red, uint32_t green, uint32_t blue) {
  ColourPicture picture{width, height, {}};
  for (uint32_t i = 0; i < width * height; ++i) {
    for (const uint32_t sample : {red, green, blue}) picture.samples.push_back(static_cast<uint16_t>(sample));
  }
  return picture;
}

ColourPicture Colour8(uint32_t width, uint32_t red, uint32_t green, uint32_t blue) {
  return Flat(width, 1, red * 257, green * 257, blue * 257);
}

Bytes TrueSense(const std::string& name, uint32_t width, uint32_t height) {
  // Four different values for R, G, B and their mean.
  const uint32_t code = zynview::PixelCode(QString::fromStdString("TrueSense_" + name));
  return EncodePicture(Flat(width, height, 10 * 256, 40 * 256, 100 * 256), code);
}

Bytes Part(const Bytes& bytes, uint32_t pitch, uint32_t left, uint32_t top, uint32_t width, uint32_t height) {
  Bytes part;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) part.push_back(bytes[(top + y) * pitch + left + x]);
  }
  return part;
}

}  // namespace

TEST(PixelEncoder, encodes_the_scene_in_every_format) {
  const ColourPicture scene = zynview::DrawBackground(64, 48);
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow& row = *PixelRowAt(i);
    SCOPED_TRACE(row.name);
    const Bytes bytes = EncodePicture(scene, row.code);
    ASSERT_EQ(bytes.size(), std::size_t{zynview::LineBytes(row.code, 64)} * 48);
    // The patches at the top differ from each other, and so do their bytes.
    EXPECT_NE(Bytes(bytes.begin(), bytes.begin() + 8), Bytes(bytes.begin() + 40, bytes.begin() + 48));
  }
}

// Every frame of the scene is made in this way.
TEST(PixelEncoder, encodes_the_lines_that_have_changed_as_the_whole_picture) {
  const ColourPicture background = zynview::DrawBackground(64, 48);
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow& row = *PixelRowAt(i);
    ColourPicture picture = background;
    Bytes bytes = EncodePicture(picture, row.code);
    const Bytes before = bytes;
    const zynview::Lines changed = zynview::DrawPart(picture, 0.3);
    EXPECT_LT(changed.end - changed.first, 48u);
    zynview::EncodeLines(picture, row.code, changed.first, changed.end, &bytes);
    EXPECT_NE(bytes, before) << row.name;
    EXPECT_EQ(bytes, EncodePicture(picture, row.code)) << row.name;
  }
}

TEST(PixelEncoder, gives_each_sample_of_a_flat_scene_its_value_and_place) {
  constexpr uint32_t kWidth = 8, kHeight = 4;
  uint32_t tested = 0;
  for (uint32_t i = 0; i < kFormats; ++i) {
    const PixelRow& row = *PixelRowAt(i);
    SCOPED_TRACE(row.name);
    const flat_scene::Kind kind(row.name);
    if (!kind.mono && !kind.bayer && !kind.colour) continue;
    std::array<uint32_t, 3> colour = flat_scene::Colour(kind.depth);
    if (kind.mono) colour = {colour[1], colour[1], colour[1]};
    for (uint32_t& sample : colour) sample <<= 16 - kind.depth;
    EXPECT_EQ(EncodePicture(Flat(kWidth, kHeight, colour[0], colour[1], colour[2]), row.code),
              flat_scene::FlatScene(row.name, kind, kWidth, kHeight));
    ++tested;
  }
  EXPECT_EQ(tested, 9u + 36u + 10u);
}

TEST(PixelEncoder, writes_colour_bars_as_a_camera_does) {
  struct Bar {
    uint32_t red, green, blue;
    Bytes uyvy;
  };
  // ITU-R BT.601, luma from 16 to 235.
  const Bar kBars[] = {{255, 255, 255, {128, 235, 128, 235}}, {255, 255, 0, {16, 210, 146, 210}},
                       {0, 255, 255, {166, 170, 16, 170}},    {0, 255, 0, {54, 145, 34, 145}},
                       {255, 0, 255, {202, 106, 222, 106}},   {255, 0, 0, {90, 81, 240, 81}},
                       {0, 0, 255, {240, 41, 110, 41}},       {0, 0, 0, {128, 16, 128, 16}}};
  for (const Bar& bar : kBars) {
    EXPECT_EQ(EncodePicture(Colour8(2, bar.red, bar.green, bar.blue), ZYN_PIXEL_YUV422_8_UYVY), bar.uyvy);
  }
}

TEST(PixelEncoder, writes_the_recorded_colour_bars) {
  ZYN_DATA_OR_SKIP(colours, "formats/bars_256x4.rgb24");
  ZYN_DATA_OR_SKIP(recorded, "formats/bars_256x4_bt601_limited.uyvy");
  ColourPicture picture{256, 4, {}};
  for (const uint8_t byte : colours) picture.samples.push_back(static_cast<uint16_t>(byte * 257));
  const Bytes bytes = EncodePicture(picture, ZYN_PIXEL_YUV422_8_UYVY);
  ASSERT_EQ(bytes.size(), recorded.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) ASSERT_NEAR(bytes[i], recorded[i], 1) << i;
}

TEST(PixelEncoder, two_pixels_of_a_line_share_their_colour_and_keep_their_luma) {
  ColourPicture picture = Colour8(2, 255, 255, 255);
  for (std::size_t i = 3; i < 6; ++i) picture.samples[i] = 0;
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YUV422_8_UYVY), (Bytes{128, 235, 128, 16}));
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YUV422_8), (Bytes{235, 128, 16, 128}));
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YCBCR422_8), (Bytes{235, 128, 16, 128}));
  // 940, 512, 64, 512
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YUV422_10), (Bytes{0xAC, 3, 0x00, 2, 0x40, 0, 0x00, 2}));
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YUV422_10_PACKED), (Bytes{0xAC, 0x03, 0x08, 0x04, 0x80}));
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_YUV444_8), (Bytes{235, 128, 128, 255, 16, 128, 128, 255}));
}

TEST(PixelEncoder, is_opaque_where_there_is_an_alpha) {
  const ColourPicture picture = Colour8(1, 1, 2, 3);
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_RGBA8), (Bytes{1, 2, 3, 255}));
  EXPECT_EQ(EncodePicture(picture, ZYN_PIXEL_BGRA8), (Bytes{3, 2, 1, 255}));
}

TEST(PixelEncoder, writes_the_brio_formats_as_streams_in_their_storage_bits) {
  const ColourPicture colour = Flat(2, 1, 0xFFFF, 0x0800, 0x8000);
  EXPECT_EQ(EncodePicture(colour, ZYN_PIXEL_RGB_8_BRIO_PACKED), (Bytes{255, 8, 128, 255, 8, 128}));
  // 0x3FF | 0x020 << 10 | 0x200 << 20
  EXPECT_EQ(EncodePicture(colour, ZYN_PIXEL_RGB_10_BRIO_PACKED),
            (Bytes{0xFF, 0x83, 0x00, 0x20, 0xFF, 0x83, 0x00, 0x20}));
  // FFF 080 800, the first sample in the lowest bits
  EXPECT_EQ(EncodePicture(colour, ZYN_PIXEL_RGB_12_BRIO_PACKED),
            (Bytes{0xFF, 0x0F, 0x08, 0x00, 0xF8, 0xFF, 0x80, 0x00, 0x80}));
  const ColourPicture white = Flat(2, 1, 0xFFFF, 0xFFFF, 0xFFFF);
  EXPECT_EQ(EncodePicture(white, ZYN_PIXEL_MONO8_BRIOPACKED), (Bytes{255, 255}));
  EXPECT_EQ(EncodePicture(white, ZYN_PIXEL_MONO10_BRIOPACKED), (Bytes{0xFF, 0xF3, 0x3F}));
  EXPECT_EQ(EncodePicture(white, ZYN_PIXEL_MONO12_BRIOPACKED), (Bytes{0xFF, 0xFF, 0xFF}));
}

// R 10, G 40, B 100, and their mean of 50 at the places without a filter.
TEST(PixelEncoder, writes_the_sparse_colour_mosaic) {
  EXPECT_EQ(TrueSense("BGGR_WBBW_0_8", 4, 4),
            (Bytes{50, 100, 50, 40, 100, 50, 40, 50, 50, 40, 50, 10, 40, 50, 10, 50}));
  EXPECT_EQ(EncodePicture(Flat(2, 1, 10 * 256, 40 * 256, 100 * 256), ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_10),
            (Bytes{200, 0, 0x90, 1}));
}

TEST(PixelEncoder, moves_the_sparse_colour_mosaic_by_order_and_phase) {
  struct Move {
    const char* name;
    uint32_t x, y;
  };
  const Bytes whole = TrueSense("BGGR_WBBW_0_8", 12, 12);
  for (const Move& move :
       {Move{"BGGR_WBBW_1_8", 1, 0}, Move{"BGGR_WBBW_2_8", 0, 1}, Move{"BGGR_WBBW_3_8", 1, 1},
        Move{"GBRG_WGGW_0_8", 2, 0}, Move{"GBRG_WGGW_3_8", 3, 1}, Move{"GRBG_WGGW_0_8", 0, 2},
        Move{"GRBG_WGGW_2_8", 0, 3}, Move{"RGGB_WRRW_0_8", 2, 2}, Move{"RGGB_WRRW_1_8", 3, 2}}) {
    EXPECT_EQ(TrueSense(move.name, 8, 8), Part(whole, 12, move.x, move.y, 8, 8)) << move.name;
  }
}

TEST(PixelEncoder, wants_widths_whose_lines_end_at_whole_bytes) {
  EXPECT_EQ(WidthStep(ZYN_PIXEL_MONO8), 1u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_RGB12), 1u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_MONO10P), 4u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_BAYERRG12P), 2u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_MONO12PACKED), 1u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_YUV422_8_UYVY), 2u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_YUV422_10_PACKED), 2u);
  EXPECT_EQ(WidthStep(ZYN_PIXEL_RGB_12_BRIO_PACKED), 2u);
  EXPECT_TRUE(EncodePicture(Colour8(3, 1, 2, 3), ZYN_PIXEL_YUV422_8_UYVY).empty());
  EXPECT_TRUE(EncodePicture(Colour8(6, 1, 2, 3), ZYN_PIXEL_MONO10P).empty());
}

TEST(PixelEncoder, knows_no_other_codes) {
  EXPECT_EQ(WidthStep(0), 0u);
  EXPECT_TRUE(EncodePicture(Colour8(2, 1, 2, 3), 0).empty());
}
