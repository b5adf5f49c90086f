// The viewer widget: its layout in the host's widget, and the pictures that it takes.
#include "QTD/window/QTDViewer.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <thread>

#include "Harness.h"
#include "QTD/frame/Text.h"
#include "support/WithoutOpenGL.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::VerticalBar;
using windowtest::WaitFor;

class QTDViewerTest : public windowtest::ViewerTest {};

class OpenViewer : public QTDViewer {
 public:
  using QTDViewer::display;
  using QTDViewer::image;
  using QTDViewer::lock;
  using QTDViewer::properties;
  using QTDViewer::QTDViewer;
};

}  // namespace

TEST_F(QTDViewerTest, answers_to_the_name_of_its_component) {
  EXPECT_EQ(static_cast<QTD::ComponentImpl*>(viewer.data()), viewer->qt_metacast("QTD::ComponentImpl"));
}

TEST_F(QTDViewerTest, opens_its_window) {
  EXPECT_EQ(0u, viewer->LastError());
  EXPECT_TRUE(window->isOpen());
  EXPECT_FALSE(viewer->IsOpenGL());
  EXPECT_EQ("QTDViewer", viewer->Parameters().GetString("class"));
  EXPECT_EQ("0", viewer->Parameters().GetString("system.opengl"));
  EXPECT_EQ(widget.get(), viewer->Parameters().GetPointer("system.parentWidget"));
  EXPECT_EQ(window->Surface(), viewer->Parameters().GetPointer("surface"));
}

TEST(QTDViewer, keeps_its_settings_in_a_list) {
  QWidget host;
  OpenViewer viewer(&host, false);
  EXPECT_EQ("0", viewer.properties.GetString("system.opengl"));
  EXPECT_EQ(&host, viewer.properties.GetPointer("system.parentWidget"));
  EXPECT_EQ(viewer.Window()->Surface(), viewer.properties.GetPointer("surface"));
}

TEST_F(QTDViewerTest, lies_beside_the_vertical_bar_and_above_the_horizontal_one) {
  auto* row = qobject_cast<QHBoxLayout*>(widget->layout());
  ASSERT_TRUE(row);
  ASSERT_EQ(2, row->count());
  EXPECT_EQ(viewer.data(), row->itemAt(0)->widget());
  EXPECT_EQ(Bar(Qt::Vertical), row->itemAt(1)->widget());
  EXPECT_EQ(QMargins(), row->contentsMargins());
  EXPECT_EQ(0, row->spacing());
  EXPECT_EQ(widget.get(), Bar(Qt::Vertical)->parentWidget());

  auto* column = qobject_cast<QVBoxLayout*>(viewer->layout());
  ASSERT_TRUE(column);
  ASSERT_EQ(2, column->count());
  QWidget* container = column->itemAt(0)->widget();
  EXPECT_EQ(Qt::StrongFocus, container->focusPolicy());
  EXPECT_EQ(Bar(Qt::Horizontal), column->itemAt(1)->widget());
  EXPECT_EQ(QMargins(), column->contentsMargins());
  EXPECT_EQ(0, column->spacing());

  EXPECT_TRUE(viewer->isVisible());
  EXPECT_TRUE(container->isVisible());
  EXPECT_TRUE(Bar(Qt::Horizontal)->isVisible());
  EXPECT_TRUE(Bar(Qt::Vertical)->isVisible());
}

TEST_F(QTDViewerTest, fills_the_hosts_widget_at_every_size) {
  widget->resize(700, 500);
  ASSERT_TRUE(WaitFor([&] { return window->width() == 700 - Bar(Qt::Vertical)->width(); }));
  EXPECT_EQ(500 - Bar(Qt::Horizontal)->height(), window->height());
  const Picture picture(1000, 1000);
  Show(picture);
  EXPECT_DOUBLE_EQ((window->width() - 1000) / 2.0, window->Screen()->Picture().x);
  viewer->setImage(nullptr, false);
}

