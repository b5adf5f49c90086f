#include "sources/PictureFile.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QRgba64>
#include <algorithm>

#include "ZynPixelFormat.h"
#include "pixels/PixelEncoder.h"
#include "pixels/PixelTable.h"
#include "sources/DeepNetpbm.h"
#include "sources/FrameSource.h"
#include "sources/Sidecar.h"

namespace zynview {

namespace {

constexpr int kMostSide = 65535;
constexpr int kShallowBits = 32;  // of a pixel in memory; more is 16 bits for each colour

// Counted as it stands in memory.
bool IsTooLarge(const QSize& size, QImage::Format format) {
  if (!size.isValid()) return false;
  const uint64_t bits = std::max<uint64_t>(QImage::toPixelFormat(format).bitsPerPixel(), kShallowBits);
  return size.width() > kMostSide || size.height() > kMostSide ||
         static_cast<uint64_t>(size.width()) * static_cast<uint64_t>(size.height()) * (bits / 8) >
             kMostFrameBytes;
}

OwnFrame FrameOf(uint32_t pixelType, int width, int height) {
  OwnFrame frame;
  frame.record =
      MakeRecord(pixelType, static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, nullptr);
  frame.record.imageID = 1;
  return frame;
}

OwnFrame TakenPlain(QImage image) {
  const bool deep = image.format() == QImage::Format_Grayscale16;
  const bool grey = deep || image.isGrayscale();
  image = image.convertToFormat(deep   ? QImage::Format_Grayscale16
                                : grey ? QImage::Format_Grayscale8
                                       : QImage::Format_RGB888);
  OwnFrame frame = FrameOf(deep   ? ZYN_PIXEL_MONO16
                           : grey ? ZYN_PIXEL_MONO8
                                  : ZYN_PIXEL_RGB8,
                           image.width(), image.height());
  frame.pixels.reserve(frame.record.imageSize);
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* line = image.constScanLine(y);
    frame.pixels.insert(frame.pixels.end(), line, line + frame.record.linePitch);
  }
  return frame;
}

// For a format of 16 bits a sample.
OwnFrame WithSamples(uint32_t pixelType, uint32_t width, uint32_t height,
                     const std::vector<uint16_t>& samples) {
  OwnFrame frame = FrameOf(pixelType, static_cast<int>(width), static_cast<int>(height));
  const auto* bytes = reinterpret_cast<const uint8_t*>(samples.data());
  frame.pixels.assign(bytes, bytes + samples.size() * sizeof(uint16_t));
  return frame;
}

ColourPicture ColoursOf(const QImage& image) {
  const QImage deep = image.convertToFormat(QImage::Format_RGBA64);
  ColourPicture picture{static_cast<uint32_t>(deep.width()), static_cast<uint32_t>(deep.height()), {}};
  picture.samples.reserve(std::size_t{3} * picture.width * picture.height);
  for (int y = 0; y < deep.height(); ++y) {
    const auto* pixels = reinterpret_cast<const QRgba64*>(deep.constScanLine(y));
    for (uint32_t x = 0; x < picture.width; ++x) {
      const QRgba64 pixel = pixels[x];
      picture.samples.insert(picture.samples.end(), {pixel.red(), pixel.green(), pixel.blue()});
    }
  }
  return picture;
}

// White becomes the top of the 16 bits.
ColourPicture ColoursOf(const DeepNetpbm& deep) {
  ColourPicture picture{deep.width, deep.height, {}};
  picture.samples.reserve(std::size_t{3} * deep.width * deep.height);
  for (const uint16_t sample : deep.samples) {
    const auto scaled = static_cast<uint16_t>(uint32_t{sample} * 0xFFFF / deep.greatest);
    picture.samples.insert(picture.samples.end(), 3 / deep.channels, scaled);
  }
  return picture;
}

// Columns that fill no whole byte are left out; without any left the frame has no pixels.
OwnFrame Encoded(ColourPicture picture, uint32_t pixelType) {
  const uint32_t width = picture.width - picture.width % WidthStep(pixelType);
  if (width != picture.width) {
    for (uint32_t y = 1; y < picture.height; ++y) {
      std::copy_n(picture.Pixel(0, y), std::size_t{3} * width,
                  picture.samples.begin() + static_cast<std::ptrdiff_t>(std::size_t{3} * width * y));
    }
    picture.width = width;
  }
  OwnFrame frame = FrameOf(pixelType, static_cast<int>(width), static_cast<int>(picture.height));
  frame.pixels = EncodePicture(picture, pixelType);
  return frame;
}

OwnFrame Taken(const DeepNetpbm& deep) {
  return WithSamples(deep.PixelType(), deep.width, deep.height, deep.samples);
}

OwnFrame Taken(const QImage& image) {
  if (image.depth() <= kShallowBits) return TakenPlain(image);
  const ColourPicture picture = ColoursOf(image);
  return WithSamples(ZYN_PIXEL_RGB16, picture.width, picture.height, picture.samples);
}

// False where the file is none of these. With an `error` it is one that cannot be read.
bool LoadDeepNetpbm(const QString& file, DeepNetpbm* deep, QString* error) {
  QFile input(file);
  if (!QFileInfo(file).isFile() || !input.open(QIODevice::ReadOnly) || !ReadNetpbmHeader(input, deep))
    return false;
  QString problem;
  if (!ReadNetpbmSamples(input, deep, &problem)) *error = QStringLiteral("%1: %2").arg(file, problem);
  return true;
}

// False, and why.
bool LoadImage(const QString& file, bool asDump, QImage* image, QString* error) {
  QImageReader reader(file);
  reader.setAutoTransform(true);
  reader.setDecideFormatFromContent(true);
  // What a header claims is looked at before memory is taken for it.
  if (IsTooLarge(reader.size(), reader.imageFormat())) {
    *error = QStringLiteral("%1: a picture of %2 × %3 is too large")
                 .arg(file, QString::number(reader.size().width()), QString::number(reader.size().height()));
    return false;
  }
  *image = reader.read();
  if (image->isNull()) {
    *error = QStringLiteral("%1: %2").arg(file, reader.errorString());
    if (asDump) {
      *error += QStringLiteral(" (a raw dump needs --size as well)");
    } else if (reader.error() == QImageReader::UnsupportedFormatError) {
      *error += QStringLiteral(" (a raw dump needs --format and --size)");
    }
    return false;
  }
  if (IsTooLarge(image->size(), image->format()))
    *error = QStringLiteral("%1: this picture is too large").arg(file);
  return error->isEmpty();
}

}  // namespace

bool LoadPicture(const QString& file, uint32_t pixelType, OwnFrame* frame, QString* error) {
  error->clear();
  const auto take = [pixelType, frame](const auto& picture) {
    *frame = pixelType == 0 ? Taken(picture) : Encoded(ColoursOf(picture), pixelType);
  };
  DeepNetpbm deep;
  QImage image;
  if (LoadDeepNetpbm(file, &deep, error)) {
    if (!error->isEmpty()) return false;
    take(deep);
  } else {
    if (!LoadImage(file, pixelType != 0, &image, error)) return false;
    take(image);
  }
  if (!frame->pixels.empty()) return true;
  *error = QStringLiteral("%1 is too small for %2").arg(file, PixelNameOf(pixelType));
  return false;
}

}  // namespace zynview
