#include "FrameSaver.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include "FrameSource.h"
#include "PixelTable.h"
#include "ZynPixelFormat.h"

namespace zynview {

namespace {

constexpr uint32_t kCodeMask = 0xFFFF;

QString NotWritten(const QString& file) {
  return QStringLiteral("%1 could not be written").arg(file);
}

}  // namespace

QString FreeFileName(const QString& folder, const ZynImage& frame, bool raw) {
  QString stem = QStringLiteral("zynview-%1").arg(frame.imageID, 6, 10, QLatin1Char('0'));
  if (raw)
    stem += QStringLiteral("-%1x%2-%3").arg(frame.width).arg(frame.height).arg(PixelNameOf(frame.pixelType));
  const QString ending = raw ? QStringLiteral(".raw") : QStringLiteral(".png");
  const QDir target(folder);
  QString name = stem + ending;
  for (int number = 2; target.exists(name); ++number)
    name = QStringLiteral("%1-%2").arg(stem).arg(number) + ending;
  return target.filePath(name);
}

QString SaveRawFrame(const OwnFrame& frame, const QString& folder, QString* file) {
  *file = FreeFileName(folder, frame.record, true);
  const uint64_t lineBytes = LineBytes(frame.record.pixelType, frame.record.width);
  const uint64_t pitch = frame.record.linePitch;
  QFile output(*file);
  if (!output.open(QIODevice::WriteOnly)) return NotWritten(*file);
  for (uint64_t y = 0; y < frame.record.height; ++y) {
    if (y * pitch + lineBytes > frame.pixels.size()) return NotWritten(*file);
    const auto* line = reinterpret_cast<const char*>(frame.pixels.data() + y * pitch);
    const auto size = static_cast<qint64>(lineBytes);
    if (output.write(line, size) != size) return NotWritten(*file);
  }
  return output.flush() ? QString() : NotWritten(*file);
}

QString SaveWholePicture(OwnFrame frame, ZynDisplayProcessor* display, const QString& folder, QString* file) {
  QImage picture(static_cast<int>(frame.record.width), static_cast<int>(frame.record.height),
                 QImage::Format_RGB888);
  if (picture.isNull()) return QStringLiteral("no memory for the picture");
  ZynImage input = frame.record;
  input.imageData = frame.pixels.data();
  ZynImage output = MakeRecord(ZYN_PIXEL_RGB8, input.width, input.height,
                               static_cast<uint32_t>(picture.bytesPerLine()), picture.bits());
  uint32_t code = display->ConvertImage(&input, &output);
  if ((code & kCodeMask) == ZYN_ERR_BAD_ARGUMENT) {
    // The converter is still prepared for another picture.
    display->ReleaseConverter();
    code = display->ConvertImage(&input, &output);
  }
  if ((code & kCodeMask) != 0) {
    return QStringLiteral("the display makes no picture of %1: code 0x%2")
        .arg(PixelNameOf(input.pixelType))
        .arg(code, 8, 16, QLatin1Char('0'));
  }
  *file = FreeFileName(folder, input, false);
  return picture.save(*file) ? QString() : NotWritten(*file);
}

}  // namespace zynview
