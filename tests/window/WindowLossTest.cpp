// What painting and closing owe to those who are at it.
#include <atomic>
#include <stdexcept>
#include <thread>

#include "Harness.h"
#include "QTD/window/QTDViewer.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::ViewerTest;
using windowtest::WaitFor;

class OpenViewer : public QTDViewer {
 public:
  using QTDViewer::lock;
  using QTDViewer::QTDViewer;
};

class OpenWindow : public QTDWindow {
 public:
  using QTDWindow::QTDWindow;
  using QTDWindow::screen;
};

class FaultyScreen : public QTDScreen {
 public:
  FaultyScreen(QTDSurface* target, int& count) : QTDScreen(target), ends(count) {}
  bool isReady() override { return true; }
  bool begin(QTD::PROPERTIES*) override { return true; }
  void end(QTD::PROPERTIES*, bool) override {
    ++ends;
    throw std::invalid_argument("some attribute");
  }

 private:
  int& ends;
};

class WindowLossTest : public ViewerTest {};

}  // namespace

TEST(QTDWindowPaint, an_end_of_painting_that_throws_ends_nothing_else) {
  int ends = 0;
  OpenWindow window(nullptr, false);
  window.resize(100, 80);
  ASSERT_TRUE(window.open());
  window.show();
  ASSERT_TRUE(WaitFor([&] { return window.isExposed(); }));
  window.screen = std::make_unique<FaultyScreen>(window.Surface(), ends);
  window.render();
  EXPECT_EQ(1, ends);
  window.update();
  // The window system may want the window painted once more by itself.
  EXPECT_TRUE(WaitFor([&] { return ends >= 2; }));
}

TEST_F(WindowLossTest, a_screen_of_another_density_is_followed) {
  const Picture picture(500, 400);
  Show(picture);
  const double ratio = window->devicePixelRatio();
  EXPECT_EQ(ratio, window->Screen()->Scale());
  window->Screen()->setPixelRatio(2 * ratio);
  ASSERT_EQ(2 * ratio, window->Screen()->Scale());
  Q_EMIT window->screenChanged(window->QWindow::screen());
  EXPECT_EQ(ratio, window->Screen()->Scale());
}

TEST(WindowLoss, a_window_goes_when_nobody_is_at_it_any_more) {
  QWidget host;
  OpenViewer viewer(&host, false);
  QTDWindow* const window = viewer.Window();
  ASSERT_TRUE(window);
  std::atomic<bool> inside{false}, outside{false};
  std::thread other([&] {
    std::lock_guard<std::recursive_mutex> hold(viewer.lock);
    inside = true;
    QThread::msleep(150);
    outside = true;
  });
  while (!inside) QThread::msleep(1);
  int told = 0;
  QObject::connect(window, &QTDWindow::signalSurfaceChanged, [&] {
    ++told;
    EXPECT_TRUE(outside) << "the surface went under the other thread's hands";
  });
  delete window;
  EXPECT_EQ(1, told);
  EXPECT_EQ(nullptr, viewer.Window());
  other.join();
}

TEST(WindowLoss, is_told_while_the_window_still_exists) {
  QWidget host;
  QTDViewer viewer(&host, false);
  QPointer<QTDWindow> window = viewer.Window();
  int told = 0;
  QObject::connect(&viewer, &QTDViewer::signalWindowClosing, [&] {
    ++told;
    EXPECT_EQ(window, viewer.Window());
    EXPECT_TRUE(window->isOpen());
    viewer.ForgetWindow();
    EXPECT_EQ(nullptr, viewer.Window());
  });
  delete window.data();
  EXPECT_EQ(1, told);
  EXPECT_EQ(nullptr, viewer.Parameters().GetPointer("surface"));
}

TEST(WindowLoss, threads_that_use_the_viewer_meet_a_window_or_none) {
  const Picture picture(300, 200);
  for (int round = 0; round < 10; ++round) {
    QWidget host;
    QTDViewer viewer(&host, false);
    std::atomic<bool> stop{false};
    std::thread other([&] {
      while (!stop) {
        viewer.setImage(picture.Record(), true);
        viewer.redraw();
      }
    });
    QThread::msleep(3);
    delete viewer.Window();
    QThread::msleep(1);
    stop = true;
    other.join();
    viewer.setImage(nullptr, false);
    Settle();
  }
}
