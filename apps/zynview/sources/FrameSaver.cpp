#include "sources/FrameSaver.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include "ZynPixelFormat.h"
#include "pixels/PixelTable.h"
#include "sources/FrameSource.h"
#include "sources/SafeFile.h"
#include "sources/Sidecar.h"

namespace zynview {

namespace {

constexpr uint32_t kCodeMask = 0xFFFF;

bool WriteLines(const OwnFrame& frame, QIODevice& output) {
  const uint64_t lineBytes = LineBytes(frame.record.pixelType, frame.record.width);
  const uint64_t pitch = frame.record.linePitch;
  for (uint64_t y = 0; y < frame.record.height; ++y) {
    if (y * pitch + lineBytes > frame.pixels.size()) return false;
    const auto* line = reinterpret_cast<const char*>(frame.pixels.data() + y * pitch);
    const auto size = static_cast<qint64>(lineBytes);
    if (output.write(line, size) != size) return false;
  }
  return true;
}

}  // namespace

QString FreeFileName(const QString& folder, const ZynImage& frame, bool raw) {
  QString stem = QStringLiteral("zynview-%1").arg(frame.imageID, 6, 10, QLatin1Char('0'));
  if (raw)
    stem += QStringLiteral("-%1x%2-%3").arg(frame.width).arg(frame.height).arg(PixelNameOf(frame.pixelType));
  const QString ending = raw ? QStringLiteral(".raw") : QStringLiteral(".png");
  const QDir target(folder);
  QString name = stem + ending;
  const auto isTaken = [&target, raw](const QString& file) {
    return target.exists(file) || (raw && target.exists(SidecarFileOf(file)));
  };
  for (int number = 2; isTaken(name); ++number) name = QStringLiteral("%1-%2").arg(stem).arg(number) + ending;
  return target.filePath(name);
}

QString SaveRawFrame(const OwnFrame& frame, const QString& folder, const QString& source, QString* file) {
  *file = FreeFileName(folder, frame.record, true);
  const auto writeLines = [&frame](QIODevice& output) { return WriteLines(frame, output); };
  QString problem = WriteFile(*file, Existing::Kept, writeLines);
  if (!problem.isEmpty()) return problem;
  const ZynImage& record = frame.record;
  const Sidecar sidecar{record.pixelType,
                        record.width,
                        record.height,
                        LineBytes(record.pixelType, record.width),
                        record.origin,
                        record.imageID,
                        record.timestamp,
                        source,
                        QDateTime::currentDateTime().toString(Qt::ISODate)};
  const QByteArray text = WriteSidecar(sidecar);
  const auto writeText = [&text](QIODevice& output) { return output.write(text) == text.size(); };
  problem = WriteFile(SidecarFileOf(*file), Existing::Kept, writeText);
  if (!problem.isEmpty()) QFile::remove(*file);  // nobody could tell what it holds
  return problem;
}

QString MakeWholePicture(OwnFrame frame, ZynDisplayProcessor* display, QImage* picture) {
  *picture = QImage(static_cast<int>(frame.record.width), static_cast<int>(frame.record.height),
                    QImage::Format_RGB888);
  if (picture->isNull()) return QStringLiteral("no memory for the picture");
  ZynImage input = frame.record;
  input.imageData = frame.pixels.data();
  ZynImage output = MakeRecord(ZYN_PIXEL_RGB8, input.width, input.height,
                               static_cast<uint32_t>(picture->bytesPerLine()), picture->bits());
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
  // Line 0 of a file is the top one.
  if (output.origin == 1) *picture = picture->mirrored();
  return {};
}

QString SaveWholePicture(OwnFrame frame, ZynDisplayProcessor* display, const QString& folder, QString* file) {
  *file = FreeFileName(folder, frame.record, false);
  QImage picture;
  const QString problem = MakeWholePicture(std::move(frame), display, &picture);
  if (!problem.isEmpty()) return problem;
  return WritePicture(picture, *file, Existing::Kept);
}

}  // namespace zynview
