#include "Options.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include "PixelNames.h"

namespace zynview {

namespace {

struct Row {
  const char* name;
  const char* help;
  const char* value;  // name of the value, or null for a switch
};

constexpr Row kRows[] = {
    {"camera", "Open this camera: id or address (default: the first one found, else the simulator).", "id"},
    {"simulator", "Open the camera simulator on loopback.", nullptr},
    {"scene", "Show the built-in test scene.", nullptr},
    {"format", "Pixel format: of a raw dump, of the scene, or to ask the camera for, such as Mono12.",
     "name"},
    {"size", "Width and height of a raw dump or of the scene, such as 1936x1216.", "WxH"},
    {"pitch", "Bytes from line to line of a raw dump.", "bytes"},
    {"rate", "Frames per second of files and scene; 0 is as fast as it goes.", "number"},
    {"seconds", "End after so many seconds.", "number"},
    {"save", "Save the window's picture at the end.", "file"},
    {"opengl", "Show through OpenGL.", nullptr},
};

bool ReadSize(const QString& text, QSize* size) {
  const QStringList parts = text.split(QLatin1Char('x'));
  if (parts.size() != 2) return false;
  *size = QSize(parts[0].toInt(), parts[1].toInt());
  return size->width() > 0 && size->height() > 0 && size->width() <= 65535 && size->height() <= 65535;
}

bool ReadNumber(const QCommandLineParser& parser, const char* name, double* number, QString* error) {
  const QString option = QString::fromLatin1(name);
  if (!parser.isSet(option)) return true;
  bool good = false;
  *number = parser.value(option).toDouble(&good);
  if (good && *number >= 0) return true;
  *error = QStringLiteral("--%1 wants a number of 0 or above").arg(option);
  return false;
}

}  // namespace

bool ReadOptions(const QStringList& arguments, Options* options, QString* error) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Shows live cameras, pictures, raw dumps or a test scene through ZynDisplayQt."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(
      QStringLiteral("file"),
      QStringLiteral("A picture (PNG, PGM, ...), or a raw dump with --format and --size."),
      QStringLiteral("[file]"));
  for (const Row& row : kRows) {
    QCommandLineOption option(QString::fromLatin1(row.name), QString::fromLatin1(row.help));
    if (row.value) option.setValueName(QString::fromLatin1(row.value));
    parser.addOption(option);
  }
  parser.process(arguments);
  const auto isSet = [&parser](const char* name) { return parser.isSet(QString::fromLatin1(name)); };
  const auto value = [&parser](const char* name) { return parser.value(QString::fromLatin1(name)); };

  options->camera = value("camera");
  options->save = value("save");
  options->opengl = isSet("opengl");
  if (isSet("simulator")) options->source = Options::Simulator;
  if (isSet("scene")) options->source = Options::Scene;
  if (isSet("format")) {
    options->pixelType = PixelCode(value("format"));
    if (options->pixelType == 0) {
      *error = QStringLiteral("unknown pixel format %1").arg(value("format"));
      return false;
    }
  }
  if (isSet("size") && !ReadSize(value("size"), &options->size)) {
    *error = QStringLiteral("--size wants WIDTHxHEIGHT, such as 1936x1216");
    return false;
  }
  double pitch = 0;
  if (!ReadNumber(parser, "pitch", &pitch, error) || !ReadNumber(parser, "rate", &options->rate, error) ||
      !ReadNumber(parser, "seconds", &options->seconds, error)) {
    return false;
  }
  options->pitch = static_cast<uint32_t>(std::min(pitch, 1e9));

  const QStringList files = parser.positionalArguments();
  if (!files.isEmpty()) {
    options->file = files.first();
    // A format and a size together say that the file is a raw dump.
    options->source = options->pixelType && !options->size.isEmpty() ? Options::Raw : Options::File;
  }
  return true;
}

}  // namespace zynview
