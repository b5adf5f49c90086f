// zynview: shows live cameras, pictures, raw dumps or a test scene through ZynDisplayQt.
#include <QApplication>
#include <QTextStream>
#include <QTimer>
#include <memory>

#include "CameraSource.h"
#include "MainWindow.h"
#include "Options.h"
#include "StillSource.h"

namespace {

std::unique_ptr<zynview::FrameSource> MakeSource(const zynview::Options& options) {
  using zynview::Options;
  switch (options.source) {
    case Options::File:
      return std::make_unique<zynview::PictureSource>(options);
    case Options::Raw:
      return std::make_unique<zynview::RawSource>(options);
    case Options::Scene:
      return std::make_unique<zynview::SceneSource>(options);
    case Options::Camera:
    case Options::Simulator:
      break;
  }
  return std::make_unique<zynview::CameraSource>(options);
}

int Fail(const QString& error) {
  QTextStream(stderr) << "zynview: " << error << '\n';
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("zynview"));
  QApplication::setApplicationVersion(QStringLiteral(ZYNVIEW_VERSION));

  zynview::Options options;
  QString error;
  if (!zynview::ReadOptions(QApplication::arguments(), &options, &error)) return Fail(error);

  zynview::MainWindow window(options);
  window.show();
  if (!window.Start(MakeSource(options), &error)) return Fail(error);
  if (options.seconds > 0) {
    QTimer::singleShot(static_cast<int>(options.seconds * 1000), &application,
                       [&window, &application] { application.exit(window.Finish() ? 0 : 1); });
  }
  return QApplication::exec();
}
