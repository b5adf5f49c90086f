// What the screen asks of its surface, and the viewport and projection that it sets.
#include "gl/screen/QGLScreen.h"

#include <GL/gl.h>

#include <array>

#include "GLFixture.h"
#include "PlacedGLScreen.h"
#include "support/NotingSurface.h"

namespace {

void ExpectRect(const QTD::RectD& rect, double x, double y, double width, double height) {
  EXPECT_NEAR(rect.x, x, 1e-9);
  EXPECT_NEAR(rect.y, y, 1e-9);
  EXPECT_NEAR(rect.width, width, 1e-9);
  EXPECT_NEAR(rect.height, height, 1e-9);
}

// A screen of 1000x800 on such a surface.
struct Noted {
  explicit Noted(const char* limit = "16384") : surface(limit), screen(&surface) {
    screen.setWindow(1000, 800);
  }
  void draw(double x, double y, double w, double h) {
    screen.place(x, y, w, h);
    EXPECT_TRUE(screen.draw(&record, nullptr));
    EXPECT_EQ(surface.drawn, &record);
  }

  NotingSurface surface;
  PlacedGLScreen screen;
  ZynImage record{};
};

class QGLScreenOnWindow : public GLFixture {
 protected:
  QGLScreenOnWindow() : screen(surface.get()) {}

  static std::array<int, 4> viewport() {
    std::array<GLint, 4> port{};
    glGetIntegerv(GL_VIEWPORT, port.data());
    return port;
  }
  // The projection is that of the area from 0, 0 to `width`, `height`; the model view is none.
  static void ExpectUnits(double width, double height) {
    std::array<double, 16> matrix{};
    glGetDoublev(GL_PROJECTION_MATRIX, matrix.data());
    const std::array<double, 16> wanted = {2 / width, 0, 0,  0, 0,  2 / height, 0, 0,
                                           0,         0, -1, 0, -1, -1,         0, 1};
    for (size_t i = 0; i < 16; ++i) EXPECT_NEAR(matrix[i], wanted[i], 1e-6) << i;
    glGetDoublev(GL_MODELVIEW_MATRIX, matrix.data());
    for (size_t i = 0; i < 16; ++i) EXPECT_EQ(matrix[i], i % 5 == 0 ? 1.0 : 0.0) << i;
  }

  PlacedGLScreen screen;
};

using Port = std::array<int, 4>;

}  // namespace

TEST(QGLScreen, without_a_surface_does_nothing_and_answers_false) {
  PlacedGLScreen screen(nullptr);
  screen.setWindow(100, 100);
  EXPECT_FALSE(screen.isReady());
  EXPECT_FALSE(screen.begin(nullptr));
  EXPECT_FALSE(screen.prepare(nullptr));
  const ZynImage record{};
  EXPECT_FALSE(screen.draw(&record, nullptr));
  EXPECT_FALSE(screen.draw(nullptr, nullptr));
  screen.clear(true);
  screen.flush();
  screen.end(nullptr, true);
}

TEST(QGLScreen, is_ready_with_a_surface_and_a_width) {
  NotingSurface surface;
  PlacedGLScreen screen(&surface);
  EXPECT_FALSE(screen.isReady());
  EXPECT_FALSE(screen.begin(nullptr));
  EXPECT_EQ(surface.order, "");
  screen.setWindow(1, 0);
  EXPECT_TRUE(screen.isReady());
}

TEST(QGLScreen, begins_though_the_surface_could_not) {
  Noted noted;
  QTD::PROPERTIES pass;
  for (const bool can : {true, false}) {
    noted.surface.canBegin = can;
    EXPECT_TRUE(noted.screen.begin(&pass));
    EXPECT_EQ(noted.surface.given, &pass);
  }
  EXPECT_EQ(noted.surface.order, "bb");
}

TEST(QGLScreen, begin_prepares) {
  Noted noted;
  noted.screen.place(0, 350, 20000, 100);
  EXPECT_TRUE(noted.screen.begin(nullptr));
  EXPECT_EQ(noted.surface.Area().width, 16384.0);
}

