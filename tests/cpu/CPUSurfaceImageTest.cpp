// The picture on a CPUSurface, against the plain way of drawing it.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "cpu/screen/CPUSurface.h"
#include "tests/cpu/CPUSurfaceFixture.h"
#include "tests/cpu/DrawingHelpers.h"

namespace {

class CPUSurfaceImage : public CPUSurfaceFixture {
 protected:
  // Half away from zero, lengths without their sign.
  static QRectF Rounded(const QTD::RectD& rect) {
    return QRectF(std::round(rect.x), std::round(rect.y), std::round(std::fabs(rect.width)),
                  std::round(std::fabs(rect.height)));
  }

  // A target in device pixels, to which it is rounded.
  QRectF onCanvas(const QTD::RectD& target) {
    const double ratio = canvas().devicePixelRatioF();
    return Rounded({target.x * ratio, target.y * ratio, target.width * ratio, target.height * ratio});
  }
  // Begins a paint pass on a canvas of so many device pixels to a window pixel, and answers whether it has
  // them: under a scale factor Qt sets the ratio itself in each pass.
  bool beginBlankAt(double ratio) {
    beginBlank();
    canvas().setDevicePixelRatio(ratio);
    beginBlank();
    return canvas().devicePixelRatioF() == ratio || window->devicePixelRatio() != 1;
  }
  QRectF wholeCanvas() { return QRectF(canvas().rect()); }

  // `target` in device pixels.
  QImage plainly(const RgbPicture& picture, const QRectF& target, const QRectF& source) {
    QImage image = blank();
    image.setDevicePixelRatio(1);
    QPainter reference(&image);
    DrawPlainly(reference, picture, target, source);
    return image;
  }
};

}  // namespace

TEST_F(CPUSurfaceImage, is_drawn_as_by_the_plain_way_at_any_target_and_source) {
  std::mt19937 random(5);
  const auto real = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (unsigned round = 0; round < 1500; ++round) {
    const RgbPicture picture(1 + static_cast<int>(random() % 90), 1 + static_cast<int>(random() % 70), round);
    const QTD::RectD target{real(-150, 130), real(-120, 100), real(-300, 300), real(-200, 200)};
    // Sources reach past the picture on all sides.
    const QTD::RectD source{real(-40, 100), real(-40, 80), real(-90, 120), real(-90, 120)};
    beginBlank();
    surface.image(&picture.record, &target, &source);
    ASSERT_TRUE(SamePixels(canvas(), plainly(picture, onCanvas(target), Rounded(source))))
        << picture.record.width << "x" << picture.record.height << " source " << source.x << "," << source.y
        << " " << source.width << "x" << source.height << " target " << target.x << "," << target.y << " "
        << target.width << "x" << target.height;
  }
}

TEST_F(CPUSurfaceImage, takes_the_whole_picture_and_the_whole_surface_by_default) {
  const RgbPicture picture(31, 47);
  const QRectF whole(0, 0, 31, 47);
  beginBlank();
  surface.image(&picture.record, nullptr, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, wholeCanvas(), whole)));

  const QTD::RectD target{10, 20, 62, 94};
  beginBlank();
  surface.image(&picture.record, &target, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, onCanvas(target), whole)));
}

TEST_F(CPUSurfaceImage, rounds_the_target_to_device_pixels_half_away_from_zero) {
  const RgbPicture picture(3, 3);
  beginBlank();
  const double ratio = canvas().devicePixelRatioF();
  const QTD::RectD target{-1.5 / ratio, 2.5 / ratio, -6.5 / ratio, 8.5 / ratio};
  const QRectF expected(-2, 3, 7, 9);
  surface.image(&picture.record, &target, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, expected, QRectF(0, 0, 3, 3))));
}

TEST_F(CPUSurfaceImage, is_drawn_as_by_the_plain_way_at_the_largest_zoom_and_beyond) {
  const RgbPicture picture(1201, 803);
  const QRectF whole(0, 0, 1201, 803);
  for (const double width : {32767.0, 32768.0, 40000.0, 65535.0, 65536.0, 150000.0}) {
    for (const double x : {-39000.0, -25000.0, -7.0, 3.0}) {
      const QTD::RectD target{x, std::round(x / 2), width, std::round(width * 803 / 1201)};
      if (x + width < 0) continue;
      beginBlank();
      surface.image(&picture.record, &target, nullptr);
      EXPECT_TRUE(SamePixels(canvas(), plainly(picture, onCanvas(target), whole))) << x << " " << width;
      EXPECT_FALSE(SamePixels(canvas(), blank()));
    }
  }
}

