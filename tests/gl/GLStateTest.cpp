// State of the driver that a target or a texture sets for itself, and leaves as others expect it.
#include <algorithm>

#include "GLFixture.h"
#include "GLSpy.h"
#include "ZynPixelFormat.h"
#include "gl/image/QGLTexture.h"

namespace {

class GLStateTest : public GLFixture {
 protected:
  static GLint State(GLenum name) {
    GLint value = -1;
    glGetIntegerv(name, &value);
    return value;
  }
  std::unique_ptr<QGLImage> Filled(uint32_t width, uint32_t height, uint32_t code, const Samples& samples) {
    auto image = made(width, height, code);
    const Record record = MakeRecord(width, height, code, samples);
    surface->glBindTexture(GL_TEXTURE_2D, image->texture());
    EXPECT_TRUE(image->fillGPU(record.get()));
    return image;
  }
};

// What the reads ask the driver for.
std::vector<GLint> rowLengths;
void (*readPixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, GLvoid*) = nullptr;
void NoteReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                    GLvoid* pixels) {
  GLint rowLength = -1;
  glGetIntegerv(GL_PACK_ROW_LENGTH, &rowLength);
  rowLengths.push_back(rowLength);
  readPixels(x, y, width, height, format, type, pixels);
}

TEST_F(GLStateTest, a_read_at_a_pitch_leaves_the_next_plain_read_alone) {
  const Samples wide = Scattered(6 * 4, 255), narrow = Scattered(5 * 3 * 3, 65535, 7);
  auto first = Filled(6, 4, ZYN_PIXEL_MONO8, wide);
  auto second = Filled(5, 3, ZYN_PIXEL_RGB16, narrow);
  constexpr uint32_t kPitch = 23;  // no alignment of its line: counted in pixels
  std::vector<uint8_t> bytes(kPitch * 4, 0xee);
  ZynImage padded = *MakeRecord(6, 4, ZYN_PIXEL_MONO8);
  padded.imageData = bytes.data();
  padded.linePitch = kPitch;
  padded.imageSize = kPitch * 4;
  readPixels = FunctionTable::of(*surface).ReadPixels;
  rowLengths.clear();
  {
    const Swapped noted(FunctionTable::of(*surface).ReadPixels, &NoteReadPixels);
    ASSERT_NE(first->readGPU(&padded), nullptr);
  }
  EXPECT_EQ(rowLengths, std::vector<GLint>{23});
  EXPECT_EQ(SamplesOf(padded), wide);
  EXPECT_EQ(State(GL_PACK_ROW_LENGTH), 0);
  EXPECT_EQ(State(GL_PACK_ALIGNMENT), 1);
  EXPECT_EQ(readBack(*second), narrow);
  // Also one that reads for itself.
  std::vector<uint8_t> own(6 * 4 + 1, 0xee);
  surface->glBindTexture(GL_TEXTURE_2D, first->texture());
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_UNSIGNED_BYTE, own.data());
  surface->glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(Samples(own.begin(), own.end() - 1), wide);
  EXPECT_EQ(own.back(), 0xee);
}

TEST_F(GLStateTest, an_upload_at_a_pitch_leaves_the_next_plain_upload_alone) {
  const Samples wide = Scattered(6 * 4, 255);
  auto image = made(6, 4, ZYN_PIXEL_MONO8);
  std::vector<uint8_t> bytes(23 * 4);
  ZynImage padded = *MakeRecord(6, 4, ZYN_PIXEL_MONO8);
  padded.imageData = bytes.data();
  padded.linePitch = 23;
  padded.imageSize = 23 * 4;
  surface->glBindTexture(GL_TEXTURE_2D, image->texture());
  ASSERT_TRUE(image->fillGPU(&padded));
  EXPECT_EQ(State(GL_UNPACK_ROW_LENGTH), 0);
  EXPECT_EQ(State(GL_UNPACK_ALIGNMENT), 1);
  EXPECT_EQ(readBack(*Filled(6, 4, ZYN_PIXEL_MONO8, wide)), wide);
}

TEST_F(GLStateTest, a_target_unbinds_the_buffer_of_uploads_before_it_is_drawn_or_filled) {
  const Samples samples = Scattered(6 * 4, 255);
  auto source = Filled(6, 4, ZYN_PIXEL_MONO8, samples);
  auto target = made(6, 4, ZYN_PIXEL_MONO8);
  GLuint buffer = 0;
  surface->glGenBuffers(1, &buffer);
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  surface->glBindTexture(GL_TEXTURE_2D, source->texture());
  ASSERT_NE(target->useProgram(false, nullptr), 0u);
  EXPECT_TRUE(target->render());
  EXPECT_EQ(State(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
  EXPECT_TRUE(target->releaseProgram());
  EXPECT_EQ(ReadTexture(target->texture(), 1, 8), samples);

  // An upload unbinds it, too.
  auto filled = made(6, 4, ZYN_PIXEL_MONO8);
  const Record record = MakeRecord(6, 4, ZYN_PIXEL_MONO8, samples);
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  surface->glBindTexture(GL_TEXTURE_2D, filled->texture());
  EXPECT_TRUE(filled->fillGPU(record.get()));
  EXPECT_EQ(State(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
  EXPECT_EQ(readBack(*filled), samples);
  surface->glDeleteBuffers(1, &buffer);
}

TEST_F(GLStateTest, buffers_that_a_host_left_bound_keep_no_picture_from_the_card_and_back) {
  const Samples samples = Scattered(6 * 4, 255);
  const Record record = MakeRecord(6, 4, ZYN_PIXEL_MONO8, samples), back = MakeRecord(6, 4, ZYN_PIXEL_MONO8);
  GLuint buffer = 0;
  surface->glGenBuffers(1, &buffer);
  QTD::PROPERTIES parameters = surfaceList();
  QGLTexture texture;
  ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 6, 4, &parameters));
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  EXPECT_TRUE(texture.fill(record.get()));
  EXPECT_EQ(ReadTexture(texture.texture(), 1, 8), samples);

  auto target = Filled(6, 4, ZYN_PIXEL_MONO8, samples);
  surface->glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
  EXPECT_EQ(target->readGPU(back.get()), back->imageData);
  EXPECT_EQ(SamplesOf(*back), samples);
  surface->glDeleteBuffers(1, &buffer);
}

TEST_F(GLStateTest, a_texture_that_is_bound_is_enabled) {
  QTD::PROPERTIES parameters = surfaceList();
  QGLTexture texture;
  ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 2, 2, &parameters));
  surface->glDisable(GL_TEXTURE_2D);
  ASSERT_FALSE(surface->glIsEnabled(GL_TEXTURE_2D));
  EXPECT_TRUE(texture.bind());
  EXPECT_TRUE(surface->glIsEnabled(GL_TEXTURE_2D));
  texture.unbind();
}

// Shaders and programs, too.
TEST_F(GLStateTest, a_target_that_is_deleted_outside_begin_and_end_leaves_no_names) {
  const GLNames before = names();
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  const GLNames with = names();
  EXPECT_EQ(with.programs, before.programs + 1);
  EXPECT_GE(with.shaders, before.shaders);
  surface->end(nullptr, false);
  image.reset();
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(names(), before);
}

}  // namespace
