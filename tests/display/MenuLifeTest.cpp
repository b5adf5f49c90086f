// Menus whose entries delete what the menu stands on: themselves, the display, the host's widget.
#include <QElapsedTimer>
#include <thread>

#include "ZynDisplay.h"
#include "tests/display/MenuFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {

class MenuLife : public OpenMenuTest {
 protected:
  // On the thread that shows the menu: until the test has put its entry in.
  void WaitUntilPrepared() {
    while (!prepared) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  // The menu, it or one of its submenus, that shows the entry.
  static QMenu* PlaceOf(QMenu& menu, QAction* entry) {
    if (menu.actions().contains(entry)) return &menu;
    for (QMenu* submenu : menu.findChildren<QMenu*>())
      if (submenu->actions().contains(entry)) return submenu;
    return nullptr;
  }

  std::atomic<bool> prepared{false};
};

TEST_F(MenuLife, an_entry_may_delete_its_own_menu) {
  const Watchdog watchdog("a menu that its own entry deletes");
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  bool inside = false;
  QAction* own = Add(*menu, [&] {
    EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
    // Qt comes back to it; but for the host it is gone.
    inside = !menu.isNull();
    EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
    EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
  });
  WhenShown(menu, [&] { Choose(*menu, own); });
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(inside);
  EXPECT_TRUE(WaitFor([&] { return menu.isNull(); }));
  EXPECT_TRUE(display->Viewer()->findChildren<QAction*>().isEmpty());
}

TEST_F(MenuLife, an_entry_may_delete_a_menu_that_the_host_shows_by_its_own_means) {
  const Watchdog watchdog("a menu that its own entry deletes");
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  bool inside = false, closed = false;
  QAction* own = Find(*menu, "100%\t[1]");  // in a submenu
  ASSERT_NE(own, nullptr);
  auto* submenu = PlaceOf(*menu, own);
  ASSERT_NE(submenu, nullptr);
  ASSERT_NE(submenu, menu);
  QObject::connect(own, &QAction::triggered, [&] {
    Run("cmd.system.menu.delete", &arguments);
    inside = !menu.isNull();
    closed = inside && !menu->isVisible();
  });
  menu->popup(QPoint(0, 0));
  submenu->popup(QPoint(0, 0));
  Choose(*submenu, own);
  EXPECT_TRUE(inside);
  EXPECT_TRUE(closed);
  EXPECT_TRUE(WaitFor([&] { return menu.isNull(); }));
}

TEST_F(MenuLife, a_shown_menu_that_is_deleted_from_outside_closes_and_its_call_returns) {
  const Watchdog watchdog("a shown menu that is deleted");
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  WhenShown(menu, [&] {
    EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
    EXPECT_TRUE(menu.isNull() || !menu->isVisible());
  });
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(WaitFor([&] { return menu.isNull(); }));
}

TEST_F(MenuLife, an_entry_of_a_menu_that_another_thread_shows_may_delete_the_display) {
  const Watchdog watchdog("a display that an entry of its menu deletes");
  Show();
  const QPointer<QTDDisplay> shown = display.get();
  std::atomic<bool> done{false};
  std::thread host([&, controller = display.get()] {
    QTD::ARGUMENTS args;
    EXPECT_EQ(controller->RunCommand("cmd.system.menu.create", &args), 1u);
    WaitUntilPrepared();
    EXPECT_EQ(controller->RunCommand("cmd.system.menu.exec", &args), 1u);
    done = true;
  });
  ASSERT_TRUE(WaitFor([&] { return FindMenu() != nullptr; }));
  const QPointer<QMenu> menu = FindMenu();
  bool inside = false;
  QAction* own = Add(*menu, [&] {
    ZynDisplayCPU::DeleteComponent(display.release());
    Settle();
    inside = !menu.isNull() && !shown.isNull();
  });
  WhenShown(menu, [&] { Choose(*menu, own); });
  prepared = true;
  EXPECT_TRUE(WaitFor([&] { return done && shown.isNull() && menu.isNull(); }));
  host.join();
  EXPECT_TRUE(inside);
}

TEST_F(MenuLife, a_display_that_is_deleted_closes_its_open_menu) {
  const Watchdog watchdog("a display with an open menu that is deleted");
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  const QPointer<QTDDisplay> shown = display.get();
  WhenShown(menu, [&] { ZynDisplayCPU::DeleteComponent(display.release()); });
  // Nobody closes it.
  EXPECT_EQ(shown->RunCommand("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(WaitFor([&] { return shown.isNull() && menu.isNull(); }));
}

TEST_F(MenuLife, an_entry_may_delete_the_widget_that_the_display_stands_in) {
  for (const char* label : {"Host", "Zoom In\t[plus]", "100%\t[1]"}) {
    SCOPED_TRACE(label);
    const Watchdog watchdog("a widget that an entry deletes");
    auto* const owner = new QWidget;
    owner->resize(200, 150);
    owner->show();
    display = std::make_unique<QTDDisplay>(owner, false);
    Show();
    QTD::ARGUMENTS args;
    const QPointer<QMenu> menu = Create(&args);
    ASSERT_FALSE(menu.isNull());
    menu->addAction(QStringLiteral("Host"));
    const QPointer<QAction> entry = Find(*menu, label);
    ASSERT_FALSE(entry.isNull());
    bool inside = false;
    QObject::connect(entry, &QAction::triggered, [&] {
      delete owner;
      inside = !menu.isNull() && !entry.isNull();
      EXPECT_EQ(display->Viewer(), nullptr);
    });
    WhenShown(menu, [&] {
      auto* place = PlaceOf(*menu, entry);
      ASSERT_NE(place, nullptr);
      if (place != menu) place->popup(QPoint(0, 0));
      Choose(*place, entry);
    });
    EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
    EXPECT_TRUE(inside);
    EXPECT_TRUE(WaitFor([&] { return menu.isNull() && entry.isNull(); }));
    display.reset();
  }
}

// The receiver waits for the menu, and the entry for the receiver.
TEST_F(MenuLife, an_entry_may_remove_the_receiver_that_shows_the_menu) {
  const Watchdog watchdog("a receiver that shows a menu and is removed by its entry");
  Show();
  std::atomic<bool> left{false};
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.mouse") return;
    QTD::ARGUMENTS args;
    EXPECT_EQ(Run("cmd.system.menu.create", &args), 1u);
    WaitUntilPrepared();
    EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
    EXPECT_EQ(Run("cmd.system.menu.delete", &args), 1u);
    left = true;
  });
  display->GetMessenger()->Post("notification.mouse", nullptr);
  ASSERT_TRUE(WaitFor([&] { return FindMenu() != nullptr; }));
  const QPointer<QMenu> menu = FindMenu();
  bool removed = false, waited = false;
  QAction* own = Add(*menu, [&] {
    display->DelNotification(&receiver);
    waited = left;
    removed = true;
  });
  WhenShown(menu, [&] { Choose(*menu, own); });
  prepared = true;
  EXPECT_TRUE(WaitFor([&] { return removed && left; }));
  EXPECT_TRUE(waited);
  EXPECT_TRUE(WaitFor([&] { return menu.isNull(); }));
}

TEST_F(MenuLife, another_thread_that_shows_it_goes_on_when_its_entry_has_run) {
  const Watchdog watchdog("a menu that another thread shows");
  Show();
  std::atomic<bool> ran{false}, done{false}, early{false};
  std::thread host([&] {
    QTD::ARGUMENTS args;
    Run("cmd.system.menu.create", &args);
    WaitUntilPrepared();
    Run("cmd.system.menu.exec", &args);
    early = !ran;
    Run("cmd.system.menu.delete", &args);
    done = true;
  });
  ASSERT_TRUE(WaitFor([&] { return FindMenu() != nullptr; }));
  const QPointer<QMenu> menu = FindMenu();
  QAction* own = Add(*menu, [&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // handles no events
    ran = true;
  });
  WhenShown(menu, [&] { Choose(*menu, own); });
  prepared = true;
  EXPECT_TRUE(WaitFor([&] { return done.load(); }));
  host.join();
  EXPECT_FALSE(early);
  EXPECT_TRUE(menu.isNull());
}

}  // namespace display_test
