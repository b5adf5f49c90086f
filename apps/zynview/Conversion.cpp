#include "Conversion.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>

#include "pixels/PixelTable.h"
#include "sources/FileSource.h"
#include "sources/FrameSaver.h"
#include "view/ColorControls.h"

namespace zynview {

namespace {

constexpr int kGood = 0, kBad = 2;

// Initialises the display where the frame is of another kind than the one before.
class Converter {
 public:
  Converter(ZynDisplayProcessor* target, const Options& programOptions)
      : display(target), colors(target), options(programOptions) {}

  // Empty, or what is wrong.
  QString Convert(OwnFrame frame, const QString& file) {
    const ZynImage& record = frame.record;
    if (record.pixelType != prepared.pixelType || record.width != prepared.width ||
        record.height != prepared.height || record.origin != prepared.origin ||
        record.linePitch != prepared.linePitch) {
      const QString problem = Prepare(record);
      if (!problem.isEmpty()) return problem;
    }
    QImage picture;
    const QString problem = MakeWholePicture(std::move(frame), display, &picture);
    if (!problem.isEmpty()) return problem;
    if (!QDir().mkpath(QFileInfo(file).path()) ||
        !picture.save(file, QFileInfo(file).suffix().isEmpty() ? "PNG" : nullptr))
      return QStringLiteral("%1 could not be written").arg(file);
    return {};
  }

 private:
  QString Prepare(const ZynImage& format) {
    prepared = ZynImage{};
    display->ReleaseConverter();
    if (const uint32_t code = display->Initialize(&format)) {
      return QStringLiteral("the display refuses format %1%2: code 0x%3")
          .arg(PixelNameOf(format.pixelType),
               options.opengl ? QStringLiteral(", or OpenGL cannot be had: it wants a screen") : QString())
          .arg(code, 8, 16, QLatin1Char('0'));
    }
    if (!colors.PicturesAreRead())
      return QStringLiteral("%1 makes no picture").arg(PixelNameOf(format.pixelType));
    const QString problem = colors.Start(options.color);
    if (problem.isEmpty()) prepared = format;
    return problem;
  }

  ZynDisplayProcessor* display;
  ColorControls colors;
  const Options& options;
  ZynImage prepared{};
};

QString ConvertOne(const FileSource& files, uint64_t number, Converter& converter, const QString& out) {
  OwnFrame frame;
  QString error;
  if (!files.Load(number, &frame, &error)) return error;
  const QString file = PictureFileFor(out, files.NameOf(number), number, files.Count());
  if (QFileInfo(file) == QFileInfo(files.PathOf(number)))
    return QStringLiteral("%1 would be written over itself").arg(file);
  const QString problem = converter.Convert(std::move(frame), file);
  return problem.isEmpty() ? problem : files.NameOf(number) + QStringLiteral(": ") + problem;
}

}  // namespace

QString PictureFileFor(const QString& out, const QString& name, uint64_t number, uint64_t count) {
  const QFileInfo info(out);
  const bool isFolder =
      info.isDir() || out.endsWith(QLatin1Char('/')) || (count > 1 && info.suffix().isEmpty());
  if (isFolder) return QDir(out).filePath(name + QStringLiteral(".png"));
  if (count <= 1) return out;
  return info.dir().filePath(QStringLiteral("%1-%2.%3")
                                 .arg(info.completeBaseName())
                                 .arg(number + 1, 6, 10, QLatin1Char('0'))
                                 .arg(info.suffix()));
}

int ConvertFrames(FrameSource& source, ZynDisplayProcessor* display, const Options& options,
                  QTextStream& messages) {
  int result = kGood;
  const auto tell = [&](const QString& problem) {
    if (problem.isEmpty()) return;
    messages << "zynview: " << problem << '\n';
    messages.flush();
    result = kBad;
  };
  Converter converter(display, options);
  QString error;
  if (!source.Open(&error)) {
    tell(error);
    return result;
  }
  if (auto* files = dynamic_cast<FileSource*>(&source)) {
    files->TakeProblems();  // each file is read again, and tells it then
    for (uint64_t i = 0; i < files->Count(); ++i) tell(ConvertOne(*files, i, converter, options.convert));
    return result;
  }
  OwnFrame frame;
  source.Run([&frame](const ZynImage& delivered) {
    if (!delivered.imageData) return true;
    frame = CopyOf(delivered);
    return false;
  });
  if (frame.pixels.empty()) {
    tell(QStringLiteral("no frame came"));
    return result;
  }
  tell(converter.Convert(std::move(frame), PictureFileFor(options.convert, QStringLiteral("zynview"), 0, 1)));
  return result;
}

}  // namespace zynview
