#include "MainWindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QStatusBar>
#include <QTextStream>
#include <QTimer>
#include <cstdio>
#include <cstring>

#include "PixelTable.h"

namespace zynview {

namespace {

constexpr int kStatusMilliseconds = 500;
constexpr int kMessageMilliseconds = 5000;
constexpr int kWidth = 1024, kHeight = 780;
constexpr double kGainStep = 1.25;

void DeleteDisplay(ZynDisplayProcessor* display) {
  ZynDisplayCPU::DeleteComponent(display);
}

QTD::ARGUMENTS ReceiverArguments(ZynDisplayCommand* receiver) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", static_cast<void*>(receiver));
  return {{"proc", text}};
}

}  // namespace

uint32_t MainWindow::Receiver::RunCommand(const char* name, QTD::ARGUMENTS* args) {
  if (std::strcmp(name, "notification.image") != 0 || !args) return 0;
  const int result = std::atoi((*args)["result"].c_str());
  ++(result == 0 ? shown : failed);
  if (result != 0) lastResult = result;
  return 0;
}

MainWindow::MainWindow(const Options& programOptions)
    : options(programOptions),
      display(nullptr, DeleteDisplay),
      colors(nullptr),
      sourceLabel(new QLabel(this)),
      colorLabel(new QLabel(this)),
      rateLabel(new QLabel(this)),
      timer(new QTimer(this)) {
  auto* content = new QWidget(this);
  setCentralWidget(content);
  statusBar()->addWidget(sourceLabel, 1);
  statusBar()->addPermanentWidget(colorLabel);
  statusBar()->addPermanentWidget(rateLabel);
  statusBar()->setVisible(!options.bare);
  const QSize size = options.window.isEmpty() ? QSize(kWidth, kHeight) : options.window;
  resize(size + QSize(0, options.bare ? 0 : statusBar()->sizeHint().height()));
  // Where room is scarce, the figures keep theirs; the title holds the whole text.
  sourceLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

  display.reset(ZynDisplayCPU::CreateComponent(content));
  colors = ColorControls(display.get());
  QTD::ARGUMENTS arguments = ReceiverArguments(&receiver);
  display->RunCommand("cmd.system.notification.add", &arguments);
  display->GetComponent()->SetParameterInt("image.notification.flags.set", 1);
  // A format that the display cannot process is told at once, not by each of its images.
  display->GetComponent()->SetParameterBool("system.silent", 0);
  QCoreApplication::instance()->installEventFilter(this);
  connect(timer, &QTimer::timeout, this, &MainWindow::ShowRates);
}

MainWindow::~MainWindow() {
  // The display runs the event loop while it goes: nothing of this window may follow it then.
  timer->stop();
  QCoreApplication::instance()->removeEventFilter(this);
  feed.reset();
  QTD::ARGUMENTS arguments = ReceiverArguments(&receiver);
  display->RunCommand("cmd.system.notification.del", &arguments);
  display.reset();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // No frame may come to a window that is going away.
  if (feed) feed->Stop();
  QMainWindow::closeEvent(event);
}

bool MainWindow::eventFilter(QObject* object, QEvent* event) {
  // A key comes to the window first, and from there to its widgets: once is enough.
  if (event->type() == QEvent::KeyPress && object->isWindowType()) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers others = key->modifiers() & ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    if (others == Qt::NoModifier && HandleKey(key->key(), key->modifiers() & Qt::ShiftModifier)) return true;
  }
  return QMainWindow::eventFilter(object, event);
}

// Clear of the keys that are the display's own: + - 0 1 2 C, the arrows, and the sequences SD and SI.
bool MainWindow::HandleKey(int key, bool shift) {
  if (!feed) return false;
  switch (key) {
    case Qt::Key_M:
      ShowColors(colors.NextDemosaicing());
      return true;
    case Qt::Key_E:
      ShowColors(colors.ToggleMarking());
      return true;
    case Qt::Key_G:
      ShowColors(colors.MultiplyGain(shift ? 1 / kGainStep : kGainStep));
      return true;
    case Qt::Key_R:
      ShowColors(colors.ResetCorrection());
      return true;
    default:
      return false;
  }
}

