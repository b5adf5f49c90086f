#include "sources/PictureFile.h"

#include <QImage>
#include <QImageReader>
#include <QRgba64>

#include "ZynPixelFormat.h"
#include "pixels/PixelEncoder.h"
#include "pixels/PixelTable.h"
#include "sources/FrameSource.h"
#include "sources/Sidecar.h"

namespace zynview {

namespace {

constexpr int kMostSide = 65535;
constexpr uint64_t kMostPixelBytes = 4;  // of a picture that counts as a frame

bool IsTooLarge(const QSize& size) {
  if (!size.isValid()) return false;
  return size.width() > kMostSide || size.height() > kMostSide ||
         static_cast<uint64_t>(size.width()) * static_cast<uint64_t>(size.height()) * kMostPixelBytes >
             kMostFrameBytes;
}

OwnFrame FrameOf(uint32_t pixelType, int width, int height) {
  OwnFrame frame;
  frame.record =
      MakeRecord(pixelType, static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, nullptr);
  frame.record.imageID = 1;
  return frame;
}

OwnFrame Taken(QImage image) {
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

// Columns that fill no whole byte are left out; without any left the frame has no pixels.
OwnFrame Encoded(const QImage& image, uint32_t pixelType) {
  const QImage deep = image.convertToFormat(QImage::Format_RGBA64);
  const uint32_t step = WidthStep(pixelType);
  auto width = static_cast<uint32_t>(deep.width());
  width -= width % step;
  ColourPicture picture{width, static_cast<uint32_t>(deep.height()), {}};
  picture.samples.reserve(std::size_t{3} * width * picture.height);
  for (int y = 0; y < deep.height(); ++y) {
    const auto* pixels = reinterpret_cast<const QRgba64*>(deep.constScanLine(y));
    for (uint32_t x = 0; x < width; ++x) {
      const QRgba64 pixel = pixels[x];
      picture.samples.insert(picture.samples.end(), {pixel.red(), pixel.green(), pixel.blue()});
    }
  }
  OwnFrame frame = FrameOf(pixelType, static_cast<int>(width), deep.height());
  frame.pixels = EncodePicture(picture, pixelType);
  return frame;
}

}  // namespace

bool LoadPicture(const QString& file, uint32_t pixelType, OwnFrame* frame, QString* error) {
  QImageReader reader(file);
  reader.setAutoTransform(true);
  reader.setDecideFormatFromContent(true);
  // What a header claims is looked at before memory is taken for it.
  if (IsTooLarge(reader.size())) {
    *error = QStringLiteral("%1: a picture of %2 × %3 is too large")
                 .arg(file)
                 .arg(reader.size().width())
                 .arg(reader.size().height());
    return false;
  }
  const QImage image = reader.read();
  if (image.isNull() || IsTooLarge(image.size())) {
    *error = QStringLiteral("%1: %2").arg(
        file, image.isNull() ? reader.errorString() : QStringLiteral("this picture is too large"));
    if (pixelType != 0) *error += QStringLiteral(" (a raw dump wants its --size as well)");
    return false;
  }
  *frame = pixelType == 0 ? Taken(image) : Encoded(image, pixelType);
  if (!frame->pixels.empty()) return true;
  *error = QStringLiteral("%1 is too small for %2").arg(file, PixelNameOf(pixelType));
  return false;
}

}  // namespace zynview