TEST(QGLScreen, flushes_before_it_ends) {
  Noted noted;
  noted.screen.place(0, 0, 100, 100);
  noted.screen.begin(nullptr);
  QTD::PROPERTIES pass;
  noted.screen.end(&pass, true);
  EXPECT_EQ(noted.surface.order, "bFe");
  EXPECT_EQ(noted.surface.flushed, &pass);
  EXPECT_EQ(noted.surface.given, &pass);
  noted.screen.begin(nullptr);
  noted.screen.end(nullptr, false);
  EXPECT_EQ(noted.surface.order, "bFebe");
}

TEST(QGLScreen, ends_no_pass_that_it_has_not_begun) {
  Noted noted;
  noted.screen.end(nullptr, false);
  EXPECT_EQ(noted.surface.order, "");
}

TEST(QGLScreen, flush_and_a_flushing_clear_go_to_the_surface_without_a_list) {
  Noted noted;
  QTD::PROPERTIES other;
  noted.surface.flushed = &other;
  noted.screen.flush();
  EXPECT_EQ(noted.surface.flushed, nullptr);
  noted.surface.flushed = &other;
  noted.screen.clear(true);
  EXPECT_EQ(noted.surface.flushed, nullptr);
  noted.screen.clear(false);
  EXPECT_EQ(noted.surface.order, "FF") << "clearing does not fill";
}

TEST(QGLScreen, init_and_done_answer_true) {
  NotingSurface surface;
  QGLScreen screen(&surface);
  EXPECT_TRUE(screen.init(nullptr, 100, 50, 1));
  EXPECT_EQ(screen.properties.GetInt("fit"), 1);
  EXPECT_TRUE(screen.done(true));
  EXPECT_TRUE(screen.done(false));
}

TEST(QGLScreen, draw_without_an_image_paints_the_background_in_the_colour_of_the_list) {
  Noted noted;
  EXPECT_TRUE(noted.screen.draw(nullptr, nullptr));
  ASSERT_EQ(noted.surface.order, "f");
  ExpectWhole(noted.surface.fills.back(), 0xC0, 0xC0, 0xC0);
  noted.screen.properties.Set("color", "1056816");  // 0x102030: red 48, green 32, blue 16
  EXPECT_TRUE(noted.screen.draw(nullptr, nullptr));
  ExpectWhole(noted.surface.fills.back(), 48, 32, 16);
  for (const char* text : {"red", "99999999999999999999999"}) {
    noted.screen.properties.Set("color", text);
    EXPECT_TRUE(noted.screen.draw(nullptr, nullptr));
    noted.screen.clear(false);
    ExpectWhole(noted.surface.fills.back(), 0xC0, 0xC0, 0xC0);
  }
}

TEST(QGLScreen, draws_a_picture_that_fits_whole) {
  Noted noted;
  noted.draw(-30, 70.5, 16384, 300);
  EXPECT_EQ(noted.surface.order, "fi");
  ExpectRect(noted.surface.target, -30, 800 - 70.5 - 300, 16384, 300);
  ExpectRect(noted.surface.source, 0, 0, 1, 1);
}

TEST(QGLScreen, draws_what_the_window_shows_of_a_picture_beyond_the_limit) {
  Noted noted;
  noted.draw(0, 350, 16384.5, 100);  // by half a pixel; other than for the viewport, the fraction counts
  ExpectRect(noted.surface.target, 0, 350, 1000, 100);
  ExpectRect(noted.surface.source, 0, 0, 1000 / 16384.5, 1);
  // From a quarter of its width on, and 3 quarters of its height lie above the window's lower edge.
  noted.draw(-5000, -14200, 20000, 20000);
  ExpectRect(noted.surface.target, 0, 0, 1000, 800);
  ExpectRect(noted.surface.source, 0.25, 0.25, 0.05, 0.04);
}

