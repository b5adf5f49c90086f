// A picture of 2x2 pixels in four colours on the card, as a surface draws it.
#include "GLFixture.h"
#include "gl/surface/QGLSurface.h"

namespace {

class QGLSurfacePictureTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    const uint32_t code = QTD::FindPixelRowByName("RGB8")->code;
    const Record record =
        MakeRecord(2, 2, code, {200, 0, 0, 0, 200, 0, /* the second line */ 0, 0, 200, 200, 200, 0});
    picture = std::make_unique<QGLImage>(surface.get());
    ASSERT_TRUE(picture->init(record.get(), nullptr));
    surface->glBindTexture(GL_TEXTURE_2D, picture->texture());
    ASSERT_TRUE(picture->fillGPU(record.get()));
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    clearWindow();
  }
  void TearDown() override {
    picture.reset();
    GLFixture::TearDown();
  }

  GLint filter() {
    GLint value = 0;
    surface->glBindTexture(GL_TEXTURE_2D, picture->texture());
    surface->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &value);
    GLint small = 0;
    surface->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &small);
    EXPECT_EQ(value, small);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    return value;
  }

  std::unique_ptr<QGLImage> picture;
};

TEST_F(QGLSurfacePictureTest, draws_the_source_over_the_target) {
  surface->properties.Set("smoothing", "0");
  const QTD::RectD target{20.5, 9.6, 40, 20}, whole{0, 0, 1, 1};
  surface->image(picture->image(), &target, &whole);
  const QImage shot = screenshot();
  // From x 21, y 10 up: line 0 of the texture is the lower one.
  EXPECT_EQ(shot.pixel(21, 139), 0xffc80000);
  EXPECT_EQ(shot.pixel(60, 139), 0xff00c800);
  EXPECT_EQ(shot.pixel(21, 120), 0xff0000c8);
  EXPECT_EQ(shot.pixel(60, 120), 0xffc8c800);
  EXPECT_EQ(shot.pixel(20, 139), 0xff000000);
  EXPECT_EQ(shot.pixel(61, 120), 0xff000000);
  EXPECT_EQ(shot.pixel(21, 140), 0xff000000);
  EXPECT_EQ(shot.pixel(60, 119), 0xff000000);
  EXPECT_EQ(glError(), 0u);
}

TEST_F(QGLSurfacePictureTest, draws_a_part_of_the_picture) {
  surface->properties.Set("smoothing", "0");
  const QTD::RectD target{0, 0, 10, 10}, upperRight{0.5, 0.5, 0.5, 0.5};
  surface->image(picture->image(), &target, &upperRight);
  const QImage shot = screenshot();
  EXPECT_EQ(shot.pixel(0, 149), 0xffc8c800);
  EXPECT_EQ(shot.pixel(9, 140), 0xffc8c800);
}

TEST_F(QGLSurfacePictureTest, filters_as_smoothing_says) {
  surface->image(picture->image(), nullptr, nullptr);
  EXPECT_EQ(filter(), GL_LINEAR);
  surface->properties.Set("smoothing", "0");
  surface->image(picture->image(), nullptr, nullptr);
  EXPECT_EQ(filter(), GL_NEAREST);
}

TEST_F(QGLSurfacePictureTest, missing_rectangles_mean_all_of_both) {
  surface->properties.Set("smoothing", "0");
  surface->image(picture->image(), nullptr, nullptr);
  const QImage shot = screenshot();
  EXPECT_EQ(shot.pixel(0, 149), 0xffc80000);
  EXPECT_EQ(shot.pixel(199, 0), 0xffc8c800);
}

