#include "QTD/image/ImageRecord.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"

namespace {

using QTD::ImageCloneHeader;
using QTD::ImageCreate;
using QTD::ImageCreateHeader;
using QTD::ImageDelete;
using QTD::ImageFreeData;
using QTD::LinePitch;

// A record filled with one byte value, pointers included.
ZynImage Garbage() {
  ZynImage image;
  std::memset(static_cast<void*>(&image), 0xAB, sizeof(image));
  return image;
}

bool IsZero(const ZynImage& image) {
  const ZynImage zero{};
  return std::memcmp(&image, &zero, sizeof(image)) == 0;
}

// A block of the attachments list.
void* Block(void* next) {
  uint8_t* block = static_cast<uint8_t*>(std::calloc(1, 64));
  std::memcpy(block + 32, &next, sizeof(next));
  return block;
}

TEST(ZynImage, has_the_layout_of_the_binary_contract) {
  EXPECT_EQ(sizeof(ZynImage), 96u);
  EXPECT_EQ(offsetof(ZynImage, structSize), 0u);
  EXPECT_EQ(offsetof(ZynImage, version), 4u);
  EXPECT_EQ(offsetof(ZynImage, pixelType), 8u);
  EXPECT_EQ(offsetof(ZynImage, bitDepth), 12u);
  EXPECT_EQ(offsetof(ZynImage, reserved), 16u);
  EXPECT_EQ(offsetof(ZynImage, pixelGroup), 20u);
  EXPECT_EQ(offsetof(ZynImage, channels), 24u);
  EXPECT_EQ(offsetof(ZynImage, bitsPerPixel), 28u);
  EXPECT_EQ(offsetof(ZynImage, origin), 32u);
  EXPECT_EQ(offsetof(ZynImage, width), 36u);
  EXPECT_EQ(offsetof(ZynImage, height), 40u);
  EXPECT_EQ(offsetof(ZynImage, imageSize), 44u);
  EXPECT_EQ(offsetof(ZynImage, linePitch), 48u);
  EXPECT_EQ(offsetof(ZynImage, padding), 52u);
  EXPECT_EQ(offsetof(ZynImage, timestamp), 56u);
  EXPECT_EQ(offsetof(ZynImage, imageID), 64u);
  EXPECT_EQ(offsetof(ZynImage, attachments), 72u);
  EXPECT_EQ(offsetof(ZynImage, imageData), 80u);
  EXPECT_EQ(offsetof(ZynImage, ownedData), 88u);
}

TEST(LinePitch, rounds_the_bytes_of_a_line_up_to_fours) {
  EXPECT_EQ(LinePitch(3, 8), 4u);
  EXPECT_EQ(LinePitch(4, 8), 4u);
  EXPECT_EQ(LinePitch(5, 8), 8u);
  EXPECT_EQ(LinePitch(3, 24), 12u);
  EXPECT_EQ(LinePitch(100, 10), 128u);
  EXPECT_EQ(LinePitch(0, 24), 0u);
}

TEST(LinePitch, is_0_beyond_32_bits) {
  EXPECT_EQ(LinePitch(0x80000000u, 8), 0x80000000u);
  EXPECT_EQ(LinePitch(0xFFFFFFFCu, 8), 0xFFFFFFFCu);
  EXPECT_EQ(LinePitch(0xFFFFFFFDu, 8), 0u);
  EXPECT_EQ(LinePitch(0xFFFFFFFFu, 48), 0u);
}

TEST(ImageCreateHeader, fills_a_fresh_record_for_every_format) {
  for (uint32_t row = 1; row <= 133; ++row) {
    const QTD::PixelRow* format = QTD::FindPixelRow(row);
    ZynImage* image = ImageCreateHeader(nullptr, 7, 5, format->code);
    ASSERT_NE(image, nullptr) << format->name;
    const uint32_t bits = (format->code >> 16) & 0xFF;
    const uint32_t pitch = (bits * 7 + 31) / 32 * 4;
    ZynImage expected{};
    expected.structSize = 96;
    expected.pixelType = format->code;
    expected.bitDepth = format->bitDepth;
    expected.pixelGroup = format->code & 0xFF00;
    expected.channels = format->channels;
    expected.bitsPerPixel = bits;
    expected.width = 7;
    expected.height = 5;
    expected.linePitch = pitch;
    expected.imageSize = pitch * 5;
    EXPECT_EQ(std::memcmp(image, &expected, sizeof(expected)), 0) << format->name;
    ImageDelete(image);
    EXPECT_EQ(image, nullptr);
  }
}

TEST(ImageCreateHeader, marks_a_negative_height_as_bottom_up) {
  ZynImage image;
  ASSERT_EQ(ImageCreateHeader(&image, 3, -2, ZYN_PIXEL_MONO8), &image);
  EXPECT_EQ(image.origin, 1u);
  EXPECT_EQ(image.height, 2u);
  EXPECT_EQ(image.linePitch, 4u);
  EXPECT_EQ(image.imageSize, 8u);
  ASSERT_EQ(ImageCreateHeader(&image, 3, 2, ZYN_PIXEL_RGB8), &image);
  EXPECT_EQ(image.origin, 0u);
  EXPECT_EQ(image.linePitch, 12u);
}

TEST(ImageCreateHeader, zeroes_a_given_record_without_freeing_its_buffers) {
  ZynImage image = Garbage();  // freeing its pointers would crash
  ASSERT_EQ(ImageCreateHeader(&image, 4, 4, ZYN_PIXEL_MONO8), &image);
  EXPECT_EQ(image.imageData, nullptr);
  EXPECT_EQ(image.ownedData, nullptr);
  EXPECT_EQ(image.attachments, nullptr);
  EXPECT_EQ(image.version, 0u);
  EXPECT_EQ(image.imageID, 0u);
  EXPECT_EQ(image.timestamp, 0u);
  EXPECT_EQ(image.reserved, 0u);
}

TEST(ImageCreateHeader, refuses_unknown_codes_and_leaves_a_given_record_zeroed) {
  for (uint32_t code : {0u, 134u, 0x01080100u, 0x010801FFu}) {
    EXPECT_EQ(ImageCreateHeader(nullptr, 4, 4, code), nullptr);
    ZynImage image = Garbage();
    EXPECT_EQ(ImageCreateHeader(&image, 4, 4, code), nullptr);
    EXPECT_TRUE(IsZero(image));
  }
}

TEST(ImageCreateHeader, takes_channels_from_the_row_and_storage_from_the_code) {
  ZynImage image;
  ASSERT_NE(ImageCreateHeader(&image, 8, 1, 0x010C2219), nullptr);  // Bayer GR 10p in an encoded form
  EXPECT_EQ(image.bitDepth, 10u);
  EXPECT_EQ(image.channels, 1u);
  EXPECT_EQ(image.bitsPerPixel, 12u);
  EXPECT_EQ(image.linePitch, 12u);
}

TEST(ImageCreateHeader, refuses_a_picture_beyond_32_bits) {
  ZynImage image;
  ASSERT_NE(ImageCreateHeader(&image, 65536, 65535, ZYN_PIXEL_MONO8), nullptr);
  EXPECT_EQ(image.imageSize, 0xFFFF0000u);
  EXPECT_EQ(ImageCreateHeader(&image, 65536, 65536, ZYN_PIXEL_MONO8), nullptr);
  EXPECT_TRUE(IsZero(image));
  EXPECT_EQ(ImageCreateHeader(nullptr, 0xFFFFFFFFu, 1, ZYN_PIXEL_MONO8), nullptr);
  EXPECT_EQ(ImageCreateHeader(nullptr, 0xFFFFFFFFu, INT_MIN, ZYN_PIXEL_RGB16), nullptr);
  EXPECT_EQ(ImageCreateHeader(nullptr, 40000, -40000, ZYN_PIXEL_RGB8), nullptr);
}

TEST(ImageCreateHeader, takes_the_smallest_height) {
  ZynImage image;
  ASSERT_NE(ImageCreateHeader(&image, 0, INT_MIN, ZYN_PIXEL_MONO8), nullptr);
  EXPECT_EQ(image.height, 0x80000000u);
  EXPECT_EQ(image.origin, 1u);
  EXPECT_EQ(image.imageSize, 0u);
}

TEST(ImageCreate, owns_a_zeroed_buffer) {
  ZynImage* image = ImageCreate(nullptr, 30, -20, ZYN_PIXEL_RGB8);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->origin, 1u);
  EXPECT_EQ(image->imageSize, 92u * 20);
  ASSERT_NE(image->ownedData, nullptr);
  EXPECT_EQ(image->imageData, image->ownedData);
  const std::vector<uint8_t> zeros(image->imageSize);
  EXPECT_EQ(std::memcmp(image->imageData, zeros.data(), zeros.size()), 0);
  ImageDelete(image);
}

