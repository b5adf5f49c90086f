#include "cpu/screen/PictureBlit.h"

#include <gtest/gtest.h>

#include "tests/cpu/DrawingHelpers.h"

namespace {

QImage Blitted(PictureBlit& blit, const RgbPicture& picture, QImage canvas, const QRectF& target,
               const QRectF& source) {
  const RgbView view{picture.bytes.data(), static_cast<int>(picture.record.width),
                     static_cast<int>(picture.record.height),
                     static_cast<ptrdiff_t>(picture.record.linePitch)};
  void* pixels = canvas.bits();
  blit.draw(view,
            {static_cast<uint32_t*>(pixels), canvas.width(), canvas.height(), canvas.bytesPerLine() / 4},
            target, source);
  return canvas;
}

QImage Expected(const RgbPicture& picture, QImage canvas, const QRectF& target, const QRectF& source) {
  QPainter painter(&canvas);
  DrawPlainly(painter, picture, target, source);
  return canvas;
}

QRectF Whole(const RgbPicture& picture) {
  return QRectF(0, 0, picture.record.width, picture.record.height);
}

class Dice {
 public:
  explicit Dice(unsigned seed) : random(seed) {}
  int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
  double real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }

 private:
  std::mt19937 random;
};

std::string Describe(const RgbPicture& picture, const QRectF& target, const QRectF& source) {
  std::ostringstream text;
  text << picture.record.width << "x" << picture.record.height << " source " << source.x() << ","
       << source.y() << " " << source.width() << "x" << source.height() << " target " << target.x() << ","
       << target.y() << " " << target.width() << "x" << target.height();
  return text.str();
}

}  // namespace

TEST(PictureBlit, draws_the_pixels_of_the_raster_engine_at_any_zoom_offset_and_size) {
  Dice dice(11);
  PictureBlit blit;
  const QImage blank = BlankCanvas(101, 73);
  for (int round = 0; round < 6000; ++round) {
    const RgbPicture picture(dice.between(1, 160), dice.between(1, 120), static_cast<unsigned>(round));
    const double zoom = std::exp(dice.real(std::log(0.05), std::log(40.0)));
    const int width = std::max(1, static_cast<int>(picture.record.width * zoom));
    const int height = std::max(1, static_cast<int>(picture.record.height * zoom) + dice.between(0, 1));
    const QRectF target(dice.between(-width - 5, 106), dice.between(-height - 5, 78), width, height);
    ASSERT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                           Expected(picture, blank, target, Whole(picture))))
        << Describe(picture, target, Whole(picture));
  }
}

TEST(PictureBlit, draws_parts_of_a_picture_like_the_raster_engine) {
  Dice dice(12);
  PictureBlit blit;
  const QImage blank = BlankCanvas(64, 65);
  for (int round = 0; round < 4000; ++round) {
    const RgbPicture picture(dice.between(1, 90), dice.between(1, 90), static_cast<unsigned>(round));
    const int w = static_cast<int>(picture.record.width), h = static_cast<int>(picture.record.height);
    const int sx = dice.between(0, w - 1), sy = dice.between(0, h - 1);
    const QRectF source(sx, sy, dice.between(1, w - sx), dice.between(1, h - sy));
    const QRectF target(dice.between(-40, 60), dice.between(-40, 60), dice.between(1, 200),
                        dice.between(1, 200));
    ASSERT_TRUE(
        SamePixels(Blitted(blit, picture, blank, target, source), Expected(picture, blank, target, source)))
        << Describe(picture, target, source);
  }
}

TEST(PictureBlit, draws_one_to_one_at_every_offset) {
  PictureBlit blit;
  const RgbPicture picture(67, 41);
  const QImage blank = BlankCanvas(40, 30);
  for (int x = -70; x <= 42; ++x) {
    for (int y = -44; y <= 32; y += 4) {
      const QRectF target(x, y, 67, 41);
      ASSERT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                             Expected(picture, blank, target, Whole(picture))))
          << x << ", " << y;
    }
  }
}

TEST(PictureBlit, draws_targets_at_fractions_of_a_pixel_like_the_raster_engine) {
  Dice dice(13);
  PictureBlit blit;
  const QImage blank = BlankCanvas(50, 50);
  for (int round = 0; round < 3000; ++round) {
    const RgbPicture picture(dice.between(2, 40), dice.between(2, 40), static_cast<unsigned>(round));
    const QRectF target(dice.between(-80, 160) / 4.0, dice.between(-80, 160) / 8.0, dice.real(3, 90),
                        dice.real(3, 90));
    ASSERT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                           Expected(picture, blank, target, Whole(picture))))
        << Describe(picture, target, Whole(picture));
  }
}

TEST(PictureBlit, draws_large_windows_on_all_threads_alike) {
  PictureBlit blit;
  const RgbPicture picture(4003, 3001);
  const QImage blank = BlankCanvas(2301, 701);
  for (const double zoom : {0.11, 0.25, 0.3333, 0.5, 0.77, 1.0, 1.25, 2.0, 3.7, 8.0}) {
    const QRectF target(std::round(-321 * zoom), std::round(-207 * zoom), std::round(4003 * zoom),
                        std::round(3001 * zoom));
    ASSERT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                           Expected(picture, blank, target, Whole(picture))))
        << zoom;
  }
}

TEST(PictureBlit, follows_the_raster_engine_up_to_its_longest_side) {
  PictureBlit blit;
  const RgbPicture picture(977, 801);
  const QImage blank = BlankCanvas(120, 80);
  EXPECT_TRUE(PictureBlit::canDraw(QRectF(0, 0, 32767, 32767)));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 32768, 5)));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 5, 32768)));
  for (const int x : {-32700, -20001, -16383, -3, 0, 50}) {
    const QRectF target(x, x / 2, 32767, 26864);
    EXPECT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                           Expected(picture, blank, target, Whole(picture))))
        << x;
  }
}

TEST(PictureBlit, draws_nothing_of_empty_rectangles_or_outside_the_canvas) {
  PictureBlit blit;
  const RgbPicture picture(8, 8);
  const QImage blank = BlankCanvas(20, 20);
  const QRectF whole = Whole(picture);
  for (const QRectF& target : {QRectF(0, 0, 0, 8), QRectF(0, 0, 8, 0), QRectF(20, 0, 8, 8),
                               QRectF(0, 20, 8, 8), QRectF(-8, 0, 8, 8), QRectF(0, -8, 8, 8)}) {
    EXPECT_TRUE(SamePixels(Blitted(blit, picture, blank, target, whole), blank));
  }
  EXPECT_TRUE(SamePixels(Blitted(blit, picture, blank, QRectF(0, 0, 8, 8), QRectF(2, 2, 0, 0)), blank));
}
