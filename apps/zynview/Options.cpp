#include "Options.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <algorithm>
#include <cmath>

#include "Actions.h"
#include "PixelTable.h"

namespace zynview {

namespace {

constexpr char kDescription[] =
    "Shows live cameras, pictures, raw dumps or a test scene through ZynDisplayQt.\n"
    "\n"
    "Mouse:\n"
    "  wheel        zoom\n"
    "  left button  drag the picture; double click: centre here\n"
    "  right button click: menu; drag: zoom into a rectangle, with Shift out of it, with Ctrl from its "
    "centre\n"
    "  pointing     the status bar tells the position, and the camera's own sample there\n"
    "\n"
    "Keys of the display:\n"
    "  + -          zoom in, zoom out\n"
    "  0 1 2        fit the picture, show it one to one, fill the window\n"
    "  C, arrows    centre the picture, move it\n"
    "\n"
    "Keys of the viewer, and their entries in the menu:\n";
constexpr char kDescriptionEnd[] =
    "\n"
    "Pictures and raw frames are saved in the current folder: the whole frame, in the format of the camera "
    "or as "
    "a PNG.";

struct Row {
  const char* name;
  const char* help;
  const char* value;  // name of the value, or null for a switch
};

constexpr Row kRows[] = {
    {"camera", "Open this camera: id or address (default: the first one found, else the simulator).", "id"},
    {"simulator", "Open the camera simulator on loopback.", nullptr},
    {"scene", "Show the built-in test scene.", nullptr},
    {"format",
     "Pixel format, such as BayerRG12p: of a raw dump, of the scene, to draw a picture in, or to ask the "
     "camera for.",
     "name"},
    {"size", "Width and height of a raw dump or of the scene, such as 1936x1216.", "WxH"},
    {"pitch", "Bytes from line to line of a raw dump.", "bytes"},
    {"rate", "Frames per second of files and scene; 0 is as fast as it goes.", "number"},
    {"seconds", "End after so many seconds.", "number"},
    {"save", "Save the window's picture at the end.", "file"},
    {"window", "Start with so many pixels for the picture, such as 640x480.", "WxH"},
    {"bare", "Show no status bar.", nullptr},
    {"opengl", "Process and draw with OpenGL instead of on the processor.", nullptr},
    {"status", "Start with the display's status line, as S D does.", nullptr},
    {"info", "Start with the display's information text, as S I does.", nullptr},
    {"overlays", "Start with a frame, a label and a cross over the picture, as O does.", nullptr},
    {"region", "The part of the picture that the overlays frame, such as 640x480+320+240.", "WxH+X+Y"},
    {"demosaicing", "Method for Bayer formats: 0 live, 1 bilinear, 2 better, 3 best.", "0..3"},
    {"gain", "Multiply red, green and blue; one number for all. Needs more than 8 bits.", "R,G,B"},
    {"offset", "Add to red, green and blue after the gain, as fractions of the range.", "R,G,B"},
    {"gamma", "Exponent after gain and offset, on values of 0 to 1; below 1 brightens.", "number"},
    {"mark-exposure", "Colour what is too dark green, and what is too bright red.", nullptr},
};

// Beyond these the correction's numbers leave what a picture can show.
constexpr double kLeastGamma = 0.1, kMostGamma = 10;

bool ReadSize(const QString& text, QSize* size) {
  const QStringList parts = text.split(QLatin1Char('x'));
  if (parts.size() != 2) return false;
  *size = QSize(parts[0].toInt(), parts[1].toInt());
  return size->width() > 0 && size->height() > 0 && size->width() <= 65535 && size->height() <= 65535;
}

bool ReadRegion(const QString& text, QRect* region) {
  const QStringList parts = text.split(QLatin1Char('+'));
  QSize size;
  if (parts.size() != 3 || !ReadSize(parts[0], &size)) return false;
  bool goodX = false, goodY = false;
  *region = QRect(QPoint(parts[1].toUShort(&goodX), parts[2].toUShort(&goodY)), size);
  return goodX && goodY;
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

// One number for all three channels, or three with commas.
bool ReadChannels(const QCommandLineParser& parser, const char* name, std::array<double, 3>* channels,
                  QString* error) {
  const QString option = QString::fromLatin1(name);
  if (!parser.isSet(option)) return true;
  const QStringList parts = parser.value(option).split(QLatin1Char(','));
  bool good = parts.size() == 1 || parts.size() == 3;
  for (int i = 0; good && i < 3; ++i) {
    double& channel = (*channels)[static_cast<std::size_t>(i)];
    channel = parts[parts.size() == 3 ? i : 0].toDouble(&good);
    good = good && std::isfinite(channel);
  }
  if (!good) *error = QStringLiteral("--%1 wants one number, or three such as 1.9,1,1.3").arg(option);
  return good;
}

bool ReadColor(const QCommandLineParser& parser, ColorSettings* color, QString* error) {
  double method = color->demosaicing;
  if (!ReadNumber(parser, "demosaicing", &method, error) ||
      !ReadNumber(parser, "gamma", &color->gamma, error) ||
      !ReadChannels(parser, "gain", &color->gain, error) ||
      !ReadChannels(parser, "offset", &color->offset, error)) {
    return false;
  }
  color->demosaicing = static_cast<int>(std::min(method, 100.0));
  color->markExposure = parser.isSet(QStringLiteral("mark-exposure"));
  if (color->demosaicing != method || color->demosaicing >= ColorSettings::kMethods) {
    *error = QStringLiteral("--demosaicing wants 0, 1, 2 or 3");
    return false;
  }
  if (color->gamma < kLeastGamma || color->gamma > kMostGamma) {
    *error = QStringLiteral("--gamma wants a number from %1 to %2").arg(kLeastGamma).arg(kMostGamma);
    return false;
  }
  return true;
}

}  // namespace

bool ReadOptions(const QStringList& arguments, Options* options, QString* error) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QString::fromLatin1(kDescription) + ActionsHelp() +
                                   QString::fromLatin1(kDescriptionEnd));
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
  options->bare = isSet("bare");
  options->opengl = isSet("opengl");
  options->statusLine = isSet("status");
  options->information = isSet("info");
  options->overlays = isSet("overlays");
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
  if (isSet("window") && !ReadSize(value("window"), &options->window)) {
    *error = QStringLiteral("--window wants WIDTHxHEIGHT, such as 640x480");
    return false;
  }
  if (isSet("region") && !ReadRegion(value("region"), &options->region)) {
    *error = QStringLiteral("--region wants WIDTHxHEIGHT+X+Y, such as 640x480+320+240");
    return false;
  }
  double pitch = 0;
  if (!ReadNumber(parser, "pitch", &pitch, error) || !ReadNumber(parser, "rate", &options->rate, error) ||
      !ReadNumber(parser, "seconds", &options->seconds, error) ||
      !ReadColor(parser, &options->color, error)) {
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
