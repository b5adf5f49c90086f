// How frames come into the window: sources are opened, shown instead of each other, and prepared for.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

#include "pixels/PixelTable.h"
#include "sources/CameraControls.h"
#include "sources/MakeSource.h"
#include "view/CameraDock.h"
#include "view/MainWindow.h"
#include "view/Notice.h"

namespace zynview {

namespace {

constexpr int kStatusMilliseconds = 500;
constexpr int kAgainMilliseconds = 20;

// Sets a flag for as long as it lives.
class Raised {
 public:
  explicit Raised(bool* raisedFlag) : flag(raisedFlag) { *flag = true; }
  ~Raised() { *flag = false; }
  Raised(const Raised&) = delete;
  Raised& operator=(const Raised&) = delete;

 private:
  bool* flag;
};

QStringList LocalFiles(const QMimeData& data) {
  QStringList files;
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) files << url.toLocalFile();
  }
  return files;
}

}  // namespace

bool MainWindow::Start(std::unique_ptr<FrameSource> source, QString* error) {
  if (!source->Open(error) || !Show(std::move(source), error)) return false;
  for (const QString& file : options.files) settings.recent.Add(file);
  return true;
}

// The source is open. No frame may come while the display is initialised for other ones.
bool MainWindow::Show(std::unique_ptr<FrameSource> source, QString* error) {
  const Raised raised(&isPreparing);
  std::unique_ptr<Feed> before = std::move(feed);
  cameraDock->SetControls(nullptr);
  if (before) before->Stop();
  bool good = Prepare(source->Format(), source->Description(), error);
  if (good && !before) {
    *error = colors.Start(options.color);
    good = error->isEmpty();
    if (good && settings.markExposure) Switch(Action::MarkExposure, true);
  }
  if (good) {
    keeper.Forget();
    keeper.Want();  // the only frame of a source that stands still
    feed = std::make_unique<Feed>(
        std::move(source), display.get(), &keeper,
        [this](const ZynImage& format) { return PrepareAgain(format); }, &errands);
  } else if (before) {
    QString ignored;
    Prepare(before->Source().Format(), before->Source().Description(), &ignored);
    feed = std::move(before);
  } else {
    return false;
  }
  StartFeed();
  return good;
}

void MainWindow::StartFeed() {
  ShowColors(hasStarted ? colors.Adapt() : QString());
  hasStarted = true;
  notifications.shown = notifications.failed = 0;
  lastDelivered = 0;
  isLost = false;
  notice->hide();
  feed->Start();
  cameraDock->SetControls(feed->Controls());
  clock.start();
  rates.Start(0);
  timer->start(kStatusMilliseconds);
}

// What is drawn over the picture stays on; at first it is what the options say.
bool MainWindow::Prepare(const ZynImage& format, const QString& name, QString* error) {
  const bool withStatus = hasStarted ? IsOnNow(Action::StatusLine) : options.statusLine;
  const bool withInformation = hasStarted ? IsOnNow(Action::Information) : options.information;
  const bool withOverlays = hasStarted ? overlays.AreShown() : options.overlays;
  if (const uint32_t code = display->Initialize(&format)) {
    *error = QStringLiteral("the display refuses format %1%2: code 0x%3")
                 .arg(PixelNameOf(format.pixelType),
                      options.opengl ? QStringLiteral(", or OpenGL cannot be had") : QString())
                 .arg(code, 8, 16, QLatin1Char('0'));
    return false;
  }
  ShowSource(format, name);
  notifications.AskForMovements();
  overlays.Start(format, name, options.region);
  marker->SetPicture(format);
  if (!hasStarted) marker->Mark(options.region);
  Switch(Action::Overlays, withOverlays);
  Switch(Action::StatusLine, withStatus);
  Switch(Action::Information, withInformation);
  return true;
}

// The feed waits meanwhile.
bool MainWindow::PrepareAgain(const ZynImage& format) {
  const Raised raised(&isPreparing);
  QString error;
  if (!Prepare(format, feed->Source().Description(), &error)) {
    Complain(error);
    return false;
  }
  ShowColors(colors.Adapt());
  return true;
}

void MainWindow::ShowSource(const ZynImage& format, const QString& name) {
  // At once: a name may hold what looks like a place of the text.
  QString text = QStringLiteral("%1 — %2 %3 × %4")
                     .arg(name, PixelNameOf(format.pixelType), QString::number(format.width),
                          QString::number(format.height));
  if (!colors.PicturesAreRead()) text += QStringLiteral(": ") + colors.WhyUnread();
  sourceLabel->setText(text);
  setWindowTitle(text);
}

