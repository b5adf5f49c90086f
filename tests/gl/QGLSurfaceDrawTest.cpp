#include <limits>

#include "GLFixture.h"
#include "GLSpy.h"
#include "gl/surface/QGLSurface.h"

namespace {

int errorsAsked = 0;
GLenum CountedGetError() {
  ++errorsAsked;
  return GL_NO_ERROR;
}

using Corners = std::vector<std::pair<float, float>>;

class QGLSurfaceDrawTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    clearWindow();
  }

  static void expectVertex(const Drawn::Vertex& vertex, double x, double y) {
    EXPECT_NEAR(vertex.x, x, 1e-3);
    EXPECT_NEAR(vertex.y, y, 1e-3);
  }
};

TEST_F(QGLSurfaceDrawTest, one_point_is_no_line) {
  const Drawn drawn = FeedbackOf([&] { surface->polyline({{10, 10}}, nullptr, 1, 0); });
  EXPECT_TRUE(drawn.lines.empty());
  EXPECT_EQ(glError(), 0u);
}

TEST_F(QGLSurfaceDrawTest, no_points_are_no_line) {
  const Drawn drawn = FeedbackOf([&] { surface->polyline({}, nullptr, 1, 0); });
  EXPECT_TRUE(drawn.lines.empty());
  EXPECT_EQ(glError(), 0u);
}

TEST_F(QGLSurfaceDrawTest, three_points_are_two_segments_of_four_vertices) {
  const ColorValue color(255, 128, 0);
  const Drawn drawn = FeedbackOf([&] { surface->polyline({{10, 20}, {30, 40}, {50, 25}}, &color, 1, 0); });
  ASSERT_EQ(drawn.lines.size(), 4u);
  expectVertex(drawn.lines[0], 10, 130);  // y runs up from the lower edge of the 150 lines
  expectVertex(drawn.lines[1], 30, 110);
  expectVertex(drawn.lines[2], 30, 110);
  expectVertex(drawn.lines[3], 50, 125);
  EXPECT_FLOAT_EQ(drawn.lines[0].red, 1);
  EXPECT_FLOAT_EQ(drawn.lines[0].green, 0.5);
  EXPECT_FLOAT_EQ(drawn.lines[0].blue, 0);
}

TEST_F(QGLSurfaceDrawTest, a_line_without_colour_takes_the_current_one_and_changes_none) {
  const ColorValue color(255, 0, 0);
  glColor3f(0.25f, 0.5f, 0.75f);
  glLineWidth(2);
  const Drawn drawn = FeedbackOf([&] {
    surface->polyline({{1, 1}, {9, 9}}, &color, 7, 0);
    surface->polyline({{1, 1}, {9, 9}}, nullptr, -3, 0);
  });
  ASSERT_EQ(drawn.lines.size(), 4u);
  EXPECT_FLOAT_EQ(drawn.lines[2].red, 0.25f);
  EXPECT_FLOAT_EQ(drawn.lines[2].blue, 0.75f);
  GLfloat width = 0;
  glGetFloatv(GL_LINE_WIDTH, &width);
  EXPECT_FLOAT_EQ(width, 2);
  EXPECT_EQ(glError(), 0u);  // a width below 1 would be an error
}

TEST_F(QGLSurfaceDrawTest, a_line_is_as_wide_as_asked) {
  const ColorValue white(255, 255, 255);
  surface->polyline({{20, 50}, {80, 50}}, &white, 5, 0);
  surface->polyline({{20, 80}, {80, 80}}, &white, 0, 0);
  const QImage shot = screenshot();
  int wide = 0, thin = 0;
  for (int y = 40; y < 60; ++y) wide += qRed(shot.pixel(50, y)) == 255;
  for (int y = 70; y < 90; ++y) thin += qRed(shot.pixel(50, y)) == 255;
  EXPECT_EQ(wide, 5);
  EXPECT_EQ(thin, 1);
}

