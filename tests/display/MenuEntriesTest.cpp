// Each entry of the context menu by its slot; where the menu opens, in which language, and on fine screens.
#include <QAction>
#include <QCursor>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTimer>
#include <QTranslator>
#include <utility>

#include "tests/display/RecordingHost.h"
#include "tests/display/RepaintCounter.h"

namespace display_test {

namespace {

// Marks whatever is translated.
class Marker : public QTranslator {
 public:
  QString translate(const char* context, const char* text, const char*, int) const override {
    if (QLatin1String(context) != QLatin1String("QObject")) return QString();
    return QStringLiteral("* ") + QLatin1String(text);
  }
  bool isEmpty() const override { return false; }
};

}  // namespace

class MenuEntries : public PictureTest {
 protected:
  ~MenuEntries() override {
    if (display) display->DelNotification(&host);
  }
  // 125 per cent, a bit off the picture's middle.
  void ShowToHost() {
    Show();
    display->AddNotification(&host);
    Reset();
  }
  void Reset() {
    ASSERT_TRUE(display->SetFit(0, false));
    ASSERT_TRUE(display->SetScale(0.8, false));
    ASSERT_TRUE(display->SetCenter(0.45, 0.55, false));
    ASSERT_TRUE(host.HeardAll(*display));
    host.Clear();
  }
  struct Expected {
    double scale, x, y;  // the centre before it is held
    int fit;
    bool told;  // whether the host hears of the view
  };
  void Check(const char* what, void (QTDDisplay::*slot)(), const Expected& expected) {
    SCOPED_TRACE(what);
    Reset();
    EXPECT_EQ(Repaints(*Window(), [&] { (display.get()->*slot)(); }), 1);
    const QSize window = Window()->size();
    EXPECT_NEAR(Screen()->Scale(), expected.scale, 1e-6);
    EXPECT_NEAR(Screen()->Center().first, HeldFraction(expected.x, kWidth / expected.scale, window.width()),
                1e-6);
    EXPECT_NEAR(Screen()->Center().second,
                HeldFraction(expected.y, kHeight / expected.scale, window.height()), 1e-6);
    EXPECT_EQ(Screen()->properties.GetInt("fit"), expected.fit);
    EXPECT_EQ(Parameter("display.view.fit"), "3");  // the bookkeeping is the command's
    ASSERT_TRUE(host.HeardAll(*display));
    EXPECT_EQ(!host.Of("notification.view", "view.changed").empty(), expected.told);
  }
  QMenu* Create(QTD::ARGUMENTS* args) {
    EXPECT_EQ(Run("cmd.system.menu.create", args), 1u);
    return QTD::ParsePointerAs<QMenu>((*args)["qmenu"]);
  }

  RecordingHost host;
};

TEST_F(MenuEntries, each_slot_does_what_its_entry_says) {
  ShowToHost();
  const double across = 1.0 * kWidth / Window()->width(), down = 1.0 * kHeight / Window()->height();
  Check("Zoom In", &QTDDisplay::slotMenuZoomIn, {1 / 1.5, 0.45, 0.55, 0, true});
  Check("Zoom Out", &QTDDisplay::slotMenuZoomOut, {1.0, 0.45, 0.55, 0, true});
  Check("Fit", &QTDDisplay::slotMenuFitWindow, {std::max(across, down), 0.5, 0.5, 1, true});
  Check("Fill", &QTDDisplay::slotMenuFillWindow, {std::min(across, down), 0.45, 0.55, 2, false});
  Check("25%", &QTDDisplay::slotMenuZoom25, {4.0, 0.45, 0.55, 0, false});
  Check("50%", &QTDDisplay::slotMenuZoom50, {2.0, 0.45, 0.55, 0, false});
  Check("100%", &QTDDisplay::slotMenuZoom100, {1.0, 0.45, 0.55, 0, false});
  Check("200%", &QTDDisplay::slotMenuZoom200, {0.5, 0.45, 0.55, 0, false});
  Check("Image Center", &QTDDisplay::slotMenuCenterImage, {0.8, 0.5, 0.5, 0, true});
}

TEST_F(MenuEntries, here_is_where_the_mouse_was_pressed_last) {
  ShowToHost();
  for (Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      const QPoint place = button == Qt::LeftButton ? QPoint(20, 30) : QPoint(70, 40);
      const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? button : Qt::NoButton;
      QMouseEvent event(type, place, display->Viewer()->mapToGlobal(place), button, held, Qt::NoModifier);
      QCoreApplication::sendEvent(Window(), &event);
    }
    const double x = button == Qt::LeftButton ? 20 : 70, y = button == Qt::LeftButton ? 30 : 40;
    Check("Here", &QTDDisplay::slotMenuCenterHere,
          {0.8, 0.45 + (x - Window()->width() / 2.0) * 0.8 / kWidth,
           0.55 + (y - Window()->height() / 2.0) * 0.8 / kHeight, 0, true});
  }
}

TEST_F(MenuEntries, here_without_a_press_is_the_windows_corner) {
  ShowToHost();
  Check("Here", &QTDDisplay::slotMenuCenterHere,
        {0.8, 0.45 - Window()->width() / 2.0 * 0.8 / kWidth, 0.55 - Window()->height() / 2.0 * 0.8 / kHeight,
         0, true});
}

TEST_F(MenuEntries, an_error_stops_here_and_no_other_entry) {
  ShowToHost();
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);
  ASSERT_NE(display->LastError(), 0u);
  Check("25%", &QTDDisplay::slotMenuZoom25, {4.0, 0.45, 0.55, 0, false});
  Check("Image Center", &QTDDisplay::slotMenuCenterImage, {0.8, 0.5, 0.5, 0, true});
  Reset();
  EXPECT_EQ(Repaints(*Window(), [&] { display->slotMenuCenterHere(); }), 0);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.45, 0.55));
}

