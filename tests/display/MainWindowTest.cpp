// A main window as the display's parent: it shows widgets in its centre only, and its layout is its own.
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QVBoxLayout>

#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class MainWindow : public testing::Test {
 protected:
  MainWindow() {
    window.resize(300, 200);
    window.show();
  }
  void Open() {
    display = std::make_unique<QTDDisplay>(&window, false);
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    ASSERT_NE(display->Viewer(), nullptr);
    Settle();
  }
  // Where a widget lies in the main window.
  QRect PlaceOf(const QWidget* widget) { return {widget->mapTo(&window, QPoint(0, 0)), widget->size()}; }

  HostImage image{ZYN_PIXEL_MONO8, 64, 48};
  QMainWindow window;
  std::unique_ptr<QTDDisplay> display;
};

TEST_F(MainWindow, without_a_centre_is_filled_by_the_picture) {
  QLayout* const own = window.layout();
  Open();
  EXPECT_EQ(window.layout(), own);
  ASSERT_NE(window.centralWidget(), nullptr);
  EXPECT_TRUE(window.centralWidget()->isAncestorOf(display->Viewer()));
  EXPECT_TRUE(display->Viewer()->isVisible());
  const QRect place = PlaceOf(display->Viewer());
  EXPECT_EQ(place.topLeft(), QPoint(0, 0));
  EXPECT_EQ(place.height(), 200);
  EXPECT_GT(place.width(), 250) << "all but the bar";
  EXPECT_LE(place.width(), 300);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([this] { return display->Viewer()->Window()->hasImage(); }));
}

TEST_F(MainWindow, follows_in_size_and_is_empty_again_behind_the_display) {
  Open();
  window.resize(400, 320);
  EXPECT_TRUE(WaitFor([this] { return PlaceOf(display->Viewer()).height() == 320; }));
  const QPointer<QTDViewer> viewer = display->Viewer();
  display.reset();
  EXPECT_TRUE(viewer.isNull());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(window.centralWidget(), nullptr);
  Open();  // and takes the next one
  EXPECT_EQ(PlaceOf(display->Viewer()).height(), 320);
}

TEST_F(MainWindow, with_a_centre_shows_the_picture_in_it_beside_what_is_there) {
  auto* const centre = new QWidget;
  auto* const column = new QVBoxLayout(centre);
  auto* const label = new QLabel(QStringLiteral("title"));
  column->addWidget(label);
  window.setCentralWidget(centre);
  Open();
  EXPECT_EQ(window.centralWidget(), centre);
  EXPECT_EQ(centre->layout(), column);
  EXPECT_TRUE(centre->isAncestorOf(display->Viewer()));
  EXPECT_GE(PlaceOf(display->Viewer()).top(), PlaceOf(label).bottom());
  EXPECT_GT(PlaceOf(display->Viewer()).height(), 50);
  display.reset();
  Settle();
  EXPECT_EQ(window.centralWidget(), centre);
  EXPECT_EQ(column->count(), 1);
  EXPECT_EQ(column->itemAt(0)->widget(), label);
}

TEST_F(MainWindow, may_be_deleted_before_its_display) {
  auto owner = std::make_unique<QMainWindow>();
  owner->show();
  QTDDisplay other(owner.get(), false);
  ASSERT_EQ(other.Initialize(&image.record), 0u);
  Settle();
  owner.reset();
  EXPECT_EQ(other.Viewer(), nullptr);
  EXPECT_EQ(other.Initialize(&image.record), Composed(1));
}

}  // namespace display_test