TEST(QTDViewer, without_a_parent_has_no_window_and_does_nothing) {
  OpenViewer viewer(nullptr, false);
  EXPECT_EQ(7u, viewer.LastError());
  EXPECT_EQ(nullptr, viewer.Window());
  EXPECT_TRUE(viewer.findChildren<QScrollBar*>().isEmpty());
  const Picture picture(10, 10);
  viewer.setImage(picture.Record(), true);
  viewer.setImage(picture.Record(), false);
  EXPECT_EQ(nullptr, viewer.image);
  viewer.redraw();
  viewer.setMessenger(nullptr);
  viewer.setDisplay(nullptr);
  viewer.slotHorzSliderChanged(3);
  viewer.slotVertSliderChanged(3);
  viewer.slotDisplayImage(picture.Record(), true);
  viewer.resize(100, 100);
  viewer.show();
  EXPECT_EQ(0u, viewer.releaseImages());
  Settle();
}

TEST(QTDViewer, without_opengl_ends_without_a_window) {
  if (test::HasOpenGL()) return test::RunWithoutOpenGL();
  QWidget host;
  OpenViewer viewer(&host, true);
  EXPECT_EQ(8u, viewer.LastError());
  EXPECT_EQ(nullptr, viewer.Window());
  EXPECT_TRUE(viewer.IsOpenGL());
  EXPECT_EQ("1", viewer.Parameters().GetString("system.opengl"));
  EXPECT_FALSE(viewer.Parameters().Has("surface"));
  const Picture picture(10, 10);
  viewer.setImage(picture.Record(), true);
  viewer.redraw();
  host.show();
  Settle();
}

TEST_F(QTDViewerTest, paints_a_picture_at_once_or_through_a_request_of_its_own) {
  const Picture picture(500, 400);
  Settle();
  UpdateCounter viewerRequests(viewer);
  UpdateCounter windowRequests(window);
  viewer->setImage(picture.Record(), true);
  Settle();
  EXPECT_EQ(0, viewerRequests.count);
  EXPECT_EQ(1, windowRequests.count);
  viewer->setImage(picture.Record(), false);
  Settle();
  EXPECT_EQ(1, viewerRequests.count);
  EXPECT_EQ(2, windowRequests.count);
  EXPECT_EQ(qRgb(10, 200, 30), Grab().pixel(5, 5));
  // Without a picture the window is cleared by the same road.
  viewer->setImage(nullptr, false);
  EXPECT_EQ(qRgb(128, 128, 128), Grab().pixel(5, 5));
}

TEST_F(QTDViewerTest, its_slots_show_pictures) {
  const Picture picture(500, 400);
  Settle();
  UpdateCounter viewerRequests(viewer);
  QMetaObject::invokeMethod(viewer, "slotDisplayImage", Q_ARG(ZynImage*, picture.Record()),
                            Q_ARG(bool, true));
  Settle();
  EXPECT_EQ(0, viewerRequests.count);
  EXPECT_TRUE(window->hasImage());
  EXPECT_EQ(qRgb(10, 200, 30), Grab().pixel(5, 5));
  QMetaObject::invokeMethod(viewer, "slotDisplayImage", Q_ARG(ZynImage*, nullptr));
  Settle();
  EXPECT_EQ(1, viewerRequests.count);
  EXPECT_FALSE(window->hasImage());
  EXPECT_EQ(qRgb(128, 128, 128), Grab().pixel(5, 5));
}

TEST(QTDViewer, meta_object_lists_the_slots_in_order) {
  const QMetaObject& meta = QTDViewer::staticMetaObject;
  std::vector<std::string> found;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    if (meta.method(i).methodType() == QMetaMethod::Slot) {
      found.push_back(meta.method(i).methodSignature().toStdString());
    }
  }
  EXPECT_EQ((std::vector<std::string>{"slotDisplayImage(ZynImage*,bool)", "slotDisplayImage(ZynImage*)",
                                      "slotHorzSliderChanged(int)", "slotVertSliderChanged(int)"}),
            found);
}