TEST_F(CPUSurfaceImage, of_one_pixel_fills_its_target) {
  const RgbPicture picture(1, 1);
  const QTD::RectD target{5, 6, 50, 40};
  beginBlank();
  surface.image(&picture.record, &target, nullptr);
  EXPECT_EQ(at(5, 6), picture.wrapped().pixel(0, 0));
  EXPECT_EQ(at(54, 45), picture.wrapped().pixel(0, 0));
  EXPECT_EQ(at(55, 45), kBlank);
}

TEST_F(CPUSurfaceImage, in_another_format_does_nothing) {
  RgbPicture picture(30, 30);
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_BGR8, ZYN_PIXEL_RGBA8, ZYN_PIXEL_RGB10, 0u}) {
    picture.record.pixelType = code;
    beginBlank();
    surface.image(&picture.record, nullptr, nullptr);
    EXPECT_TRUE(SamePixels(canvas(), blank())) << std::hex << code;
  }
}

TEST_F(CPUSurfaceImage, that_is_empty_or_lies_about_its_size_does_nothing) {
  const RgbPicture good(30, 30);
  const auto draws = [&](const ZynImage* record) {
    beginBlank();
    surface.image(record, nullptr, nullptr);
    return !SamePixels(canvas(), blank());
  };
  ZynImage record = good.record;
  EXPECT_TRUE(draws(&record));
  EXPECT_FALSE(draws(nullptr));
  record.width = 0;
  EXPECT_FALSE(draws(&record));
  record = good.record;
  record.height = 0;
  EXPECT_FALSE(draws(&record));
  record = good.record;
  record.imageData = nullptr;
  EXPECT_FALSE(draws(&record));
  record = good.record;
  --record.imageSize;
  EXPECT_FALSE(draws(&record));
  for (const uint32_t huge : {31u, 1u << 30, 0x55555556u, 0xffffffffu}) {
    record = good.record;
    record.width = huge;
    EXPECT_FALSE(draws(&record)) << huge;
    record = good.record;
    record.height = huge;
    EXPECT_FALSE(draws(&record)) << huge;
  }
}

TEST_F(CPUSurfaceImage, has_lines_aligned_to_32_bits_whatever_the_pitch_says) {
  RgbPicture picture(29, 30);
  picture.record.linePitch = 200;
  beginBlank();
  surface.image(&picture.record, nullptr, nullptr);
  RgbPicture same(29, 30);
  EXPECT_TRUE(SamePixels(canvas(), plainly(same, wholeCanvas(), QRectF(0, 0, 29, 30))));
}

TEST_F(CPUSurfaceImage, is_never_read_beyond_its_buffer) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  for (const int width : {1, 2, 3, 4, 16, 33}) {
    RgbPicture picture(width, 21);
    const size_t bytes = picture.bytes.size();
    const size_t mapped = (bytes + page - 1) / page * page;
    uint8_t* memory = static_cast<uint8_t*>(
        mmap(nullptr, mapped + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(memory + mapped, page, PROT_NONE);
    picture.record.imageData = memory + mapped - bytes;
    std::memcpy(picture.record.imageData, picture.bytes.data(), bytes);
    for (const double zoom : {0.3, 1.0, 1.7, 5.0, 30.0}) {
      const QTD::RectD target{std::round(-width * zoom / 2), std::round(90 - 21 * zoom), width * zoom,
                              21 * zoom};
      beginBlank();
      surface.image(&picture.record, &target, nullptr);
      EXPECT_TRUE(SamePixels(canvas(), plainly(picture, onCanvas(target), QRectF(0, 0, width, 21))));
    }
    munmap(memory, mapped + page);
  }
}

TEST_F(CPUSurfaceImage, is_drawn_in_device_pixels_where_there_are_several_to_one) {
  const RgbPicture picture(83, 61);
  const QTD::RectD target{-11, 7, 50, 41};
  for (const double ratio : {1.5, 2.0, 3.0}) {
    ASSERT_TRUE(beginBlankAt(ratio));
    surface.image(&picture.record, &target, nullptr);
    EXPECT_TRUE(SamePixels(canvas(), plainly(picture, onCanvas(target), QRectF(0, 0, 83, 61)))) << ratio;
  }
}

TEST_F(CPUSurfaceImage, one_to_one_is_one_picture_pixel_on_each_device_pixel) {
  const RgbPicture picture(83, 61);
  for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
    ASSERT_TRUE(beginBlankAt(ratio));
    const double actual = canvas().devicePixelRatioF();
    const QTD::RectD target{5 / actual, 9 / actual, 83 / actual, 61 / actual};
    surface.image(&picture.record, &target, nullptr);
    QImage expected = blank();
    for (int y = 0; y < 61; ++y) {
      for (int x = 0; x < 83; ++x) expected.setPixel(5 + x, 9 + y, picture.wrapped().pixel(x, y));
    }
    EXPECT_TRUE(SamePixels(canvas(), expected)) << ratio;
  }
}

