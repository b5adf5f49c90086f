// The window's pixels against a model that knows only where the picture lies in the window: a pixel's centre,
// in fractions of the picture, is the place where the texture is read.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "GLFixture.h"
#include "PlacedGLScreen.h"
#include "ZynPixelFormat.h"

namespace {

// Texture coordinates are interpolated in single precision; this near to a texel's edge, in texels, either
// neighbour is right.
constexpr double kEdge = 2e-3;
// Linear filters weigh 8-bit texels with weights of 8 bits.
constexpr int kLinearBound = 3;
constexpr int kBackground = 191;  // 0xC0 of 256, of 255

class QGLScreenPicture : public GLFixture {
 protected:
  QGLScreenPicture() : screen(surface.get()) {}

  void TearDown() override {
    EXPECT_EQ(glError(), 0u);
    image.reset();
    GLFixture::TearDown();
  }

  // A target with scattered texels, line 0 of the record in row 0 of the texture, and the screen showing it.
  void show(int width, int height, bool smoothing = false) {
    const Record record =
        MakeRecord(static_cast<uint32_t>(width), static_cast<uint32_t>(height), ZYN_PIXEL_RGB8);
    QTD::PROPERTIES parameters = surfaceList();
    image = std::make_unique<QGLImage>(surface.get());
    ASSERT_TRUE(image->init(record.get(), &parameters));
    texels = Scattered(static_cast<size_t>(width) * static_cast<size_t>(height) * 3, 255);
    const std::vector<uint8_t> bytes(texels.begin(), texels.end());
    surface->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    surface->glBindTexture(GL_TEXTURE_2D, image->texture());
    surface->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, bytes.data());
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    surface->properties.Set("smoothing", smoothing ? "1" : "0");
    screen.init(nullptr, width, height, 0);
    screen.setWindowSize(kGLWindowWidth, kGLWindowHeight);
  }

  // One paint pass as the window runs it.
  QImage paint() {
    QTD::PROPERTIES pass;
    EXPECT_TRUE(screen.begin(&pass));
    screen.clear(false);
    EXPECT_TRUE(screen.draw(image ? image->image() : nullptr, &pass));
    screen.prepare(&pass);
    const QImage shot = screenshot();
    screen.end(&pass, false);
    return shot;
  }

  int width() const { return static_cast<int>(image->image()->width); }
  int height() const { return static_cast<int>(image->image()->height); }
  int texel(int x, int row, int channel) const {
    const int column = std::clamp(x, 0, width() - 1), line = std::clamp(row, 0, height() - 1);
    return static_cast<int>(texels[static_cast<size_t>(3 * (line * width() + column) + channel)]);
  }

  // Row 0 of the texture is the picture's lowest.
  static double acrossOf(int x, const QTD::RectD& at) { return (x + 0.5 - at.x) / at.width; }
  static double upOf(int y, const QTD::RectD& at) { return 1 - (y + 0.5 - at.y) / at.height; }
  static bool isInside(double u, double v) { return u > 0 && u < 1 && v > 0 && v < 1; }

  void expectNearest(const QImage& shot, const QTD::RectD& at) {
    int inside = 0;
    for (int y = 0; y < shot.height(); ++y) {
      for (int x = 0; x < shot.width(); ++x) {
        const double u = acrossOf(x, at), v = upOf(y, at);
        const QColor color = shot.pixelColor(x, y);
        if (!isInside(u, v)) {
          ASSERT_EQ(color, QColor(kBackground, kBackground, kBackground)) << x << ", " << y;
          continue;
        }
        ++inside;
        bool found = false;
        for (const double du : {-kEdge, kEdge}) {
          for (const double dv : {-kEdge, kEdge}) {
            const int column = static_cast<int>(std::floor(u * width() + du));
            const int row = static_cast<int>(std::floor(v * height() + dv));
            found =
                found || color == QColor(texel(column, row, 0), texel(column, row, 1), texel(column, row, 2));
          }
        }
        ASSERT_TRUE(found) << x << ", " << y;
      }
    }
    EXPECT_GT(inside, 0);
  }

