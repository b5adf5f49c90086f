#include "view/MainWindow.h"

#include <QApplication>
#include <QDockWidget>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTextStream>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "sources/CameraSource.h"
#include "sources/SafeFile.h"
#include "view/AnalysisDock.h"
#include "view/CameraDock.h"
#include "view/Commands.h"
#include "view/ElidedLabel.h"
#include "view/Notice.h"

namespace zynview {

namespace {

constexpr int kPixelMilliseconds = 100;
constexpr int kStatusColour = 0x00FFFF;  // yellow: red in the lowest byte
constexpr int kWidth = 1024, kHeight = 780;
constexpr int kLabelMargin = 4;
constexpr uint64_t kFewFrames = 3;  // within one look at the rates
constexpr int kNothingShown = 1, kSomethingWrong = 2;

// A number or a list that takes keys.
bool IsInPanel(const QWidget* widget) {
  for (; widget; widget = widget->parentWidget()) {
    if (qobject_cast<const QDockWidget*>(widget)) return true;
  }
  return false;
}

void DeleteDisplay(ZynDisplayProcessor* display) {
  ZynDisplayCPU::DeleteComponent(display);
}

}  // namespace

MainWindow::MainWindow(const Options& programOptions, Settings savedSettings)
    : options(programOptions),
      settings(std::move(savedSettings)),
      display(nullptr, DeleteDisplay),
      colors(nullptr),
      overlays(nullptr),
      readout(nullptr, nullptr),
      sourceLabel(new ElidedLabel(this)),
      pixelLabel(new QLabel(this)),
      colorLabel(new QLabel(this)),
      rateLabel(new QLabel(this)),
      timer(new QTimer(this)),
      pixelTimer(new QTimer(this)) {
  auto* content = new QWidget(this);
  setCentralWidget(content);
  setAcceptDrops(true);
  MakeStatusBar();
  MakeDocks();
  if (!options.bare) MakeMenuBar();
  PlaceWindow();

  display.reset(options.opengl ? ZynDisplayQGL::CreateComponent(content)
                               : ZynDisplayCPU::CreateComponent(content));
  colors = ColorControls(display.get());
  overlays = Overlays(display.get());
  readout = PixelReadout(display.get(), &keeper);
  marker = std::make_unique<RegionMarker>(display.get());
  marker->onChange = [this](const QRect& region) { analysisDock->SetRegion(region); };
  marker->onMarking = [this](bool on) { ShowMarking(on); };
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
  // The display runs the event loop while it goes: nothing of this window may follow it then. What has been
  // opened meanwhile is not shown any more.
  isPreparing = true;
  background.End();
  cameraTalk.End();
  timer->stop();
  pixelTimer->stop();
  QCoreApplication::instance()->removeEventFilter(this);
  cameraDock->SetControls(nullptr);
  marker.reset();
  analysisDock.reset();
  feed.reset();
  notifications.Leave();
  display.reset();
}

void MainWindow::MakeStatusBar() {
  statusBar()->addWidget(sourceLabel, 1);
  for (QLabel* label : {pixelLabel, colorLabel, rateLabel}) statusBar()->addPermanentWidget(label);
  sourceLabel->setContentsMargins(kLabelMargin, 0, 0, 0);
  colorLabel->setContentsMargins(kLabelMargin, 0, kLabelMargin, 0);
  statusBar()->setVisible(!options.bare);
  // Where room is scarce, the figures keep theirs; the title holds the whole text.
  sourceLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void MainWindow::MakeDocks() {
  notice = new Notice(this);
  addToolBar(Qt::TopToolBarArea, notice);
  notice->hide();
  cameraDock = new CameraDock(CameraSource::FindCameras, &background, &cameraTalk, this);
  cameraDock->onCamera = [this](const QString& id) { OpenCamera(id, 0); };
  cameraDock->onFormat = [this](const QString& name) { ChangePixelFormat(name); };
  cameraDock->onProblem = [this](const QString& problem) { Tell(problem); };
  addDockWidget(Qt::RightDockWidgetArea, cameraDock);
  cameraDock->hide();
  analysisDock = std::make_unique<AnalysisDock>(&keeper, this);
  addDockWidget(Qt::RightDockWidgetArea, analysisDock.get());
  analysisDock->hide();
}

// The size that is asked for, or else the place of the last time.
void MainWindow::PlaceWindow() {
  const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  const int bars = options.bare ? 0 : statusBar()->sizeHint().height() + menuBar()->sizeHint().height();
  const QSize around(scrollBar, scrollBar + bars);
  if (options.window.isEmpty()) {
    resize((QSize(kWidth, kHeight) + around).boundedTo(screen()->availableSize()));
  } else {
    resize(options.window + around);
  }
  if (options.window.isEmpty() && !settings.geometry.isEmpty()) restoreGeometry(settings.geometry);
  if (options.window.isEmpty() && !settings.docks.isEmpty()) restoreState(settings.docks);
  notice->hide();  // it may have been there at the end of the last time
}

void MainWindow::SaveSettings() {
  settings.geometry = saveGeometry();
  settings.docks = saveState();
  settings.statusLine = IsOnNow(Action::StatusLine);
  settings.information = IsOnNow(Action::Information);
  settings.overlays = IsOnNow(Action::Overlays);
  settings.markExposure = IsOnNow(Action::MarkExposure);
  settings.Save();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (feed) SaveSettings();
  // No frame may come to a window that is going away.
  if (feed) feed->Stop();
  QMainWindow::closeEvent(event);
}

// What is typed into a number or a list of a panel is not for the viewer, and what is typed in another window
// neither.
bool MainWindow::AreKeysOurs(const QObject* object) const {
  return object == windowHandle() ? !IsInPanel(focusWidget()) : IsPicture(object);
}

// Dialogs belong to this window as well, but do not lie within it.
bool MainWindow::IsPicture(const QObject* object) const {
  const auto* window = qobject_cast<const QWindow*>(object);
  return window && windowHandle() && windowHandle()->isAncestorOf(window, QWindow::ExcludeTransients);
}

bool MainWindow::TakeKey(const QObject* object, const QKeyEvent& key) {
  const bool ctrl = key.modifiers() & Qt::ControlModifier;
  const Qt::KeyboardModifiers others =
      key.modifiers() & ~Qt::KeyboardModifiers(Qt::ShiftModifier | Qt::ControlModifier | Qt::KeypadModifier);
  const ActionRow* row = FindAction(key.key(), key.modifiers() & Qt::ShiftModifier, ctrl);
  if (others != Qt::NoModifier || !row) return false;
  // With Ctrl they are clear of what is typed.
  if (!AreKeysOurs(object) && !(ctrl && object == windowHandle())) return false;
  Do(row->action);
  return true;
}

bool MainWindow::eventFilter(QObject* object, QEvent* event) {
  // A key comes to the window first, and from there to its widgets: once is enough.
  if (event->type() == QEvent::KeyPress && object->isWindowType() && feed &&
      !QApplication::activePopupWidget() && TakeKey(object, static_cast<QKeyEvent&>(*event))) {
    return true;
  }
  // The display tells of movements over the picture, not of the mouse's going.
  if (event->type() == QEvent::Leave && object->isWindowType()) {
    readout.Leave();
    ShowPixel();
  }
  // What is dropped on the picture comes to the display's own window.
  if (IsPicture(object)) {
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
      static_cast<QDropEvent*>(event)->acceptProposedAction();
      return true;
    }
    if (event->type() == QEvent::Drop) {
      dropEvent(static_cast<QDropEvent*>(event));
      return true;
    }
  }
  return QMainWindow::eventFilter(object, event);
}

// The keys are the display's, except where somebody types into a panel.
void MainWindow::PassFocusOn() {
  const QWindow* focused = QGuiApplication::focusWindow();
  if (!focused || focused != windowHandle()) return;
  QWidget* widget = focusWidget();
  if (IsInPanel(widget)) return;
  if (widget) widget->clearFocus();  // what has the focus already would not hear of it
  for (QWidget* each : centralWidget()->findChildren<QWidget*>()) {
    if (each->focusPolicy() & Qt::TabFocus) return each->setFocus();
  }
}

void MainWindow::ShowPixel() {
  pixelLabel->setText(readout.Text());
  if (const std::optional<QPoint> place = readout.Place()) analysisDock->PointAt(place->y());
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
    } else if (feed && feed->Source().IsLost()) {
      Tell(QStringLiteral("nothing is saved: the camera has gone, and its last frame was not kept"));
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

QString MainWindow::PauseText() const {
  QString text = QStringLiteral("paused");
  if (!feed->IsHolding()) return text;
  keeper.Look([&text](const ZynImage& frame) { text += QStringLiteral("   frame %1").arg(frame.imageID); });
  return text;
}

void MainWindow::ShowRates() {
  if (!feed) return;
  for (const QString& problem : feed->Source().TakeProblems()) Complain(problem);
  if (feed->Source().IsLost()) return TellLoss();
  const uint64_t delivered = feed->Delivered(), shown = notifications.shown;
  rates.Note(clock.elapsed(), delivered, shown);
  QString text = QStringLiteral("in %1/s   shown %2/s   not shown %3")
                     .arg(rates.Delivered(), 0, 'f', 1)
                     .arg(rates.Shown(), 0, 'f', 1)
                     .arg(delivered > shown ? delivered - shown : 0);
  if (notifications.failed > 0) {
    text += QStringLiteral("   failed %1 (code %2)").arg(notifications.failed).arg(notifications.lastResult);
  }
  if (feed->Refused() > 0) {
    text += QStringLiteral("   refused %1 (code 0x%2)")
                .arg(feed->Refused())
                .arg(feed->LastCode(), 8, 16, QLatin1Char('0'));
  }
  rateLabel->setText(feed->IsPaused() ? PauseText() : text);
  // Of a slow source each frame is kept: who saves the picture means the one that is seen.
  if (delivered - lastDelivered < kFewFrames) keeper.Want();
  lastDelivered = delivered;
}

int MainWindow::Finish() {
  if (!feed) return kNothingShown;
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
  if (!options.save.isEmpty() && !SavePicture()) return kSomethingWrong;
  return shown > 0 ? 0 : kNothingShown;
}

bool MainWindow::SavePicture() {
  QScreen* const shown = QGuiApplication::primaryScreen();
  const QString problem = shown ? WritePicture(shown->grabWindow(winId()).toImage(), options.save)
                                : QStringLiteral("there is no screen");
  QTextStream(stdout) << (problem.isEmpty() ? QFileInfo(options.save).absoluteFilePath()
                                            : QStringLiteral("the picture could not be saved: ") + problem)
                      << '\n';
  return problem.isEmpty();
}

}  // namespace zynview
