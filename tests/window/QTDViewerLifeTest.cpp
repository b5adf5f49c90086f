// Who outlives whom: the viewer, what it has made, and the host's widget.
#include "Harness.h"
#include "QTD/window/QTDViewer.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::VerticalBar;
using windowtest::WaitFor;

class OpenViewer : public QTDViewer {
 public:
  using QTDViewer::container;
  using QTDViewer::QTDViewer;
};

}  // namespace

TEST(QTDViewer, tells_that_it_closes_while_the_window_is_still_there) {
  QWidget host;
  auto* viewer = new QTDViewer(&host, false);
  const Picture picture(10, 10);
  viewer->setImage(picture.Record(), true);
  int closings = 0;
  QObject::connect(viewer, &QTDViewer::signalClosing, [&] {
    ++closings;
    EXPECT_TRUE(viewer->Window());
    viewer->setImage(nullptr, false);
  });
  delete viewer;
  EXPECT_EQ(1, closings);
  Settle();
}

TEST(QTDViewer, leaves_the_hosts_widget_as_it_was) {
  QWidget host;
  host.show();
  for (int round = 0; round < 3; ++round) {
    QPointer<QTDViewer> viewer = new QTDViewer(&host, false);
    QPointer<QTDWindow> window = viewer->Window();
    QPointer<QScrollBar> bar = VerticalBar(host);
    ASSERT_TRUE(bar);
    Settle();
    delete viewer.data();
    EXPECT_FALSE(window);
    EXPECT_FALSE(bar);
    EXPECT_EQ(nullptr, host.layout());
    EXPECT_TRUE(host.findChildren<QWidget*>().isEmpty());
    Settle();
  }
}

TEST(QTDViewer, forgets_the_surface_of_a_window_that_was_deleted) {
  QWidget host;
  QTDViewer viewer(&host, false);
  ASSERT_TRUE(viewer.Parameters().GetPointer("surface"));
  delete viewer.Window();
  EXPECT_EQ(nullptr, viewer.Parameters().GetPointer("surface"));
}

TEST(QTDViewer, survives_any_order_of_deletion) {
  const Picture picture(300, 200);
  enum What { kHost, kViewer, kWindow, kContainer, kBar, kLayout, kCount };
  for (int first = 0; first < kCount; ++first) {
    for (int second = 0; second < kCount; ++second) {
      QPointer<QWidget> host = new QWidget;
      QPointer<OpenViewer> viewer = new OpenViewer(host, false);
      QPointer<QTDWindow> window = viewer->Window();
      QPointer<QWidget> container = viewer->container;
      QPointer<QScrollBar> bar = VerticalBar(*host);
      QPointer<QLayout> layout = host->layout();
      host->show();
      ASSERT_TRUE(WaitFor([&] { return window->isExposed(); }));
      viewer->setImage(picture.Record(), true);
      Settle();
      for (const int what : {first, second}) {
        switch (what) {
          case kHost:
            delete host.data();
            break;
          case kViewer:
            delete viewer.data();
            break;
          case kWindow:
            delete window.data();
            break;
          case kContainer:
            delete container.data();
            break;
          case kBar:
            delete bar.data();
            break;
          case kLayout:
            delete layout.data();
            break;
        }
        if (viewer) {
          viewer->setImage(picture.Record(), true);
          viewer->redraw();
          viewer->slotVertSliderChanged(1);
        }
        if (window) window->Execute("view.changed", nullptr);
        Settle();
      }
      if (viewer) viewer->setImage(nullptr, false);
      delete host.data();
      EXPECT_FALSE(viewer) << first << second;
      EXPECT_FALSE(window) << first << second;
      Settle();
    }
  }
}

TEST(QTDViewer, moves_with_its_host_into_another_window) {
  const Picture picture(300, 200);
  QWidget top;
  auto* host = new QWidget;
  auto* viewer = new QTDViewer(host, false);
  host->show();
  ASSERT_TRUE(WaitFor([&] { return viewer->Window()->isExposed(); }));
  viewer->setImage(picture.Record(), true);
  Settle();
  top.resize(500, 400);
  host->setParent(&top);
  host->resize(400, 300);
  host->show();
  top.show();
  EXPECT_TRUE(WaitFor([&] { return viewer->Window()->isExposed(); }));
  Settle();
  QTDWindow* window = viewer->Window();
  EXPECT_TRUE(WaitFor([&] {
    const QImage seen = window->QWindow::screen()->grabWindow(window->winId()).toImage();
    return !seen.isNull() && seen.pixel(window->width() / 2, window->height() / 2) == qRgb(10, 200, 30);
  }));
  viewer->setImage(nullptr, false);
}
