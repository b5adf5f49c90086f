#include "Conversion.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSet>

#include "pixels/PixelTable.h"
#include "sources/FileSource.h"
#include "sources/FrameSaver.h"
#include "sources/SafeFile.h"
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
    if (!QDir().mkpath(QFileInfo(file).path()))
      return QStringLiteral("the folder of %1 cannot be made").arg(file);
    return WritePicture(picture, file);
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
  const QString problem =
      converter.Convert(std::move(frame), PictureFileFor(out, files.NameOf(number), number, files.Count()));
  return problem.isEmpty() ? problem : files.NameOf(number) + QStringLiteral(": ") + problem;
}

bool IsFolder(const QString& out) {
  return QFileInfo(out).isDir() || out.endsWith(QLatin1Char('/'));
}

// Empty where nothing that is read would be written over: some of it may not have been read yet by then.
QString Overwriting(const FileSource& files, const QString& out) {
  QSet<QString> inputs;  // one name for each file, whatever links lead to it
  for (const QString& input : files.Inputs()) inputs << QFileInfo(input).canonicalFilePath();
  for (uint64_t i = 0; i < files.Count(); ++i) {
    const QString target = PictureFileFor(out, files.NameOf(i), i, files.Count());
    if (QFileInfo::exists(target) && inputs.contains(QFileInfo(target).canonicalFilePath()))
      return QStringLiteral("%1 would be written over, but it is one of the files to convert").arg(target);
  }
  return {};
}

}  // namespace

QString PictureFileFor(const QString& out, const QString& name, uint64_t number, uint64_t count) {
  const QFileInfo info(out);
  if (IsFolder(out) || (count > 1 && info.suffix().isEmpty()))
    return QDir(out).filePath(name + QStringLiteral(".png"));
  if (count <= 1) return out;
  const QString digits = QStringLiteral("%1").arg(number + 1, 6, 10, QLatin1Char('0'));
  return info.dir().filePath(QStringLiteral("%1-%2.%3").arg(info.completeBaseName(), digits, info.suffix()));
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
  QString error = IsFolder(options.convert) ? QString() : PictureFormatProblem(options.convert);
  if (!error.isEmpty() || !source.Open(&error)) {
    tell(error);
    return result;
  }
  if (auto* files = dynamic_cast<FileSource*>(&source)) {
    files->TakeProblems();  // each file is read again, and tells it then
    tell(Overwriting(*files, options.convert));
    if (result != kGood) return result;
    for (const QString& remark : files->Remarks()) messages << "zynview: " << remark << '\n';
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
