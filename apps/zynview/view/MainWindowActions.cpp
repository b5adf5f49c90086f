// What the viewer's keys and its entries of the context menu do.
#include <QAction>
#include <QFileInfo>
#include <QMenu>
#include <QStatusBar>
#include <QTextStream>

#include "sources/FrameSaver.h"
#include "view/AnalysisDock.h"
#include "view/CameraDock.h"
#include "view/Commands.h"
#include "view/HelpWindow.h"
#include "view/MainWindow.h"

namespace zynview {

namespace {

constexpr int kMessageMilliseconds = 5000, kProblemMilliseconds = 20000;
constexpr double kGainStep = 1.25;

}  // namespace

void MainWindow::Tell(const QString& text) {
  statusBar()->showMessage(text, kMessageMilliseconds);
}

// Stays longer, and is also there for whoever started the program in a terminal.
void MainWindow::Complain(const QString& problem) {
  statusBar()->showMessage(problem, kProblemMilliseconds);
  QTextStream(stderr) << "zynview: " << problem << '\n';
}

void MainWindow::TellProblem(const QString& problem) {
  if (!problem.isEmpty()) Tell(problem);
}

void MainWindow::Do(Action action) {
  switch (action) {
    case Action::Pause:
      if (feed) feed->SetPaused(!feed->IsPaused());
      return ShowRates();
    case Action::NextFrame:
    case Action::PreviousFrame:
      if (feed) feed->Step(action == Action::NextFrame ? 1 : -1);
      return ShowRates();
    case Action::OpenFiles:
      return AskForFiles();
    case Action::OpenFolder:
      return AskForFolder();
    case Action::ShowCamera:
      return cameraDock->setVisible(!cameraDock->isVisible());
    case Action::ShowAnalysis:
      return analysisDock->setVisible(!analysisDock->isVisible());
    case Action::HoldProfile:
      return analysisDock->SetHeld(!analysisDock->IsHeld());
    case Action::MarkRegion:
      return marker->Toggle();
    case Action::ShowHelp:
      if (!help) help = new HelpWindow(this);
      return help->Present();
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
    case Action::Quit:
      close();
      return;
  }
}

bool MainWindow::IsOnNow(Action action) const {
  switch (action) {
    case Action::Pause:
      return feed && feed->IsPaused();
    case Action::ShowCamera:
      return cameraDock->isVisible();
    case Action::ShowAnalysis:
      return analysisDock->isVisible();
    case Action::HoldProfile:
      return analysisDock->IsHeld();
    case Action::MarkRegion:
      return marker->IsMarking() || !marker->Region().isEmpty();
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

void MainWindow::ShowMarking(bool on) {
  on ? Tell(QStringLiteral("drag over the picture with the left button to mark a region; Esc ends"))
     : statusBar()->clearMessage();
}

void MainWindow::Switch(Action action, bool on) {
  if (IsOnNow(action) != on) Do(action);
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

// The frame that is held while the feed pauses, or the last one where it was kept, or else the next one.
void MainWindow::SaveSoon(Action action) {
  saves.push_back({action, keeper.HasLast() ? 0 : keeper.Serial()});
  keeper.Want();
  ShowPixel();
}

void MainWindow::SaveNow(Action action) {
  OwnFrame frame;
  if (!feed || !keeper.Look([&frame](const ZynImage& kept) { frame = CopyOf(kept); })) return;
  QString file;
  const QString problem = action == Action::SaveFrame
                              ? SaveRawFrame(frame, SaveFolder(), feed->Source().Description(), &file)
                              : SaveWholePicture(std::move(frame), display.get(), SaveFolder(), &file);
  const QFileInfo saved(file);
  Tell(problem.isEmpty() ? QStringLiteral("saved %1 in %2").arg(saved.fileName(), saved.absolutePath())
                         : problem);
}

}  // namespace zynview
