#include "gl/image/QGLTexture.h"

#include "GLFixture.h"
#include "GLSpy.h"
#include "ZynPixelFormat.h"

namespace {

// What the last glTexImage2D was given.
struct Allocation {
  int calls = 0;
  GLint internalFormat = -1;
  GLsizei width = -1, height = -1;
  GLenum format = 1, type = 0;
  const void* pixels = nullptr;
} allocation;

void NoteTexImage2D(GLenum, GLint, GLint internalFormat, GLsizei width, GLsizei height, GLint, GLenum format,
                    GLenum type, const GLvoid* pixels) {
  allocation = {allocation.calls + 1, internalFormat, width, height, format, type, pixels};
}

class QGLTextureTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    parameters = surfaceList();
    allocation = Allocation();
  }

  GLint textureParameter(uint32_t texture, GLenum name) {
    GLint value = -1;
    surface->glBindTexture(GL_TEXTURE_2D, texture);
    surface->glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    return value;
  }

  QTD::PROPERTIES parameters;
};

TEST_F(QGLTextureTest, knows_nearest_filter_and_no_surface_at_first) {
  QGLTexture texture;
  EXPECT_EQ(texture.Parameters().GetString("filter"), "9728");
  EXPECT_TRUE(texture.Parameters().Has("surface"));
  EXPECT_EQ(texture.Parameters().GetPointer("surface"), nullptr);
  EXPECT_FALSE(texture.isValid());
  EXPECT_EQ(texture.texture(), 0u);
  EXPECT_EQ(texture.checkError("here"), 0u);
}

TEST_F(QGLTextureTest, is_made_for_an_image) {
  const GLNames before = names();
  const Record record = MakeRecord(5, 3, ZYN_PIXEL_MONO10);
  QGLTexture texture;
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  EXPECT_TRUE(texture.isValid());
  EXPECT_EQ(names().textures, before.textures + 1);
  EXPECT_EQ(texture.Parameters().GetString("size.x"), "5");
  EXPECT_EQ(texture.Parameters().GetString("size.y"), "3");
  EXPECT_EQ(texture.Parameters().GetInt("pixeltype"), ZYN_PIXEL_MONO10);
  EXPECT_EQ(texture.format().depth, 10);
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_MIN_FILTER), GL_NEAREST);
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_MAG_FILTER), GL_NEAREST);
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_WRAP_S), GL_CLAMP);
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_WRAP_T), GL_CLAMP);
  texture.done();
  EXPECT_FALSE(texture.isValid());
  EXPECT_EQ(names(), before);
}

TEST_F(QGLTextureTest, takes_its_filter_from_the_list) {
  parameters.Set("filter", "9729");
  const Record record = MakeRecord(2, 2, ZYN_PIXEL_MONO8);
  QGLTexture texture;
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_MIN_FILTER), GL_LINEAR);
  EXPECT_EQ(textureParameter(texture.texture(), GL_TEXTURE_MAG_FILTER), GL_LINEAR);
}

TEST_F(QGLTextureTest, allocates_by_the_table_of_formats) {
  const Swapped noted(FunctionTable::of(*surface).TexImage2D, &NoteTexImage2D);
  struct Row {
    uint32_t code;
    GLint internalFormat;
    GLenum format, type;
  };
  const Row rows[] = {
      {ZYN_PIXEL_MONO8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_MONO10, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_MONO16, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_RGB8, GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_RGB12, GL_RGB16, GL_RGB, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_BGR8, GL_RGB8, GL_BGR, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BGR16, GL_RGB16, GL_BGR, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_RGBA8, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BGRA8, GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BAYERRG8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BAYERBG14, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_10, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_YUV422_8_UYVY, 0, 0, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_MONO12PACKED, 0, 0, GL_UNSIGNED_BYTE},  // unknown as a decoded format
  };
  for (const Row& row : rows) {
    const Record record = MakeRecord(6, 4, row.code);
    QGLTexture texture;
    EXPECT_TRUE(texture.init(record.get(), &parameters));
    EXPECT_EQ(allocation.internalFormat, row.internalFormat) << std::hex << row.code;
    EXPECT_EQ(allocation.format, row.format) << std::hex << row.code;
    EXPECT_EQ(allocation.type, row.type) << std::hex << row.code;
    EXPECT_EQ(allocation.width, 6);
    EXPECT_EQ(allocation.height, 4);
    EXPECT_EQ(allocation.pixels, nullptr);
  }
}