TEST_F(QGLSurfaceDrawTest, lines_carry_no_texture) {
  GLuint texture = 0;
  surface->glGenTextures(1, &texture);
  surface->glBindTexture(GL_TEXTURE_2D, texture);
  surface->polyline({{1, 1}, {9, 9}}, nullptr, 1, 0);
  EXPECT_EQ(bound(), 0);
  surface->glDeleteTextures(1, &texture);
}

TEST_F(QGLSurfaceDrawTest, a_line_is_one_segment_and_clears_the_last_error) {
  surface->text(nullptr, 0, 0, "no such font", nullptr);
  surface->glEnable(0xffff);
  surface->checkError("here", 1, 0);
  ASSERT_NE(surface->LastError(), 0u);
  const Drawn drawn = FeedbackOf([&] { surface->line(5, 6, 7, 8, nullptr, 1, 0); });
  ASSERT_EQ(drawn.lines.size(), 2u);
  expectVertex(drawn.lines[0], 5, 144);
  expectVertex(drawn.lines[1], 7, 142);
  EXPECT_EQ(surface->LastError(), 0u);
}

TEST_F(QGLSurfaceDrawTest, a_rectangle_is_a_closed_line) {
  const Drawn drawn = FeedbackOf([&] { surface->rect(10, 20, 30, 40, nullptr, 1, 0); });
  const std::pair<int, int> corners[] = {{10, 20}, {40, 20}, {40, 20}, {40, 60},
                                         {40, 60}, {10, 60}, {10, 60}, {10, 20}};
  ASSERT_EQ(drawn.lines.size(), 8u);
  for (size_t i = 0; i < 8; ++i) expectVertex(drawn.lines[i], corners[i].first, 150 - corners[i].second);
}

TEST_F(QGLSurfaceDrawTest, points_count_from_the_area) {
  // Height 100.4 counts as 100; x is rounded half away from zero and never below 0, y never above 100.
  surface->setArea({10.5, 20, 60, 100.4});
  const Drawn drawn = FeedbackOf([&] { surface->polyline({{20, 30}, {25, 70}, {3, 15}}, nullptr, 1, 0); });
  ASSERT_EQ(drawn.lines.size(), 4u);
  expectVertex(drawn.lines[0], 10, 90);  // 20 - 10.5 = 9.5
  expectVertex(drawn.lines[1], 15, 50);  // 14.5
  expectVertex(drawn.lines[3], 0, 100);  // -7.5 and 105
}

TEST_F(QGLSurfaceDrawTest, a_height_of_half_a_pixel_rounds_up) {
  surface->setArea({0, 0.25, 60, 99.5});
  const Drawn drawn = FeedbackOf([&] { surface->polyline({{1, 10}, {2, 20}}, nullptr, 1, 0); });
  ASSERT_EQ(drawn.lines.size(), 2u);
  expectVertex(drawn.lines[0], 1, 90.25);
  expectVertex(drawn.lines[1], 2, 80.25);
}

TEST_F(QGLSurfaceDrawTest, fills_a_rectangle) {
  const ColorValue color(0, 255, 128);
  const Drawn drawn = FeedbackOf([&] { surface->fill(10, 20, 30, 40, &color); });
  EXPECT_EQ(drawn.corners(), (Corners{{10, 90}, {10, 130}, {40, 90}, {40, 130}}));
  EXPECT_FLOAT_EQ(drawn.polygons[0].green, 1);
  EXPECT_FLOAT_EQ(drawn.polygons[0].blue, 0.5);
}

