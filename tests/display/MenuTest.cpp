// The context menu: what it holds, what its entries do, and how it is shown and deleted.
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/display/MenuFixture.h"

namespace display_test {

class Menu : public OpenMenuTest {
 protected:
  static QList<QAction*> Entries(QMenu& menu) {
    QList<QAction*> all;
    for (QAction* action : menu.actions()) {
      all.append(action);
      if (action->menu()) all.append(action->menu()->actions());
    }
    return all;
  }
  void Trigger(const char* label) {
    QTD::ARGUMENTS args;
    QMenu* menu = Create(&args);
    ASSERT_NE(menu, nullptr);
    QAction* action = Find(*menu, label);
    ASSERT_NE(action, nullptr) << label;
    EXPECT_TRUE(action->isEnabled()) << label;
    action->trigger();
    EXPECT_EQ(Run("cmd.system.menu.delete", &args), 1u);
  }
  // Counts repaints that are asked for.
  int Updates(const std::function<void()>& action) {
    struct Counter : QObject {
      int count = 0;
      bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest) ++count;
        return false;
      }
    } counter;
    Settle();
    Window()->installEventFilter(&counter);
    action();
    Settle();
    return counter.count;
  }
};

TEST_F(Menu, without_a_screen_nothing_is_written_and_nothing_can_be_shown) {
  EXPECT_EQ(Run("cmd.system.menu.create", &arguments), 1u);
  EXPECT_TRUE(arguments.empty());
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
  EXPECT_TRUE(arguments.empty());
}

TEST_F(Menu, the_names_are_compared_exactly) {
  Show();
  for (const char* name : {"cmd.system.menu", "cmd.system.menu.", "cmd.system.menu.CREATE", "cmd.system.m",
                           "cmd.system.menu.creates", "cmd.system.menu.create.x"}) {
    EXPECT_EQ(Run(name, &arguments), 0u) << name;
  }
  EXPECT_EQ(display->RunCommandSystemMenu(nullptr, &arguments), 0u);
  EXPECT_TRUE(arguments.empty());
}

TEST_F(Menu, without_arguments_nothing_is_made) {
  Show();
  for (const char* name : {"create", "exec", "delete"}) {
    EXPECT_EQ(Run((std::string("cmd.system.menu.") + name).c_str()), 1u) << name;
  }
  EXPECT_TRUE(display->Viewer()->findChildren<QMenu*>().isEmpty());
}

TEST_F(Menu, it_has_its_entries_from_top_to_bottom) {
  Show();
  QMenu* menu = Create();
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->parentWidget(), display->Viewer());
  EXPECT_EQ(QTD::ParsePointerAs<QWidget>(arguments["qmenuWidget"]), display->Viewer());
  struct Expected {
    const char* label;
    bool submenu;
    bool checkable;
  };
  const Expected expected[] = {
      {"Zoom In\t[plus]", false, false},
      {"Zoom Out\t[minus]", false, false},
      {"Set fit mode...", true, false},
      {"Fit to Window\t[0]", false, true},
      {"Fill Window\t[2]", false, true},
      {"Set zoom...", true, false},
      {"25%", false, false},
      {"50%", false, false},
      {"100%\t[1]", false, false},
      {"200%", false, false},
      {"Center at...", true, false},
      {"Image Center\t[C]", false, false},
      {"Here\t[double click]", false, false},
  };
  const QList<QAction*> entries = Entries(*menu);
  ASSERT_EQ(entries.size(), 13);
  for (int index = 0; index < 13; ++index) {
    const QAction* entry = entries[index];
    EXPECT_EQ(entry->text(), QLatin1String(expected[index].label));
    EXPECT_EQ(entry->menu() != nullptr, expected[index].submenu) << expected[index].label;
    EXPECT_EQ(entry->isCheckable(), expected[index].checkable) << expected[index].label;
    if (!expected[index].submenu) {
      EXPECT_EQ(entry->parent(), display->Viewer()) << expected[index].label;
    }
  }
  EXPECT_EQ(menu->actions().size(), 5);
  Run("cmd.system.menu.delete", &arguments);
}

TEST_F(Menu, the_fit_mode_in_force_is_checked) {
  Show();
  for (int mode : {0, 1, 2, 3}) {
    ASSERT_TRUE(display->SetFit(mode, false));
    QTD::ARGUMENTS args;
    QMenu* menu = Create(&args);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(Find(*menu, "Fit to Window\t[0]")->isChecked(), mode == 1) << mode;
    EXPECT_EQ(Find(*menu, "Fill Window\t[2]")->isChecked(), mode == 2) << mode;
    Run("cmd.system.menu.delete", &args);
  }
}

