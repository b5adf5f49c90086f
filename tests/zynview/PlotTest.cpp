// What histogram and profile look like, by the colours of their pixels.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <atomic>
#include <cmath>
#include <cstdlib>

#include "ZynPixelFormat.h"
#include "apps/zynview/analysis/Analysis.h"
#include "apps/zynview/view/ChannelColors.h"
#include "apps/zynview/view/HistogramPlot.h"
#include "apps/zynview/view/ProfilePlot.h"
#include "zynview/RandomFrame.h"

using zynview::Analysis;
using zynview::ChannelColor;
using zynview::HistogramPlot;
using zynview::ProfilePlot;

namespace {

constexpr int kWidth = 400, kHeight = 200;

QPalette Palette(bool dark) {
  QPalette palette;
  palette.setColor(QPalette::Window, dark ? QColor(40, 40, 40) : QColor(240, 240, 240));
  palette.setColor(QPalette::Base, dark ? QColor(20, 20, 20) : Qt::white);
  for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText})
    palette.setColor(role, dark ? QColor(230, 230, 230) : Qt::black);
  return palette;
}

QImage Paint(QWidget& widget, double ratio = 1) {
  widget.resize(kWidth, kHeight);
  QImage image(QSize(kWidth, kHeight) * ratio, QImage::Format_RGB32);
  image.setDevicePixelRatio(ratio);
  image.fill(Qt::magenta);
  widget.render(&image);
  return image;
}

// Of the same hue: thin lines are mixed with the ground.
bool IsLike(QRgb pixel, const QColor& color) {
  const QColor seen(pixel);
  return seen.hsvSaturation() > 60 && std::abs(seen.hue() - color.hue()) < 15;
}

// Where the pixels of a colour are: the whole box, in device pixels.
QRect BoxOf(const QImage& image, const QColor& color) {
  QRect box;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (IsLike(image.pixel(x, y), color)) box |= QRect(x, y, 1, 1);
    }
  }
  return box;
}

// Grey values of a picture in 8 bits per colour, all pixels alike but for some.
Analysis Look(RandomFrame& frame) {
  const std::atomic<bool> stop{false};
  return zynview::Analyse(frame.image, {}, stop);
}

RandomFrame Colored(uint8_t red, uint8_t green, uint8_t blue) {
  RandomFrame frame(ZYN_PIXEL_RGB8, 16, 16, 0, 1);
  for (std::size_t i = 0; i < 256; ++i) {
    frame.bytes[3 * i] = red;
    frame.bytes[3 * i + 1] = green;
    frame.bytes[3 * i + 2] = blue;
  }
  return frame;
}

}  // namespace

TEST(HistogramPlot, has_a_peak_of_each_colour_where_its_values_are) {
  const QPalette palette = Palette(false);
  HistogramPlot plot;
  plot.setPalette(palette);
  RandomFrame frame = Colored(64, 128, 192);
  plot.Show(Look(frame).histogram);
  const QImage image = Paint(plot);
  int before = 0;
  for (const char kind : {'R', 'G', 'B'}) {
    // The blue curve, drawn last, runs along the bottom; the peak is what stands above it.
    const QRect box = BoxOf(image.copy(0, 0, kWidth, kHeight / 2), ChannelColor(kind, palette));
    ASSERT_FALSE(box.isEmpty()) << kind;
    EXPECT_GT(box.center().x(), before + 40) << kind;
    EXPECT_LT(box.width(), 8) << kind;
    before = box.center().x();
  }
}

TEST(HistogramPlot, is_drawn_in_the_pixels_of_the_screen) {
  const QPalette palette = Palette(false);
  HistogramPlot plot;
  plot.setPalette(palette);
  RandomFrame frame = Colored(64, 128, 192);
  plot.Show(Look(frame).histogram);
  // The upper half, with the peak alone.
  const auto peak = [&](double ratio) {
    const QImage image = Paint(plot, ratio);
    return BoxOf(image.copy(0, 0, image.width(), image.height() / 2), ChannelColor('G', palette));
  };
  const QRect once = peak(1), twice = peak(2);
  EXPECT_NEAR(twice.top(), once.top() * 2, 6);
  EXPECT_NEAR(twice.center().x(), once.center().x() * 2, 6);
  EXPECT_LT(twice.width(), once.width() * 2) << "no pixel is drawn twice as wide";
}

TEST(HistogramPlot, raises_rare_values_when_it_is_logarithmic) {
  const QPalette palette = Palette(false);
  HistogramPlot plot;
  plot.setPalette(palette);
  RandomFrame frame(ZYN_PIXEL_RGB8, 64, 64, 0, 1);
  for (std::size_t i = 0; i < 4096; ++i) {
    frame.bytes[3 * i] = i < 8 ? 200 : 60;
    frame.bytes[3 * i + 1] = frame.bytes[3 * i + 2] = 0;
  }
  plot.Show(Look(frame).histogram);
  const auto height = [&](const QImage& image) {
    // The right half, where the few are.
    const QRect box =
        BoxOf(image.copy(kWidth * 6 / 10, 0, kWidth * 3 / 10, kHeight), ChannelColor('R', palette));
    return box.isEmpty() ? 0 : box.height();
  };
  const int linear = height(Paint(plot));
  plot.SetLogarithmic(true);
  const int logarithmic = height(Paint(plot));
  EXPECT_LT(linear, 10);
  EXPECT_GT(logarithmic, 25);
}

