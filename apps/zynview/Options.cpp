#include "Options.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <algorithm>
#include <cmath>

#include "pixels/PixelTable.h"
#include "view/KeyTable.h"

namespace zynview {

namespace {

constexpr char kDescription[] =
    "Shows live cameras, pictures, raw dumps or a test scene through ZynDisplayQt.\n"
    "\n";
constexpr char kDescriptionEnd[] =
    "\n"
    "Files, folders and drops:\n"
    "  Several files, or a folder, are played as a sequence with --rate; space, PageUp and PageDown stop it "
    "and\n"
    "  step through it. Files and folders can also be dropped on the window. W saves a raw frame as "
    "NAME.raw\n"
    "  with its description NAME.json; either of the two opens it again.\n"
    "\n"
    "Saving:\n"
    "  P and W save the whole frame, as a PNG or in the format of the camera, in --folder; else in the "
    "folder\n"
    "  that was chosen in the File menu, else in the current one. No file is written over.\n"
    "\n"
    "Settings:\n"
    "  The window's place, its docks, the folder, recent files and what is switched on are remembered, "
    "except\n"
    "  with --bare, --seconds or --no-settings. What the command line says comes first.\n"
    "\n"
    "Ends with 0; with 1 when --seconds is over and nothing was shown; with 2 when something is wrong.";

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
    {"convert",
     "Show no window, and write every frame as a PNG file, with the colour options. OUT is a file, such as "
     "out.png; several frames go into a folder OUT, or into out-000001.png and so on. No screen is needed, "
     "except with --opengl.",
     "OUT"},
    {"folder", "Save pictures and raw frames in this folder.", "folder"},
    {"no-settings", "Neither read nor write the saved settings.", nullptr},
    {"bare", "Show no menu bar and no status bar.", nullptr},
    {"opengl", "Process and draw with OpenGL instead of on the processor.", nullptr},
    {"processor", "Process and draw on the processor, also where the settings say OpenGL.", nullptr},
    {"status", "Start with the display's status line, as S D does.", nullptr},
    {"info", "Start with the display's information text, as S I does.", nullptr},
    {"overlays", "Start with a frame, a label and a cross over the picture, as O does.", nullptr},
    {"region", "Mark this part of the picture, which the overlays frame as well, such as 640x480+320+240.",
     "WxH+X+Y"},
    {"demosaicing", "Method for Bayer formats: 0 live, 1 bilinear, 2 better, 3 best.", "0..3"},
    {"gain", "Multiply red, green and blue; one number for all. Needs more than 8 bits.", "R,G,B"},
    {"offset", "Add to red, green and blue after the gain, as fractions of the range.", "R,G,B"},
    {"gamma", "Exponent after gain and offset, on values of 0 to 1; below 1 brightens.", "number"},
    {"mark-exposure", "Colour what is too dark green, and what is too bright red.", nullptr},
};

// Options whose value is taken as it stands.
struct Text {
  const char* name;
  QString Options::*target;
};

constexpr Text kTexts[] = {
    {"camera", &Options::camera},
    {"save", &Options::save},
    {"convert", &Options::convert},
    {"folder", &Options::folder},
};

struct Switch {
  const char* name;
  bool Options::*target;
};

constexpr Switch kSwitches[] = {
    {"no-settings", &Options::noSettings},
    {"processor", &Options::processor},
    {"bare", &Options::bare},
    {"opengl", &Options::opengl},
    {"status", &Options::statusLine},
    {"info", &Options::information},
    {"overlays", &Options::overlays},
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

// Options with a size or a part of the picture.
struct Shape {
  const char* name;
  bool (*read)(const QString& text, Options* options);
  const char* wanted;
};

constexpr Shape kShapes[] = {
    {"size", [](const QString& text, Options* options) { return ReadSize(text, &options->size); },
     "WIDTHxHEIGHT, such as 1936x1216"},
    {"window", [](const QString& text, Options* options) { return ReadSize(text, &options->window); },
     "WIDTHxHEIGHT, such as 640x480"},
    {"region", [](const QString& text, Options* options) { return ReadRegion(text, &options->region); },
     "WIDTHxHEIGHT+X+Y, such as 640x480+320+240"},
};

bool ReadShapes(const QCommandLineParser& parser, Options* options, QString* error) {
  for (const Shape& shape : kShapes) {
    const QString option = QString::fromLatin1(shape.name);
    if (!parser.isSet(option) || shape.read(parser.value(option), options)) continue;
    *error = QStringLiteral("--%1 wants %2").arg(option, QString::fromLatin1(shape.wanted));
    return false;
  }
  return true;
}

bool ReadFormat(const QCommandLineParser& parser, Options* options, QString* error) {
  const QString option = QStringLiteral("format");
  if (!parser.isSet(option)) return true;
  options->pixelType = PixelCode(parser.value(option));
  if (options->pixelType == 0) *error = QStringLiteral("unknown pixel format %1").arg(parser.value(option));
  return options->pixelType != 0;
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

bool ReadNumbers(const QCommandLineParser& parser, Options* options, QString* error) {
  double pitch = 0;
  if (!ReadNumber(parser, "pitch", &pitch, error) || !ReadNumber(parser, "rate", &options->rate, error) ||
      !ReadNumber(parser, "seconds", &options->seconds, error)) {
    return false;
  }
  options->pitch = static_cast<uint32_t>(std::min(pitch, 1e9));
  return true;
}

// What is wrong although every option could be read; empty when nothing is.
QString Mistake(const Options& options, bool converts) {
  if (!options.folder.isEmpty() && !QFileInfo(options.folder).isDir())
    return QStringLiteral("--folder: %1 is no folder").arg(options.folder);
  if (converts && options.convert.isEmpty()) return QStringLiteral("--convert wants a file or a folder");
  if (options.opengl && options.processor) return QStringLiteral("--opengl and --processor are one too many");
  return {};
}

// What the program takes, and says of it with --help.
void Describe(QCommandLineParser* parser) {
  parser->setApplicationDescription(QString::fromLatin1(kDescription) + KeysHelp() +
                                    QString::fromLatin1(kDescriptionEnd));
  parser->addHelpOption();
  parser->addVersionOption();
  parser->addPositionalArgument(
      QStringLiteral("file"),
      QStringLiteral("Pictures (PNG, PGM, ...), raw frames with their descriptions, folders of them; or raw "
                     "dumps with --format and --size."),
      QStringLiteral("[file...]"));
  for (const Row& row : kRows) {
    QCommandLineOption option(QString::fromLatin1(row.name), QString::fromLatin1(row.help));
    if (row.value) option.setValueName(QString::fromLatin1(row.value));
    parser->addOption(option);
  }
}

}  // namespace

bool ReadOptions(const QStringList& arguments, Options* options, QString* error) {
  QCommandLineParser parser;
  Describe(&parser);
  if (!parser.parse(arguments)) {
    *error = parser.errorText();
    return false;
  }
  const auto isSet = [&parser](const char* name) { return parser.isSet(QString::fromLatin1(name)); };
  if (isSet("help")) parser.showHelp();
  if (isSet("version")) parser.showVersion();

  for (const Text& text : kTexts) options->*text.target = parser.value(QString::fromLatin1(text.name));
  for (const Switch& each : kSwitches) options->*each.target = isSet(each.name);
  if (isSet("simulator")) options->source = Options::Simulator;
  if (isSet("scene")) options->source = Options::Scene;
  if (!ReadFormat(parser, options, error) || !ReadShapes(parser, options, error) ||
      !ReadNumbers(parser, options, error) || !ReadColor(parser, &options->color, error)) {
    return false;
  }

  options->files = parser.positionalArguments();
  if (!options->files.isEmpty()) {
    // A format and a size together say that the files are raw dumps.
    options->source = options->pixelType && !options->size.isEmpty() ? Options::Raw : Options::File;
  }
  const QString mistake = Mistake(*options, isSet("convert"));
  if (!mistake.isEmpty()) *error = mistake;
  return mistake.isEmpty();
}

}  // namespace zynview
