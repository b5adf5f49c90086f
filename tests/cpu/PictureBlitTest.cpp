#include "cpu/screen/PictureBlit.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/cpu/DrawingHelpers.h"
#include "tests/cpu/GuardedBytes.h"

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
  for (const int x : {-32700, -20001, -16383, -3, 0, 50}) {
    const QRectF target(x, x / 2, 32767, 26864);
    EXPECT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                           Expected(picture, blank, target, Whole(picture))))
        << x;
  }
}

TEST(PictureBlit, follows_the_raster_engine_beyond_its_longest_side) {
  Dice dice(14);
  PictureBlit blit;
  for (int round = 0; round < 500; ++round) {
    const RgbPicture picture(dice.between(1, 400), dice.between(1, 300), static_cast<unsigned>(round));
    const int w = static_cast<int>(picture.record.width), h = static_cast<int>(picture.record.height);
    const int sx = dice.between(0, 1) * dice.between(0, w - 1),
              sy = dice.between(0, 1) * dice.between(0, h - 1);
    const QRectF source(sx, sy, dice.between(1, w - sx), dice.between(1, h - sy));
    int width = dice.between(32768, 65535), height = dice.between(h, 65535);
    if (round % 2 == 1) std::swap(width, height);
    if (width < w) width = w;
    // Canvases longer than the stretches in which the engine works.
    QImage blank = round % 3 == 0 ? BlankCanvas(4700, 7) : BlankCanvas(90, 70);
    const QRectF target(dice.between(-width - 3, blank.width() + 3),
                        dice.between(-height - 3, blank.height() + 3), width, height);
    ASSERT_TRUE(PictureBlit::canDraw(target, source));
    ASSERT_TRUE(
        SamePixels(Blitted(blit, picture, blank, target, source), Expected(picture, blank, target, source)))
        << Describe(picture, target, source);
  }
}

TEST(PictureBlit, places_the_pixels_of_long_lines_where_the_raster_engine_does) {
  PictureBlit blit;
  const QImage blank = BlankCanvas(4700, 3);  // the engine begins anew within each line
  for (const int width : {1000, 3001}) {
    const RgbPicture picture(width, 2);
    for (const int length : {40000, 50001, 65535}) {
      for (const int x : {4699 - length, -20000, 0, 300}) {
        const QRectF target(x, 0, length, 3);
        ASSERT_TRUE(PictureBlit::canDraw(target, Whole(picture)));
        EXPECT_TRUE(SamePixels(Blitted(blit, picture, blank, target, Whole(picture)),
                               Expected(picture, blank, target, Whole(picture))))
            << Describe(picture, target, Whole(picture));
      }
    }
  }
}

TEST(PictureBlit, follows_the_raster_engine_to_the_farthest_pixels_of_a_long_picture) {
  PictureBlit blit;
  const QImage blank = BlankCanvas(2500, 3);
  for (const bool upright : {false, true}) {
    const RgbPicture picture(upright ? 2 : 32766, upright ? 32766 : 2);
    const QImage canvas = upright ? BlankCanvas(3, 2500) : blank;
    for (const int length : {32768, 40000, 50001, 65535}) {
      const int away = 2499 - length;
      const QRectF target(upright ? 0 : away, upright ? away : 0, upright ? 3 : length, upright ? length : 3);
      ASSERT_TRUE(PictureBlit::canDraw(target, Whole(picture)));
      EXPECT_TRUE(SamePixels(Blitted(blit, picture, canvas, target, Whole(picture)),
                             Expected(picture, canvas, target, Whole(picture))))
          << length << upright;
    }
  }
}

TEST(PictureBlit, leaves_targets_that_take_part_of_a_window_pixel_to_the_painter) {
  const QRectF picture(0, 0, 100, 80);
  EXPECT_TRUE(PictureBlit::canDraw(QRectF(-7, 3, 200, 160), picture));
  for (const QRectF& target : {QRectF(-6.5, 3, 200, 160), QRectF(-7, 3.25, 200, 160),
                               QRectF(-7, 3, 200.125, 160), QRectF(-7, 3, 200, 159.875)}) {
    EXPECT_FALSE(PictureBlit::canDraw(target, picture));
  }
}

TEST(PictureBlit, says_what_it_can_draw) {
  const QRectF picture(0, 0, 100, 80);
  EXPECT_TRUE(PictureBlit::canDraw(QRectF(0, 0, 32767, 32767), picture));
  EXPECT_TRUE(PictureBlit::canDraw(QRectF(0, 0, 65535, 65535), picture));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 65536, 80), picture));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 100, 65536), picture));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 32768, 79), picture));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 99, 32768), picture));
  EXPECT_TRUE(PictureBlit::canDraw(QRectF(0, 0, 40000, 40000), QRectF(32756, 32756, 10, 10)));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 40000, 40000), QRectF(32757, 0, 10, 10)));
  EXPECT_FALSE(PictureBlit::canDraw(QRectF(0, 0, 40000, 40000), QRectF(0, 32757, 10, 10)));
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

