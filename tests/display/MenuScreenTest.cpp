// The context menu under a real pointer: every entry clicked, judged by the picture on the screen and by what
// the host hears.
#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QTimer>
#include <thread>

#include "tests/display/RecordingHost.h"
#include "tests/display/ScreenFixture.h"

namespace display_test {

class MenuScreen : public ScreenTest {
 protected:
  ~MenuScreen() override {
    if (display) display->DelNotification(&host);
  }
  // 125 per cent, a bit off the picture's middle, and the pointer over it.
  void Reset() {
    PointAt(InWindow(120, 80));
    ASSERT_TRUE(display->SetFit(0, false));
    ASSERT_TRUE(display->SetScale(0.8, false));
    ASSERT_TRUE(display->SetCenter(0.45, 0.55, true));
    ASSERT_TRUE(Shows(0.8, 0.45, 0.55));
    ASSERT_TRUE(host.HeardAll(*display));
    host.Clear();
  }
  void ShowToHost() {
    ShowOnScreen(colors);
    display->AddNotification(&host);
    Reset();
  }

  static QAction* Find(const QMenu& menu, const char* label) {
    for (QAction* action : menu.actions()) {
      if (action->text() == QLatin1String(label)) return action;
    }
    return nullptr;
  }
  static void Click(const QMenu& menu, QAction* action) {
    ASSERT_NE(action, nullptr);
    PointAt(menu.mapToGlobal(menu.actionGeometry(action).center()));
    Settle(50);
    Do(QStringLiteral("click 1"));
    Settle(50);
  }
  // Clicks along the path: the title of a submenu, if there is one, and the entry.
  static void ClickThrough(const QPointer<QMenu>& menu, const char* title, const char* label) {
    const QMenu* place = menu;
    if (*title) {
      QAction* opener = Find(*menu, title);
      ASSERT_NE(opener, nullptr) << title;
      Click(*menu, opener);
      place = opener->menu();
      ASSERT_TRUE(WaitFor([&] { return place->isVisible(); })) << title;
    }
    QAction* entry = Find(*place, label);
    ASSERT_NE(entry, nullptr) << label;
    Click(*place, entry);
  }
  static void WhenShown(const QPointer<QMenu>& menu, std::function<void()> action) {
    QTimer::singleShot(10, [menu, action] {
      if (menu && !menu->isVisible()) return WhenShown(menu, action);
      action();
    });
  }
  // Opens the menu and clicks; answers whether the click closed it.
  bool OpenAndClick(const char* title, const char* label) {
    QTD::ARGUMENTS args;
    EXPECT_EQ(Run("cmd.system.menu.create", &args), 1u);
    const QPointer<QMenu> menu = QTD::ParsePointerAs<QMenu>(args["qmenu"]);
    EXPECT_FALSE(menu.isNull());
    if (menu.isNull()) return false;
    bool closed = false;
    WhenShown(menu, [&] {
      Settle(50);
      ClickThrough(menu, title, label);
      closed = !menu->isVisible();
      menu->close();
    });
    EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
    EXPECT_EQ(Run("cmd.system.menu.delete", &args), 1u);
    return closed;
  }

  struct Expected {
    double scale, x, y;  // the centre before it is held
    bool told;
  };
  void CheckClick(const char* title, const char* label, const Expected& expected) {
    SCOPED_TRACE(label);
    Reset();
    EXPECT_TRUE(OpenAndClick(title, label));
    const double x = HeldFraction(expected.x, kWidth / expected.scale, Window()->width());
    const double y = HeldFraction(expected.y, kHeight / expected.scale, Window()->height());
    EXPECT_NEAR(Screen()->Scale(), expected.scale, 1e-6);
    EXPECT_NEAR(Screen()->Center().first, x, 1e-6);
    EXPECT_NEAR(Screen()->Center().second, y, 1e-6);
    EXPECT_TRUE(Shows(expected.scale, x, y));
    ASSERT_TRUE(host.HeardAll(*display));
    EXPECT_EQ(!host.Of("notification.view", "view.changed").empty(), expected.told);
  }

  RecordingHost host;
};

TEST_F(MenuScreen, the_steps_are_clicked_on_the_screen) {
  ShowToHost();
  CheckClick("", "Zoom In\t[plus]", {1 / 1.5, 0.45, 0.55, true});
  CheckClick("", "Zoom Out\t[minus]", {1.0, 0.45, 0.55, true});
}

TEST_F(MenuScreen, the_fits_are_clicked_on_the_screen) {
  ShowToHost();
  const double across = 1.0 * kWidth / Window()->width(), down = 1.0 * kHeight / Window()->height();
  CheckClick("Set fit mode...", "Fit to Window\t[0]", {std::max(across, down), 0.5, 0.5, true});
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 1);
  CheckClick("Set fit mode...", "Fill Window\t[2]", {std::min(across, down), 0.45, 0.55, false});
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 2);
}

