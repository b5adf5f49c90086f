// Pictures and comparisons for the tests of what the processor draws.
#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <random>
#include <vector>

#include "ZynImage.h"
#include "ZynPixelFormat.h"

// An RGB8 record over noise, so that a pixel taken from the wrong place shows.
class RgbPicture {
 public:
  RgbPicture(int width, int height, unsigned seed = 1) {
    record.structSize = sizeof(ZynImage);
    record.pixelType = ZYN_PIXEL_RGB8;
    record.bitDepth = 8;
    record.channels = 3;
    record.bitsPerPixel = 24;
    record.width = static_cast<uint32_t>(width);
    record.height = static_cast<uint32_t>(height);
    record.linePitch = (static_cast<uint32_t>(width) * 3 + 3) / 4 * 4;
    record.imageSize = record.linePitch * record.height;
    bytes.resize(record.imageSize);
    std::minstd_rand random(seed);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 8);
    record.imageData = bytes.data();
  }

  QImage wrapped() const {
    return QImage(bytes.data(), static_cast<int>(record.width), static_cast<int>(record.height),
                  static_cast<int>(record.linePitch), QImage::Format_RGB888);
  }

  ZynImage record{};
  std::vector<uint8_t> bytes;
};

constexpr QRgb kUntouched = 0xff123456;

inline QImage BlankCanvas(int width, int height, QImage::Format format = QImage::Format_RGB32) {
  QImage canvas(width, height, format);
  canvas.fill(QColor(kUntouched));
  return canvas;
}

// The plain way: the whole picture as a pixmap, scaled by the painter.
inline void DrawPlainly(QPainter& painter, const RgbPicture& picture, const QRectF& target,
                        const QRectF& source) {
  painter.drawPixmap(target, QPixmap::fromImage(picture.wrapped()), source);
}

inline testing::AssertionResult SamePixels(const QImage& actual, const QImage& expected) {
  if (actual.size() != expected.size()) return testing::AssertionFailure() << "sizes differ";
  for (int y = 0; y < expected.height(); ++y) {
    for (int x = 0; x < expected.width(); ++x) {
      if (actual.pixel(x, y) == expected.pixel(x, y)) continue;
      return testing::AssertionFailure() << "at " << x << ", " << y << ": " << std::hex << actual.pixel(x, y)
                                         << " instead of " << expected.pixel(x, y);
    }
  }
  return testing::AssertionSuccess();
}