void MainWindow::ShowColors(const QString& problem) {
  colorLabel->setText(colors.Summary());
  if (!problem.isEmpty()) statusBar()->showMessage(problem, kMessageMilliseconds);
}

bool MainWindow::Start(std::unique_ptr<FrameSource> source, QString* error) {
  if (!source->Open(error)) return false;
  const ZynImage format = source->Format();
  if (const uint32_t code = display->Initialize(&format)) {
    *error = QStringLiteral("the display refuses format %1: code 0x%2")
                 .arg(PixelNameOf(format.pixelType))
                 .arg(code, 8, 16, QLatin1Char('0'));
    return false;
  }
  *error = colors.Start(options.color);
  if (!error->isEmpty()) return false;
  ShowColors(QString());
  sourceLabel->setText(QStringLiteral("%1 — %2 %3 × %4")
                           .arg(source->Description(), PixelNameOf(format.pixelType))
                           .arg(format.width)
                           .arg(format.height));
  if (!colors.PicturesAreRead()) {
    sourceLabel->setText(sourceLabel->text() +
                         QStringLiteral(": passes the display unread, this is no picture"));
  }
  setWindowTitle(sourceLabel->text());
  feed = std::make_unique<Feed>(std::move(source), display.get());
  feed->Start();
  clock.start();
  interval.start();
  timer->start(kStatusMilliseconds);
  return true;
}

void MainWindow::ShowRates() {
  const double seconds = static_cast<double>(interval.restart()) / 1000.0;
  const uint64_t delivered = feed->Delivered(), shown = receiver.shown;
  if (seconds > 0) {
    QString text = QStringLiteral("in %1/s   shown %2/s   not shown %3")
                       .arg(static_cast<double>(delivered - lastDelivered) / seconds, 0, 'f', 1)
                       .arg(static_cast<double>(shown - lastShown) / seconds, 0, 'f', 1)
                       .arg(delivered > shown ? delivered - shown : 0);
    if (receiver.failed > 0)
      text += QStringLiteral("   failed %1 (code %2)").arg(receiver.failed).arg(receiver.lastResult);
    if (feed->Refused() > 0) {
      text += QStringLiteral("   refused %1 (code 0x%2)")
                  .arg(feed->Refused())
                  .arg(feed->LastCode(), 8, 16, QLatin1Char('0'));
    }
    rateLabel->setText(text);
  }
  lastDelivered = delivered;
  lastShown = shown;
}

bool MainWindow::Finish() {
  feed->Stop();
  const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
  const uint64_t delivered = feed->Delivered(), shown = receiver.shown;
  QTextStream out(stdout);
  out << sourceLabel->text() << '\n';
  if (!colorLabel->text().isEmpty()) out << colorLabel->text() << '\n';
  out << QStringLiteral("%1 s: %2 frames in (%3/s), %4 shown (%5/s), %6 not shown, %7 failed\n")
             .arg(seconds, 0, 'f', 1)
             .arg(delivered)
             .arg(static_cast<double>(delivered) / seconds, 0, 'f', 1)
             .arg(shown)
             .arg(static_cast<double>(shown) / seconds, 0, 'f', 1)
             .arg(delivered > shown ? delivered - shown : 0)
             .arg(receiver.failed + feed->Refused());
  out.flush();
  const bool saved = options.save.isEmpty() || SavePicture();
  return saved && shown > 0;
}

bool MainWindow::SavePicture() {
  QScreen* screen = QGuiApplication::primaryScreen();
  const bool saved = screen && screen->grabWindow(winId()).save(options.save);
  QTextStream(stdout) << (saved ? QFileInfo(options.save).absoluteFilePath()
                                : QStringLiteral("the picture could not be saved: ") + options.save)
                      << '\n';
  return saved;
}

}  // namespace zynview
