#include "MainWindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QStatusBar>
#include <QTextStream>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "Commands.h"
#include "PixelTable.h"

namespace zynview {

namespace {

constexpr int kStatusMilliseconds = 500;
constexpr int kPixelMilliseconds = 100;
constexpr int kStatusColour = 0x00FFFF;  // yellow: red in the lowest byte
constexpr int kWidth = 1024, kHeight = 780;

void DeleteDisplay(ZynDisplayProcessor* display) {
  ZynDisplayCPU::DeleteComponent(display);
}

}  // namespace

MainWindow::MainWindow(const Options& programOptions)
    : options(programOptions),
      display(nullptr, DeleteDisplay),
      colors(nullptr),
      overlays(nullptr),
      readout(nullptr, nullptr),
      sourceLabel(new QLabel(this)),
      pixelLabel(new QLabel(this)),
      colorLabel(new QLabel(this)),
      rateLabel(new QLabel(this)),
      timer(new QTimer(this)),
      pixelTimer(new QTimer(this)) {
  auto* content = new QWidget(this);
  setCentralWidget(content);
  MakeStatusBar();

  display.reset(options.opengl ? ZynDisplayQGL::CreateComponent(content)
                               : ZynDisplayCPU::CreateComponent(content));
  colors = ColorControls(display.get());
  overlays = Overlays(display.get());
  readout = PixelReadout(display.get(), &keeper);
  // A format that the display cannot process is told at once, not by each of its images.
  display->GetComponent()->SetParameterBool("system.silent", 0);
  display->GetComponent()->SetParameterInt("display.overlay.status.clr", kStatusColour);
  notifications.onMove = [this](int x, int y) {
    readout.MoveTo(x, y);
    ShowPixel();
  };
  notifications.onRightClick = [this] { OpenMenu(); };
  notifications.Join(display.get());
  QCoreApplication::instance()->installEventFilter(this);
  connect(qApp, &QGuiApplication::focusWindowChanged, this, &MainWindow::PassFocusOn, Qt::QueuedConnection);
  connect(timer, &QTimer::timeout, this, &MainWindow::ShowRates);
  connect(pixelTimer, &QTimer::timeout, this, &MainWindow::ShowPixel);
}

MainWindow::~MainWindow() {
  // The display runs the event loop while it goes: nothing of this window may follow it then.
  timer->stop();
  pixelTimer->stop();
  QCoreApplication::instance()->removeEventFilter(this);
  feed.reset();
  notifications.Leave();
  display.reset();
}

void MainWindow::MakeStatusBar() {
  statusBar()->addWidget(sourceLabel, 1);
  for (QLabel* label : {pixelLabel, colorLabel, rateLabel}) statusBar()->addPermanentWidget(label);
  statusBar()->setVisible(!options.bare);
  const QSize size = options.window.isEmpty() ? QSize(kWidth, kHeight) : options.window;
  resize(size + QSize(0, options.bare ? 0 : statusBar()->sizeHint().height()));
  // Where room is scarce, the figures keep theirs; the title holds the whole text.
  sourceLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // No frame may come to a window that is going away.
  if (feed) feed->Stop();
  QMainWindow::closeEvent(event);
}

bool MainWindow::eventFilter(QObject* object, QEvent* event) {
  // A key comes to the window first, and from there to its widgets: once is enough.
  if (event->type() == QEvent::KeyPress && object->isWindowType() && feed && !menuIsOpen) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers others = key->modifiers() & ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    const ActionRow* row = FindAction(key->key(), key->modifiers() & Qt::ShiftModifier);
    if (others == Qt::NoModifier && row) {
      Do(row->action);
      return true;
    }
  }
  // The display tells of movements over the picture, not of the mouse's going.
  if (event->type() == QEvent::Leave && object->isWindowType()) {
    readout.Leave();
    ShowPixel();
  }
  return QMainWindow::eventFilter(object, event);
}

// The keys are the display's: it is the only one here that takes the focus.
void MainWindow::PassFocusOn() {
  const QWindow* focused = QGuiApplication::focusWindow();
  if (!focused || focused != windowHandle()) return;
  if (QWidget* widget = focusWidget())
    widget->clearFocus();  // what has the focus already would not hear of it
  focusNextChild();
}

void MainWindow::ShowPixel() {
  pixelLabel->setText(readout.Text());
  // The other figures stand still while the mouse goes over the picture.
  pixelLabel->setMinimumWidth(std::max(pixelLabel->minimumWidth(), pixelLabel->sizeHint().width()));
  if (feed && feed->IsHolding()) {
    for (Save& save : saves) save.after = 0;
  }
  // Saving runs the event loop, which may come here again.
  const std::vector<Save> waiting = std::move(saves);
  saves.clear();
  for (const Save& save : waiting) {
    if (keeper.Serial() > save.after) {
      SaveNow(save.action);
    } else {
      saves.push_back(save);
    }
  }
  const bool goesOn = readout.IsPointing() || !saves.empty();
  if (goesOn != pixelTimer->isActive()) goesOn ? pixelTimer->start(kPixelMilliseconds) : pixelTimer->stop();
}

void MainWindow::ShowColors(const QString& problem) {
  colorLabel->setText(colors.Summary());
  TellProblem(problem);
}

bool MainWindow::Start(std::unique_ptr<FrameSource> source, QString* error) {
  if (!source->Open(error)) return false;
  const ZynImage format = source->Format();
  if (const uint32_t code = display->Initialize(&format)) {
    *error = QStringLiteral("the display refuses format %1%2: code 0x%3")
                 .arg(PixelNameOf(format.pixelType),
                      options.opengl ? QStringLiteral(", or OpenGL cannot be had") : QString())
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
  StartView(format, source->Description());
  feed = std::make_unique<Feed>(std::move(source), display.get(), &keeper);
  feed->Start();
  clock.start();
  interval.start();
  timer->start(kStatusMilliseconds);
  return true;
}

void MainWindow::ShowRates() {
  const double seconds = static_cast<double>(interval.restart()) / 1000.0;
  const uint64_t delivered = feed->Delivered(), shown = notifications.shown;
  if (seconds > 0) {
    QString text = QStringLiteral("in %1/s   shown %2/s   not shown %3")
                       .arg(static_cast<double>(delivered - lastDelivered) / seconds, 0, 'f', 1)
                       .arg(static_cast<double>(shown - lastShown) / seconds, 0, 'f', 1)
                       .arg(delivered > shown ? delivered - shown : 0);
    if (notifications.failed > 0) {
      text +=
          QStringLiteral("   failed %1 (code %2)").arg(notifications.failed).arg(notifications.lastResult);
    }
    if (feed->Refused() > 0) {
      text += QStringLiteral("   refused %1 (code 0x%2)")
                  .arg(feed->Refused())
                  .arg(feed->LastCode(), 8, 16, QLatin1Char('0'));
    }
    rateLabel->setText(feed->IsPaused() ? QStringLiteral("paused") : text);
  }
  lastDelivered = delivered;
  lastShown = shown;
}

bool MainWindow::Finish() {
  feed->Stop();
  const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
  const uint64_t delivered = feed->Delivered(), shown = notifications.shown;
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
             .arg(notifications.failed + feed->Refused());
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