  // The outermost half texel is left out: what a filter takes from beyond the picture is the driver's.
  void expectLinear(const QImage& shot, const QTD::RectD& at) {
    int compared = 0;
    for (int y = 0; y < shot.height(); ++y) {
      for (int x = 0; x < shot.width(); ++x) {
        const double u = acrossOf(x, at), v = upOf(y, at);
        if (!isInside(u, v)) continue;
        const double s = u * width() - 0.5, t = v * height() - 0.5;
        if (s < 0 || t < 0 || s > width() - 1 || t > height() - 1) continue;
        ++compared;
        const int column = static_cast<int>(s), row = static_cast<int>(t);
        const double a = s - column, b = t - row;
        const QColor color = shot.pixelColor(x, y);
        const int actual[3] = {color.red(), color.green(), color.blue()};
        for (int c = 0; c < 3; ++c) {
          const double lower = texel(column, row, c) * (1 - a) + texel(column + 1, row, c) * a;
          const double upper = texel(column, row + 1, c) * (1 - a) + texel(column + 1, row + 1, c) * a;
          ASSERT_NEAR(actual[c], lower * (1 - b) + upper * b, kLinearBound) << x << ", " << y << ", " << c;
        }
      }
    }
    EXPECT_GT(compared, 0);
  }

  void expectPicture(const QTD::RectD& at) { expectNearest(paint(), at); }

  PlacedGLScreen screen;
  std::unique_ptr<QGLImage> image;
  Samples texels;
};

}  // namespace

TEST_F(QGLScreenPicture, draw_without_an_image_shows_the_background) {
  screen.setWindow(kGLWindowWidth, kGLWindowHeight);
  screen.place(0, 0, kGLWindowWidth, kGLWindowHeight);
  surface->setArea({0, 0, kGLWindowWidth, kGLWindowHeight});
  clearWindow(1, 0, 0);
  ASSERT_TRUE(screen.prepare(nullptr));
  EXPECT_TRUE(screen.draw(nullptr, nullptr));
  const QImage shot = screenshot();
  for (int y = 0; y < shot.height(); ++y) {
    for (int x = 0; x < shot.width(); ++x)
      ASSERT_EQ(shot.pixelColor(x, y), QColor(kBackground, kBackground, kBackground)) << x << ", " << y;
  }
}

TEST_F(QGLScreenPicture, shows_a_picture_one_to_one_in_the_middle) {
  show(71, 61);
  screen.setFit(3, false);
  // 129 pixels are left over across and 89 down; half pixels of the lower-left corner are rounded up.
  ASSERT_EQ(screen.Picture().x, 64.5);
  ASSERT_EQ(screen.Picture().y, 44.5);
  expectPicture({65, 44, 71, 61});
}

TEST_F(QGLScreenPicture, shows_a_picture_fitted_and_filling) {
  show(40, 30);
  screen.setFit(1, false);
  expectPicture({0, 0, 200, 150});
  show(50, 30);
  screen.setFit(1, false);
  expectPicture({0, 15, 200, 120});
  screen.setFit(2, false);
  expectPicture({-25, 0, 250, 150});
}

TEST_F(QGLScreenPicture, shows_a_part_of_a_picture_beyond_the_limit_where_it_lies) {
  surface->properties.Set("gl.viewport", "128");
  for (const bool smoothing : {false, true}) {
    for (const QTD::PairD& center : {QTD::PairD{0.5, 0.5}, QTD::PairD{0, 0}, QTD::PairD{1, 1},
                                     QTD::PairD{0.37, 0.61}, QTD::PairD{0.2, 0.9}}) {
      show(64, 48, smoothing);
      screen.setScale(0.1);
      screen.setCenter(center.first, center.second);
      const QTD::RectD at = screen.Picture();
      ASSERT_EQ(at.width, 640.0);
      const QImage shot = paint();
      if (smoothing)
        expectLinear(shot, at);
      else
        expectNearest(shot, at);
    }
  }
}

