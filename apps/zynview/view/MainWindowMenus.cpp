// The menu bar, and the dialogs that it opens.
#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QImageReader>
#include <QMenu>
#include <QMenuBar>

#include "view/MainWindow.h"

namespace zynview {

namespace {

struct MenuRow {
  BarMenu menu;
  const char* title;
};

constexpr MenuRow kMenus[] = {{BarMenu::File, "&File"},
                              {BarMenu::Camera, "&Camera"},
                              {BarMenu::View, "&View"},
                              {BarMenu::Help, "&Help"}};

QString FileFilter() {
  QStringList patterns{QStringLiteral("*.raw"), QStringLiteral("*.json")};
  for (const QByteArray& format : QImageReader::supportedImageFormats())
    patterns << QStringLiteral("*.") + QString::fromLatin1(format);
  return QStringLiteral("Pictures and raw frames (%1);;All files (*)").arg(patterns.join(QLatin1Char(' ')));
}

}  // namespace

// The texts name the keys, which are seen on their way to the display and not by the menus: they count
// wherever the focus is.
void MainWindow::MakeMenuBar() {
  for (const MenuRow& each : kMenus) {
    QMenu* menu = menuBar()->addMenu(QString::fromLatin1(each.title));
    std::vector<std::pair<QAction*, Action>> switches;
    for (int i = 0; const ActionRow* row = ActionRowAt(i); ++i) {
      if (row->bar != each.menu) continue;
      if (row->action == Action::Quit) AddFileEntries(*menu);
      QAction* entry = menu->addAction(
          QStringLiteral("%1\t%2").arg(QString::fromLatin1(row->label), QString::fromLatin1(row->keyName)));
      entry->setCheckable(row->isSwitch);
      connect(entry, &QAction::triggered, this, [this, row] { Do(row->action); });
      if (row->isSwitch) switches.emplace_back(entry, row->action);
    }
    if (each.menu == BarMenu::View) AddOpenGLEntry(*menu);
    connect(menu, &QMenu::aboutToShow, this, [this, switches] {
      for (const auto& [entry, action] : switches) entry->setChecked(IsOnNow(action));
    });
    menu->menuAction()->setVisible(!menu->isEmpty());
  }
}

void MainWindow::AddFileEntries(QMenu& menu) {
  connect(menu.addAction(QStringLiteral("Save to Folder...")), &QAction::triggered, this,
          [this] { AskForSaveFolder(); });
  QMenu* recent = menu.addMenu(QStringLiteral("Recent"));
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { FillRecent(*recent); });
  menu.addSeparator();
}

void MainWindow::AddOpenGLEntry(QMenu& menu) {
  if (!settings.AreKept()) return;
  menu.addSeparator();
  QAction* entry = menu.addAction(QStringLiteral("OpenGL from the Next Start"));
  entry->setCheckable(true);
  entry->setChecked(settings.opengl);
  connect(entry, &QAction::toggled, this, [this](bool on) {
    settings.opengl = on;
    settings.Save();
  });
}

void MainWindow::FillRecent(QMenu& menu) {
  menu.clear();
  for (const QString& path : settings.recent.Paths()) {
    QAction* entry = menu.addAction(RecentFiles::Label(path));
    entry->setEnabled(RecentFiles::IsThere(path));
    connect(entry, &QAction::triggered, this, [this, path] { OpenFiles({path}); });
  }
  menu.addSeparator();
  QAction* clear = menu.addAction(QStringLiteral("Clear"));
  clear->setEnabled(!settings.recent.Paths().isEmpty());
  connect(clear, &QAction::triggered, this, [this] {
    settings.recent.Clear();
    settings.Save();
  });
}

QString MainWindow::LastOpened() const {
  const QStringList& paths = settings.recent.Paths();
  return paths.isEmpty() ? QDir::currentPath() : QFileInfo(paths.first()).path();
}

void MainWindow::AskForFiles() {
  OpenFiles(QFileDialog::getOpenFileNames(this, QStringLiteral("Open pictures and raw frames"), LastOpened(),
                                          FileFilter()));
}

void MainWindow::AskForFolder() {
  const QString folder =
      QFileDialog::getExistingDirectory(this, QStringLiteral("Open a folder as a sequence"), LastOpened());
  if (!folder.isEmpty()) OpenFiles({folder});
}

void MainWindow::AskForSaveFolder() {
  const QString folder = QFileDialog::getExistingDirectory(
      this, QStringLiteral("Save pictures and raw frames in"), SaveFolder());
  if (folder.isEmpty()) return;
  options.folder = settings.folder = folder;
  settings.Save();
}

QString MainWindow::SaveFolder() const {
  return options.folder.isEmpty() ? QDir::currentPath() : options.folder;
}

}  // namespace zynview
