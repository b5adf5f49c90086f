// zynview: shows live cameras, pictures, raw dumps or a test scene through ZynDisplayQt.
#include <QApplication>
#include <QTextStream>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "Conversion.h"
#include "Options.h"
#include "sources/MakeSource.h"
#include "view/MainWindow.h"
#include "view/Settings.h"

namespace {

int Fail(const QString& error) {
  QTextStream(stderr) << "zynview: " << error << '\n';
  return 2;
}

// What the command line says of the screen has to be known before there is an application.
class CommandLine {
 public:
  CommandLine(int argc, char** argv) : begin(argv + std::min(argc, 1)), end(argv + argc) {}

  // Qt ends the program where it finds no screen.
  bool HasScreen() const {
    const auto isSet = [](const char* name) { return !qEnvironmentVariableIsEmpty(name); };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM") ||
           Says({"-platform", "--platform", "-display", "--display"});
  }
  // What needs no window needs no screen either, but shaders do.
  bool NeedsScreen() const {
    if (Says({"-h", "-v", "--help", "--help-all", "--version"})) return false;
    return !Says({"--convert"}) || Says({"--opengl"});
  }

 private:
  bool Says(std::initializer_list<std::string_view> wanted) const {
    return std::any_of(begin, end, [wanted](std::string_view argument) {
      return std::find(wanted.begin(), wanted.end(), argument.substr(0, argument.find('='))) != wanted.end();
    });
  }

  char **begin, **end;
};

int Convert(const zynview::Options& options) {
  QTextStream messages(stderr);
  QWidget parent;  // never shown
  ZynDisplayProcessor* display =
      options.opengl ? ZynDisplayQGL::CreateComponent(&parent) : ZynDisplayCPU::CreateComponent(&parent);
  const int result = zynview::ConvertFrames(*zynview::MakeSource(options), display, options, messages);
  ZynDisplayCPU::DeleteComponent(display);
  return result;
}

// A run that ends by itself, or that shows the picture alone, leaves the user's settings as they are.
zynview::Settings SettingsFor(const zynview::Options& options) {
  return options.noSettings || options.bare || options.seconds > 0 ? zynview::Settings::None()
                                                                   : zynview::Settings::OfUser();
}

}  // namespace

int main(int argc, char** argv) {
  const CommandLine line(argc, argv);
  const bool hasScreen = line.HasScreen();
  if (!hasScreen || !line.NeedsScreen()) qputenv("QT_QPA_PLATFORM", "offscreen");
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
  QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
  QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("zynview"));
  QApplication::setApplicationVersion(QStringLiteral(ZYNVIEW_VERSION));

  zynview::Options options;
  QString error;
  if (!zynview::ReadOptions(QApplication::arguments(), &options, &error)) return Fail(error);
  if (!options.convert.isEmpty()) return Convert(options);
  if (!hasScreen)
    return Fail(QStringLiteral("there is no screen to show a window on: set DISPLAY, or use --convert"));

  zynview::Settings settings = SettingsFor(options);
  settings.Complete(&options);
  zynview::MainWindow window(options, std::move(settings));
  window.show();
  if (!window.Start(zynview::MakeSource(options), &error)) return Fail(error);
  if (options.seconds > 0) {
    QTimer::singleShot(static_cast<int>(options.seconds * 1000), &application,
                       [&window, &application] { application.exit(window.Finish()); });
  }
  return QApplication::exec();
}
