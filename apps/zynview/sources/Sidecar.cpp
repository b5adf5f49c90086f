#include "sources/Sidecar.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include "pixels/PixelTable.h"
#include "sources/FrameSource.h"

namespace zynview {

namespace {

constexpr double kMostSide = 65535;

QString WithEnding(const QString& file, const QString& ending) {
  const QFileInfo info(file);
  return info.dir().filePath(info.completeBaseName() + ending);
}

// The begin of a sentence that goes on with what is wanted.
QString Wanted(const QJsonValue& value, const char* name) {
  return (value.isUndefined() ? QStringLiteral("%1 is missing; it has to be ")
                              : QStringLiteral("%1 has to be "))
      .arg(QLatin1String(name));
}

// A whole number from `least` to `most`.
bool ReadWhole(const QJsonObject& object, const char* name, double least, double most, uint32_t* number,
               QString* error) {
  const QJsonValue value = object.value(QLatin1String(name));
  const double read = value.toDouble(-1);
  if (read >= least && read <= most) {
    *number = static_cast<uint32_t>(read);
    if (*number == read) return true;
  }
  *error = Wanted(value, name) +
           QStringLiteral("a whole number from %1 to %2").arg(least, 0, 'f', 0).arg(most, 0, 'f', 0);
  return false;
}

bool ReadFormat(const QJsonObject& object, uint32_t* pixelType, QString* error) {
  const QJsonValue value = object.value(QLatin1String("pixelFormat"));
  *pixelType = PixelCode(value.toString());
  if (*pixelType != 0) return true;
  *error = value.isString() ? QStringLiteral("unknown pixel format \"%1\"").arg(value.toString().left(40))
                            : Wanted(value, "pixelFormat") + QStringLiteral("a name, such as \"Mono12\"");
  return false;
}

// The numbers of JSON are too short for 64 bits: these are texts. What cannot be read counts as 0.
uint64_t ReadLong(const QJsonObject& object, const char* name) {
  return object.value(QLatin1String(name)).toString().toULongLong();
}

}  // namespace

QByteArray WriteSidecar(const Sidecar& sidecar) {
  const QJsonObject object{
      {QStringLiteral("pixelFormat"), PixelNameOf(sidecar.pixelType)},
      {QStringLiteral("width"), static_cast<double>(sidecar.width)},
      {QStringLiteral("height"), static_cast<double>(sidecar.height)},
      {QStringLiteral("linePitch"), static_cast<double>(sidecar.linePitch)},
      {QStringLiteral("origin"), static_cast<double>(sidecar.origin)},
      {QStringLiteral("imageID"), QString::number(sidecar.imageID)},
      {QStringLiteral("timestamp"), QString::number(sidecar.timestamp)},
      {QStringLiteral("source"), sidecar.source},
      {QStringLiteral("date"), sidecar.date},
  };
  return QJsonDocument(object).toJson();
}

bool ReadSidecar(const QByteArray& text, Sidecar* sidecar, QString* error) {
  QJsonParseError parsing{};
  const QJsonDocument document = QJsonDocument::fromJson(text, &parsing);
  if (parsing.error != QJsonParseError::NoError) {
    *error = QStringLiteral("this is not valid JSON: %1").arg(parsing.errorString());
    return false;
  }
  if (!document.isObject()) {
    *error =
        QStringLiteral("a description of a frame has to be a JSON object, such as {\"width\": 640, ...}");
    return false;
  }
  const QJsonObject object = document.object();
  Sidecar read;
  if (!ReadFormat(object, &read.pixelType, error)) return false;
  if (!ReadWhole(object, "width", 1, kMostSide, &read.width, error) ||
      !ReadWhole(object, "height", 1, kMostSide, &read.height, error)) {
    return false;
  }
  const uint32_t lineBytes = LineBytes(read.pixelType, read.width);
  read.linePitch = lineBytes;
  if (object.contains(QLatin1String("linePitch")) &&
      !ReadWhole(object, "linePitch", lineBytes, kMostFrameBytes, &read.linePitch, error)) {
    return false;
  }
  if (object.contains(QLatin1String("origin")) && !ReadWhole(object, "origin", 0, 1, &read.origin, error))
    return false;
  if (read.FileBytes() > kMostFrameBytes) {
    *error =
        QStringLiteral("%1 lines of %2 bytes are too much for a frame").arg(read.height).arg(read.linePitch);
    return false;
  }
  read.imageID = ReadLong(object, "imageID");
  read.timestamp = ReadLong(object, "timestamp");
  read.source = object.value(QLatin1String("source")).toString();
  read.date = object.value(QLatin1String("date")).toString();
  *sidecar = read;
  return true;
}

QString SidecarFileOf(const QString& rawFile) {
  return WithEnding(rawFile, QStringLiteral(".json"));
}

QString RawFileOf(const QString& sidecarFile) {
  return WithEnding(sidecarFile, QStringLiteral(".raw"));
}

}  // namespace zynview
