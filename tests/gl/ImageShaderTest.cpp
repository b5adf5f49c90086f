// The copying program: its uniforms, and what it makes of every value.
#include <algorithm>

#include "GLFixture.h"
#include "QTD/image/PixelFormat.h"
#include "ZynPixelFormat.h"
#include "gl/image/QGLTexture.h"

namespace {

class ImageShaderTest : public GLFixture {
 protected:
  double uniform(QGLImage& image, const char* name) {
    GLfloat value = -77;
    surface->glGetUniformfv(image.program(), surface->glGetUniformLocation(image.program(), name), &value);
    return static_cast<double>(value);
  }

  // The picture of `record` after a copy with `parameters` into a target of `code`.
  Samples copied(const ZynImage& record, uint32_t code, QTD::PROPERTIES* used) {
    QTD::PROPERTIES forTexture = surfaceList();
    QGLTexture input;
    EXPECT_TRUE(input.init(&record, &forTexture));
    EXPECT_TRUE(input.fill(&record));
    auto target = made(record.width, record.height, code);
    EXPECT_TRUE(target->copyTexture(input.texture(), used));
    const bool deep = QTD::PixelFormat(code).depth > 8;
    const int channels = QTD::IsMonoFormat(code) ? 1 : 3;
    return ReadTexture(target->texture(), channels, deep ? 16 : 8);
  }

  QTD::PROPERTIES parameters;
};

TEST_F(ImageShaderTest, is_neutral_without_parameters) {
  auto image = made(2, 2, ZYN_PIXEL_MONO10);
  image->properties().Set("image.color.coef", "3");
  image->properties().Set("image.color.mono", "1");
  image->properties().Set("image.flip.vert", "1");
  for (QTD::PROPERTIES* unused : {static_cast<QTD::PROPERTIES*>(nullptr), &image->properties()}) {
    EXPECT_EQ(image->useProgram(true, nullptr), image->program());
    EXPECT_EQ(image->useProgram(false, unused), image->program());
    EXPECT_EQ(uniform(*image, "colorCoef"), 1.0);
    EXPECT_EQ(uniform(*image, "colorMono"), 0);
    EXPECT_EQ(uniform(*image, "flipVert"), 0);
    EXPECT_EQ(uniform(*image, "colorHigh"), 1.0);
    EXPECT_EQ(uniform(*image, "source"), 0);
  }
  EXPECT_TRUE(image->releaseProgram());
}

TEST_F(ImageShaderTest, takes_its_own_parameters_or_a_list) {
  auto image = made(2, 2, ZYN_PIXEL_MONO10);
  image->properties().Set("image.color.coef", "3.5");
  image->properties().Set("image.color.mono", "1");
  image->properties().Set("image.flip.vert", "1");
  EXPECT_NE(image->useProgram(true, nullptr), 0u);
  EXPECT_EQ(uniform(*image, "colorCoef"), 3.5);
  EXPECT_EQ(uniform(*image, "colorMono"), 1);
  EXPECT_EQ(uniform(*image, "flipVert"), 1);
  parameters.Set("image.color.coef", "-2");
  EXPECT_NE(image->useProgram(true, &parameters), 0u);
  EXPECT_EQ(uniform(*image, "colorCoef"), -2);
  EXPECT_EQ(uniform(*image, "colorMono"), 0);
  EXPECT_EQ(uniform(*image, "flipVert"), 0);
}

TEST_F(ImageShaderTest, a_factor_of_0_is_the_format_s_own) {
  const std::pair<uint32_t, double> factors[] = {
      {ZYN_PIXEL_MONO8, 1},  {ZYN_PIXEL_MONO10, 64}, {ZYN_PIXEL_RGB12, 16},    {ZYN_PIXEL_BGR14, 4},
      {ZYN_PIXEL_MONO16, 1}, {ZYN_PIXEL_RGBA8, 1},   {ZYN_PIXEL_BAYERGR10, 64}};
  for (const auto& [code, factor] : factors) {
    auto image = made(2, 2, code);
    for (const char* unset : {"0", "0.00000001", "-0.00000009", ""}) {
      parameters.Set("image.color.coef", unset);
      EXPECT_NE(image->useProgram(true, &parameters), 0u);
      EXPECT_EQ(uniform(*image, "colorCoef"), factor) << std::hex << code << " " << unset;
    }
    EXPECT_NE(image->useProgram(true, nullptr), 0u);  // not set at all
    EXPECT_EQ(uniform(*image, "colorCoef"), factor) << std::hex << code;
  }
}

TEST_F(ImageShaderTest, is_missing_before_init) {
  const GLNames before = names();
  QGLImage image(surface.get());
  EXPECT_EQ(image.useProgram(true, nullptr), 0u);
  EXPECT_FALSE(image.releaseProgram());
  EXPECT_EQ(names(), before);
}

TEST_F(ImageShaderTest, copies_every_value_of_8_bits) {
  Samples samples(256);
  for (uint32_t i = 0; i < 256; ++i) samples[i] = i;
  const Record record = MakeRecord(16, 16, ZYN_PIXEL_MONO8, samples);
  EXPECT_EQ(copied(*record, ZYN_PIXEL_MONO8, nullptr), samples);
}

TEST_F(ImageShaderTest, copies_every_value_of_16_bits) {
  Samples samples(65536);
  for (uint32_t i = 0; i < 65536; ++i) samples[i] = i;
  const Record record = MakeRecord(256, 256, ZYN_PIXEL_MONO16, samples);
  EXPECT_EQ(copied(*record, ZYN_PIXEL_MONO16, nullptr), samples);
}

TEST_F(ImageShaderTest, brings_10_bits_to_the_full_range) {
  Samples samples(1024), wanted;
  for (uint32_t i = 0; i < 1024; ++i) samples[i] = i;
  for (const uint32_t sample : samples) wanted.push_back(sample * 64);
  const Record record = MakeRecord(32, 32, ZYN_PIXEL_MONO10, samples);
  EXPECT_EQ(copied(*record, ZYN_PIXEL_MONO10, nullptr), wanted);
}

TEST_F(ImageShaderTest, scales_and_holds_at_the_ceiling) {
  const Samples samples = Scattered(64 * 3, 255);
  const Record record = MakeRecord(8, 8, ZYN_PIXEL_RGB8, samples);
  for (const double factor : {2.0, 0.3, 1.0, -1.0}) {
    parameters.Set("image.color.coef", QTD::ToText(factor));
    const Samples result = copied(*record, ZYN_PIXEL_RGB8, &parameters);
    ASSERT_EQ(result.size(), samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
      const double wanted = std::min(samples[i] * (factor > 0 ? factor : 1.0), 255.0);
      EXPECT_NEAR(result[i], wanted, 0.51) << factor;  // rounded to the nearest value
    }
  }
}

TEST_F(ImageShaderTest, spreads_red_where_asked_for) {
  const Samples samples = Scattered(16 * 3, 255);
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_RGB8, samples);
  parameters.Set("image.color.mono", "1");
  Samples wanted;
  for (size_t i = 0; i < samples.size(); ++i) wanted.push_back(samples[i / 3 * 3]);
  EXPECT_EQ(copied(*record, ZYN_PIXEL_RGB8, &parameters), wanted);
  const Record grey = MakeRecord(2, 1, ZYN_PIXEL_MONO8, {50, 60});
  EXPECT_EQ(copied(*grey, ZYN_PIXEL_RGB8, &parameters), (Samples{50, 50, 50, 60, 60, 60}));
  EXPECT_EQ(copied(*grey, ZYN_PIXEL_RGB8, nullptr), (Samples{50, 0, 0, 60, 0, 0}));
}