TEST(QGLScreen, draws_a_wide_picture_beyond_the_limit_over_its_whole_height) {
  Noted noted;
  noted.draw(-9500, 350, 20000, 100);
  ExpectRect(noted.surface.target, 0, 350, 1000, 100);
  ExpectRect(noted.surface.source, 0.475, 0, 0.05, 1);
  noted.draw(-9500, 500, 20000, 100);  // 200 pixels are left below it
  ExpectRect(noted.surface.target, 0, 200, 1000, 100);
}

TEST(QGLScreen, draws_a_high_picture_beyond_the_limit_over_its_whole_width) {
  Noted noted;
  noted.draw(450, -9600, 100, 20000);
  ExpectRect(noted.surface.target, 450, 0, 100, 800);
  ExpectRect(noted.surface.source, 0, 0.48, 1, 0.04);
}

TEST(QGLScreen, draws_a_picture_within_the_window_whole_even_beyond_the_limit) {
  Noted noted("64");
  noted.draw(400, 300, 200, 150);
  ExpectRect(noted.surface.target, 400, 350, 200, 150);
  ExpectRect(noted.surface.source, 0, 0, 1, 1);
}

TEST(QGLScreen, divides_by_no_side_that_is_near_zero) {
  Noted noted;
  noted.draw(-10, 400, 20000, 1e-8);
  ExpectRect(noted.surface.target, 0, 0, 1000, 800);
  ExpectRect(noted.surface.source, 0.0005, 1, 0.05, 0);
  noted.draw(500, -200, 1e-8, 20000);
  ExpectRect(noted.surface.target, 0, 0, 1000, 800);
  ExpectRect(noted.surface.source, 0, 0.95, 0, 0.04);
}

TEST(QGLScreen, takes_a_limit_that_is_no_number_for_1024) {
  for (const char* text : {"many", "", "0", "-5", "99999999999"}) {
    Noted noted(text);
    noted.draw(0, 0, 1024, 1024);
    ExpectRect(noted.surface.source, 0, 0, 1, 1);
    noted.draw(0, 0, 2000, 1600);
    ExpectRect(noted.surface.source, 0, 0.5, 0.5, 0.5);
    EXPECT_TRUE(noted.screen.prepare(nullptr));
    EXPECT_EQ(noted.surface.Area().width, 1024.0);
  }
}

TEST(QGLScreen, counts_the_limit_in_device_pixels) {
  Noted noted("2000");
  noted.screen.setPixelRatio(2);
  noted.draw(0, 0, 1000, 800);
  ExpectRect(noted.surface.source, 0, 0, 1, 1);
  noted.draw(0, 0, 1250, 800);
  ExpectRect(noted.surface.source, 0, 0, 0.8, 1);
}

TEST(QGLScreen, prepare_holds_a_picture_beyond_the_limit_in_its_proportions) {
  Noted noted;
  const QTD::RectD before = noted.surface.Area();
  noted.screen.place(-100, 350, 16384.9, 100);  // whole pixels count
  EXPECT_TRUE(noted.screen.prepare(nullptr));
  ExpectRect(noted.surface.Area(), before.x, before.y, before.width, before.height);

  // Both places follow from the height: 500 and 400 less the half of it.
  noted.screen.place(-9500, 350, 20000, 100);
  EXPECT_TRUE(noted.screen.prepare(nullptr));
  ExpectRect(noted.surface.Area(), 459.04, 359.04, 16384, 81.92);
  noted.screen.place(450, -9600, 100, 20000);
  EXPECT_TRUE(noted.screen.prepare(nullptr));
  ExpectRect(noted.surface.Area(), -7692, -7792, 81.92, 16384);
  noted.screen.place(-15884, 400, 16385 - 5e-8, 100);  // near enough to a whole pixel more
  EXPECT_TRUE(noted.screen.prepare(nullptr));
  EXPECT_EQ(noted.surface.Area().width, 16384.0);
  noted.screen.place(-15884, -15884, 20000, 20000);
  EXPECT_TRUE(noted.screen.prepare(nullptr));
  ExpectRect(noted.surface.Area(), -7692, -7792, 16384, 16384);
}

