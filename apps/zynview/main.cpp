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

// What needs no window needs no screen either, but shaders do. This has to be known before there is an
// application.
bool NeedsNoScreen(int argc, char** argv) {
  const auto isSaid = [argc, argv](std::initializer_list<std::string_view> wanted) {
    return std::any_of(argv + std::min(argc, 1), argv + argc, [wanted](std::string_view argument) {
      return std::find(wanted.begin(), wanted.end(), argument.substr(0, argument.find('='))) != wanted.end();
    });
  };
  if (isSaid({"-h", "-v", "--help", "--help-all", "--version"})) return true;
  const bool isScreenThere =
      !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  return isSaid({"--convert"}) && !(isSaid({"--opengl"}) && isScreenThere);
}

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
  if (NeedsNoScreen(argc, argv)) qputenv("QT_QPA_PLATFORM", "offscreen");
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

  zynview::Settings settings = SettingsFor(options);
  settings.Complete(&options);
  zynview::MainWindow window(options, std::move(settings));
  window.show();
  if (!window.Start(zynview::MakeSource(options), &error)) return Fail(error);
  if (options.seconds > 0) {
    QTimer::singleShot(static_cast<int>(options.seconds * 1000), &application,
                       [&window, &application] { application.exit(window.Finish() ? 0 : 1); });
  }
  return QApplication::exec();
}