TEST_F(Menu, zooming_is_disabled_at_the_limits_of_the_scale) {
  Show();
  struct Limit {
    const char* property;
    bool canZoomIn, canZoomOut;
  };
  ASSERT_TRUE(display->SetScale(2.0, false));
  for (const Limit& limit :
       {Limit{"scale", true, true}, Limit{"scale.min", false, true}, Limit{"scale.max", true, false}}) {
    Screen()->setScale(Screen()->properties.GetDouble(limit.property));
    QTD::ARGUMENTS args;
    QMenu* menu = Create(&args);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(Find(*menu, "Zoom In\t[plus]")->isEnabled(), limit.canZoomIn) << limit.property;
    EXPECT_EQ(Find(*menu, "Zoom Out\t[minus]")->isEnabled(), limit.canZoomOut) << limit.property;
    Run("cmd.system.menu.delete", &args);
  }
}

TEST_F(Menu, the_fit_entries_fit) {
  Show();
  ASSERT_TRUE(display->SetFit(3, false));
  EXPECT_GE(Updates([this] { Trigger("Fit to Window\t[0]"); }), 1);
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 1);
  EXPECT_GE(Updates([this] { Trigger("Fill Window\t[2]"); }), 1);
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 2);
  EXPECT_EQ(Parameter("display.view.fit"), "3");  // the command's bookkeeping is the command's
}

TEST_F(Menu, the_zoom_entries_set_the_scale_and_nothing_else) {
  Show();
  ASSERT_TRUE(display->SetFit(2, false));
  const std::pair<const char*, double> rows[] = {
      {"25%", 4.0}, {"50%", 2.0}, {"100%\t[1]", 1.0}, {"200%", 0.5}};
  for (const auto& [label, scale] : rows) {
    EXPECT_GE(Updates([this, entry = label] { Trigger(entry); }), 1) << label;
    EXPECT_DOUBLE_EQ(Screen()->Scale(), scale) << label;
    EXPECT_EQ(Screen()->properties.GetInt("fit"), 2) << label;
    EXPECT_EQ(Parameter("display.view.fit"), "3") << label;
  }
}

TEST_F(Menu, the_steps_take_the_default_coefficient) {
  Show();
  Screen()->properties.Set("zoom.align", "0");
  display->SetParameterString("display.view.zoom.coef", "1.25");
  ASSERT_TRUE(display->SetScale(2.0, false));
  Trigger("Zoom In\t[plus]");
  EXPECT_NEAR(Screen()->Scale(), 2.0 / 1.25, 1e-9);
  ASSERT_TRUE(display->SetScale(2.0, false));
  Trigger("Zoom Out\t[minus]");
  EXPECT_NEAR(Screen()->Scale(), 2.0 * 1.25, 1e-9);
}

TEST_F(Menu, the_centre_entries_centre) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  ASSERT_TRUE(display->SetCenter(0.3, 0.7, false));
  EXPECT_GE(Updates([this] { Trigger("Image Center\t[C]"); }), 1);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.5, 0.5));

  // 20 window pixels right of the middle of a picture that is 2000 wide, 40 above that of one 1600 high.
  Window()->Parameters().Set("mouse.win.x", QTD::ToText(Window()->width() / 2.0 + 20));
  Window()->Parameters().Set("mouse.win.y", QTD::ToText(Window()->height() / 2.0 - 40));
  EXPECT_GE(Updates([this] { Trigger("Here\t[double click]"); }), 1);
  EXPECT_NEAR(Screen()->Center().first, 0.51, 1e-9);
  EXPECT_NEAR(Screen()->Center().second, 0.475, 1e-9);
}

TEST_F(Menu, centring_here_needs_a_picture_without_an_error) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  ASSERT_TRUE(display->SetCenter(0.5, 0.5, false));
  Window()->Parameters().Set("mouse.win.x", "3");
  Window()->Parameters().Set("mouse.win.y", "3");
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);  // refused
  ASSERT_NE(display->LastError(), 0u);
  display->slotMenuCenterHere();
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.5, 0.5));
  display->DisplayVideo(nullptr);
  display->slotMenuCenterHere();
  EXPECT_NE(Screen()->Center(), QTD::PairD(0.5, 0.5));
}

TEST_F(Menu, the_slots_bear_a_display_without_a_screen) {
  display->slotMenuFitWindow();
  display->slotMenuFillWindow();
  display->slotMenuZoom25();
  display->slotMenuZoom50();
  display->slotMenuZoom100();
  display->slotMenuZoom200();
  display->slotMenuZoomIn();
  display->slotMenuZoomOut();
  display->slotMenuCenterImage();
  display->slotMenuCenterHere();
  EXPECT_EQ(Parameter("display.view.fit"), "3");
}

TEST_F(Menu, a_parameter_that_is_no_number_leaves_a_command_but_no_entry) {
  Show();
  QMenu* menu = Create();
  ASSERT_NE(menu, nullptr);
  display->SetParameterString("display.view.zoom.coef", "much");
  EXPECT_NO_THROW(Find(*menu, "Zoom In\t[plus]")->trigger());
  QTD::ARGUMENTS args;
  EXPECT_THROW(Run("cmd.system.menu.create", &args), std::invalid_argument);
  EXPECT_TRUE(args.empty());
  std::atomic<bool> thrown{false}, done{false};
  std::thread host([&] {
    try {
      Run("cmd.system.menu.create", &args);
    } catch (const std::invalid_argument&) {
      thrown = true;
    }
    done = true;
  });
  EXPECT_TRUE(WaitFor([&] { return done.load(); }));
  host.join();
  EXPECT_TRUE(thrown);
  Run("cmd.system.menu.delete", &arguments);
}