TEST_F(QGLScreenPicture, shows_the_same_beyond_the_limit_and_within_it) {
  for (const bool smoothing : {false, true}) {
    show(64, 48, smoothing);
    screen.setScale(0.1);
    screen.setCenter(0.3125, 0.65625);  // whole pixels
    const QTD::RectD at = screen.Picture();
    ASSERT_EQ(at.x, -100.0);
    ASSERT_EQ(at.y, -240.0);
    for (const char* limit : {"16384", "640", "639", "150", "1"}) {
      surface->properties.Set("gl.viewport", limit);
      const QImage shot = paint();
      if (smoothing)
        expectLinear(shot, at);
      else
        expectNearest(shot, at);
    }
  }
}

TEST_F(QGLScreenPicture, shows_pictures_beyond_the_limit_that_are_lower_or_narrower_than_the_window) {
  surface->properties.Set("gl.viewport", "128");
  show(100, 20);
  screen.setScale(0.2);  // 500 by 100
  for (const double fx : {0.2, 0.5, 0.77}) {
    screen.setCenter(fx, 0.5);
    const QTD::RectD at = screen.Picture();
    ASSERT_EQ(at.y, 25.0);
    expectPicture(at);
  }
  show(20, 100);
  screen.setScale(0.2);
  for (const double fy : {0.15, 0.5, 0.8}) {
    screen.setCenter(0.5, fy);
    const QTD::RectD at = screen.Picture();
    ASSERT_EQ(at.x, 50.0);
    expectPicture(at);
  }
  show(32, 24);
  screen.setScale(0.2);  // 160 by 120: within the window, above the limit
  expectPicture({20, 15, 160, 120});
}

TEST_F(QGLScreenPicture, shows_20000_pixels_in_either_direction) {
  surface->properties.Set("gl.viewport", "16384");
  show(4000, 20);
  screen.setScale(0.2);
  for (const double fx : {0.0, 0.123, 0.5, 0.9, 1.0}) {
    screen.setCenter(fx, 0.5);
    const QTD::RectD at = screen.Picture();
    ASSERT_EQ(at.width, 20000.0);
    ASSERT_EQ(at.height, 100.0);
    expectPicture(at);
  }
  show(20, 4000);
  screen.setScale(0.2);
  for (const double fy : {0.0, 0.123, 0.5, 0.9, 1.0}) {
    screen.setCenter(0.5, fy);
    const QTD::RectD at = screen.Picture();
    ASSERT_EQ(at.height, 20000.0);
    expectPicture(at);
  }
}

TEST_F(QGLScreenPicture, shows_the_ends_of_the_zoom) {
  surface->properties.Set("gl.viewport", "16384");
  show(400, 300);
  screen.setScale(1e-9);  // 40000 pixels are the most of the longer side
  ASSERT_EQ(screen.Picture().width, 40000.0);
  for (const QTD::PairD& center : {QTD::PairD{0.5, 0.5}, QTD::PairD{0.5013, 0.2507}, QTD::PairD{1, 1}}) {
    screen.setCenter(center.first, center.second);
    expectPicture(screen.Picture());
  }
  screen.setScale(1e9);  // 60 the least of the shorter one
  ASSERT_EQ(screen.Picture().height, 60.0);
  ASSERT_EQ(screen.Picture().width, 80.0);
  expectPicture({60, 45, 80, 60});
}

TEST_F(QGLScreenPicture, a_picture_of_one_pixel_fills_its_rectangle) {
  show(1, 1);
  screen.setScale(0.01);
  expectPicture({50, 25, 100, 100});
  surface->properties.Set("gl.viewport", "64");
  expectPicture({50, 25, 100, 100});
}
