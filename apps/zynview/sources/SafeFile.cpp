#include "sources/SafeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>
#include <QStringList>

namespace zynview {

namespace {

QString NotWritten(const QString& name, QFileDevice& device) {
  if (device.isOpen()) device.flush();  // where it was written by halves, only the rest tells why
  return QStringLiteral("%1 could not be written: %2").arg(name, device.errorString());
}

QString Fill(QFile& file, const std::function<bool(QIODevice&)>& write) {
  if (!write(file) || !file.flush()) return NotWritten(file.fileName(), file);
  file.close();
  return file.error() == QFileDevice::NoError ? QString() : NotWritten(file.fileName(), file);
}

QByteArray FormatOf(const QString& name) {
  const QByteArray ending = QFileInfo(name).suffix().toLower().toLatin1();
  return ending.isEmpty() ? QByteArrayLiteral("png") : ending;
}

}  // namespace

QString WriteFile(const QString& name, Existing existing, const std::function<bool(QIODevice&)>& write) {
  const QFileInfo info(name);
  if (const bool isNoFile = info.exists() && !info.isFile(); existing == Existing::Kept || isNoFile) {
    QFile file(name);
    const auto mode = existing == Existing::Kept ? QIODevice::NewOnly : QIODevice::WriteOnly;
    if (!file.open(QIODevice::WriteOnly | mode)) return NotWritten(name, file);
    const QString problem = Fill(file, write);
    file.close();  // what it still holds cannot be written either, and would keep the file from going
    if (!problem.isEmpty() && existing == Existing::Kept) QFile::remove(name);
    return problem;
  }
  QSaveFile file(name);
  file.setDirectWriteFallback(true);  // a file that may be written, in a folder that may not
  if (!file.open(QIODevice::WriteOnly)) return NotWritten(name, file);
  if (!write(file) || !file.flush()) {  // `commit` alone does not mind what is lost here
    const QString problem = NotWritten(name, file);
    file.cancelWriting();
    return problem;
  }
  return file.commit() ? QString() : NotWritten(name, file);
}

QString PictureFormatProblem(const QString& name) {
  const QList<QByteArray> formats = QImageWriter::supportedImageFormats();
  if (formats.contains(FormatOf(name))) return {};
  QStringList endings;
  for (const QByteArray& format : formats) endings << QLatin1Char('.') + QString::fromLatin1(format);
  return QStringLiteral("%1: no picture format ends with .%2; possible are %3")
      .arg(name, QFileInfo(name).suffix(), endings.join(QStringLiteral(", ")));
}

QString WritePicture(const QImage& picture, const QString& name, Existing existing) {
  const QString problem = PictureFormatProblem(name);
  if (!problem.isEmpty()) return problem;
  return WriteFile(name, existing, [&picture, &name](QIODevice& device) {
    return QImageWriter(&device, FormatOf(name)).write(picture);
  });
}

}  // namespace zynview
