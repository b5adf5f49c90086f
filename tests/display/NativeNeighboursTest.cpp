// Widgets of the host become native, as `winId()` makes them, with their siblings and all that they lie in:
// the picture stays to be seen, and stays inside what it lies in. Judged by the pixels on the screen.
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScreen>
#include <QScrollArea>
#include <QTabWidget>
#include <array>

#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {
namespace {

constexpr QRgb kPicture = qRgb(10, 200, 30);

// A display that a picture of one colour fills.
struct Shown {
  Shown(QWidget* widget, bool opengl) : parent(widget) {
    for (size_t at = 0; at + 2 < image.pixels.size(); at += 3) {
      image.pixels[at] = qRed(kPicture);
      image.pixels[at + 1] = qGreen(kPicture);
      image.pixels[at + 2] = qBlue(kPicture);
    }
    Controller()->SetParameterInt("display.init.view.fit", QTD::kFitFill);
    EXPECT_EQ(ZynDisplay_Initialize(display, parent, opengl ? "opengl" : nullptr, &image.record), 0u);
  }
  ~Shown() { ZynDisplay_DeleteComponent(display); }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

  QTDDisplay* Controller() const { return static_cast<ZynDisplayImpl*>(display)->Controller(); }
  QTDViewer& Viewer() const { return *Controller()->Viewer(); }
  // Where the picture should be on the screen.
  QRect Place() const { return {Viewer().mapToGlobal(QPoint(0, 0)), Viewer().Window()->size()}; }
  void Feed() {
    ++image.record.imageID;
    EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  }

  QWidget* parent;
  HostImage image{ZYN_PIXEL_RGB8, 1000, 800};
  ZynDisplay* display = ZynDisplay_CreateComponent();
};

QRgb PixelAt(const QPoint& global) {
  return QGuiApplication::primaryScreen()->grabWindow(0).toImage().pixel(global);
}

class NativeNeighbours : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) GTEST_SKIP() << "needs an X server";
    top.setGeometry(60, 40, 700, 300);
    auto* const row = new QHBoxLayout(&top);
    row->addWidget(&box, 1);
    row->addWidget(&sibling, 1);
    auto* const inner = new QHBoxLayout(&box);
    inner->addWidget(&parent);
  }
  void TearDown() override {
    displays.clear();
    Settle(20);
  }

  void Show() {
    top.show();
    top.raise();
    Settle(100);
  }
  Shown& Open(QWidget* widget) {
    displays.push_back(std::make_unique<Shown>(widget, GetParam()));
    return *displays.back();
  }
  // The whole of a picture, but for what a widget around it cuts off.
  bool SeesAll(const Shown& shown, const QRect& part) {
    const QRect seen = shown.Place() & part;
    if (seen.width() < 40 || seen.height() < 40) return false;
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    for (const QPoint& at : {seen.topLeft() + QPoint(2, 2), seen.topRight() + QPoint(-2, 2), seen.center(),
                             seen.bottomLeft() + QPoint(2, -2), seen.bottomRight() + QPoint(-2, -2)}) {
      if (screen.pixel(at) != kPicture) return false;
    }
    return true;
  }
  bool Sees(const Shown& shown, const QRect& part = QRect(0, 0, 5000, 5000)) {
    return WaitFor(
        [&] {
          for (const auto& each : displays) each->Feed();
          Settle(50);
          return SeesAll(shown, part);
        },
        3000);
  }
  static QRect OnScreen(const QWidget& widget) { return {widget.mapToGlobal(QPoint(0, 0)), widget.size()}; }

  // A display that lies in the box beside the sibling, while one of them becomes native.
  void ExpectSeenWith(QWidget& native, bool shownBefore) {
    if (shownBefore) Show();
    Shown& shown = Open(&parent);
    if (!shownBefore) Show();
    ASSERT_TRUE(Sees(shown)) << "at first";
    EXPECT_NE(native.winId(), 0u);
    EXPECT_TRUE(Sees(shown)) << "beside a native widget";
    top.resize(740, 330);
    EXPECT_TRUE(Sees(shown)) << "in another size";
    EXPECT_NE(PixelAt(OnScreen(sibling).center()), kPicture);
  }

  QWidget top, box, sibling, parent;
  std::vector<std::unique_ptr<Shown>> displays;
};

TEST_P(NativeNeighbours, a_sibling_does_not_cover_the_picture) {
  ExpectSeenWith(sibling, true);
}

TEST_P(NativeNeighbours, a_sibling_does_not_cover_a_picture_from_before_the_window_was_shown) {
  ExpectSeenWith(sibling, false);
}

TEST_P(NativeNeighbours, the_displays_parent_does_not_cover_the_picture) {
  ExpectSeenWith(parent, true);
}

