// What the viewer's keys and its entries of the context menu do.
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QStatusBar>

#include "Commands.h"
#include "FrameSaver.h"
#include "MainWindow.h"

namespace zynview {

namespace {

constexpr int kMessageMilliseconds = 5000;
constexpr double kGainStep = 1.25;

}  // namespace

void MainWindow::StartView(const ZynImage& format, const QString& name) {
  notifications.AskForMovements();
  overlays.Start(format, name, options.region);
  if (options.overlays) Do(Action::Overlays);
  if (options.statusLine) Do(Action::StatusLine);
  if (options.information) Do(Action::Information);
}

void MainWindow::Tell(const QString& text) {
  statusBar()->showMessage(text, kMessageMilliseconds);
}

void MainWindow::TellProblem(const QString& problem) {
  if (!problem.isEmpty()) Tell(problem);
}

void MainWindow::Do(Action action) {
  switch (action) {
    case Action::Pause:
      if (feed) feed->SetPaused(!feed->IsPaused());
      return ShowRates();
    case Action::SavePicture:
    case Action::SaveFrame:
      return SaveSoon(action);
    case Action::StatusLine:
      Run(display.get(), "cmd.display.view.status");
      return;
    case Action::Information:
      Run(display.get(), "cmd.display.view.info");
      return;
    case Action::Overlays:
      if (!overlays.Toggle()) Tell(QStringLiteral("the display takes no overlays"));
      return;
    case Action::MarkExposure:
      return ShowColors(colors.ToggleMarking());
    case Action::NextDemosaicing:
      return ShowColors(colors.NextDemosaicing());
    case Action::MoreGain:
      return ShowColors(colors.MultiplyGain(kGainStep));
    case Action::LessGain:
      return ShowColors(colors.MultiplyGain(1 / kGainStep));
    case Action::ResetCorrection:
      return ShowColors(colors.ResetCorrection());
  }
}

bool MainWindow::IsOnNow(Action action) const {
  switch (action) {
    case Action::Pause:
      return feed && feed->IsPaused();
    case Action::StatusLine:
      return IsOn(display.get(), "display.view.status");
    case Action::Information:
      return IsOn(display.get(), "display.view.info");
    case Action::Overlays:
      return overlays.AreShown();
    case Action::MarkExposure:
      return colors.Settings().markExposure;
    default:
      return false;
  }
}

// The display builds its menu, the viewer's entries come behind the display's, and the display shows it.
void MainWindow::OpenMenu() {
  if (menuIsOpen) return;
  QTD::ARGUMENTS menu;
  display->RunCommand("cmd.system.menu.create", &menu);
  auto* widget = static_cast<QMenu*>(PointerFrom(menu["qmenu"]));
  if (!widget) return;
  menuIsOpen = true;
  AddEntries(*widget);
  display->RunCommand("cmd.system.menu.exec", &menu);
  display->RunCommand("cmd.system.menu.delete", &menu);
  menuIsOpen = false;
}

void MainWindow::AddEntries(QMenu& menu) {
  menu.addSeparator();
  for (int i = 0; const ActionRow* row = ActionRowAt(i); ++i) {
    if (!row->inMenu) continue;
    QAction* entry = menu.addAction(
        QStringLiteral("%1\t[%2]").arg(QString::fromLatin1(row->label), QString::fromLatin1(row->keyName)));
    entry->setCheckable(row->isSwitch);
    entry->setChecked(IsOnNow(row->action));
    connect(entry, &QAction::triggered, this, [this, row] { Do(row->action); });
  }
}

// The frame that is held while the feed pauses, or else the next one.
void MainWindow::SaveSoon(Action action) {
  saves.push_back({action, keeper.Serial()});
  keeper.Want();
  ShowPixel();
}

void MainWindow::SaveNow(Action action) {
  OwnFrame frame;
  if (!keeper.Look([&frame](const ZynImage& kept) { frame = CopyOf(kept); })) return;
  QString file;
  const QString problem = action == Action::SaveFrame
                              ? SaveRawFrame(frame, QDir::currentPath(), &file)
                              : SaveWholePicture(std::move(frame), display.get(), QDir::currentPath(), &file);
  Tell(problem.isEmpty() ? QStringLiteral("saved %1").arg(QFileInfo(file).fileName()) : problem);
}

}  // namespace zynview
