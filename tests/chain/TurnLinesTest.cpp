#include "QTD/chain/TurnLines.h"

#include <gtest/gtest.h>

#include <vector>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"

namespace {

// A record over `bytes` with lines of `pitch` bytes.
ZynImage Over(std::vector<uint8_t>& bytes, uint32_t width, uint32_t height, uint32_t pitch,
              uint32_t pixelType) {
  ZynImage image{};
  QTD::ImageCreateHeader(&image, width, static_cast<int32_t>(height), pixelType);
  image.linePitch = pitch;
  image.imageSize = static_cast<uint32_t>(bytes.size());
  image.imageData = bytes.data();
  return image;
}

}  // namespace

TEST(TurnLines, exchanges_the_first_line_with_the_last_and_leaves_padding) {
  std::vector<uint8_t> bytes = {1, 2, 3, 91, 4, 5, 6, 92, 7, 8, 9, 93};
  const ZynImage image = Over(bytes, 3, 3, 4, ZYN_PIXEL_MONO8);
  EXPECT_TRUE(TurnLines(image));
  EXPECT_EQ(bytes, (std::vector<uint8_t>{7, 8, 9, 91, 4, 5, 6, 92, 1, 2, 3, 93}));
}

TEST(TurnLines, turns_an_even_number_of_lines_of_several_bytes_a_pixel) {
  std::vector<uint8_t> bytes = {1, 2, 3, 90, 4, 5, 6, 90};
  const ZynImage image = Over(bytes, 1, 2, 4, ZYN_PIXEL_RGB8);
  EXPECT_TRUE(TurnLines(image));
  EXPECT_EQ(bytes, (std::vector<uint8_t>{4, 5, 6, 90, 1, 2, 3, 90}));
}

TEST(TurnLines, needs_no_padding_behind_the_last_line) {
  std::vector<uint8_t> bytes = {1, 2, 3, 91, 4, 5, 6};
  const ZynImage image = Over(bytes, 3, 2, 4, ZYN_PIXEL_MONO8);
  EXPECT_TRUE(TurnLines(image));
  EXPECT_EQ(bytes, (std::vector<uint8_t>{4, 5, 6, 91, 1, 2, 3}));
}

TEST(TurnLines, refuses_lines_that_reach_out_of_the_buffer) {
  std::vector<uint8_t> bytes = {1, 2, 3, 91, 4, 5};
  const std::vector<uint8_t> before = bytes;
  EXPECT_FALSE(TurnLines(Over(bytes, 3, 2, 4, ZYN_PIXEL_MONO8)));
  EXPECT_FALSE(TurnLines(Over(bytes, 3, 2, 2, ZYN_PIXEL_MONO8)));  // lines that overlap
  EXPECT_EQ(bytes, before);
  ZynImage empty = Over(bytes, 3, 1, 4, ZYN_PIXEL_MONO8);
  empty.imageData = nullptr;
  EXPECT_FALSE(TurnLines(empty));
}