TEST_F(ImageShaderTest, turns_the_picture_where_asked_for) {
  const Samples samples = Scattered(5 * 3, 255);
  const Record record = MakeRecord(5, 3, ZYN_PIXEL_MONO8, samples);
  parameters.Set("image.flip.vert", "1");
  Samples wanted;
  for (size_t y = 3; y-- > 0;) wanted.insert(wanted.end(), &samples[y * 5], &samples[y * 5] + 5);
  EXPECT_EQ(copied(*record, ZYN_PIXEL_MONO8, &parameters), wanted);
}

TEST_F(ImageShaderTest, reads_every_texel_at_odd_sizes) {
  for (const uint32_t width : {1u, 2u, 3u, 7u, 64u, 129u}) {
    for (const uint32_t height : {1u, 2u, 5u, 33u}) {
      const Samples samples = Scattered(size_t{width} * height * 3, 65535, width * 1000 + height);
      const Record record = MakeRecord(width, height, ZYN_PIXEL_RGB16, samples);
      EXPECT_EQ(copied(*record, ZYN_PIXEL_RGB16, nullptr), samples) << width << "x" << height;
    }
  }
}

TEST_F(ImageShaderTest, a_copy_needs_a_target_and_a_texture) {
  auto image = made(2, 2, ZYN_PIXEL_MONO8);
  EXPECT_FALSE(image->copyTexture(0, nullptr));
  QGLImage empty(surface.get());
  EXPECT_FALSE(empty.copyTexture(image->texture(), nullptr));
}

TEST_F(ImageShaderTest, a_copy_leaves_no_target_and_no_program) {
  auto first = made(2, 2, ZYN_PIXEL_MONO8), second = made(2, 2, ZYN_PIXEL_MONO8);
  EXPECT_TRUE(second->copyTexture(first->texture(), nullptr));
  GLint program = -1, framebuffer = -1;
  glGetIntegerv(GL_CURRENT_PROGRAM, &program);
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
  EXPECT_EQ(program, 0);
  EXPECT_EQ(framebuffer, 0);
  EXPECT_EQ(glError(), 0u);
}

}  // namespace
