#include "sources/FrameFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <algorithm>

#include "pixels/PixelTable.h"
#include "sources/FrameSource.h"
#include "sources/PictureFile.h"
#include "sources/Sidecar.h"

namespace zynview {

namespace {

constexpr qint64 kMostSidecarBytes = 1 << 16;

bool HasEnding(const QString& path, const char* ending) {
  return QFileInfo(path).suffix().compare(QLatin1String(ending), Qt::CaseInsensitive) == 0;
}

bool LooksLikeFrame(const QString& path) {
  if (HasEnding(path, "raw")) return true;
  const QByteArray suffix = QFileInfo(path).suffix().toLatin1().toLower();
  return QImageReader::supportedImageFormats().contains(suffix);
}

// The digits from `place` on, without zeros before them; `place` goes behind them.
QString NumberAt(const QString& text, int* place) {
  const int start = *place;
  while (*place < text.size() && text[*place].isDigit()) ++*place;
  QString digits = text.mid(start, *place - start);
  while (digits.size() > 1 && digits[0] == QLatin1Char('0')) digits.remove(0, 1);
  return digits;
}

// Numbers count as numbers, everything else letter by letter.
bool ComesBefore(const QString& a, const QString& b) {
  int i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (!a[i].isDigit() || !b[j].isDigit()) {
      const QChar left = a[i++].toCaseFolded(), right = b[j++].toCaseFolded();
      if (left != right) return left < right;
      continue;
    }
    const QString left = NumberAt(a, &i), right = NumberAt(b, &j);
    if (left.size() != right.size()) return left.size() < right.size();
    if (left != right) return left < right;
  }
  return a.size() - i < b.size() - j;
}

QStringList FilesOf(const QString& folder) {
  const QDir directory(folder);
  QStringList names = directory.entryList(QDir::Files, QDir::Name);
  std::stable_sort(names.begin(), names.end(), ComesBefore);
  QStringList files;
  for (const QString& name : names) {
    const QString path = directory.filePath(name);
    // Texts are none of ours, unless they stand beside a raw frame, which leads to them.
    if (LooksLikeFrame(path)) files << path;
  }
  return files;
}

uint64_t DumpBytes(const FileFormat& format) {
  const uint64_t lineBytes = LineBytes(format.pixelType, static_cast<uint32_t>(format.size.width()));
  return std::max<uint64_t>(format.pitch, lineBytes) * static_cast<uint64_t>(format.size.height());
}

FrameFile FileAt(const QString& path, const FileFormat& format, bool named) {
  const bool raw = HasEnding(path, "raw");
  if (format.IsOfDumps() && (named || raw)) {
    const auto size = static_cast<uint64_t>(std::max<qint64>(QFileInfo(path).size(), 0));
    const uint64_t count = size / DumpBytes(format);
    return {FrameFile::Dump, path, std::max<uint64_t>(count, 1), count > 0 ? size % DumpBytes(format) : 0};
  }
  if (HasEnding(path, "json")) return {FrameFile::WithSidecar, RawFileOf(path)};
  return {raw ? FrameFile::WithSidecar : FrameFile::Picture, path};
}

// The bytes from `offset` on, exactly so many.
bool ReadBytes(QFile& file, uint64_t offset, uint64_t size, std::vector<uint8_t>* bytes, QString* error) {
  bytes->resize(size);
  const auto length = static_cast<qint64>(size);
  if (file.seek(static_cast<qint64>(offset)) &&
      file.read(reinterpret_cast<char*>(bytes->data()), length) == length)
    return true;
  *error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
  return false;
}

bool LoadDump(const FrameFile& file, uint64_t number, const FileFormat& format, OwnFrame* frame,
              QString* error) {
  QFile input(file.path);
  if (!input.open(QIODevice::ReadOnly)) {
    *error = QStringLiteral("%1: %2").arg(file.path, input.errorString());
    return false;
  }
  const auto width = static_cast<uint32_t>(format.size.width());
  const uint32_t lineBytes = LineBytes(format.pixelType, width);
  if (format.pitch != 0 && format.pitch < lineBytes) {
    *error =
        QStringLiteral("a line of %1 pixels has %2 bytes: --pitch is too small").arg(width).arg(lineBytes);
    return false;
  }
  const uint64_t frameBytes = DumpBytes(format);
  if (frameBytes == 0 || frameBytes > kMostFrameBytes || input.size() < 0 ||
      static_cast<uint64_t>(input.size()) / frameBytes <= number) {
    *error = QStringLiteral("%1 has %2 bytes, a frame of this format and size %3")
                 .arg(file.path, QString::number(input.size()), QString::number(frameBytes));
    return false;
  }
  frame->record =
      MakeRecord(format.pixelType, width, static_cast<uint32_t>(format.size.height()), format.pitch, nullptr);
  frame->record.imageID = number + 1;
  return ReadBytes(input, number * frameBytes, frameBytes, &frame->pixels, error);
}

bool LoadWithSidecar(const FrameFile& file, OwnFrame* frame, QString* error) {
  const QString name = SidecarFileOf(file.path);
  QFile text(name);
  if (!text.open(QIODevice::ReadOnly)) {
    *error = QStringLiteral("%1 has no sidecar %2: a raw dump needs --format and --size")
                 .arg(file.path, QFileInfo(name).fileName());
    return false;
  }
  Sidecar sidecar;
  if (!ReadSidecar(text.read(kMostSidecarBytes), &sidecar, error)) {
    *error = QStringLiteral("%1: %2").arg(name, *error);
    return false;
  }
  QFile input(file.path);
  if (!input.open(QIODevice::ReadOnly)) {
    *error = QStringLiteral("%1: %2").arg(file.path, input.errorString());
    return false;
  }
  if (static_cast<uint64_t>(std::max<qint64>(input.size(), 0)) != sidecar.FileBytes()) {
    *error = QStringLiteral("%1 has %2 bytes, but its sidecar says %3 lines of %4")
                 .arg(file.path, QString::number(input.size()), QString::number(sidecar.height),
                      QString::number(sidecar.linePitch));
    return false;
  }
  frame->record = MakeRecord(sidecar.pixelType, sidecar.width, sidecar.height, sidecar.linePitch, nullptr);
  frame->record.origin = sidecar.origin;
  frame->record.imageID = sidecar.imageID;
  frame->record.timestamp = sidecar.timestamp;
  return ReadBytes(input, 0, sidecar.FileBytes(), &frame->pixels, error);
}

}  // namespace

std::vector<FrameFile> ListFrameFiles(const QStringList& paths, const FileFormat& format) {
  std::vector<FrameFile> files;
  const auto add = [&files](const FrameFile& file) {
    const bool twice = std::any_of(files.begin(), files.end(), [&file](const FrameFile& other) {
      return file.kind == FrameFile::WithSidecar && other.path == file.path;
    });
    if (!twice) files.push_back(file);
  };
  for (const QString& path : paths) {
    if (!QFileInfo(path).isDir()) {
      add(FileAt(path, format, true));
      continue;
    }
    for (const QString& each : FilesOf(path)) files.push_back(FileAt(each, format, false));
  }
  return files;
}

bool LoadFrame(const FrameFile& file, uint64_t number, const FileFormat& format, OwnFrame* frame,
               QString* error) {
  switch (file.kind) {
    case FrameFile::Dump:
      return LoadDump(file, number, format, frame, error);
    case FrameFile::WithSidecar:
      return LoadWithSidecar(file, frame, error);
    case FrameFile::Picture:
      break;
  }
  return LoadPicture(file.path, format.pixelType, frame, error);
}

}  // namespace zynview