TEST_F(QGLSurfaceDrawTest, minus_one_fills_the_whole_surface_in_black) {
  clearWindow(1, 1, 1);
  glColor3f(0.5f, 0.5f, 0.5f);
  surface->fill(-1, -1, -1, -1, nullptr);
  const QImage shot = screenshot();
  for (const QPoint corner : {QPoint(0, 0), QPoint(199, 0), QPoint(0, 149), QPoint(199, 149)})
    EXPECT_EQ(shot.pixel(corner), 0xff000000) << corner.x() << " " << corner.y();
  GLfloat color[4] = {};
  glGetFloatv(GL_CURRENT_COLOR, color);
  EXPECT_FLOAT_EQ(color[0], 0.5f);
}

TEST_F(QGLSurfaceDrawTest, minus_one_stands_for_each_number_alone) {
  const auto filled = [this](int x, int y, int w, int h) {
    return FeedbackOf([&] { surface->fill(x, y, w, h, nullptr); }).corners();
  };
  EXPECT_EQ(filled(-1, 20, 30, 40), (Corners{{0, 90}, {0, 130}, {30, 90}, {30, 130}}));
  EXPECT_EQ(filled(10, -1, 30, 40), (Corners{{10, 110}, {10, 150}, {40, 110}, {40, 150}}));
  EXPECT_EQ(filled(0, 20, -1, 40), (Corners{{0, 90}, {0, 130}, {200, 90}, {200, 130}}));
  EXPECT_EQ(filled(10, 0, 30, -1), (Corners{{10, 0}, {10, 150}, {40, 0}, {40, 150}}));
}

TEST_F(QGLSurfaceDrawTest, numbers_at_the_ends_of_their_range_are_held) {
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  // What begins in the window and is larger than all numbers runs out of it, to the right and below. The
  // driver may cut it anywhere outside.
  const Drawn open = FeedbackOf([&] { surface->rect(10, 20, kMost, kMost, nullptr, kMost, kMost); });
  ASSERT_EQ(open.lines.size(), 4u);
  expectVertex(open.lines[0], 10, 130);
  EXPECT_GE(open.lines[1].x, 200);
  EXPECT_NEAR(open.lines[1].y, 130, 1e-3);
  EXPECT_NEAR(open.lines[2].x, 10, 1e-3);
  EXPECT_LE(open.lines[2].y, 0);
  expectVertex(open.lines[3], 10, 130);
  const ColorValue white(255, 255, 255);
  surface->fill(10, 20, kMost, kMost, &white);
  const QImage shot = screenshot();
  for (const QPoint inside : {QPoint(10, 20), QPoint(199, 20), QPoint(10, 149), QPoint(199, 149)})
    EXPECT_EQ(shot.pixel(inside), 0xffffffff) << inside.x() << " " << inside.y();
  for (const QPoint outside : {QPoint(9, 20), QPoint(10, 19), QPoint(9, 149), QPoint(199, 19)})
    EXPECT_EQ(shot.pixel(outside), 0xff000000) << outside.x() << " " << outside.y();
  // What begins at the far end does not come round to the window from the other side.
  const Drawn beyond = FeedbackOf([&] {
    surface->rect(kMost, kMost, kMost, kMost, nullptr, kMost, kMost);
    surface->fill(kMost, kLeast, kMost, kLeast, nullptr);
    surface->fill(kLeast, kMost, kLeast, kMost, nullptr);
    surface->text("text", kLeast, kMost, "default", nullptr);
    surface->text("text", kMost, kLeast, "default", nullptr);
    surface->setArea({-1e300, 1e300, 1e300, -1e300});
    surface->text("text", kLeast, kMost, "default", nullptr);
    surface->line(kLeast, kMost, kMost, kLeast, nullptr, 1, 0);
    surface->resize(kMost, kLeast);
    surface->fill(-1, -1, -1, -1, nullptr);
  });
  EXPECT_TRUE(beyond.lines.empty());
  EXPECT_TRUE(beyond.polygons.empty());
  EXPECT_EQ(glError(), 0u);
}