TEST(ImageCreate, makes_no_buffer_for_a_size_of_0) {
  ZynImage image = Garbage();
  ASSERT_EQ(ImageCreate(&image, 0, 10, ZYN_PIXEL_MONO8), &image);
  EXPECT_EQ(image.imageSize, 0u);
  EXPECT_EQ(image.imageData, nullptr);
  EXPECT_EQ(image.ownedData, nullptr);
}

TEST(ImageCreate, refuses_what_has_no_header) {
  EXPECT_EQ(ImageCreate(nullptr, 4, 4, 0), nullptr);
  EXPECT_EQ(ImageCreate(nullptr, 65536, 65536, ZYN_PIXEL_MONO8), nullptr);
}

// Sanitizers reserve more address space than the limit leaves.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZYN_TEST_SANITIZED
#endif
#endif
#if !defined(ZYN_TEST_SANITIZED) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ImageCreate, answers_null_when_memory_is_short) {
  const auto run = [] {
    const rlimit limit{rlim_t{1} << 30, rlim_t{1} << 30};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(2);
    ZynImage given = Garbage();
    const bool refused = ImageCreate(nullptr, 60000, 60000, ZYN_PIXEL_MONO8) == nullptr &&
                         ImageCreate(&given, 60000, 60000, ZYN_PIXEL_MONO8) == nullptr && IsZero(given);
    std::_Exit(refused ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

TEST(ImageCloneHeader, copies_all_but_pixels_and_attachments) {
  const ZynImage source = Garbage();
  ZynImage expected = source;
  expected.structSize = 96;
  expected.attachments = nullptr;
  expected.imageData = nullptr;
  expected.ownedData = nullptr;

  ZynImage* fresh = ImageCloneHeader(nullptr, &source);
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(std::memcmp(fresh, &expected, sizeof(expected)), 0);
  ImageDelete(fresh);

  ZynImage given{};
  EXPECT_EQ(ImageCloneHeader(&given, &source), &given);
  EXPECT_EQ(std::memcmp(&given, &expected, sizeof(expected)), 0);

  ZynImage self = source;
  EXPECT_EQ(ImageCloneHeader(&self, &self), &self);
  EXPECT_EQ(std::memcmp(&self, &expected, sizeof(expected)), 0);
}

TEST(ImageCloneHeader, of_null_has_size_and_version_only) {
  ZynImage expected{};
  expected.structSize = 96;
  expected.version = 0x20000;
  ZynImage* fresh = ImageCloneHeader(nullptr, nullptr);
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(std::memcmp(fresh, &expected, sizeof(expected)), 0);
  ImageDelete(fresh);
  ZynImage given = Garbage();
  EXPECT_EQ(ImageCloneHeader(&given, nullptr), &given);
  EXPECT_EQ(std::memcmp(&given, &expected, sizeof(expected)), 0);
}

TEST(ImageFreeData, frees_the_buffer_and_every_attachment_once) {
  ZynImage* image = ImageCreate(nullptr, 4, 4, ZYN_PIXEL_MONO8);
  image->attachments = Block(Block(Block(nullptr)));
  ImageFreeData(image);  // the leak check sees what stays
  EXPECT_EQ(image->imageData, nullptr);
  EXPECT_EQ(image->ownedData, nullptr);
  EXPECT_EQ(image->attachments, nullptr);
  EXPECT_EQ(image->width, 4u);
  ImageFreeData(image);
  ImageDelete(image);
}

TEST(ImageFreeData, never_frees_pixels_that_the_record_does_not_own) {
  uint8_t pixels[16] = {};
  ZynImage image;
  ImageCreateHeader(&image, 4, 4, ZYN_PIXEL_MONO8);
  image.imageData = pixels;
  ImageFreeData(&image);  // freeing memory of the stack would abort
  EXPECT_EQ(image.imageData, nullptr);
  ImageFreeData(nullptr);
}

TEST(ImageDelete, ignores_null) {
  ZynImage* image = nullptr;
  ImageDelete(image);
  EXPECT_EQ(image, nullptr);
}

TEST(ImageCompleted, takes_what_follows_from_the_code_from_the_table) {
  ZynImage record{};
  record.pixelType = 0x01100306;  // Mono12
  record.width = 5;
  record.linePitch = 77;
  record.origin = 1;
  const ZynImage completed = QTD::ImageCompleted(record);
  EXPECT_EQ(completed.structSize, 96u);
  EXPECT_EQ(completed.bitDepth, 12u);
  EXPECT_EQ(completed.channels, 1u);
  EXPECT_EQ(completed.bitsPerPixel, 16u);
  EXPECT_EQ(completed.pixelGroup, 0x0300u);
  EXPECT_EQ(completed.width, 5u);
  EXPECT_EQ(completed.linePitch, 77u);
  EXPECT_EQ(completed.origin, 1u);
}

TEST(ImageCompleted, follows_no_attachments) {
  ZynImage record{};
  record.attachments = reinterpret_cast<void*>(uintptr_t{0x10});
  for (const uint32_t code : {0x01100306u, 0x010803FFu}) {
    record.pixelType = code;
    EXPECT_EQ(QTD::ImageCompleted(record).attachments, nullptr);
    EXPECT_NE(record.attachments, nullptr);
  }
}

TEST(ImageCompleted, leaves_a_record_of_an_unknown_code_as_it_is) {
  ZynImage record{};
  record.pixelType = 0x010803FF;
  record.bitDepth = 3;
  EXPECT_EQ(QTD::ImageCompleted(record).bitDepth, 3u);
}

}  // namespace
