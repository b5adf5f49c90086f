#include "Options.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <cmath>

#include "pixels/PixelTable.h"
#include "sources/SafeFile.h"
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
    "  that was chosen in the File menu, else in the current one. No file is written over. --save and "
    "--convert\n"
    "  replace files that are there.\n"
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
    {"size", "Width and height of a raw dump or of the scene, such as 1936x1216; up to 65535 each.", "WxH"},
    {"pitch", "Bytes from line to line of a raw dump.", "bytes"},
    {"rate",
     "Frames per second of files and scene; 0 is as fast as it goes (default: 25, and 5 for a single frame).",
     "number"},
    {"seconds", "End after so many seconds; with 0, as without it, when the window is closed.", "number"},
    {"save",
     "Save the window's picture when --seconds is over. The ending chooses the format, and a file that is "
     "there is replaced.",
     "file"},
    {"window", "Start with so many pixels for the picture, such as 640x480.", "WxH"},
    {"convert",
     "Show no window, and write every frame as a picture, with the colour options. OUT is a file, such as "
     "out.png, and its ending chooses the format; several frames go into a folder OUT, as PNG, or into "
     "out-000001.png and so on. Files that are there are replaced, but none of those that are read. No "
     "screen is needed, except with --opengl.",
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
    {"gamma", "Exponent after gain and offset, on values of 0 to 1; below 1 brightens. From 0.1 to 10.",
     "number"},
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

bool ReadSize(const QString& text, QSize* size) {
  const QStringList parts = text.split(QLatin1Char('x'), Qt::KeepEmptyParts, Qt::CaseInsensitive);
  if (parts.size() != 2) return false;
  *size = QSize(parts[0].toUShort(), parts[1].toUShort());
  return !size->isEmpty();
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
     "WIDTHxHEIGHT, such as 1936x1216, with numbers from 1 to 65535"},
    {"window", [](const QString& text, Options* options) { return ReadSize(text, &options->window); },
     "WIDTHxHEIGHT, such as 640x480, with numbers from 1 to 65535"},
    {"region", [](const QString& text, Options* options) { return ReadRegion(text, &options->region); },
     "WIDTHxHEIGHT+X+Y, such as 640x480+320+240, with numbers up to 65535"},
};

bool ReadShapes(const QCommandLineParser& parser, Options* options, QString* error) {
  for (const Shape& shape : kShapes) {
    const QString option = QString::fromLatin1(shape.name);
    if (!parser.isSet(option) || shape.read(parser.value(option), options)) continue;
    *error = QStringLiteral("--%1 needs %2").arg(option, QString::fromLatin1(shape.wanted));
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

// What a number may be.
struct Range {
  double least, most;
  bool isWhole;
};

constexpr Range kPitches{0, 1 << 30, true};
constexpr Range kRates{0, 1e6, false};
constexpr Range kSeconds{0, 1e6, false};
constexpr Range kMethods{0, ColorSettings::kMethods - 1, true};
constexpr Range kGammas{0.1, 10, false};  // beyond, the correction's numbers leave what a picture can show

// False, and why, where the option is set and its number is not within the range.
bool ReadNumber(const QCommandLineParser& parser, const char* name, const Range& range, double* number,
                QString* error) {
  const QString option = QString::fromLatin1(name);
  if (!parser.isSet(option)) return true;
  bool good = false;
  *number = parser.value(option).toDouble(&good);
  good = good && *number >= range.least && *number <= range.most;
  if (good && (!range.isWhole || *number == std::floor(*number))) return true;
  *error = QStringLiteral("--%1 needs a %2 from %3 to %4")
               .arg(option, range.isWhole ? QStringLiteral("whole number") : QStringLiteral("number"))
               .arg(range.least, 0, 'g', 10)
               .arg(range.most, 0, 'g', 10);
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
  if (!good) *error = QStringLiteral("--%1 needs one number, or three such as 1.9,1,1.3").arg(option);
  return good;
}

bool ReadColor(const QCommandLineParser& parser, ColorSettings* color, QString* error) {
  double method = color->demosaicing;
  if (!ReadNumber(parser, "demosaicing", kMethods, &method, error) ||
      !ReadNumber(parser, "gamma", kGammas, &color->gamma, error) ||
      !ReadChannels(parser, "gain", &color->gain, error) ||
      !ReadChannels(parser, "offset", &color->offset, error)) {
    return false;
  }
  color->demosaicing = static_cast<int>(method);
  color->markExposure = parser.isSet(QStringLiteral("mark-exposure"));
  return true;
}

bool ReadNumbers(const QCommandLineParser& parser, Options* options, QString* error) {
  double pitch = 0, rate = 0;
  if (!ReadNumber(parser, "pitch", kPitches, &pitch, error) ||
      !ReadNumber(parser, "rate", kRates, &rate, error) ||
      !ReadNumber(parser, "seconds", kSeconds, &options->seconds, error)) {
    return false;
  }
  options->pitch = static_cast<uint32_t>(pitch);
  if (parser.isSet(QStringLiteral("rate"))) options->rate = rate;
  return true;
}

// What is asked for and would be ignored; empty when nothing is.
QString Contradiction(const QCommandLineParser& parser, const Options& options) {
  QStringList sources;
  for (const char* name : {"camera", "simulator", "scene"}) {
    const QString option = QString::fromLatin1(name);
    if (parser.isSet(option)) sources << QStringLiteral("--") + option;
  }
  if (!options.files.isEmpty()) sources << options.files.first();
  if (sources.size() > 1) {
    return QStringLiteral("only one source can be shown, not %1 and %2").arg(sources[0], sources[1]);
  }
  if (options.opengl && options.processor)
    return QStringLiteral("--opengl and --processor exclude each other");
  const bool isCamera = options.source == Options::Camera || options.source == Options::Simulator;
  if (isCamera && options.rate)
    return QStringLiteral("--rate is for files and the scene: a camera has a rate of its own");
  if (isCamera && !options.size.isEmpty())
    return QStringLiteral("--size is for raw dumps and the scene: a camera has a size of its own");
  if (options.pitch != 0 && options.source != Options::Raw)
    return QStringLiteral("--pitch is for raw dumps, which need --format and --size as well");
  if (options.source == Options::File && !options.size.isEmpty())
    return QStringLiteral("--size is for raw dumps, which need --format as well");
  return {};
}

// What is wrong although every option could be read; empty when nothing is.
QString Mistake(const Options& options, bool converts) {
  if (!options.folder.isEmpty() && !QFileInfo(options.folder).isDir())
    return QStringLiteral("--folder: %1 is no folder").arg(options.folder);
  if (converts && options.convert.isEmpty()) return QStringLiteral("--convert needs a file or a folder");
  if (options.save.isEmpty()) return {};
  const QString folder = QFileInfo(options.save).path();
  if (!QFileInfo(folder).isDir()) return QStringLiteral("--save: %1 is no folder").arg(folder);
  const QString problem = PictureFormatProblem(options.save);
  return problem.isEmpty() ? problem : QStringLiteral("--save: ") + problem;
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
  *error = Contradiction(parser, *options);
  if (error->isEmpty()) *error = Mistake(*options, isSet("convert"));
  return error->isEmpty();
}

}  // namespace zynview