TEST_F(QGLSurfaceDrawTest, text_leaves_1_as_the_last_error_where_nothing_draws) {
  GLuint texture = 0;
  surface->glGenTextures(1, &texture);
  surface->glBindTexture(GL_TEXTURE_2D, texture);
  surface->text("text", 10, 10, "default", nullptr);
  EXPECT_EQ(surface->LastError(), 0u);  // the text's status is 0
  EXPECT_EQ(bound(), 0);
  surface->glDeleteTextures(1, &texture);
  surface->end(nullptr, false);
  surface->text("text", 10, 10, "default", nullptr);
  EXPECT_EQ(surface->LastError(), 1u);
}

TEST_F(QGLSurfaceDrawTest, text_stands_below_its_position) {
  const ColorValue white(255, 255, 255);
  surface->text("HHHH", 40, 60, "default", &white);
  const QImage shot = screenshot();
  QRect lit;
  for (int y = 0; y < shot.height(); ++y) {
    for (int x = 0; x < shot.width(); ++x) {
      if (qGreen(shot.pixel(x, y)) > 128) lit |= QRect(x, y, 1, 1);
    }
  }
  ASSERT_FALSE(lit.isEmpty());
  EXPECT_GE(lit.left(), 39);
  EXPECT_LE(lit.left(), 44);
  EXPECT_GE(lit.top(), 58);
  EXPECT_LE(lit.bottom(), 85);
}

TEST_F(QGLSurfaceDrawTest, a_texture_is_rendered_over_the_whole_size) {
  GLuint texture = 0;
  const uint8_t texels[] = {10, 20, 30, 40};
  surface->glGenTextures(1, &texture);
  surface->glBindTexture(GL_TEXTURE_2D, texture);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  surface->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  surface->glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, 2, 2, 0, GL_RED, GL_UNSIGNED_BYTE, texels);
  surface->glEnable(GL_TEXTURE_2D);
  glColor3f(1, 1, 1);
  surface->glViewport(0, 0, 60, 40);
  surface->renderTexture(60, 40);
  const QImage shot = screenshot();  // upright: the texture's line 0 is the lowest
  EXPECT_EQ(qRed(shot.pixel(0, 149)), 10);
  EXPECT_EQ(qRed(shot.pixel(59, 149)), 20);
  EXPECT_EQ(qRed(shot.pixel(0, 110)), 30);
  EXPECT_EQ(qRed(shot.pixel(59, 110)), 40);
  EXPECT_EQ(qRed(shot.pixel(29, 130)), 10);
  EXPECT_EQ(qRed(shot.pixel(30, 129)), 40);
  EXPECT_EQ(qRed(shot.pixel(60, 149)), 0);
  surface->glDeleteTextures(1, &texture);
}

TEST_F(QGLSurfaceDrawTest, nothing_is_rendered_and_no_error_asked_for_without_a_size) {
  const Swapped counted(FunctionTable::of(*surface).GetError, &CountedGetError);
  errorsAsked = 0;
  const Drawn drawn = FeedbackOf([&] {
    surface->renderTexture(0, 10);
    surface->renderTexture(10, 0);
    surface->renderTexture(-5, 10);
  });
  EXPECT_TRUE(drawn.polygons.empty());
  EXPECT_EQ(errorsAsked, 0);
  const Drawn some = FeedbackOf([&] { surface->renderTexture(1, 1); });
  EXPECT_EQ(some.corners().size(), 4u);
  EXPECT_EQ(errorsAsked, 1);
}

TEST_F(QGLSurfaceDrawTest, tells_an_error_of_rendering) {
  GLuint target = 0;
  surface->glGenFramebuffers(1, &target);
  surface->glBindFramebuffer(GL_FRAMEBUFFER, target);  // has nothing to draw on
  surface->renderTexture(5, 5);
  EXPECT_EQ(surface->properties.GetString("error"), "QGLSurface::renderTexture OpenGL error 1286");
  surface->glBindFramebuffer(GL_FRAMEBUFFER, 0);
  surface->glDeleteFramebuffers(1, &target);
}

}  // namespace