TEST_F(MenuEntries, labels_are_translated_and_titles_are_not) {
  Show();
  Marker marker;
  ASSERT_TRUE(QCoreApplication::installTranslator(&marker));
  QTD::ARGUMENTS args;
  QMenu* menu = Create(&args);
  QCoreApplication::removeTranslator(&marker);
  ASSERT_NE(menu, nullptr);
  QStringList labels, titles;
  for (QAction* entry : menu->actions()) {
    (entry->menu() ? titles : labels) += entry->text();
    if (!entry->menu()) continue;
    for (QAction* inner : entry->menu()->actions()) labels += inner->text();
  }
  EXPECT_EQ(titles, (QStringList{QStringLiteral("Set fit mode..."), QStringLiteral("Set zoom..."),
                                 QStringLiteral("Center at...")}));
  EXPECT_EQ(labels,
            (QStringList{QStringLiteral("* Zoom In\t[plus]"), QStringLiteral("* Zoom Out\t[minus]"),
                         QStringLiteral("* Fit to Window\t[0]"), QStringLiteral("* Fill Window\t[2]"),
                         QStringLiteral("* 25%"), QStringLiteral("* 50%"), QStringLiteral("* 100%\t[1]"),
                         QStringLiteral("* 200%"), QStringLiteral("* Image Center\t[C]"),
                         QStringLiteral("* Here\t[double click]")}));
  Run("cmd.system.menu.delete", &args);
}

TEST_F(MenuEntries, it_opens_at_the_pointer) {
  Show();
  for (const QPoint& place : {QPoint(120, 90), QPoint(30, 200)}) {
    QCursor::setPos(place);
    ASSERT_TRUE(WaitFor([&] { return QCursor::pos() == place; }));
    QTD::ARGUMENTS args;
    const QPointer<QMenu> menu = Create(&args);
    ASSERT_FALSE(menu.isNull());
    QTimer closer;
    QPoint seen;
    const QAction* active = nullptr;
    QObject::connect(&closer, &QTimer::timeout, [&] {
      if (!menu || !menu->isVisible()) return;
      seen = menu->pos();
      active = menu->activeAction();
      menu->close();
    });
    closer.start(5);
    EXPECT_EQ(Run("cmd.system.menu.exec", &args), 1u);
    EXPECT_EQ(seen, place);
    EXPECT_EQ(active, nullptr);
    Run("cmd.system.menu.delete", &args);
  }
}

TEST_F(MenuEntries, its_order_is_not_changed_by_the_state) {
  Show();
  ASSERT_TRUE(display->SetFit(2, false));
  QTD::ARGUMENTS args;
  QMenu* menu = Create(&args);
  ASSERT_NE(menu, nullptr);
  QAction* fit = menu->actions()[2]->menu()->actions()[0];
  QAction* fill = menu->actions()[2]->menu()->actions()[1];
  EXPECT_FALSE(fit->isChecked());
  EXPECT_TRUE(fill->isChecked());
  fit->trigger();
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 1);
  Run("cmd.system.menu.delete", &args);
}

TEST_F(MenuEntries, a_pointer_that_cannot_be_read_is_none) {
  Show();
  for (const char* command : {"cmd.system.menu.exec", "cmd.system.menu.delete"}) {
    for (const char* nothing : {"", "0", "(nil)", "nowhere", "0x12345"}) {
      QTD::ARGUMENTS args{{"qmenu", nothing}, {"qmenuWidget", "kept"}};
      const QTD::ARGUMENTS before = args;
      EXPECT_EQ(Run(command, &args), 1u) << command << " " << nothing;
      EXPECT_EQ(args, before) << command << " " << nothing;
    }
  }
}

TEST_F(MenuEntries, a_new_menu_replaces_the_text_of_an_old_one_and_keeps_all_else) {
  Show();
  QTD::ARGUMENTS args{{"qmenu", "old"}, {"qmenuWidget", "old"}, {"host.own", "kept"}};
  QMenu* menu = Create(&args);
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(args, (QTD::ARGUMENTS{{"qmenu", QTD::ToText(static_cast<const void*>(menu))},
                                  {"qmenuWidget", QTD::ToText(static_cast<const void*>(display->Viewer()))},
                                  {"host.own", "kept"}}));
  Run("cmd.system.menu.delete", &args);
}

// The ratio is set when a program starts, so the test runs itself once more.
TEST_F(MenuEntries, per_cents_count_device_pixels) {
  constexpr const char* kFactor = "QT_SCALE_FACTOR";
  if (qEnvironmentVariable(kFactor) != QLatin1String("2")) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(kFactor), QStringLiteral("2"));
    for (const char* name : {"GTEST_OUTPUT", "GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX"}) {
      environment.remove(QLatin1String(name));
    }
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--gtest_filter=MenuEntries.per_cents_count_device_pixels")});
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    return;
  }
  Show();
  ASSERT_EQ(Window()->devicePixelRatio(), 2.0);
  const std::pair<void (QTDDisplay::*)(), int> rows[] = {{&QTDDisplay::slotMenuZoom25, 25},
                                                         {&QTDDisplay::slotMenuZoom50, 50},
                                                         {&QTDDisplay::slotMenuZoom100, 100},
                                                         {&QTDDisplay::slotMenuZoom200, 200}};
  for (const auto& [slot, percent] : rows) {
    (display.get()->*slot)();
    EXPECT_DOUBLE_EQ(Screen()->Scale(), 2.0 * 100 / percent) << percent;
    EXPECT_EQ(Screen()->zoomPercent(), percent);
  }
}

}  // namespace display_test