namespace {

// A picture whose lines follow one another without room, and a canvas with room behind each line but the
// last: both between memory that nobody may touch, at the border given.
class Fenced {
 public:
  Fenced(const RgbPicture& picture, int canvasWidth, int canvasHeight, GuardedBytes::Border border)
      : width(static_cast<int>(picture.record.width)),
        height(static_cast<int>(picture.record.height)),
        source(size_t{3} * picture.record.width * picture.record.height, border),
        target(
            4 * (static_cast<size_t>(canvasWidth + kPadding) * static_cast<size_t>(canvasHeight) - kPadding),
            border) {
    void* const start = target.data();
    canvas = {static_cast<uint32_t*>(start), canvasWidth, canvasHeight, canvasWidth + kPadding};
    for (size_t y = 0; y < picture.record.height; ++y) {
      std::memcpy(source.data() + y * lineBytes(), picture.bytes.data() + y * picture.record.linePitch,
                  lineBytes());
    }
    std::fill_n(canvas.pixels, target.size() / 4, kUntouched);
  }

  void draw(PictureBlit& blit, const QRectF& to, const QRectF& from) {
    blit.draw({source.data(), width, height, static_cast<ptrdiff_t>(lineBytes())}, canvas, to, from);
  }

  // The lines of the canvas; the padding must be untouched.
  QImage seen() const {
    QImage image(canvas.width, canvas.height, QImage::Format_RGB32);
    for (int y = 0; y < canvas.height; ++y) {
      const uint32_t* line = canvas.pixels + y * canvas.stride;
      std::memcpy(image.scanLine(y), line, sizeof *line * static_cast<size_t>(canvas.width));
      if (y + 1 == canvas.height) break;
      for (int i = 0; i < kPadding; ++i) EXPECT_EQ(line[canvas.width + i], kUntouched) << "behind line " << y;
    }
    return image;
  }

 private:
  static constexpr int kPadding = 5;
  size_t lineBytes() const { return size_t{3} * static_cast<size_t>(width); }

  int width, height;
  GuardedBytes source, target;
  Canvas canvas;
};

}  // namespace

TEST(PictureBlit, neither_reads_nor_writes_past_its_lines) {
  Dice dice(15);
  PictureBlit blit;
  for (int round = 0; round < 1200; ++round) {
    // Three bytes a pixel end on no word but for every fourth width.
    const RgbPicture picture(dice.between(1, 75), dice.between(1, 40), static_cast<unsigned>(round));
    const int w = static_cast<int>(picture.record.width), h = static_cast<int>(picture.record.height);
    const int sx = dice.between(0, w - 1), sy = dice.between(0, h - 1);
    const QRectF source =
        round % 2 == 0 ? Whole(picture) : QRectF(sx, sy, dice.between(1, w - sx), dice.between(1, h - sy));
    int width = dice.between(1, 160), height = dice.between(1, 90);
    if (round % 3 == 0) width = static_cast<int>(source.width()), height = static_cast<int>(source.height());
    if (round % 7 == 0) width += 40000, height += 100;
    const int canvasWidth = dice.between(1, 67), canvasHeight = dice.between(1, 50);
    const QRectF target(dice.between(-width, canvasWidth), dice.between(-height, canvasHeight), width,
                        height);
    const QImage expected = Expected(picture, BlankCanvas(canvasWidth, canvasHeight), target, source);
    for (const GuardedBytes::Border border : {GuardedBytes::kAtStart, GuardedBytes::kAtEnd}) {
      Fenced fenced(picture, canvasWidth, canvasHeight, border);
      fenced.draw(blit, target, source);
      ASSERT_TRUE(SamePixels(fenced.seen(), expected)) << Describe(picture, target, source);
    }
  }
}

TEST(PictureBlit, keeps_within_its_lines_on_all_threads) {
  PictureBlit blit;
  const RgbPicture picture(1501, 1103);
  const QRectF parts[] = {Whole(picture), QRectF(1, 2, 1499, 1100), QRectF(700, 500, 801, 603)};
  for (const QRectF& source : parts) {
    for (const double zoom : {0.9, 1.0, 1.6, 45.0}) {
      const QRectF target(std::round(1201 - source.width() * zoom), std::round(901 - source.height() * zoom),
                          std::round(source.width() * zoom), std::round(source.height() * zoom));
      const QImage expected = Expected(picture, BlankCanvas(1201, 901), target, source);
      for (const GuardedBytes::Border border : {GuardedBytes::kAtStart, GuardedBytes::kAtEnd}) {
        Fenced fenced(picture, 1201, 901, border);  // above one megapixel
        fenced.draw(blit, target, source);
        EXPECT_TRUE(SamePixels(fenced.seen(), expected)) << Describe(picture, target, source);
      }
    }
  }
}
