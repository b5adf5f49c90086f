#include "StillSource.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QRgba64>
#include <algorithm>
#include <chrono>

#include "Pacer.h"
#include "PixelEncoder.h"
#include "PixelTable.h"
#include "Scene.h"
#include "ZynPixelFormat.h"

namespace zynview {

namespace {

constexpr uint32_t kSceneWidth = 1280, kSceneHeight = 960;
constexpr int kSceneFrames = 24;
// A scene of large frames has fewer of them.
constexpr std::size_t kSceneBytes = std::size_t{256} << 20;

std::vector<uint8_t> Bytes(const QImage& image, std::size_t lineBytes) {
  std::vector<uint8_t> bytes;
  bytes.reserve(lineBytes * static_cast<std::size_t>(image.height()));
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* line = image.constScanLine(y);
    bytes.insert(bytes.end(), line, line + lineBytes);
  }
  return bytes;
}

uint64_t Now() {
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::system_clock::now().time_since_epoch())
                                   .count());
}

}  // namespace

ZynImage StillSource::Format() const {
  return MakeRecord(pixelType, width, height, pitch, nullptr);
}

void StillSource::Run(const Sink& sink) {
  Pacer pacer(rate);
  for (uint64_t id = 1;; ++id) {
    pacer.Wait();
    ZynImage frame = MakeRecord(pixelType, width, height, pitch, frames[(id - 1) % frames.size()].data());
    frame.imageID = id;
    frame.timestamp = Now();
    if (!sink(frame)) return;
  }
}

PictureSource::PictureSource(const Options& options) : StillSource(options.rate), file(options.file) {
  pixelType = options.pixelType;
}

bool PictureSource::Open(QString* error) {
  QImageReader reader(file);
  reader.setAutoTransform(true);
  const QImage image = reader.read();
  if (image.isNull()) {
    *error = QStringLiteral("%1: %2").arg(file, reader.errorString());
    if (pixelType != 0) *error += QStringLiteral(" (a raw dump wants its --size as well)");
    return false;
  }
  description = QFileInfo(file).fileName();
  if (pixelType != 0) return Encode(image, error);
  Take(image);
  return true;
}

void PictureSource::Take(QImage image) {
  const bool deep = image.format() == QImage::Format_Grayscale16;
  const bool grey = deep || image.isGrayscale();
  pixelType = deep ? ZYN_PIXEL_MONO16 : grey ? ZYN_PIXEL_MONO8 : ZYN_PIXEL_RGB8;
  image = image.convertToFormat(deep   ? QImage::Format_Grayscale16
                                : grey ? QImage::Format_Grayscale8
                                       : QImage::Format_RGB888);
  width = static_cast<uint32_t>(image.width());
  height = static_cast<uint32_t>(image.height());
  frames.push_back(Bytes(image, LineBytes(pixelType, width)));
}

// The picture as a camera of the format would deliver it. Columns that fill no whole byte are left out.
bool PictureSource::Encode(const QImage& image, QString* error) {
  const QImage deep = image.convertToFormat(QImage::Format_RGBA64);
  width = static_cast<uint32_t>(deep.width());
  width -= width % WidthStep(pixelType);
  height = static_cast<uint32_t>(deep.height());
  if (width == 0) {
    *error = QStringLiteral("%1 is too small for %2").arg(file, PixelNameOf(pixelType));
    return false;
  }
  ColourPicture picture{width, height, {}};
  picture.samples.reserve(static_cast<std::size_t>(width) * height * 3);
  for (int y = 0; y < deep.height(); ++y) {
    const auto* pixels = reinterpret_cast<const QRgba64*>(deep.constScanLine(y));
    for (uint32_t x = 0; x < width; ++x) {
      const QRgba64 pixel = pixels[x];
      picture.samples.insert(picture.samples.end(), {pixel.red(), pixel.green(), pixel.blue()});
    }
  }
  frames.push_back(EncodePicture(picture, pixelType));
  return true;
}

RawSource::RawSource(const Options& options) : StillSource(options.rate), file(options.file) {
  pixelType = options.pixelType;
  width = static_cast<uint32_t>(options.size.width());
  height = static_cast<uint32_t>(options.size.height());
  pitch = options.pitch;
}

bool RawSource::Open(QString* error) {
  QFile input(file);
  if (!input.open(QIODevice::ReadOnly)) {
    *error = QStringLiteral("%1: %2").arg(file, input.errorString());
    return false;
  }
  const uint32_t lineBytes = LineBytes(pixelType, width);
  if (pitch != 0 && pitch < lineBytes) {
    *error =
        QStringLiteral("a line of %1 pixels has %2 bytes: --pitch is too small").arg(width).arg(lineBytes);
    return false;
  }
  const std::size_t frameBytes = static_cast<std::size_t>(pitch ? pitch : lineBytes) * height;
  const QByteArray bytes = input.readAll();
  const std::size_t count = static_cast<std::size_t>(bytes.size()) / frameBytes;
  if (count == 0) {
    *error = QStringLiteral("%1 has %2 bytes, a frame of this format and size %3")
                 .arg(file)
                 .arg(bytes.size())
                 .arg(frameBytes);
    return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const char* start = bytes.constData() + i * frameBytes;
    frames.emplace_back(start, start + frameBytes);
  }
  description = QFileInfo(file).fileName();
  return true;
}

SceneSource::SceneSource(const Options& options) : StillSource(options.rate) {
  pixelType = options.pixelType ? options.pixelType : ZYN_PIXEL_RGB8;
  width = options.size.isEmpty() ? kSceneWidth : static_cast<uint32_t>(options.size.width());
  height = options.size.isEmpty() ? kSceneHeight : static_cast<uint32_t>(options.size.height());
}

bool SceneSource::Open(QString* error) {
  if (const uint32_t step = WidthStep(pixelType); width % step != 0) {
    *error = QStringLiteral("lines of %1 end at whole bytes: the width has to be a multiple of %2")
                 .arg(PixelNameOf(pixelType))
                 .arg(step);
    return false;
  }
  const std::size_t frameBytes = std::size_t{LineBytes(pixelType, width)} * height;
  const int count =
      std::clamp(static_cast<int>(kSceneBytes / std::max<std::size_t>(frameBytes, 1)), 1, kSceneFrames);
  const ColourPicture background = DrawBackground(width, height);
  const std::vector<uint8_t> backgroundBytes = EncodePicture(background, pixelType);
  for (int i = 0; i < count; ++i) {
    ColourPicture picture = background;
    const Lines changed = DrawPart(picture, static_cast<double>(i) / count);
    frames.push_back(backgroundBytes);
    EncodeLines(picture, pixelType, changed.first, changed.end, &frames.back());
  }
  description = QStringLiteral("test scene");
  return true;
}

}  // namespace zynview
