// Pictures on their way into a texture: every sample, at any pitch, and none from outside the buffer.
#include <tuple>

#include "GLFixture.h"
#include "ZynPixelFormat.h"
#include "gl/image/QGLTexture.h"

namespace {

class QGLTextureUploadTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    parameters = surfaceList();
  }

  QTD::PROPERTIES parameters;
};

TEST_F(QGLTextureUploadTest, uploads_every_sample) {
  const std::pair<uint32_t, int> formats[] = {
      {ZYN_PIXEL_MONO8, 1}, {ZYN_PIXEL_MONO10, 1}, {ZYN_PIXEL_MONO16, 1}, {ZYN_PIXEL_BAYERGB12, 1},
      {ZYN_PIXEL_RGB8, 3},  {ZYN_PIXEL_RGB16, 3},  {ZYN_PIXEL_RGBA8, 4}};
  for (const auto& [code, channels] : formats) {
    for (const uint32_t width : {1u, 2u, 3u, 5u, 8u}) {
      const int depth = QTD::PixelFormat(code).depth;
      const Samples samples = Scattered(size_t{width} * 3 * static_cast<size_t>(channels), (1u << depth) - 1);
      const Record record = MakeRecord(width, 3, code, samples);
      QGLTexture texture;
      ASSERT_TRUE(texture.init(record.get(), &parameters));
      ASSERT_TRUE(texture.fill(record.get()));
      // A sample of 10 bits lies in the low bits of its texel of 16.
      EXPECT_EQ(ReadTexture(texture.texture(), channels, depth == 8 ? 8 : 16), samples)
          << std::hex << code << " " << width;
      EXPECT_EQ(bound(), 0);
    }
  }
}

TEST_F(QGLTextureUploadTest, a_bgr_sample_lands_in_its_channel) {
  const Record record = MakeRecord(1, 1, ZYN_PIXEL_BGR8, {1, 2, 3});
  QGLTexture texture;
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  ASSERT_TRUE(texture.fill(record.get()));
  EXPECT_EQ(ReadTexture(texture.texture(), 3, 8), (Samples{3, 2, 1}));
}

// A picture of 5x4 in `code` whose lines lie at `pitch`, in a buffer that ends with the last line's pixels.
struct PaddedPicture {
  PaddedPicture(uint32_t code, uint32_t usedPitch) : image(*MakeRecord(5, 4, code)), pitch(usedPitch) {
    const uint32_t line = 5 * image.bitsPerPixel / 8;
    bytes.resize(size_t{3} * pitch + line);
    for (size_t i = 0; i < bytes.size(); ++i)
      bytes[i] = static_cast<uint8_t>(i % pitch < line ? i * 7 : 0xee);
    for (size_t y = 0; y < 4; ++y) {
      for (size_t x = 0; x<line; x += image.bitDepth> 8 ? 2u : 1u) {
        const size_t at = y * pitch + x;
        samples.push_back(bytes[at] + (image.bitDepth > 8 ? bytes[at + 1] * 256u : 0u));
      }
    }
    image.imageData = bytes.data();
    image.ownedData = nullptr;
    image.linePitch = pitch;
    image.imageSize = static_cast<uint32_t>(bytes.size());
  }
  ZynImage image;
  uint32_t pitch;
  std::vector<uint8_t> bytes;
  Samples samples;
};

TEST_F(QGLTextureUploadTest, uploads_lines_at_any_pitch) {
  for (uint32_t extra = 0; extra < 10; ++extra) {
    for (const auto& [code, line, channels] :
         {std::tuple{ZYN_PIXEL_MONO8, 5u, 1}, {ZYN_PIXEL_RGB8, 15u, 3}, {ZYN_PIXEL_MONO16, 10u, 1}}) {
      const PaddedPicture picture(code, line + extra);
      QGLTexture texture;
      ASSERT_TRUE(texture.init(&picture.image, &parameters));
      ASSERT_TRUE(texture.fill(&picture.image));
      EXPECT_EQ(ReadTexture(texture.texture(), channels, code == ZYN_PIXEL_MONO16 ? 16 : 8), picture.samples)
          << std::hex << code << " " << extra;
    }
  }
}

TEST_F(QGLTextureUploadTest, leaves_the_driver_at_plain_lines) {
  const PaddedPicture picture(ZYN_PIXEL_RGB8, 21);
  QGLTexture texture;
  ASSERT_TRUE(texture.init(&picture.image, &parameters));
  ASSERT_TRUE(texture.fill(&picture.image));
  GLint alignment = 0, rowLength = -1;
  glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
  glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
  EXPECT_EQ(alignment, 1);
  EXPECT_EQ(rowLength, 0);
}

TEST_F(QGLTextureUploadTest, refuses_lines_that_do_not_lie_in_the_buffer) {
  PaddedPicture picture(ZYN_PIXEL_MONO8, 8);
  QGLTexture texture;
  ASSERT_TRUE(texture.init(&picture.image, &parameters));
  ASSERT_TRUE(texture.fill(&picture.image));
  ZynImage lying = picture.image;
  lying.imageSize -= 1;
  EXPECT_FALSE(texture.fill(&lying));
  lying = picture.image;
  lying.linePitch = 9;
  EXPECT_FALSE(texture.fill(&lying));
  lying.linePitch = 4;  // less than a line
  EXPECT_FALSE(texture.fill(&lying));
  lying.linePitch = 0;
  EXPECT_FALSE(texture.fill(&lying));
  lying.linePitch = 0xffffffff;
  EXPECT_FALSE(texture.fill(&lying));
  lying = picture.image;
  lying.imageData = nullptr;
  EXPECT_FALSE(texture.fill(&lying));
  EXPECT_FALSE(texture.fill(nullptr));
  EXPECT_EQ(ReadTexture(texture.texture(), 1, 8), picture.samples);
}

}  // namespace
