// The copying program's shaders with uniforms that no stage sets.
#include <algorithm>
#include <limits>

#include "GLFixture.h"
#include "ZynPixelFormat.h"

namespace {

constexpr uint32_t kWidth = 8, kHeight = 3;

class ImageShaderUniforms : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    input = made(kWidth, kHeight, ZYN_PIXEL_RGB8);
    target = made(kWidth, kHeight, ZYN_PIXEL_RGB8);
    surface->glBindTexture(GL_TEXTURE_2D, input->texture());
    const Record record = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, samples);
    ASSERT_TRUE(input->fillGPU(record.get()));
  }
  void TearDown() override {
    input.reset();
    target.reset();
    GLFixture::TearDown();
  }

  // The copy after `set`, which is handed the program.
  template <typename Set>
  Samples Copied(Set&& set) {
    const uint32_t program = target->useProgram(false, nullptr);
    EXPECT_NE(program, 0u);
    set(program);
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, input->texture());
    EXPECT_TRUE(target->render());
    target->releaseProgram();
    return ReadTexture(target->texture(), 3, 8);
  }
  GLint Location(uint32_t program, const char* name) {
    const GLint location = surface->glGetUniformLocation(program, name);
    EXPECT_GE(location, 0) << name;
    return location;
  }
  Samples WithCeiling(float ceiling, float factor, int mono) {
    return Copied([&](uint32_t program) {
      surface->glUniform1f(Location(program, "colorHigh"), ceiling);
      surface->glUniform1f(Location(program, "colorCoef"), factor);
      surface->glUniform1i(Location(program, "colorMono"), mono);
    });
  }
  Samples WithNumber(const char* name, int value) {
    return Copied([&](uint32_t program) { surface->glUniform1i(Location(program, name), value); });
  }

  const Samples samples = Scattered(kWidth * kHeight * 3, 255);
  std::unique_ptr<QGLImage> input, target;
};

TEST_F(ImageShaderUniforms, a_ceiling_from_0_to_1_holds) {
  for (const uint32_t ceiling : {0u, 51u, 102u, 255u}) {
    for (const uint32_t factor : {1u, 2u}) {
      Samples held, spread;
      for (const uint32_t sample : samples) held.push_back(std::min(sample * factor, ceiling));
      for (size_t i = 0; i < held.size(); ++i) spread.push_back(held[i / 3 * 3]);
      const float high = static_cast<float>(ceiling) / 255;
      EXPECT_EQ(WithCeiling(high, static_cast<float>(factor), 0), held) << ceiling;
      EXPECT_EQ(WithCeiling(high, static_cast<float>(factor), 1), spread) << ceiling;
    }
  }
}

TEST_F(ImageShaderUniforms, a_ceiling_outside_0_to_1_counts_as_1) {
  Samples doubled;
  for (const uint32_t sample : samples) doubled.push_back(std::min(sample * 2, 255u));
  for (const float ceiling : {-0.001F, -3.0F, 1.001F, 200.0F}) {
    EXPECT_EQ(WithCeiling(ceiling, 1, 0), samples) << ceiling;
    EXPECT_EQ(WithCeiling(ceiling, 2, 0), doubled) << ceiling;
  }
}

TEST_F(ImageShaderUniforms, exactly_1_turns) {
  Samples turned;
  constexpr size_t kLine = kWidth * 3;
  for (size_t y = kHeight; y-- > 0;)
    turned.insert(turned.end(), &samples[y * kLine], &samples[y * kLine] + kLine);
  for (const int other : {0, 2, -1, 256}) EXPECT_EQ(WithNumber("flipVert", other), samples) << other;
  EXPECT_EQ(WithNumber("flipVert", 1), turned);
}

TEST_F(ImageShaderUniforms, exactly_1_spreads) {
  Samples spread;
  for (size_t i = 0; i < samples.size(); ++i) spread.push_back(samples[i / 3 * 3]);
  for (const int other : {0, 2, -1, 256}) EXPECT_EQ(WithNumber("colorMono", other), samples) << other;
  EXPECT_EQ(WithNumber("colorMono", 1), spread);
}

}  // namespace
