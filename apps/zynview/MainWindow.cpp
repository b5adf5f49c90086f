#include "MainWindow.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QStatusBar>
#include <QTextStream>
#include <QTimer>
#include <cstdio>
#include <cstring>

#include "PixelNames.h"

namespace zynview {

namespace {

constexpr int kStatusMilliseconds = 500;

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
      sourceLabel(new QLabel(this)),
      rateLabel(new QLabel(this)),
      timer(new QTimer(this)) {
  auto* content = new QWidget(this);
  setCentralWidget(content);
  statusBar()->addWidget(sourceLabel, 1);
  statusBar()->addPermanentWidget(rateLabel);
  resize(1024, 800);
  setWindowTitle(QStringLiteral("zynview"));

  display.reset(ZynDisplayCPU::CreateComponent(content));
  QTD::ARGUMENTS arguments = ReceiverArguments(&receiver);
  display->RunCommand("cmd.system.notification.add", &arguments);
  display->GetComponent()->SetParameterInt("image.notification.flags.set", 1);
  connect(timer, &QTimer::timeout, this, &MainWindow::ShowRates);
}

MainWindow::~MainWindow() {
  feed.reset();
  if (display) {
    QTD::ARGUMENTS arguments = ReceiverArguments(&receiver);
    display->RunCommand("cmd.system.notification.del", &arguments);
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // No frame may come to a window that is going away.
  if (feed) feed->Stop();
  QMainWindow::closeEvent(event);
}

bool MainWindow::Start(std::unique_ptr<FrameSource> source, QString* error) {
  if (!source->Open(error)) return false;
  const ZynImage format = source->Format();
  if (const uint32_t code = display->Initialize(&format)) {
    *error = QStringLiteral("the display refuses the format: code 0x%1").arg(code, 8, 16, QLatin1Char('0'));
    return false;
  }
  sourceLabel->setText(QStringLiteral("%1 — %2 %3 × %4")
                           .arg(source->Description(), PixelNameOf(format.pixelType))
                           .arg(format.width)
                           .arg(format.height));
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
