// Copies of pixels between records, honest and lying ones.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"

namespace {

using QTD::ImageCopy;
using QTD::LinesFit;

// A record over `bytes`, whose first byte has the value `first`.
struct Picture {
  Picture(uint32_t width, uint32_t height, uint32_t pitch, uint32_t size, uint8_t first,
          uint32_t pixelType = ZYN_PIXEL_MONO8)
      : bytes(size) {
    std::iota(bytes.begin(), bytes.end(), first);
    image.structSize = 96;
    image.pixelType = pixelType;
    image.bitsPerPixel = QTD::BitsPerPixel(pixelType);
    image.width = width;
    image.height = height;
    image.linePitch = pitch;
    image.imageSize = size;
    image.imageData = bytes.data();
  }

  std::vector<uint8_t> bytes;
  ZynImage image{};
};

TEST(ImageCopy, refuses_null_empty_and_unlike_records) {
  Picture one(4, 3, 4, 12, 1);
  Picture two(4, 3, 4, 12, 101);
  EXPECT_FALSE(ImageCopy(nullptr, &two.image));
  EXPECT_FALSE(ImageCopy(&one.image, nullptr));
  EXPECT_TRUE(ImageCopy(&one.image, &two.image));

  ZynImage other = one.image;
  other.imageData = nullptr;
  EXPECT_FALSE(ImageCopy(&other, &two.image));
  EXPECT_FALSE(ImageCopy(&one.image, &other));
  other = one.image;
  other.width = 3;
  EXPECT_FALSE(ImageCopy(&other, &two.image));
  other = one.image;
  other.height = 2;
  EXPECT_FALSE(ImageCopy(&other, &two.image));

  ZynImage from = one.image;
  ZynImage to = two.image;
  from.width = to.width = 0;
  EXPECT_FALSE(ImageCopy(&from, &to));
  from.width = to.width = 4;
  from.height = to.height = 0;
  EXPECT_FALSE(ImageCopy(&from, &to));
}

TEST(ImageCopy, copies_one_block_of_the_smaller_size_at_equal_pitches) {
  Picture source(4, 3, 8, 20, 1);  // without the padding of the last line
  Picture target(4, 3, 8, 24, 101);
  ASSERT_TRUE(ImageCopy(&source.image, &target.image));
  for (size_t at = 0; at < 24; ++at) EXPECT_EQ(target.bytes[at], at < 20 ? 1 + at : 101 + at) << at;

  Picture wide(4, 3, 8, 24, 51);
  Picture tight(4, 3, 8, 20, 101);
  ASSERT_TRUE(ImageCopy(&wide.image, &tight.image));
  for (size_t at = 0; at < 20; ++at) EXPECT_EQ(tight.bytes[at], 51 + at) << at;
}

TEST(ImageCopy, copies_lines_of_the_smaller_pitch) {
  Picture narrow(3, 3, 4, 12, 1);
  Picture wide(3, 3, 8, 24, 101);
  ASSERT_TRUE(ImageCopy(&narrow.image, &wide.image));
  for (size_t line = 0; line < 3; ++line) {
    for (size_t at = 0; at < 8; ++at) {
      EXPECT_EQ(wide.bytes[line * 8 + at], at < 4 ? 1 + line * 4 + at : 101 + line * 8 + at);
    }
  }
  Picture back(3, 3, 4, 12, 201);
  ASSERT_TRUE(ImageCopy(&wide.image, &back.image));
  EXPECT_EQ(back.bytes, narrow.bytes);
}

TEST(ImageCopy, stays_within_a_buffer_that_ends_with_the_last_pixel) {
  Picture narrow(3, 2, 4, 7, 1);
  Picture wide(3, 2, 8, 11, 101);
  ASSERT_TRUE(ImageCopy(&narrow.image, &wide.image));  // the address check sees a byte too many
  EXPECT_EQ(wide.bytes[10], 7);
  ASSERT_TRUE(ImageCopy(&wide.image, &narrow.image));
}

TEST(ImageCopy, refuses_lines_that_a_buffer_does_not_hold) {
  Picture good(4, 3, 4, 12, 1);
  Picture small(4, 3, 8, 19, 101);  // one byte less than the lines need
  EXPECT_FALSE(ImageCopy(&good.image, &small.image));
  EXPECT_FALSE(ImageCopy(&small.image, &good.image));
  Picture huge(4, 3, 8, 24, 101);
  huge.image.linePitch = 0x80000001u;  // twice this passes 32 bits
  EXPECT_FALSE(ImageCopy(&huge.image, &good.image));
  EXPECT_FALSE(ImageCopy(&good.image, &huge.image));
  Picture thin(4, 3, 2, 12, 101);  // the pitch is less than a line
  EXPECT_FALSE(ImageCopy(&good.image, &thin.image));
}

TEST(ImageCopy, of_a_record_onto_itself_keeps_it) {
  Picture one(4, 3, 4, 12, 1);
  const std::vector<uint8_t> before = one.bytes;
  EXPECT_TRUE(ImageCopy(&one.image, &one.image));
  EXPECT_EQ(one.bytes, before);
}

TEST(LinesFit, asks_for_all_lines_and_the_pixels_of_the_last) {
  EXPECT_TRUE(LinesFit(Picture(4, 3, 8, 20, 0).image));
  EXPECT_FALSE(LinesFit(Picture(4, 3, 8, 19, 0).image));
  EXPECT_TRUE(LinesFit(Picture(3, 1, 3, 3, 0).image));
  EXPECT_FALSE(LinesFit(Picture(4, 3, 3, 24, 0).image));
  EXPECT_TRUE(LinesFit(Picture(0, 3, 0, 0, 0).image));
  EXPECT_TRUE(LinesFit(Picture(3, 0, 0, 0, 0).image));
}

TEST(LinesFit, counts_the_storage_bits_of_packed_formats) {
  EXPECT_TRUE(LinesFit(Picture(3, 2, 8, 13, 0, ZYN_PIXEL_MONO12P).image));  // 4.5 bytes are 5
  EXPECT_FALSE(LinesFit(Picture(3, 2, 8, 12, 0, ZYN_PIXEL_MONO12P).image));
  EXPECT_TRUE(LinesFit(Picture(4, 1, 5, 5, 0, ZYN_PIXEL_BAYERRG10P).image));
}

TEST(LinesFit, believes_the_code_and_its_row_and_not_the_field) {
  Picture field(4, 3, 4, 12, 0);
  field.image.bitsPerPixel = 16;
  EXPECT_TRUE(LinesFit(field.image));
  Picture code(4, 3, 4, 12, 0, ZYN_PIXEL_MONO16);
  code.image.bitsPerPixel = 8;
  EXPECT_FALSE(LinesFit(code.image));
  Picture row(4, 3, 4, 12, 0, ZYN_PIXEL_MONO16 & 0xFF00FFFF);
  row.image.bitsPerPixel = 0;
  EXPECT_FALSE(LinesFit(row.image));
  Picture unknown(4, 3, 4, 12, 0, 0);
  EXPECT_TRUE(LinesFit(unknown.image));
  unknown.image.imageSize = 11;
  EXPECT_FALSE(LinesFit(unknown.image));
}

TEST(LinesFit, does_not_overflow) {
  Picture picture(4, 3, 4, 12, 0);
  picture.image.height = 0x40000001;  // 2 to the 30 lines of 4 bytes pass 32 bits by one line
  EXPECT_FALSE(LinesFit(picture.image));
  picture.image.width = picture.image.height = picture.image.linePitch = 0xFFFFFFFF;
  picture.image.imageSize = 0xFFFFFFFF;
  EXPECT_FALSE(LinesFit(picture.image));
}

}  // namespace