TEST_F(Menu, it_goes_with_its_entries_and_the_text_stays) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  const QTD::ARGUMENTS before = arguments;
  std::vector<QPointer<QAction>> entries;
  for (QAction* entry : Entries(*menu)) entries.emplace_back(entry);
  EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
  EXPECT_TRUE(menu.isNull());
  for (const QPointer<QAction>& entry : entries) EXPECT_TRUE(entry.isNull());
  EXPECT_TRUE(display->Viewer()->findChildren<QAction*>().isEmpty());
  EXPECT_EQ(arguments, before);
  // Its address is not believed any more.
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
}

TEST_F(Menu, it_goes_with_the_viewer) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  display.reset();
  EXPECT_TRUE(menu.isNull());
}

TEST_F(Menu, showing_it_blocks_until_it_closes) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  bool shown = false;
  WhenShown(menu, [&] {
    shown = menu->isVisible() && !menu->activeAction();
    menu->close();
  });
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(shown);
  ASSERT_FALSE(menu.isNull());
  EXPECT_FALSE(menu->isVisible());
  EXPECT_EQ(Run("cmd.system.menu.delete", &arguments), 1u);
}

TEST_F(Menu, a_host_adds_entries_of_its_own_and_hears_them) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  bool heard = false;
  QAction* own = menu->addAction(QStringLiteral("Save"));
  QObject::connect(own, &QAction::triggered, [&] { heard = true; });
  WhenShown(menu, [&] {
    menu->setActiveAction(own);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(menu, &enter);
  });
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(heard);
  Run("cmd.system.menu.delete", &arguments);
}

TEST_F(Menu, while_it_is_open_others_may_use_the_display) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  std::atomic<bool> done{false};
  std::thread host([&] {
    while (!menu->isVisible()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "2"}}), 1u);
    display->SetParameterInt("display.view.bgcolor", 5);
    done = true;
  });
  bool inTime = false;
  WhenShown(menu, [&] {
    inTime = WaitFor([&] { return done.load(); });
    // Shown once more it would leave the first call waiting for ever.
    EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
    menu->close();
  });
  EXPECT_EQ(Run("cmd.system.menu.exec", &arguments), 1u);
  host.join();
  EXPECT_TRUE(inTime);
}

TEST_F(Menu, any_thread_makes_shows_and_deletes_it) {
  Show();
  std::atomic<bool> done{false};
  std::atomic<bool> made{false};
  QPointer<QMenu> menu;
  std::thread host([&] {
    QTD::ARGUMENTS args;
    EXPECT_EQ(Run("cmd.system.menu.create", &args), 1u);
    EXPECT_EQ(args.count("qmenu"), 1u);
    made = true;
    EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
    EXPECT_EQ(Run("cmd.system.menu.delete", &args), 1u);
    done = true;
  });
  // The event loop of the open menu runs inside the one here.
  QTimer closer;
  QObject::connect(&closer, &QTimer::timeout, [&] {
    if (menu.isNull()) menu = display->Viewer()->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    if (menu && menu->isVisible()) menu->close();
  });
  closer.start(5);
  EXPECT_TRUE(WaitFor([&] { return done.load(); }));
  host.join();
  EXPECT_TRUE(made);
  EXPECT_TRUE(menu.isNull());
  EXPECT_TRUE(display->Viewer()->findChildren<QMenu*>().isEmpty());
}

TEST_F(Menu, a_gui_thread_that_waits_for_the_caller_is_not_waited_for) {
  Show();
  QTD::ARGUMENTS args;
  std::thread host([&] { EXPECT_EQ(Run("cmd.system.menu.create", &args), 1u); });
  host.join();
  EXPECT_TRUE(args.empty());
  Settle();
  EXPECT_TRUE(display->Viewer()->findChildren<QMenu*>().isEmpty());  // the job was dropped
}

TEST_F(Menu, the_display_may_be_deleted_while_the_menu_is_open) {
  Show();
  const QPointer<QMenu> menu = Create();
  ASSERT_FALSE(menu.isNull());
  QTDDisplay* shown = display.get();
  WhenShown(menu, [&] { display.reset(); });
  EXPECT_EQ(shown->RunCommand("cmd.system.menu.exec", &arguments), 1u);
  EXPECT_TRUE(menu.isNull());
}

TEST_F(Menu, a_widget_that_is_no_menu_is_left_alone) {
  Show();
  QTD::ARGUMENTS args{{"qmenu", QTD::ToText(static_cast<const void*>(display->Viewer()))}};
  EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
  EXPECT_EQ(Run("cmd.system.menu.delete", &args), 1u);
  EXPECT_NE(display->Viewer(), nullptr);
}

}  // namespace display_test