TEST_F(MenuScreen, the_per_cents_are_clicked_on_the_screen) {
  ShowToHost();
  CheckClick("Set zoom...", "25%", {4.0, 0.45, 0.55, false});
  CheckClick("Set zoom...", "50%", {2.0, 0.45, 0.55, false});
  CheckClick("Set zoom...", "100%\t[1]", {1.0, 0.45, 0.55, false});
  CheckClick("Set zoom...", "200%", {0.5, 0.45, 0.55, false});
}

TEST_F(MenuScreen, the_centres_are_clicked_on_the_screen) {
  ShowToHost();
  CheckClick("Center at...", "Image Center\t[C]", {0.8, 0.5, 0.5, true});
  PointAt(InWindow(150, 130));
  Do(QStringLiteral("click 3"));
  ASSERT_TRUE(WaitFor([&] { return Window()->Parameters().GetInt("mouse.win.x") == 150; }));
  CheckClick("Center at...", "Here\t[double click]",
             {0.8, 0.45 + (150 - Window()->width() / 2.0) * 0.8 / kWidth,
              0.55 + (130 - Window()->height() / 2.0) * 0.8 / kHeight, true});
}

TEST_F(MenuScreen, a_click_on_a_disabled_entry_does_nothing_on_the_screen) {
  ShowToHost();
  Screen()->setScale(0);  // held at the least
  const double least = Screen()->Scale();
  ASSERT_FALSE(display->CanZoom(true, -1.0));
  const QTD::PairD center = Screen()->Center();
  ASSERT_TRUE(host.HeardAll(*display));
  host.Clear();
  EXPECT_FALSE(OpenAndClick("", "Zoom In\t[plus]"));
  EXPECT_DOUBLE_EQ(Screen()->Scale(), least);
  EXPECT_EQ(Screen()->Center(), center);
  ASSERT_TRUE(host.HeardAll(*display));
  EXPECT_TRUE(host.Of("notification.view").empty());
}

TEST_F(MenuScreen, a_click_beside_it_closes_it_and_does_nothing_on_the_screen) {
  ShowToHost();
  QTD::ARGUMENTS args;
  ASSERT_EQ(Run("cmd.system.menu.create", &args), 1u);
  const QPointer<QMenu> menu = QTD::ParsePointerAs<QMenu>(args["qmenu"]);
  bool closed = false;
  WhenShown(menu, [&] {
    PointAt(QPoint(1200, 900));
    Settle(50);
    Do(QStringLiteral("click 1"));
    closed = WaitFor([&] { return !menu->isVisible(); }, 2000);
    menu->close();
  });
  EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
  EXPECT_TRUE(closed);
  Run("cmd.system.menu.delete", &args);
  EXPECT_TRUE(Shows(0.8, 0.45, 0.55));
}

// As a host does it: the notification of the right click arrives on the messenger's thread.
TEST_F(MenuScreen, a_right_click_brings_it_up_where_it_was_on_the_screen) {
  ShowToHost();
  std::atomic<bool> done{false};
  std::atomic<const void*> address{nullptr};
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.mouse" || done) return;
    QTD::ARGUMENTS args;
    Run("cmd.system.menu.create", &args);
    address = QTD::ParsePointer(args["qmenu"]);
    Run("cmd.system.menu.exec", &args);
    Run("cmd.system.menu.delete", &args);
    done = true;
  });
  const QPoint place = InWindow(150, 130);
  PointAt(place);
  QPoint seen;
  QTimer clicker;
  bool clicked = false;
  QObject::connect(&clicker, &QTimer::timeout, [&] {
    auto* menu = static_cast<QMenu*>(const_cast<void*>(address.load()));
    if (clicked || !menu || !menu->isVisible()) return;
    clicked = true;
    seen = menu->pos();
    Settle(50);
    ClickThrough(menu, "Center at...", "Here\t[double click]");
  });
  clicker.start(10);
  Do(QStringLiteral("click 3"));
  EXPECT_TRUE(WaitFor([&] { return done.load(); }));
  receiver.OnMessage(nullptr);
  EXPECT_EQ(seen, place);
  EXPECT_TRUE(Shows(0.8, 0.45 + (150 - Window()->width() / 2.0) * 0.8 / kWidth,
                    0.55 + (130 - Window()->height() / 2.0) * 0.8 / kHeight));
  EXPECT_TRUE(display->Viewer()->findChildren<QMenu*>().isEmpty());
}

}  // namespace display_test
