#include <algorithm>

#include "GLFixture.h"
#include "GLSpy.h"
#include "QTD/image/PixelFormat.h"
#include "ZynPixelFormat.h"

namespace {

int uploads = 0;
void CountTexSubImage2D(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, const GLvoid*) {
  ++uploads;
}

class QGLImageTransferTest : public GLFixture {
 protected:
  // Uploads into the image's own texture.
  bool upload(QGLImage& image, const ZynImage* record) {
    surface->glBindTexture(GL_TEXTURE_2D, image.texture());
    const bool good = image.fillGPU(record);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    return good;
  }
  // A target that holds the samples.
  std::unique_ptr<QGLImage> filled(uint32_t width, uint32_t height, uint32_t code, const Samples& samples) {
    auto image = made(width, height, code);
    const Record record = MakeRecord(width, height, code, samples);
    EXPECT_TRUE(upload(*image, record.get()));
    return image;
  }
};

TEST_F(QGLImageTransferTest, every_sample_survives_the_way_up_and_back) {
  for (const auto& [code, channels] : {std::pair<uint32_t, uint32_t>{ZYN_PIXEL_MONO8, 1},
                                       {ZYN_PIXEL_MONO12, 1},
                                       {ZYN_PIXEL_MONO16, 1},
                                       {ZYN_PIXEL_RGB8, 3},
                                       {ZYN_PIXEL_BGR8, 3},
                                       {ZYN_PIXEL_RGB16, 3},
                                       {ZYN_PIXEL_BGR10, 3}}) {
    for (const uint32_t width : {1u, 2u, 3u, 5u, 6u, 31u}) {
      const int depth = QTD::PixelFormat(code).depth;
      const Samples samples = Scattered(size_t{width} * 3 * channels, (1u << depth) - 1, width);
      auto image = filled(width, 3, code, samples);
      EXPECT_EQ(readBack(*image), samples) << std::hex << code << " " << width;
    }
  }
}

TEST_F(QGLImageTransferTest, uploads_its_own_record) {
  auto image = made(3, 2, ZYN_PIXEL_MONO8);
  image->image()->imageData[0] = 9;
  image->image()->imageData[image->image()->linePitch + 2] = 8;
  EXPECT_TRUE(upload(*image, nullptr));
  EXPECT_EQ(ReadTexture(image->texture(), 1, 8), (Samples{9, 0, 0, 0, 0, 8}));
}

TEST_F(QGLImageTransferTest, uploads_into_the_texture_that_is_bound) {
  auto image = made(2, 1, ZYN_PIXEL_MONO8), other = made(2, 1, ZYN_PIXEL_MONO8);
  const Record record = MakeRecord(2, 1, ZYN_PIXEL_MONO8, {5, 6});
  surface->glBindTexture(GL_TEXTURE_2D, other->texture());
  EXPECT_TRUE(image->fillGPU(record.get()));
  EXPECT_EQ(ReadTexture(other->texture(), 1, 8), (Samples{5, 6}));
}

TEST_F(QGLImageTransferTest, refuses_another_size_and_missing_pixels) {
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  const Swapped counted(FunctionTable::of(*surface).TexSubImage2D, &CountTexSubImage2D);
  uploads = 0;
  for (const auto& [width, height] : {std::pair{5u, 4u}, {4u, 5u}, {3u, 4u}, {4u, 3u}}) {
    const Record other = MakeRecord(width, height, ZYN_PIXEL_MONO8);
    EXPECT_FALSE(upload(*image, other.get())) << width << "x" << height;
  }
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  ZynImage lying = *record;
  lying.imageData = nullptr;
  EXPECT_FALSE(upload(*image, &lying));
  lying = *record;
  lying.width = 0;
  EXPECT_FALSE(upload(*image, &lying));
  QGLImage empty(surface.get());
  EXPECT_FALSE(empty.fillGPU(record.get()));
  EXPECT_FALSE(empty.fillGPU(nullptr));
  EXPECT_EQ(uploads, 0);
}

TEST_F(QGLImageTransferTest, uploads_at_the_record_s_pitch_and_within_its_size) {
  auto image = made(3, 2, ZYN_PIXEL_RGB8);
  for (const uint32_t pitch : {9u, 10u, 11u, 12u, 16u, 21u}) {
    std::vector<uint8_t> bytes(pitch + 9);
    Samples wanted;
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 5 + pitch);
    for (size_t y = 0; y < 2; ++y) wanted.insert(wanted.end(), &bytes[y * pitch], &bytes[y * pitch] + 9);
    ZynImage record = *MakeRecord(3, 2, ZYN_PIXEL_RGB8);
    record.imageData = bytes.data();
    record.linePitch = pitch;
    record.imageSize = static_cast<uint32_t>(bytes.size());
    EXPECT_TRUE(upload(*image, &record)) << pitch;
    EXPECT_EQ(ReadTexture(image->texture(), 3, 8), wanted) << pitch;
    record.imageSize -= 1;
    EXPECT_FALSE(upload(*image, &record)) << pitch;
  }
}

