// Textures that are made for a format and a size: the format is encoded to a code, and decoded again.
#include <string>

#include "GLFixture.h"
#include "GLSpy.h"
#include "ZynPixelFormat.h"
#include "gl/image/QGLTexture.h"

namespace {

struct Asked {
  GLint internalFormat = -1;
  GLenum format = 1, type = 0;
} asked;

void NoteTexImage(GLenum, GLint, GLint internalFormat, GLsizei, GLsizei, GLint, GLenum format, GLenum type,
                  const GLvoid*) {
  asked = {internalFormat, format, type};
}

QTD::PixelFormat FormatOf(QTD::PixelFormat::Family family, uint32_t pattern, int depth) {
  QTD::PixelFormat format(0);
  format.family = family;
  format.pattern = pattern;
  format.depth = depth;
  return format;
}

class QGLTextureFormatTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    parameters = surfaceList();
    asked = Asked();
  }
  QTD::PROPERTIES parameters;
};

TEST_F(QGLTextureFormatTest, a_format_that_has_a_code_stays_what_it_is) {
  struct Row {
    QTD::PixelFormat::Family family;
    uint32_t pattern;
    int depth;
    GLint internalFormat;
    GLenum format, type;
  };
  using QTD::PixelFormat;
  const Row rows[] = {
      {PixelFormat::Mono, 0, 8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {PixelFormat::Mono, 0, 12, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {PixelFormat::Rgb, 0, 8, GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
      {PixelFormat::Rgb, 1, 14, GL_RGB16, GL_BGR, GL_UNSIGNED_SHORT},
      {PixelFormat::Rgba, 0, 8, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
      {PixelFormat::Rgba, 1, 8, GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE},
      {PixelFormat::TrueSense, 3, 8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {PixelFormat::TrueSense, 5, 12, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
  };
  const Swapped noted(FunctionTable::of(*surface).TexImage2D, &NoteTexImage);
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.family) + "/" + std::to_string(row.pattern) + "/" +
                 std::to_string(row.depth));
    QGLTexture texture;
    ASSERT_TRUE(texture.init(FormatOf(row.family, row.pattern, row.depth), 4, 3, &parameters));
    EXPECT_EQ(texture.format().family, row.family);
    EXPECT_EQ(texture.format().pattern, row.pattern);
    EXPECT_EQ(texture.format().depth, row.depth);
    EXPECT_EQ(asked.internalFormat, row.internalFormat);
    EXPECT_EQ(asked.format, row.format);
    EXPECT_EQ(asked.type, row.type);
  }
}

// The code that Bayer samples are encoded to is no Bayer code: its family byte is that of monochrome. Samples
// of four channels have a code for 8 bits alone.
TEST_F(QGLTextureFormatTest, a_format_whose_code_says_less_becomes_unknown) {
  using QTD::PixelFormat;
  const Swapped noted(FunctionTable::of(*surface).TexImage2D, &NoteTexImage);
  for (const auto& [family, depth, decoded] : {std::tuple{PixelFormat::Bayer, 8, 8},
                                               {PixelFormat::Bayer, 10, 10},
                                               {PixelFormat::Bayer, 16, 16},
                                               {PixelFormat::Rgba, 16, 8},
                                               {PixelFormat::Rgba, 10, 8}}) {
    SCOPED_TRACE(std::to_string(family) + "/" + std::to_string(depth));
    QTD::PixelFormat format = FormatOf(family, 1, depth);
    format.properties.Set("note", "kept");
    QGLTexture texture;
    EXPECT_TRUE(texture.init(format, 4, 3, &parameters));
    EXPECT_EQ(texture.format().family, PixelFormat::Unknown);
    EXPECT_EQ(texture.format().depth, decoded);
    EXPECT_EQ(texture.format().properties.GetString("note"), "kept");
    EXPECT_EQ(asked.internalFormat, 0);
    EXPECT_EQ(asked.format, 0u);
    EXPECT_EQ(asked.type, static_cast<GLenum>(decoded == 8 ? GL_UNSIGNED_BYTE : GL_UNSIGNED_SHORT));
  }
}

TEST_F(QGLTextureFormatTest, nothing_is_uploaded_into_a_texture_of_no_format) {
  QGLTexture texture;
  EXPECT_TRUE(texture.init(FormatOf(QTD::PixelFormat::Bayer, 0, 8), 4, 3, &parameters));
  EXPECT_TRUE(texture.isValid());
  while (glError() != GL_NO_ERROR) continue;
  const Record record = MakeRecord(4, 3, ZYN_PIXEL_BAYERGR8, Scattered(12, 255));
  texture.fill(record.get());
  while (glError() != GL_NO_ERROR) continue;
  surface->glBindTexture(GL_TEXTURE_2D, texture.texture());
  GLint width = -1;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
  EXPECT_EQ(width, 0);
  surface->glBindTexture(GL_TEXTURE_2D, 0);
}

}  // namespace