TEST_F(QGLTextureTest, is_refused_without_surface_image_or_size) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  QTD::PROPERTIES garbage;
  garbage.Set("surface", "0x1234");
  QGLTexture texture;
  EXPECT_FALSE(texture.init(record.get(), nullptr));
  EXPECT_FALSE(texture.init(record.get(), &garbage));
  EXPECT_FALSE(texture.init(static_cast<const ZynImage*>(nullptr), &parameters));
  for (const auto& [width, height] : {std::pair{0u, 4u}, {4u, 0u}, {0xffffffffu, 4u}, {4u, 0x80000000u}}) {
    ZynImage lying = *record;
    lying.width = width;
    lying.height = height;
    EXPECT_FALSE(texture.init(&lying, &parameters)) << width << " " << height;
    EXPECT_FALSE(texture.isValid());
  }
}

TEST_F(QGLTextureTest, keeps_to_the_limit_of_textures) {
  surface->properties.Set("gl.texture", "64");
  QGLTexture texture;
  ZynImage image = *MakeRecord(64, 64, ZYN_PIXEL_MONO8);
  EXPECT_TRUE(texture.init(&image, &parameters));
  image.width = 65;
  EXPECT_FALSE(texture.init(&image, &parameters));
  image.width = 64;
  image.height = 65;
  EXPECT_FALSE(texture.init(&image, &parameters));
  EXPECT_FALSE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 65, 1, &parameters));
  EXPECT_FALSE(texture.isValid());
}

TEST_F(QGLTextureTest, is_refused_outside_begin_and_end) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  surface->end(nullptr, false);
  QGLTexture texture;
  EXPECT_FALSE(texture.init(record.get(), &parameters));
}

TEST_F(QGLTextureTest, an_adopted_texture_is_neither_made_nor_deleted) {
  GLuint foreign = 0;
  surface->glGenTextures(1, &foreign);
  surface->glBindTexture(GL_TEXTURE_2D, foreign);
  const GLNames before = names();
  {
    const Swapped noted(FunctionTable::of(*surface).TexImage2D, &NoteTexImage2D);
    parameters.Set("texture", std::to_string(foreign));
    const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
    QGLTexture texture;
    ASSERT_TRUE(texture.init(record.get(), &parameters));
    EXPECT_EQ(texture.texture(), foreign);
    EXPECT_EQ(allocation.calls, 0);
    EXPECT_EQ(names(), before);
    texture.done();
    EXPECT_EQ(texture.texture(), 0u);
  }
  EXPECT_EQ(names(), before);
  EXPECT_TRUE(surface->glIsTexture(foreign));
  surface->glDeleteTextures(1, &foreign);
}

TEST_F(QGLTextureTest, is_made_for_a_format_and_a_size) {
  QTD::PixelFormat format(ZYN_PIXEL_BGR12);
  format.properties.Set("note", "kept");
  parameters.Set("size.x", "7");
  parameters.Set("size.y", "9");
  QGLTexture texture;
  {
    const Swapped noted(FunctionTable::of(*surface).TexImage2D, &NoteTexImage2D);
    ASSERT_TRUE(texture.init(format, 3, 2, &parameters));
    EXPECT_EQ(allocation.width, 3);
    EXPECT_EQ(allocation.height, 2);
    EXPECT_EQ(allocation.internalFormat, GL_RGB16);
    EXPECT_EQ(allocation.format, GLenum{GL_BGR});
    EXPECT_EQ(texture.format().properties.GetString("note"), "kept");
    EXPECT_EQ(texture.Parameters().GetString("size.x"), "3");
    ASSERT_TRUE(texture.init(format, 0, -1, &parameters));
    EXPECT_EQ(allocation.width, 7);
    EXPECT_EQ(allocation.height, 9);
    EXPECT_EQ(texture.Parameters().GetString("size.y"), "9");
  }
  EXPECT_FALSE(texture.init(QTD::PixelFormat(0), 3, 2, &parameters));
  EXPECT_FALSE(texture.init(format, 0, 0, nullptr));
  QGLTexture lost;
  EXPECT_FALSE(lost.init(format, 3, 2, nullptr));
}

TEST_F(QGLTextureTest, a_second_init_deletes_the_first_texture) {
  const GLNames before = names();
  {
    QGLTexture texture;
    ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 3, 2, &parameters));
    ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 4, 4, &parameters));
    EXPECT_EQ(names().textures, before.textures + 1);
  }
  EXPECT_EQ(names(), before);
}

TEST_F(QGLTextureTest, is_deleted_also_outside_begin_and_end) {
  const GLNames before = names();
  QGLTexture texture;
  ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 3, 2, &parameters));
  surface->end(nullptr, false);
  texture.done();
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(names(), before);
}

