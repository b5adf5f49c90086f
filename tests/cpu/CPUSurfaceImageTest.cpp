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

  QImage plainly(const RgbPicture& picture, const QRectF& target, const QRectF& source) {
    QImage image = blank();
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
    ASSERT_TRUE(SamePixels(canvas(), plainly(picture, Rounded(target), Rounded(source))))
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
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, QRectF(0, 0, 120, 90), whole)));

  const QTD::RectD target{10, 20, 62, 94};
  beginBlank();
  surface.image(&picture.record, &target, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, QRectF(10, 20, 62, 94), whole)));
}

TEST_F(CPUSurfaceImage, rounds_the_target_half_away_from_zero) {
  const RgbPicture picture(3, 3);
  const QTD::RectD target{-1.5, 2.5, -6.5, 8.5};
  beginBlank();
  surface.image(&picture.record, &target, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), plainly(picture, QRectF(-2, 3, 7, 9), QRectF(0, 0, 3, 3))));
}

TEST_F(CPUSurfaceImage, follows_qt_beyond_the_longest_side_of_its_fixed_point_road) {
  const RgbPicture picture(1201, 803);
  const QRectF whole(0, 0, 1201, 803);
  for (const int x : {-39000, -25000, -7, 3}) {
    const QTD::RectD target{static_cast<double>(x), x / 2.0, 40000, 26700};
    beginBlank();
    surface.image(&picture.record, &target, nullptr);
    const QImage byPixmap = plainly(picture, Rounded(target), whole);
    QImage byImage = blank();
    QPainter(&byImage).drawImage(Rounded(target), picture.wrapped(), whole);
    EXPECT_TRUE(SamePixels(canvas(), byPixmap) || SamePixels(canvas(), byImage)) << x;
    EXPECT_FALSE(SamePixels(canvas(), blank()));
  }
}

TEST_F(CPUSurfaceImage, of_one_pixel_fills_its_target) {
  const RgbPicture picture(1, 1);
  const QTD::RectD target{5, 6, 50, 40};
  beginBlank();
  surface.image(&picture.record, &target, nullptr);
  EXPECT_EQ(canvas().pixel(5, 6), picture.wrapped().pixel(0, 0));
  EXPECT_EQ(canvas().pixel(54, 45), picture.wrapped().pixel(0, 0));
  EXPECT_EQ(canvas().pixel(55, 45), 0xff123456);
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
  EXPECT_TRUE(SamePixels(canvas(), plainly(same, QRectF(0, 0, 120, 90), QRectF(0, 0, 29, 30))));
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
      EXPECT_TRUE(SamePixels(canvas(), plainly(picture, Rounded(target), QRectF(0, 0, width, 21))));
    }
    munmap(memory, mapped + page);
  }
}

TEST_F(CPUSurfaceImage, is_drawn_in_device_pixels_where_there_are_several_to_one) {
  const RgbPicture picture(83, 61);
  const QTD::RectD target{-11, 7, 50, 41};
  for (const double ratio : {1.5, 2.0, 3.0}) {
    beginBlank();
    painter()->scale(ratio, ratio);  // what a painter has from a device of this ratio
    surface.image(&picture.record, &target, nullptr);
    QImage expected = blank();
    QPainter reference(&expected);
    reference.scale(ratio, ratio);
    DrawPlainly(reference, picture, Rounded(target), QRectF(0, 0, 83, 61));
    reference.end();
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
  EXPECT_EQ(canvas().pixel(19, 20), 0xff123456);
  EXPECT_EQ(canvas().pixel(20, 20), picture.wrapped().pixel(10, 13));
  EXPECT_EQ(canvas().pixel(50, 50), 0xff123456);

  beginBlank();
  painter()->translate(100, 0);
  painter()->rotate(90);
  surface.image(&picture.record, &target, nullptr);
  EXPECT_EQ(canvas().pixel(100 - 8, 10), picture.wrapped().pixel(0, 0));
}

TEST_F(CPUSurfaceImage, at_absurd_places_neither_crashes_nor_hangs) {
  const RgbPicture picture(33, 21);
  const double kNumbers[] = {
      -1e300, -3e9, -40000, 0, 0.4, 1e6, 3e9, 1e300, std::nan(""), std::numeric_limits<double>::infinity()};
  beginBlank();
  for (const double a : kNumbers) {
    for (const double b : kNumbers) {
      const QTD::RectD first{a, b, b, a}, second{b, b, a, a};
      surface.image(&picture.record, &first, nullptr);
      surface.image(&picture.record, nullptr, &first);
      surface.image(&picture.record, &first, &second);
      surface.image(&picture.record, &second, &second);
    }
  }
}