TEST_F(QGLScreenOnWindow, prepare_sets_viewport_and_projection_of_the_picture) {
  screen.setWindow(1000, 800);
  glMatrixMode(GL_MODELVIEW);
  glScaled(3, 4, 5);
  screen.place(-30.5, 70.25, 640.5, 480.25);
  ASSERT_TRUE(screen.prepare(nullptr));
  EXPECT_EQ(viewport(), (Port{-31, 250, 641, 480}));  // 800 - 70.25 - 480.25 is 249.5
  ExpectUnits(641, 480);
  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(mode, GL_MODELVIEW);
  EXPECT_EQ(glError(), 0u);
}

TEST_F(QGLScreenOnWindow, prepare_limits_the_viewport_of_a_large_picture) {
  surface->properties.Set("gl.viewport", "16384");
  screen.setWindow(1000, 800);
  screen.place(-9500, 350, 20000, 100);
  ASSERT_TRUE(screen.prepare(nullptr));
  EXPECT_EQ(viewport(), (Port{459, 359, 16384, 82}));
  ExpectUnits(16384, 82);
  screen.place(450, -9600, 100, 20000);
  ASSERT_TRUE(screen.prepare(nullptr));
  EXPECT_EQ(viewport(), (Port{-7692, -7792, 82, 16384}));
  ExpectUnits(82, 16384);
}

TEST_F(QGLScreenOnWindow, prepare_of_a_picture_without_a_side_is_no_error_of_the_driver) {
  surface->properties.Set("gl.viewport", "16384");
  screen.setWindow(1000, 800);
  for (const QTD::RectD& rect : {QTD::RectD{500, 400, 0, 0}, QTD::RectD{-19500, 400, 40000, 1}}) {
    screen.place(rect.x, rect.y, rect.width, rect.height);
    EXPECT_TRUE(screen.prepare(nullptr));
    EXPECT_EQ(viewport()[3], 0);
    EXPECT_EQ(glError(), 0u);
  }
}

TEST_F(QGLScreenOnWindow, the_viewport_counts_in_device_pixels) {
  screen.setWindow(500, 400);
  screen.setPixelRatio(2);
  screen.place(10, 20, 300, 200);
  ASSERT_TRUE(screen.prepare(nullptr));
  EXPECT_EQ(viewport(), (Port{20, 360, 600, 400}));
  ExpectUnits(300, 200);
  surface->properties.Set("gl.viewport", "200");
  ASSERT_TRUE(screen.prepare(nullptr));  // 100 pixels of the window, 67 of them high
  EXPECT_EQ(viewport(), (Port{433, 333, 200, 133}));
}

TEST_F(QGLScreenOnWindow, clear_paints_the_whole_window_in_the_colour_of_the_list) {
  surface->glViewport(50, 50, 10, 10);
  screen.properties.Set("color", "1073216");  // 0x106040: red 64, green 96, blue 16
  screen.clear(false);
  const QImage shot = screenshot();
  for (const QPoint& at : {QPoint(0, 0), QPoint(199, 0), QPoint(0, 149), QPoint(199, 149), QPoint(55, 95)}) {
    const QColor color = shot.pixelColor(at);
    // Parts of 256: 0.25, 0.375 and 0.0625 of 255, rounded.
    EXPECT_EQ(color, QColor(64, 96, 16)) << at.x() << ", " << at.y();
  }
  std::array<float, 4> values{};
  glGetFloatv(GL_COLOR_CLEAR_VALUE, values.data());
  EXPECT_EQ(values[3], 0.0f);
}

TEST_F(QGLScreenOnWindow, does_nothing_on_the_card_while_no_context_is_current) {
  screen.setWindow(200, 150);
  screen.place(0, 0, 200, 150);
  surface->end(nullptr, false);
  screen.clear(true);
  EXPECT_TRUE(screen.prepare(nullptr));
  ASSERT_TRUE(surface->begin(nullptr));
}