TEST_F(QGLSurfacePictureTest, leaves_no_texture_and_no_program_behind) {
  surface->image(picture->image(), nullptr, nullptr);
  GLint texture = -1, program = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
  glGetIntegerv(GL_CURRENT_PROGRAM, &program);
  EXPECT_EQ(texture, 0);
  EXPECT_EQ(program, 0);
  EXPECT_TRUE(surface->glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(QGLSurfacePictureTest, a_picture_without_a_program_is_turned) {
  // A target whose program is missing.
  struct Unprogrammed : QGLImage {
    using QGLImage::QGLImage;
    uint32_t useProgram(bool, QTD::PROPERTIES*) override { return 0; }
    bool releaseProgram() override {
      released = true;
      return false;
    }
    bool released = false;
  } bare(surface.get());
  const Record record =
      MakeRecord(1, 2, QTD::FindPixelRowByName("RGB8")->code, {200, 0, 0, /* the second line */ 0, 200, 0});
  ASSERT_TRUE(bare.init(record.get(), nullptr));
  surface->glBindTexture(GL_TEXTURE_2D, bare.texture());
  ASSERT_TRUE(bare.fillGPU(record.get()));
  clearWindow();
  glColor3f(1, 1, 1);
  surface->properties.Set("smoothing", "0");
  const QTD::RectD target{0, 0, 10, 10};
  surface->image(bare.image(), &target, nullptr);
  const QImage shot = screenshot();
  EXPECT_EQ(shot.pixel(5, 149), 0xff00c800);
  EXPECT_EQ(shot.pixel(5, 140), 0xffc80000);
  EXPECT_FALSE(bare.released);
}

TEST_F(QGLSurfacePictureTest, a_record_in_memory_alone_draws_nothing) {
  const Record record = MakeRecord(2, 2, QTD::FindPixelRowByName("RGB8")->code, Samples(12, 200));
  surface->image(record.get(), nullptr, nullptr);
  surface->image(nullptr, nullptr, nullptr);
  const QImage shot = screenshot();
  EXPECT_EQ(shot.pixel(0, 149), 0xff000000);
  EXPECT_EQ(shot.pixel(100, 75), 0xff000000);
}

TEST_F(QGLSurfacePictureTest, tells_an_error_of_drawing) {
  const QTD::RectD backwards{0, 0, -10, 10};  // no viewport has that width
  surface->image(picture->image(), &backwards, nullptr);
  EXPECT_EQ(surface->properties.GetString("error"), "QGLSurface::image OpenGL error 1281 (GL_INVALID_VALUE)");
  EXPECT_EQ(surface->LastError(), uint32_t{GL_INVALID_VALUE});
}

TEST_F(QGLSurfacePictureTest, an_unreadable_smoothing_counts_as_none) {
  surface->properties.Set("smoothing", "yes");
  EXPECT_NO_THROW(surface->image(picture->image(), nullptr, nullptr));
  EXPECT_EQ(filter(), GL_NEAREST);
  EXPECT_EQ(screenshot().pixel(0, 149), 0xffc80000);
}

TEST_F(QGLSurfacePictureTest, a_texture_of_another_context_is_not_drawn) {
  QWindow otherWindow;
  otherWindow.setSurfaceType(QSurface::OpenGLSurface);
  QTD::PROPERTIES otherList;
  otherList.Set("window", pointerText(&otherWindow));
  QGLSurface other;
  ASSERT_TRUE(other.init(&otherList));
  ASSERT_TRUE(other.begin(nullptr));
  // All low names are textures there.
  GLuint textures[64];
  other.glGenTextures(64, textures);
  const uint8_t white[] = {255, 255, 255, 255};
  for (const GLuint name : textures) {
    other.glBindTexture(GL_TEXTURE_2D, name);
    other.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, white);
  }
  ASSERT_TRUE(other.glIsTexture(picture->texture()));
  other.glBindTexture(GL_TEXTURE_2D, 0);
  other.glClearColor(0, 0, 0, 1);
  other.glClear(GL_COLOR_BUFFER_BIT);
  const QTD::RectD target{0, 0, 8, 8};
  other.image(picture->image(), &target, nullptr);
  uint8_t pixel[4] = {};
  glReadBuffer(GL_BACK);
  glReadPixels(4, 4, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(pixel[0], 0);
  other.end(nullptr, false);
  other.done();
  ASSERT_TRUE(surface->begin(nullptr));
  surface->properties.Set("smoothing", "0");
  surface->image(picture->image(), nullptr, nullptr);
  EXPECT_EQ(screenshot().pixel(0, 149), 0xffc80000) << "on its own it is";
  surface->end(nullptr, false);
}

}  // namespace
