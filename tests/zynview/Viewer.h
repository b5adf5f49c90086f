// The viewer's window as the program makes it, driven as a user does.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QStatusBar>
#include <QUrl>
#include <QWindow>
#include <memory>

#include "apps/zynview/sources/MakeSource.h"
#include "apps/zynview/view/MainWindow.h"
#include "zynview/ViewerFiles.h"
#include "zynview/Waiting.h"

// Started by a command line.
struct Viewer {
  explicit Viewer(const QStringList& arguments, zynview::Settings settings = zynview::Settings::None()) {
    QString error;
    zynview::Options options;
    EXPECT_TRUE(zynview::ReadOptions(QStringList{QStringLiteral("zynview")} + arguments, &options, &error))
        << error.toStdString();
    settings.Complete(&options);
    window = std::make_unique<zynview::MainWindow>(options, std::move(settings));
    window->show();
    started = window->Start(zynview::MakeSource(options), &problem);
  }

  // The display's own window, which gets the keys.
  QWindow* Picture() const {
    for (QWindow* each : QGuiApplication::allWindows()) {
      if (each != window->windowHandle() &&
          window->windowHandle()->isAncestorOf(each, QWindow::ExcludeTransients))
        return each;
    }
    return nullptr;
  }

  void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
    QKeyEvent press(QEvent::KeyPress, key, modifiers), release(QEvent::KeyRelease, key, modifiers);
    // Without a source there is no picture, and the window gets them.
    QWindow* target = Picture() ? Picture() : window->windowHandle();
    QCoreApplication::sendEvent(target, &press);
    QCoreApplication::sendEvent(target, &release);
  }

  // Whether it would be taken.
  bool Drop(const QString& file, QObject* target) const {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file)});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(target, &enter);
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
    return enter.isAccepted();
  }

  // Chooses an entry of the menu bar.
  void Choose(const char* label) const {
    QAction* entry = Entry(label);
    ASSERT_TRUE(entry) << label;
    entry->trigger();
  }
  QAction* Entry(const char* label) const {
    for (QMenu* menu : window->menuBar()->findChildren<QMenu*>()) {
      for (QAction* entry : menu->actions()) {
        if (entry->text().section(QLatin1Char('\t'), 0, 0) == QLatin1String(label)) return entry;
      }
    }
    return nullptr;
  }
  // Whether the menu, when it is opened, shows it as switched on.
  bool IsChecked(const char* label) const {
    for (QMenu* menu : window->menuBar()->findChildren<QMenu*>()) Q_EMIT menu->aboutToShow();
    return Entry(label) && Entry(label)->isChecked();
  }

  // Some label of the status bar holds this text.
  bool Tells(const char* text) const {
    for (const QLabel* label : window->statusBar()->findChildren<QLabel*>()) {
      if (label->text().contains(QString::fromUtf8(text))) return true;
    }
    return window->statusBar()->currentMessage().contains(QString::fromUtf8(text));
  }
  bool IsTitled(const char* text) const { return window->windowTitle().contains(QString::fromUtf8(text)); }
  bool IsOpen(const char* dock) const {
    const auto* found = window->findChild<QDockWidget*>(QLatin1String(dock));
    return found && found->isVisible();
  }

  std::unique_ptr<zynview::MainWindow> window;
  bool started = false;
  QString problem;
};

inline QStringList Scene(const char* more = "") {
  QStringList arguments{QStringLiteral("--scene"), QStringLiteral("--size"), QStringLiteral("64x48")};
  return arguments + QString::fromLatin1(more).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}