TEST(HistogramPlot, is_not_pressed_down_by_what_is_clipped) {
  const QPalette palette = Palette(false);
  HistogramPlot plot;
  plot.setPalette(palette);
  RandomFrame frame(ZYN_PIXEL_RGB8, 64, 64, 0, 1);
  for (std::size_t i = 0; i < 4096; ++i) {
    frame.bytes[3 * i] = i < 100 ? 128 : 255;
    frame.bytes[3 * i + 1] = frame.bytes[3 * i + 2] = 0;
  }
  plot.Show(Look(frame).histogram);
  const QImage middle = Paint(plot).copy(kWidth / 3, 0, kWidth / 2, kHeight / 2);
  EXPECT_FALSE(BoxOf(middle, ChannelColor('R', palette)).isEmpty());
}

TEST(HistogramPlot, is_an_empty_drawing_without_values_and_in_no_room) {
  HistogramPlot plot;
  EXPECT_FALSE(Paint(plot).isNull());
  RandomFrame frame = Colored(1, 2, 3);
  plot.Show(Look(frame).histogram);
  for (const QSize size : {QSize(1, 1), QSize(20, 10), QSize(90, 60)}) {
    plot.resize(size);
    QImage image(size, QImage::Format_RGB32);
    plot.render(&image);
  }
}

TEST(ProfilePlot, follows_the_samples_along_the_line) {
  const QPalette palette = Palette(false);
  ProfilePlot plot;
  plot.setPalette(palette);
  // Red rises over the picture, green is on its half.
  RandomFrame frame(ZYN_PIXEL_RGB8, 256, 1, 0, 1);
  for (std::size_t i = 0; i < 256; ++i) {
    frame.bytes[3 * i] = static_cast<uint8_t>(i);
    frame.bytes[3 * i + 1] = 128;
    frame.bytes[3 * i + 2] = 0;
  }
  plot.Show(Look(frame).profile);
  const QImage image = Paint(plot);
  const QRect red = BoxOf(image, ChannelColor('R', palette)),
              green = BoxOf(image, ChannelColor('G', palette));
  EXPECT_GT(red.height(), kHeight / 2);
  EXPECT_LE(green.height(), 3);
  EXPECT_NEAR(green.center().y(), red.center().y(), 3);
  EXPECT_GT(green.width(), kWidth / 2);
  // It rises: on the left it is below.
  EXPECT_GT(BoxOf(image.copy(0, 0, kWidth / 2, kHeight), ChannelColor('R', palette)).top(), green.top() - 8);
}

TEST(ProfilePlot, shows_every_peak_of_a_line_that_is_wider_than_the_screen) {
  const QPalette palette = Palette(false);
  ProfilePlot plot;
  plot.setPalette(palette);
  RandomFrame frame(ZYN_PIXEL_RGB8, 8000, 1, 0, 1);
  for (std::size_t i = 0; i < 8000; ++i) {
    frame.bytes[3 * i] = i == 4001 ? 255 : 0;
    frame.bytes[3 * i + 1] = frame.bytes[3 * i + 2] = 0;
  }
  plot.Show(Look(frame).profile);
  EXPECT_GT(BoxOf(Paint(plot), ChannelColor('R', palette)).height(), kHeight / 2);
}

TEST(ProfilePlot, is_an_empty_drawing_without_a_line_and_in_no_room) {
  ProfilePlot plot;
  EXPECT_FALSE(Paint(plot).isNull());
  RandomFrame frame(ZYN_PIXEL_MONO8, 1, 1, 0, 1);
  plot.Show(Look(frame).profile);
  Paint(plot);
  plot.resize(5, 5);
  QImage image(5, 5, QImage::Format_RGB32);
  plot.render(&image);
}

TEST(ChannelColor, stands_out_from_light_and_from_dark_ground) {
  for (const bool dark : {false, true}) {
    const QPalette palette = Palette(dark);
    const auto luminance = [](const QColor& color) {
      const auto linear = [](double part) { return std::pow((part + 0.055) / 1.055, 2.4); };
      return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const double ground = luminance(palette.color(QPalette::Base));
    std::vector<QColor> all;
    for (const char kind : {'R', 'G', 'B', 'W', 'L', 'Y', 'U', 'V'}) {
      const double own = luminance(ChannelColor(kind, palette));
      const double contrast = (std::max(own, ground) + 0.05) / (std::min(own, ground) + 0.05);
      EXPECT_GT(contrast, 3) << kind << dark;
    }
  }
}
