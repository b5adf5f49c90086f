// A display with a picture and a context menu, for the tests that open it.
#pragma once

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QTimer>

#include "tests/display/PictureFixture.h"

namespace display_test {

class OpenMenuTest : public PictureTest {
 protected:
  QMenu* Create(QTD::ARGUMENTS* args) {
    EXPECT_EQ(Run("cmd.system.menu.create", args), 1u);
    return QTD::ParsePointerAs<QMenu>((*args)["qmenu"]);
  }
  QMenu* Create() { return Create(&arguments); }

  // The menu that another thread has made.
  QMenu* FindMenu() {
    QTDViewer* viewer = display->Viewer();
    return viewer ? viewer->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
  }
  // Runs `action` when the menu is seen.
  static void WhenShown(const QPointer<QMenu>& menu, std::function<void()> action) {
    QTimer::singleShot(5, [menu, action] {
      if (menu && !menu->isVisible()) return WhenShown(menu, action);
      action();
    });
  }
  // As a user chooses an entry: the menu closes and runs it from inside its own event.
  static void Choose(QMenu& menu, QAction* entry) {
    menu.setActiveAction(entry);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(&menu, &enter);
  }
  // An entry of the host's.
  static QAction* Add(QMenu& menu, std::function<void()> code) {
    QAction* const entry = menu.addAction(QStringLiteral("Host"));
    QObject::connect(entry, &QAction::triggered, std::move(code));
    return entry;
  }
  static QAction* Find(const QMenu& menu, const char* label) {
    for (QAction* entry : menu.actions()) {
      if (entry->text() == QLatin1String(label)) return entry;
      if (!entry->menu()) continue;
      if (QAction* const inside = Find(*entry->menu(), label)) return inside;
    }
    return nullptr;
  }

  QTD::ARGUMENTS arguments;
};

}  // namespace display_test
