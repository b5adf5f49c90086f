// What text looks like: how much of each pixel of a picture a line of it covers, straight from a painter and
// apart from the code that stamps it.
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QString>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "QTD/image/PixelFormats.h"
#include "tests/cpu/StagePicture.h"

inline QFont DefaultFont() {
  return QFont(QStringLiteral("Cambria"), 11, QFont::Normal, false);
}

// Coverage 0 to 255 by pixel, the top row first: each character in a cell of its own, its corner at x, y.
class Coverage {
 public:
  Coverage(int pictureWidth, int pictureHeight)
      : width(pictureWidth), values(static_cast<size_t>(pictureWidth * pictureHeight)) {}

  Coverage& Add(const std::string& text, int x, int y, const QFont& font = DefaultFont()) {
    const QFontMetrics metrics(font);
    for (const char code : text) {
      const QRect bounds = metrics.boundingRect(QString(QLatin1Char(code == ' ' ? 'i' : code)));
      QImage cell(bounds.width(), bounds.height(), QImage::Format_RGB888);
      cell.fill(Qt::black);
      QFont plain = font;
      plain.setStyleStrategy(QFont::NoSubpixelAntialias);
      QPainter painter(&cell);
      painter.setFont(plain);
      painter.setPen(Qt::white);
      painter.drawText(0, bounds.height() - metrics.descent(), QString(QLatin1Char(code)));
      painter.end();
      Paste(cell, x, y);
      x += bounds.width();
    }
    return *this;
  }

  int At(int x, int y) const { return values[static_cast<size_t>(y * width + x)]; }
  int Count(int least) const {
    return static_cast<int>(std::count_if(values.begin(), values.end(), [=](int v) { return v >= least; }));
  }

 private:
  void Paste(const QImage& cell, int x, int y) {
    const int height = static_cast<int>(values.size()) / width;
    for (int row = std::max(0, -y); row < cell.height() && y + row < height; ++row) {
      for (int column = std::max(0, -x); column < cell.width() && x + column < width; ++column) {
        values[static_cast<size_t>((y + row) * width + x + column)] = qRed(cell.pixel(column, row));
      }
    }
  }

  int width;
  std::vector<int> values;
};

// One sample of a picture, `line` counted in memory.
struct SampleAt {
  SampleAt(const ZynImage& image, uint32_t x, uint32_t line, uint32_t channel)
      : wide(image.bitDepth > 8),
        bytes(image.imageData + size_t{line} * image.linePitch +
              (size_t{x} * image.channels + channel) * (wide ? 2 : 1)) {}

  int Get() const { return wide ? bytes[0] + 256 * bytes[1] : bytes[0]; }
  void Put(int value) const {
    bytes[0] = static_cast<uint8_t>(value);
    if (wide) bytes[1] = static_cast<uint8_t>(value >> 8);
  }

  bool wide;
  uint8_t* bytes;
};

// Samples of the depth alone, no bits above it.
inline void HoldDepth(const StagePicture& picture) {
  const ZynImage& image = picture.record;
  for (uint32_t y = 0; y < image.height; ++y) {
    for (uint32_t x = 0; x < image.width; ++x) {
      for (uint32_t c = 0; c < image.channels; ++c) {
        const SampleAt sample(image, x, y, c);
        sample.Put(sample.Get() & ((1 << image.bitDepth) - 1));
      }
    }
  }
}

// Blends a colour (red, green, blue in 0..1 of the range) over the covered pixels of a picture whose top row
// is the last line in memory where `bottomUp`.
inline void BlendModel(const StagePicture& picture, const Coverage& coverage, const double (&color)[3],
                       bool bottomUp) {
  const ZynImage& image = picture.record;
  const int range = 1 << image.bitDepth;
  const auto level = [range](double part) {
    return std::min(static_cast<int>(part * range + 0.5), range - 1);
  };
  std::vector<int> levels;
  if (image.channels == 1) {
    levels = {level(0.3086 * color[0] + 0.6094 * color[1] + 0.082 * color[2])};
  } else {
    levels = {level(color[0]), level(color[1]), level(color[2])};
    if (QTD::IsBgrFormat(image.pixelType)) std::swap(levels[0], levels[2]);
  }
  for (uint32_t y = 0; y < image.height; ++y) {
    const uint32_t line = bottomUp ? image.height - 1 - y : y;
    for (uint32_t x = 0; x < image.width; ++x) {
      const int a = coverage.At(static_cast<int>(x), static_cast<int>(y));
      if (a == 0) continue;
      for (uint32_t c = 0; c < image.channels; ++c) {
        const SampleAt sample(image, x, line, c);
        sample.Put(static_cast<int>(sample.Get() * (1.0 - a / 255.0) + levels[c] * (a / 255.0)));
      }
    }
  }
}
