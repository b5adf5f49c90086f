// The context menu with an entry of the host's.
#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QTimer>
#include <atomic>

#include "tests/guide/GuideTest.h"

namespace guide {

class Menu : public GuideTest {
 protected:
  // As a user does: chooses the entry when the menu is on the screen.
  void ChooseLater(const QString& label) {
    QTimer::singleShot(5, &widget, [this, label] {
      for (QMenu* menu : widget.findChildren<QMenu*>()) {
        for (QAction* entry : menu->actions()) {
          if (entry->text() != label || !menu->isVisible()) continue;
          menu->setActiveAction(entry);
          QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
          QCoreApplication::sendEvent(menu, &enter);
          return;
        }
      }
      ChooseLater(label);
    });
  }

  Picture image{ZYN_PIXEL_MONO8, 1200, 900};
};

TEST_F(Menu, an_entry_of_the_host) {
  Show(image.record);
  int saved = 0;
  const auto savePicture = [&saved] { ++saved; };
  ChooseLater(QStringLiteral("Save Picture"));
  // [menu]
  QTD::ARGUMENTS menu;  // on the GUI thread
  display->RunCommand("cmd.system.menu.create", &menu);
  if (auto* entries = static_cast<QMenu*>(PointerFrom(menu["qmenu"]))) {
    entries->addSeparator();
    QObject::connect(entries->addAction(QStringLiteral("Save Picture")), &QAction::triggered, savePicture);
    display->RunCommand("cmd.system.menu.exec", &menu);  // at the mouse; comes back when it is closed
    display->RunCommand("cmd.system.menu.delete", &menu);
  }
  // [/menu]
  EXPECT_EQ(saved, 1);
  EXPECT_NE(PointerFrom(menu["qmenuWidget"]), nullptr);
  EXPECT_TRUE(widget.findChildren<QMenu*>().isEmpty());
}

TEST_F(Menu, another_thread_waits_for_the_gui_thread) {
  Show(image.record);
  std::atomic<bool> ended{false};
  const double before = Number("display.view.scale");
  ChooseLater(QStringLiteral("Zoom In\t[plus]"));
  std::thread host([&] {
    QTD::ARGUMENTS menu;
    display->RunCommand("cmd.system.menu.create", &menu);
    display->RunCommand("cmd.system.menu.exec", &menu);
    display->RunCommand("cmd.system.menu.delete", &menu);
    ended = true;
  });
  EXPECT_TRUE(WaitFor([&] { return ended.load(); }));
  host.join();
  EXPECT_LT(Number("display.view.scale"), before);
}

TEST_F(Menu, there_is_none_without_a_window) {
  QTD::ARGUMENTS menu;
  EXPECT_EQ(display->RunCommand("cmd.system.menu.create", &menu), 1u);
  EXPECT_TRUE(menu.empty());
  EXPECT_EQ(display->RunCommand("cmd.system.menu.exec", &menu), 1u);
  EXPECT_EQ(display->RunCommand("cmd.system.menu.delete", &menu), 1u);
  EXPECT_EQ(display->RunCommand("cmd.system.menu.other", &menu), 0u);
}

}  // namespace guide