void MainWindow::OpenFiles(const QStringList& paths) {
  if (paths.isEmpty()) return;
  Options wanted = options;
  // A format and a size that were meant for another kind of source say nothing about files.
  if (options.source != Options::File && options.source != Options::Raw) {
    wanted.pixelType = 0;
    wanted.size = QSize();
    wanted.source = Options::File;
  }
  wanted.files = paths;
  OpenLater(wanted);
}

void MainWindow::OpenCamera(const QString& id, uint32_t pixelType) {
  Options wanted = options;
  wanted.files.clear();
  wanted.pixelType = pixelType;
  wanted.camera = id;
  wanted.source = id.isEmpty() ? Options::Simulator : Options::Camera;
  OpenLater(wanted);
}

void MainWindow::OpenLater(const Options& wanted) {
  Tell(QStringLiteral("opening ..."));
  background.Do([this, wanted]() -> Background::Answer {
    auto source = std::make_shared<std::unique_ptr<FrameSource>>(MakeSource(wanted));
    QString problem;
    if (!(*source)->Open(&problem) && problem.isEmpty()) problem = QStringLiteral("cannot be opened");
    return [this, wanted, source, problem] { Opened(wanted, source, problem); };
  });
}

void MainWindow::Opened(const Options& wanted, const std::shared_ptr<std::unique_ptr<FrameSource>>& source,
                        const QString& problem) {
  if (isPreparing || isChanging || menuIsOpen) {
    QTimer::singleShot(kAgainMilliseconds, this,
                       [this, wanted, source, problem] { Opened(wanted, source, problem); });
    return;
  }
  statusBar()->clearMessage();
  QString error = problem;
  if (!error.isEmpty() || !Show(std::move(*source), &error)) {
    cameraDock->SetControls(feed && !isLost ? feed->Controls() : nullptr);
    notice->setVisible(isLost);  // its button may be pressed again
    return Complain(error);
  }
  for (const QString& file : wanted.files) settings.recent.Add(file);
  settings.Save();
}

// The camera is asked in the background, where it may take its time; until it has answered no other source is
// shown.
void MainWindow::ChangePixelFormat(const QString& name) {
  if (!feed || isPreparing || isChanging || isLost) return;
  const std::shared_ptr<CameraControls> controls = feed->Controls();
  if (!controls) return;
  isChanging = true;
  feed->Stop();
  Tell(QStringLiteral("asking the camera for %1 ...").arg(name));
  cameraTalk.Do([this, controls, name]() -> Background::Answer {
    const QString before = controls->PixelFormat();
    const QString problem = controls->SetPixelFormat(name);
    return [this, before, problem] { FormatChanged(before, problem); };
  });
}

void MainWindow::FormatChanged(const QString& before, const QString& problem) {
  if (isPreparing || menuIsOpen) {
    QTimer::singleShot(kAgainMilliseconds, this, [this, before, problem] { FormatChanged(before, problem); });
    return;
  }
  statusBar()->clearMessage();
  const FrameSource& source = feed->Source();
  if (source.IsLost()) {  // its last picture stays
    isChanging = false;
    return TellLoss();
  }
  const Raised raised(&isPreparing);
  QString error = problem;
  if (!Prepare(source.Format(), source.Description(), &error) && problem.isEmpty() && !before.isEmpty()) {
    // Back to what the display can show. When that fails as well, all stays as it is then.
    cameraTalk.Do([this, controls = feed->Controls(), before, error]() -> Background::Answer {
      const QString refused = controls->SetPixelFormat(before);
      return [this, text = refused.isEmpty() ? error : refused] { FormatChanged(QString(), text); };
    });
    return;
  }
  isChanging = false;
  keeper.Forget();
  StartFeed();
  if (!error.isEmpty()) Complain(error);
}

// The last picture stays, and the line above it says that it is the last.
void MainWindow::TellLoss() {
  if (isLost || isChanging) return;  // while the format changes it is the camera thread's; asked again soon
  isLost = true;
  const QString name = feed->Source().Description();
  const CameraControls* controls = feed->Source().Controls();
  const QString id = controls ? controls->ID() : QString();
  const uint32_t pixelType = feed->Source().Format().pixelType;
  cameraDock->SetControls(nullptr);
  setWindowTitle(QStringLiteral("%1 — lost").arg(name));
  rateLabel->setText(QStringLiteral("camera lost"));
  const QString text = QStringLiteral("%1 does not answer any more: this is its last picture").arg(name);
  notice->Tell(text, QStringLiteral("Open Again"), [this, id, pixelType] { OpenCamera(id, pixelType); });
  Complain(text);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!LocalFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  OpenFiles(LocalFiles(*event->mimeData()));
}

}  // namespace zynview