TEST_P(NativeNeighbours, the_displays_parent_does_not_cover_a_picture_from_before_the_window_was_shown) {
  ExpectSeenWith(parent, false);
}

TEST_P(NativeNeighbours, what_the_parent_lies_in_does_not_cover_the_picture) {
  ExpectSeenWith(box, true);
}

TEST_P(NativeNeighbours, what_the_parent_lies_in_does_not_cover_a_picture_from_before_the_window_was_shown) {
  ExpectSeenWith(box, false);
}

TEST_P(NativeNeighbours, no_widget_becomes_native_for_a_display) {
  Show();
  Shown& shown = Open(&parent);
  ASSERT_TRUE(Sees(shown));
  for (const QWidget* widget : {&parent, &box, &sibling}) EXPECT_EQ(widget->internalWinId(), 0u);
  EXPECT_EQ(shown.Viewer().internalWinId(), 0u);
}

// Scroll areas make all of the window native.
TEST_P(NativeNeighbours, a_display_in_a_scroll_area_does_not_cover_another_one) {
  for (const bool shownBefore : {true, false}) {
    top.hide();
    QScrollArea area;
    top.layout()->addWidget(&area);
    auto* const wide = new QWidget;
    wide->setFixedSize(600, 500);
    area.setWidget(wide);
    if (shownBefore) Show();
    Shown& plain = Open(&parent);
    Shown& inArea = Open(wide);
    if (!shownBefore) Show();
    EXPECT_TRUE(Sees(plain)) << shownBefore;
    const QRect part = OnScreen(*area.viewport());
    EXPECT_TRUE(Sees(inArea, part)) << shownBefore;
    EXPECT_NE(PixelAt(part.bottomRight() + QPoint(4, 4)), kPicture) << "sticks out of the area";
    displays.clear();
  }
}

TEST_P(NativeNeighbours, a_display_in_a_window_within_the_window_does_not_cover_another_one) {
  QMdiArea area;
  top.layout()->addWidget(&area);
  auto* const second = new QWidget;
  QMdiSubWindow* const window = area.addSubWindow(second);
  window->setGeometry(5, 5, 180, 160);
  Show();
  Shown& plain = Open(&parent);
  Shown& inArea = Open(second);
  EXPECT_TRUE(Sees(plain));
  EXPECT_TRUE(Sees(inArea));
  window->move(20, 40);
  EXPECT_TRUE(Sees(inArea));
}

TEST_P(NativeNeighbours, a_display_that_moves_into_a_scroll_area_stays_inside_it) {
  QScrollArea area;
  top.layout()->addWidget(&area);
  Show();
  Shown& shown = Open(&parent);
  ASSERT_TRUE(Sees(shown));
  parent.setFixedSize(600, 500);
  area.setWidget(&parent);
  Settle(100);  // until its bars stand
  const QRect part = OnScreen(*area.viewport());
  EXPECT_TRUE(Sees(shown, part));
  EXPECT_NE(PixelAt(part.bottomRight() + QPoint(4, 4)), kPicture) << "sticks out of the area";
  area.takeWidget();
  box.layout()->addWidget(&parent);
  parent.setMinimumSize(0, 0);
  parent.show();
  EXPECT_TRUE(Sees(shown));
}

TEST_P(NativeNeighbours, a_display_on_a_hidden_page_is_seen_when_the_page_comes_up) {
  QTabWidget tabs;
  top.layout()->addWidget(&tabs);
  auto* const page = new QWidget;
  tabs.addTab(new QWidget, QStringLiteral("first"));
  tabs.addTab(page, QStringLiteral("second"));
  Show();
  Shown& shown = Open(page);
  sibling.winId();
  tabs.setCurrentWidget(page);
  EXPECT_TRUE(Sees(shown));
  tabs.setCurrentIndex(0);
  Settle(100);
  EXPECT_NE(PixelAt(OnScreen(tabs).center()), kPicture);
  tabs.setCurrentWidget(page);
  EXPECT_TRUE(Sees(shown));
}

TEST_P(NativeNeighbours, a_picture_is_seen_that_moves_with_its_parent_into_another_window) {
  Show();
  Shown& shown = Open(&parent);
  parent.winId();
  ASSERT_TRUE(Sees(shown));
  parent.setParent(nullptr);
  parent.setGeometry(800, 500, 300, 200);
  parent.show();
  EXPECT_TRUE(Sees(shown));
  sibling.winId();
  box.layout()->addWidget(&parent);
  parent.show();
  EXPECT_TRUE(Sees(shown));
}

INSTANTIATE_TEST_SUITE_P(Variants, NativeNeighbours, testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "on_the_card_on_the_screen" : "on_the_processor_on_the_screen");
});

}  // namespace
}  // namespace display_test