TEST_F(QGLImageTransferTest, mirrors_the_host_s_lines_when_the_turn_is_set) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12}) {
    auto image = made(5, 2, code);
    image->properties().Set("image.flip.vert", "1");
    const Record record = MakeRecord(5, 2, code, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_TRUE(upload(*image, record.get()));
    const Samples mirrored{5, 4, 3, 2, 1, 10, 9, 8, 7, 6};
    EXPECT_EQ(SamplesOf(*record), mirrored);
    EXPECT_EQ(ReadTexture(image->texture(), 1, code == ZYN_PIXEL_MONO8 ? 8 : 16), mirrored);
    image->properties().Set("image.flip.vert", "2");  // neither 0 nor 1: not mirrored
    EXPECT_TRUE(upload(*image, record.get()));
    EXPECT_EQ(SamplesOf(*record), mirrored);
  }
}

TEST_F(QGLImageTransferTest, mirrors_colour_by_its_first_samples_alone) {
  auto image = made(2, 1, ZYN_PIXEL_RGB8);
  image->properties().Set("image.flip.vert", "1");
  const Record record = MakeRecord(2, 1, ZYN_PIXEL_RGB8, {1, 2, 3, 4, 5, 6});
  EXPECT_TRUE(upload(*image, record.get()));
  EXPECT_EQ(SamplesOf(*record), (Samples{2, 1, 3, 4, 5, 6}));
}

TEST_F(QGLImageTransferTest, skips_the_upload_where_the_mirror_fails) {
  auto image = made(4, 2, ZYN_PIXEL_MONO8);
  image->properties().Set("image.flip.vert", "1");
  const Record record = MakeRecord(4, 2, ZYN_PIXEL_MONO8, Scattered(8, 255));
  record->bitDepth = 16;  // words that would reach past the line
  const Samples before = SamplesOf(*MakeRecord(4, 2, ZYN_PIXEL_MONO8, Scattered(8, 255)));
  const Swapped counted(FunctionTable::of(*surface).TexSubImage2D, &CountTexSubImage2D);
  uploads = 0;
  EXPECT_TRUE(upload(*image, record.get()));  // the driver had nothing to say
  EXPECT_EQ(uploads, 0);
  record->bitDepth = 8;
  EXPECT_EQ(SamplesOf(*record), before);
}

TEST_F(QGLImageTransferTest, an_error_of_the_driver_fails_the_upload) {
  auto image = made(4, 2, ZYN_PIXEL_MONO8);
  surface->glEnable(0xffff);
  EXPECT_FALSE(upload(*image, nullptr));
  EXPECT_EQ(surface->properties.GetString("error"),
            "QGLImage::fillGPU() OpenGL error 1280 (GL_INVALID_ENUM)");
  EXPECT_TRUE(upload(*image, nullptr));
  GLint framebuffer = -1;
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
  EXPECT_EQ(framebuffer, 0);
}

TEST_F(QGLImageTransferTest, reads_into_a_record_of_another_format) {
  const Samples rgb{100, 200, 300, 400, 500, 600};
  auto image = filled(2, 1, ZYN_PIXEL_RGB16, rgb);
  const Record bgr = MakeRecord(2, 1, ZYN_PIXEL_BGR16);
  EXPECT_EQ(image->readGPU(bgr.get()), bgr->imageData);
  EXPECT_EQ(SamplesOf(*bgr), (Samples{300, 200, 100, 600, 500, 400}));
  const Record red = MakeRecord(2, 1, ZYN_PIXEL_MONO16);
  EXPECT_EQ(image->readGPU(red.get()), red->imageData);
  EXPECT_EQ(SamplesOf(*red), (Samples{100, 400}));
  const Record bytes = MakeRecord(2, 1, ZYN_PIXEL_RGB8);
  EXPECT_EQ(image->readGPU(bytes.get()), bytes->imageData);
  const Samples eight = SamplesOf(*bytes);
  ASSERT_EQ(eight.size(), 6u);
  for (size_t i = 0; i < 6; ++i) EXPECT_NEAR(eight[i], rgb[i] / 257.0, 0.51);
}

// A buffer of `size` bytes for a picture of 3x2 pixels.
struct Buffer {
  Buffer(uint32_t code, uint32_t pitch, uint32_t size, uint32_t guard = 64)
      : record(*MakeRecord(3, 2, code)), bytes(size + guard, 0xee) {
    record.imageData = bytes.data();
    record.ownedData = nullptr;
    record.linePitch = pitch;
    record.imageSize = size;
  }
  bool isUntouchedFrom(size_t start) const {
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end(),
                       [](uint8_t byte) { return byte == 0xee; });
  }
  ZynImage record;
  std::vector<uint8_t> bytes;
};