TEST_F(CPUSurfaceImage, keeps_within_the_painters_clip_and_turns_with_it) {
  const RgbPicture picture(83, 61);
  const QTD::RectD target{10, 7, 83, 61};
  const QRect clip(20, 20, 30, 31);
  beginBlank();
  painter()->setClipRect(clip);
  surface.image(&picture.record, &target, nullptr);
  EXPECT_EQ(at(19, 20), kBlank);
  EXPECT_EQ(at(20, 20), picture.wrapped().pixel(10, 13));
  EXPECT_EQ(at(50, 50), kBlank);

  beginBlank();
  painter()->translate(100, 0);
  painter()->rotate(90);
  surface.image(&picture.record, &target, nullptr);
  EXPECT_EQ(at(100 - 8, 10), picture.wrapped().pixel(0, 0));
}

TEST_F(CPUSurfaceImage, at_absurd_places_is_where_its_rounded_numbers_say) {
  const RgbPicture picture(33, 21);
  const double nan = std::nan(""), endless = std::numeric_limits<double>::infinity();
  const QRectF whole(0, 0, 33, 21);
  struct Row {
    QTD::RectD target, source;
    bool seen;  // as drawn by the next two
    QTD::RectD same;
    QRectF sameSource;
  };
  const QTD::RectD all{0, 0, 120, 90};
  const Row kRows[] = {
      {{nan, nan, 120, 90}, {0, 0, 33, 21}, true, all, whole},
      {{0, 0, nan, 90}, {0, 0, 33, 21}, false, {}, {}},
      {{0, 0, 120, nan}, {0, 0, 33, 21}, false, {}, {}},
      {{3e9, 0, 120, 90}, {0, 0, 33, 21}, false, {}, {}},
      {{0, 1e300, 120, 90}, {0, 0, 33, 21}, false, {}, {}},
      {{-1e300, 0, 1e300, 90}, {0, 0, 33, 21}, false, {}, {}},  // its right edge is held left of the window
      {{-endless, -endless, endless, endless}, {0, 0, 33, 21}, false, {}, {}},
      {{endless, 0, 1, 1}, {0, 0, 33, 21}, false, {}, {}},
      // A source without length runs to the picture's end.
      {all, {nan, nan, nan, nan}, true, all, whole},
      {all, {3, 4, nan, nan}, true, all, {3, 4, 30, 17}},
      {all, {3e9, 0, 10, 10}, false, {}, {}},
      {all, {0, -1e300, 10, 10}, false, {}, {}},
      {all, {-endless, -endless, endless, endless}, false, {}, {}},
      // The picture is so small a part of its source that it falls on no pixel.
      {all, {0, 0, 1e300, 1e300}, false, {}, {}},
  };
  for (const Row& row : kRows) {
    beginBlank();
    surface.image(&picture.record, &row.target, &row.source);
    const QImage expected = row.seen ? plainly(picture, onCanvas(row.same), row.sameSource) : blank();
    EXPECT_TRUE(SamePixels(canvas(), expected))
        << row.target.x << "," << row.target.y << " " << row.target.width << "x" << row.target.height
        << " from " << row.source.x << "," << row.source.y << " " << row.source.width << "x"
        << row.source.height;
  }
}

TEST_F(CPUSurfaceImage, absurdly_enlarged_shows_its_first_pixel_alone) {
  const RgbPicture picture(33, 21);
  for (const double length : {1e6, 1e8, 3e9, 1e300, std::numeric_limits<double>::infinity()}) {
    const QTD::RectD target{0, 0, length, length};
    beginBlank();
    surface.image(&picture.record, &target, nullptr);
    EXPECT_TRUE(SamePixels(canvas(), blank(picture.wrapped().pixel(0, 0)))) << length;
  }
}