TEST_F(QGLTextureTest, outlives_its_surface) {
  QGLTexture texture;
  ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 3, 2, &parameters));
  surface.reset();
  texture.done();
  EXPECT_FALSE(texture.isValid());
  EXPECT_FALSE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 3, 2, &parameters));
}

TEST_F(QGLTextureTest, does_nothing_without_a_living_texture) {
  const Record record = MakeRecord(2, 2, ZYN_PIXEL_MONO8);
  QGLTexture texture;
  EXPECT_FALSE(texture.bind());
  EXPECT_FALSE(texture.render());
  EXPECT_FALSE(texture.fill(record.get()));
  texture.unbind();
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  const GLuint name = texture.texture();
  surface->glDeleteTextures(1, &name);
  EXPECT_TRUE(texture.isValid());  // knows a name, though a dead one
  EXPECT_FALSE(texture.bind());
  EXPECT_FALSE(texture.render());
  EXPECT_FALSE(texture.fill(record.get()));
}

TEST_F(QGLTextureTest, bind_and_unbind_work_on_unit_0) {
  QGLTexture texture;
  ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 2, 2, &parameters));
  surface->glDisable(GL_TEXTURE_2D);
  surface->glActiveTexture(GL_TEXTURE1);
  EXPECT_TRUE(texture.bind());
  GLint unit = 0;
  glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
  EXPECT_EQ(unit, GL_TEXTURE0);
  EXPECT_EQ(bound(), static_cast<GLint>(texture.texture()));
  surface->glActiveTexture(GL_TEXTURE1);
  texture.unbind();
  glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
  EXPECT_EQ(unit, GL_TEXTURE0);
  EXPECT_EQ(bound(), 0);
}

TEST_F(QGLTextureTest, renders_itself_over_its_size) {
  const Record record = MakeRecord(2, 2, ZYN_PIXEL_MONO8, {10, 20, 30, 40});
  QGLTexture texture;
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  ASSERT_TRUE(texture.fill(record.get()));
  clearWindow();
  glColor3f(1, 1, 1);
  EXPECT_TRUE(texture.render());
  EXPECT_EQ(bound(), 0);
  GLint viewport[4] = {};
  glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[2], 2);
  EXPECT_EQ(viewport[3], 2);
  const QImage shot = screenshot();
  EXPECT_EQ(qRed(shot.pixel(0, 149)), 10);
  EXPECT_EQ(qRed(shot.pixel(1, 149)), 20);
  EXPECT_EQ(qRed(shot.pixel(0, 148)), 30);
  EXPECT_EQ(qRed(shot.pixel(1, 148)), 40);
}

TEST_F(QGLTextureTest, owns_nothing_once_a_texture_was_set) {
  const GLNames before = names();
  GLuint foreign[2] = {0, 0};
  surface->glGenTextures(2, foreign);
  for (const GLuint name : foreign) surface->glBindTexture(GL_TEXTURE_2D, name);
  {
    QGLTexture texture;
    ASSERT_TRUE(texture.init(QTD::PixelFormat(ZYN_PIXEL_MONO8), 2, 2, &parameters));
    texture.setTexture(foreign[0]);
    EXPECT_EQ(names().textures, before.textures + 2);  // its own is gone
    EXPECT_EQ(texture.texture(), foreign[0]);
    EXPECT_EQ(texture.Parameters().GetString("texture"), std::to_string(foreign[0]));
    texture.setTexture(foreign[1]);
  }
  EXPECT_EQ(names().textures, before.textures + 2);
  surface->glDeleteTextures(2, foreign);
}

TEST_F(QGLTextureTest, tells_errors_through_the_surface) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_YUV422_8_UYVY);
  QGLTexture texture;
  EXPECT_TRUE(texture.init(record.get(), &parameters));  // what the driver says does not count
  EXPECT_EQ(surface->properties.GetString("error").rfind("QGLTexture::init() OpenGL error ", 0), 0u);
  while (glError() != 0) continue;
  surface->glEnable(0xffff);
  EXPECT_EQ(texture.checkError("here"), uint32_t{GL_INVALID_ENUM});

  // An upload asks, too, so that nobody behind it is told its error.
  const Record grey = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  QGLTexture other;
  ASSERT_TRUE(other.init(grey.get(), &parameters));
  surface->glEnable(0xffff);
  EXPECT_TRUE(other.fill(grey.get()));
  EXPECT_EQ(surface->properties.GetString("error").rfind("QGLTexture::fill() OpenGL error ", 0), 0u);
  EXPECT_EQ(glError(), uint32_t{GL_NO_ERROR});
}

}  // namespace