TEST_F(QGLImageTransferTest, reads_at_the_pitch_that_fills_the_buffer) {
  const Samples samples = Scattered(18, 255);
  auto image = filled(3, 2, ZYN_PIXEL_RGB8, samples);
  for (const uint32_t pitch : {9u, 10u, 12u, 13u, 15u, 16u}) {
    Buffer buffer(ZYN_PIXEL_RGB8, pitch, 2 * pitch);
    ASSERT_NE(image->readGPU(&buffer.record), nullptr) << pitch;
    EXPECT_EQ(SamplesOf(buffer.record), samples) << pitch;
    for (uint32_t x = 9; x < pitch; ++x) EXPECT_EQ(buffer.bytes[x], 0xee) << "padding is not written";
    EXPECT_TRUE(buffer.isUntouchedFrom(pitch + 9)) << pitch;
  }
}

TEST_F(QGLImageTransferTest, reads_without_gaps_where_that_fills_the_buffer) {
  const Samples samples = Scattered(18, 255);
  auto image = filled(3, 2, ZYN_PIXEL_RGB8, samples);
  for (const uint32_t pitch : {12u, 0u, 4u, 0xffffffffu}) {
    Buffer buffer(ZYN_PIXEL_RGB8, pitch, 18);
    ASSERT_NE(image->readGPU(&buffer.record), nullptr) << pitch;
    EXPECT_EQ(Samples(buffer.bytes.begin(), buffer.bytes.begin() + 18), samples);
    EXPECT_TRUE(buffer.isUntouchedFrom(18));
  }
}

TEST_F(QGLImageTransferTest, refuses_a_buffer_of_any_other_size) {
  auto image = filled(3, 2, ZYN_PIXEL_MONO8, Scattered(6, 255));
  for (const uint32_t size : {0u, 1u, 5u, 7u, 9u, 17u}) {
    Buffer buffer(ZYN_PIXEL_MONO8, 4, size);
    EXPECT_EQ(image->readGPU(&buffer.record), nullptr) << size;
    EXPECT_TRUE(buffer.isUntouchedFrom(0)) << size;
  }
  Buffer overlapping(ZYN_PIXEL_MONO8, 2, 4);  // lines shorter than the picture's
  EXPECT_EQ(image->readGPU(&overlapping.record), nullptr);
  EXPECT_TRUE(overlapping.isUntouchedFrom(0));
  for (const uint32_t size : {6u, 8u}) {
    Buffer buffer(ZYN_PIXEL_MONO8, 4, size);
    EXPECT_NE(image->readGPU(&buffer.record), nullptr) << size;
  }
}

TEST_F(QGLImageTransferTest, refuses_families_that_are_not_read) {
  auto image = filled(3, 2, ZYN_PIXEL_RGB8, Scattered(18, 255));
  for (const uint32_t code :
       {ZYN_PIXEL_RGBA8, ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8}) {
    const Record record = MakeRecord(3, 2, code);
    EXPECT_EQ(image->readGPU(record.get()), nullptr) << std::hex << code;
  }
  EXPECT_EQ(made(3, 2, ZYN_PIXEL_BAYERRG8)->readGPU(nullptr), nullptr);
  EXPECT_EQ(made(3, 2, ZYN_PIXEL_RGBA8)->readGPU(nullptr), nullptr);
}

TEST_F(QGLImageTransferTest, reads_nothing_without_target_or_pixels) {
  QGLImage empty(surface.get());
  EXPECT_EQ(empty.readGPU(nullptr), nullptr);
  auto image = filled(3, 2, ZYN_PIXEL_MONO8, Scattered(6, 255));
  ZynImage bare = *MakeRecord(3, 2, ZYN_PIXEL_MONO8);
  bare.imageData = nullptr;
  EXPECT_EQ(image->readGPU(&bare), nullptr);
  const Record record = MakeRecord(3, 2, ZYN_PIXEL_MONO8);
  EXPECT_EQ(empty.readGPU(record.get()), nullptr);
  EXPECT_EQ(empty.readGPU(nullptr), nullptr);
}

TEST_F(QGLImageTransferTest, a_read_leaves_nothing_bound_and_tells_errors) {
  auto image = filled(3, 2, ZYN_PIXEL_MONO8, Scattered(6, 255));
  surface->glBindTexture(GL_TEXTURE_2D, image->texture());
  surface->glEnable(0xffff);
  EXPECT_NE(image->readGPU(nullptr), nullptr);
  EXPECT_EQ(surface->properties.GetString("error"),
            "QGLImage::readGPU() OpenGL error 1280 (GL_INVALID_ENUM)");
  GLint texture = -1, framebuffer = -1, alignment = -1, rowLength = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
  glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &framebuffer);
  glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
  glGetIntegerv(GL_PACK_ROW_LENGTH, &rowLength);
  EXPECT_EQ(texture, 0);
  EXPECT_EQ(framebuffer, 0);
  EXPECT_EQ(alignment, 1);
  EXPECT_EQ(rowLength, 0);
}

}  // namespace