TEST(QTDViewer, a_redraw_while_the_lock_is_held_is_dropped) {
  QWidget host;
  OpenViewer viewer(&host, false);
  Settle();
  UpdateCounter counter(viewer.Window());
  std::unique_lock<std::recursive_mutex> hold(viewer.lock);
  std::thread([&] { viewer.redraw(); }).join();
  Settle();
  EXPECT_EQ(0, counter.count);
  hold.unlock();
  std::thread([&] { viewer.redraw(); }).join();
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST(QTDViewer, a_picture_is_taken_under_the_lock) {
  QWidget host;
  OpenViewer viewer(&host, false);
  const Picture picture(10, 10);
  std::atomic<bool> done{false};
  std::unique_lock<std::recursive_mutex> hold(viewer.lock);
  std::thread other([&] {
    viewer.setImage(picture.Record(), true);
    done = true;
  });
  QThread::msleep(50);
  EXPECT_FALSE(done);
  EXPECT_EQ(nullptr, viewer.image);
  hold.unlock();
  other.join();
  EXPECT_EQ(picture.Record(), viewer.image);
  viewer.setImage(nullptr, false);
}

TEST_F(QTDViewerTest, gives_its_messenger_to_the_window) {
  ConnectHost();
  const Picture picture(500, 400);
  Show(picture);
  Press(1, 1);
  EXPECT_EQ(1u, host.Of("mouse.down").size());
  viewer->setMessenger(nullptr);
  Release(1, 1);
  EXPECT_TRUE(host.Of("mouse.up").empty());
}

TEST(QTDViewer, joins_a_layout_that_the_host_has_made) {
  using Make = std::function<QLayout*(QWidget*)>;
  const Make layouts[] = {
      [](QWidget* host) -> QLayout* { return new QVBoxLayout(host); },
      [](QWidget* host) -> QLayout* { return new QHBoxLayout(host); },
      [](QWidget* host) -> QLayout* { return new QGridLayout(host); },
      [](QWidget* host) -> QLayout* { return new QFormLayout(host); },
      [](QWidget* host) -> QLayout* { return new QStackedLayout(host); },
  };
  for (const Make& make : layouts) {
    QWidget host;
    host.resize(300, 200);
    QLayout* layout = make(&host);
    QLabel label;
    layout->addWidget(&label);
    const std::string kind = layout->metaObject()->className();
    host.show();
    auto* viewer = new QTDViewer(&host, false);
    EXPECT_EQ(layout, host.layout()) << kind;
    EXPECT_EQ(2, layout->count()) << kind;
    if (auto* stack = qobject_cast<QStackedLayout*>(layout)) stack->setCurrentIndex(1);
    EXPECT_TRUE(WaitFor([&] { return viewer->Window()->isExposed(); })) << kind;
    EXPECT_TRUE(host.isAncestorOf(viewer)) << kind;
    QScrollBar* bar = VerticalBar(host);
    ASSERT_TRUE(bar) << kind;
    EXPECT_EQ(viewer->geometry().right() + 1, bar->geometry().left()) << kind;

    delete viewer;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Settle();
    EXPECT_EQ(layout, host.layout()) << kind;
    EXPECT_EQ(1, layout->count()) << kind;
    EXPECT_EQ(nullptr, VerticalBar(host)) << kind;
    EXPECT_EQ(QList<QWidget*>{&label}, host.findChildren<QWidget*>()) << kind;
    layout->removeWidget(&label);
    label.setParent(nullptr);
  }
}

TEST(QTDViewer, two_share_a_widget_and_go_in_either_order) {
  for (const bool firstGoesFirst : {true, false}) {
    QWidget host;
    auto* first = new QTDViewer(&host, false);
    auto* second = new QTDViewer(&host, false);
    host.show();
    EXPECT_TRUE(WaitFor([&] { return second->Window()->isExposed(); }));
    delete (firstGoesFirst ? first : second);
    Settle();
    EXPECT_TRUE((firstGoesFirst ? second : first)->Window()->isExposed());
    delete (firstGoesFirst ? second : first);
    EXPECT_TRUE(host.findChildren<QWidget*>().isEmpty());
  }
}

TEST(QTDViewer, keeps_what_the_host_has_put_into_the_row) {
  QWidget host;
  auto* viewer = new QTDViewer(&host, false);
  QLabel label;
  host.layout()->addWidget(&label);
  delete viewer;
  ASSERT_TRUE(host.layout());
  EXPECT_EQ(1, host.layout()->count());
  label.setParent(nullptr);
}
