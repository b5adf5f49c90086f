// Text stamped into a picture, beside a scalar model: the coverage of each glyph comes straight from a
// painter, the arithmetic from the rules.
#pragma once

#include <gtest/gtest.h>

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstring>
#include <vector>

#include "ZynPixelFormat.h"
#include "cpu/screen/MEMSurfaceText.h"

namespace stamp_test {

inline constexpr int kWidth = 90;
inline constexpr int kHeight = 40;

// An image record with noise-like pixels and padded lines.
struct Picture {
  Picture(uint32_t code, uint32_t depth, uint32_t bytesPerPixel, bool bottomUp = false)
      : step(bytesPerPixel) {
    record.pixelType = code;
    record.bitDepth = depth;
    record.bitsPerPixel = 8 * bytesPerPixel;
    record.width = kWidth;
    record.height = kHeight;
    record.origin = bottomUp ? 1 : 0;
    record.linePitch = kWidth * bytesPerPixel + 7;
    record.imageSize = record.linePitch * kHeight;
    bytes.resize(record.imageSize);
    const bool wide = depth > 8;
    for (size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<uint8_t>(i * 37 + i / 11);
      if (wide && i % record.linePitch % 2 == 1)
        bytes[i] = static_cast<uint8_t>(bytes[i] & ((1u << (depth - 8)) - 1));
    }
    record.imageData = bytes.data();
  }

  ZynImage record{};
  uint32_t step;
  std::vector<uint8_t> bytes;
};

inline QFont FontOf(const char* face, int size) {
  return QFont(QString::fromUtf8(face), size, 50, false);
}

// The model of one glyph: its cell and how much of each pixel it covers.
struct Cell {
  Cell(const QFont& font, int code) {
    const QFontMetrics metrics(font);
    const QRect bounds = metrics.boundingRect(QString(QChar(code == ' ' ? 'i' : code)));
    image = QImage(std::max(1, bounds.width()), std::max(1, bounds.height()), QImage::Format_RGB888);
    width = bounds.width();
    image.fill(Qt::black);
    QFont plain = font;
    plain.setStyleStrategy(QFont::NoSubpixelAntialias);
    QPainter painter(&image);
    painter.setFont(plain);
    painter.setPen(Qt::white);
    painter.drawText(0, std::max(0, bounds.height() - metrics.descent()), QString(QChar(code)));
  }
  QImage image;
  int width;
};

struct Sample {
  explicit Sample(Picture& picture) : wide(picture.record.bitDepth > 8) {}
  int get(const uint8_t* bytes) const { return wide ? bytes[0] + 256 * bytes[1] : bytes[0]; }
  void put(uint8_t* bytes, int value) const {
    bytes[0] = static_cast<uint8_t>(value);
    if (wide) bytes[1] = static_cast<uint8_t>(value >> 8);
  }
  bool wide;
};

// `channels` are the colour's values in the order of the samples.
inline void StampModel(Picture& picture, const QFont& font, const std::vector<int>& codes, int x, int y,
                       int mode, const std::vector<int>& channels, int gap = 0) {
  const Sample sample(picture);
  const int range = 1 << picture.record.bitDepth;
  for (const int code : codes) {
    const Cell cell(font, code);
    for (int row = 0; row < cell.image.height(); ++row) {
      for (int column = 0; column < cell.width; ++column) {
        const int px = x + column, py = y + row;
        const int a = qRed(cell.image.pixel(column, row));
        if (px < 0 || py < 0 || px >= kWidth || py >= kHeight || a == 0) continue;
        const int line = picture.record.origin == 1 ? kHeight - 1 - py : py;
        uint8_t* pixel = &picture.bytes[static_cast<size_t>(line) * picture.record.linePitch +
                                        static_cast<size_t>(px) * picture.step];
        int sum = 0;
        for (size_t c = 0; c < channels.size(); ++c) sum += sample.get(pixel + c * (sample.wide ? 2 : 1));
        for (size_t c = 0; c < channels.size(); ++c) {
          uint8_t* bytes = pixel + c * (sample.wide ? 2 : 1);
          const int background = sample.get(bytes);
          switch (mode) {
            case 1:
              sample.put(bytes, static_cast<int>(background * (1.0 - a / 255.0) + channels[c] * (a / 255.0)));
              break;
            case 2:
              sample.put(bytes, range - 1 - background);
              break;
            case 3:
              sample.put(bytes, sum < range / 4 ? range - 1 : 0);
              break;
            default:
              sample.put(bytes, channels[c]);
          }
        }
      }
    }
    x += cell.width + (code == ' ' ? 0 : gap);
  }
}

inline std::vector<int> CodesOf(const char* ascii) {
  return std::vector<int>(ascii, ascii + std::strlen(ascii));
}

class OpenText : public MEMSurfaceText {
 public:
  using MEMSurfaceText::findFont;
};

class StampFixture : public testing::Test {
 protected:
  void draw(Picture& picture, const char* words, int x, int y, const char* font, const ColorValue* color) {
    text.setTarget(&picture.record);
    text.draw(words, x, y, font, color);
    text.setTarget(nullptr);
  }

  OpenText text;
  const ColorValue white{0xFFFFFF};
  const QFont cambria = FontOf("Cambria", 11);
  const QFont courier = FontOf("Courier New", 12);
};

}  // namespace stamp_test
