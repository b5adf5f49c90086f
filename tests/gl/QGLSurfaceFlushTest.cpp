#include <QEvent>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <atomic>
#include <thread>

#include "GLFixture.h"
#include "GLSpy.h"

namespace {

struct OpenSurface : QGLSurface {
  using QGLSurface::lastFlushTime;
  using QGLSurface::lock;
};

QTD::RMutex& LockOf(QGLSurface& surface) {
  return surface.*&OpenSurface::lock;
}

constexpr QRgb kRed = 0xffff0000, kBlue = 0xff0000ff;

class QGLSurfaceFlushTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    force.Set("force", "1");
  }

  // What the window shows.
  QRgb shown() {
    surface->glFinish();
    return QGuiApplication::primaryScreen()->grabWindow(window->winId()).toImage().pixel(5, 5);
  }

  // Updates that reach the window within the time.
  int updatesWithin(int milliseconds) {
    Updates updates;
    window->installEventFilter(&updates);
    QElapsedTimer timer;
    for (timer.start(); timer.elapsed() < milliseconds; QThread::msleep(1)) QCoreApplication::processEvents();
    window->removeEventFilter(&updates);
    return updates.count;
  }

  void paint(QRgb color, QTD::PROPERTIES* flushList) {
    clearWindow(static_cast<float>(qRed(color)) / 255, 0, static_cast<float>(qBlue(color)) / 255);
    surface->flush(flushList);
  }

  // From here on every swap within 131 ms is early, on a slow machine too.
  void swappedRightNow() { surface.get()->*& OpenSurface::lastFlushTime += 100; }

  struct Updates : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::UpdateRequest) ++count;
      return false;
    }
    int count = 0;
  };

  QTD::PROPERTIES force;
};

TEST_F(QGLSurfaceFlushTest, swaps_once_within_31_ms) {
  // Tried until the machine was quick enough.
  for (int attempt = 0; attempt < 50; ++attempt) {
    QElapsedTimer timer;
    timer.start();
    paint(kRed, &force);
    paint(kBlue, nullptr);
    if (timer.elapsed() >= 30) continue;
    EXPECT_EQ(shown(), kRed);
    return;
  }
  FAIL() << "two swaps were never asked for within 30 ms";
}

TEST_F(QGLSurfaceFlushTest, swaps_again_when_forced) {
  paint(kRed, &force);
  paint(kBlue, &force);
  EXPECT_EQ(shown(), kBlue);
  swappedRightNow();
  QTD::PROPERTIES unforced;
  unforced.Set("force", "0");
  paint(kRed, &unforced);
  EXPECT_EQ(shown(), kBlue);
}

TEST_F(QGLSurfaceFlushTest, swaps_again_after_31_ms) {
  paint(kRed, &force);
  QThread::msleep(40);
  paint(kBlue, nullptr);
  EXPECT_EQ(shown(), kBlue);
}

TEST_F(QGLSurfaceFlushTest, makes_up_for_an_early_swap_with_one_update) {
  updatesWithin(100);
  paint(kRed, &force);
  swappedRightNow();
  for (int i = 0; i < 5; ++i) paint(kBlue, nullptr);
  EXPECT_EQ(updatesWithin(20), 0);
  EXPECT_EQ(updatesWithin(300), 1);
}

TEST_F(QGLSurfaceFlushTest, owes_nothing_after_a_swap) {
  updatesWithin(100);
  paint(kRed, &force);
  EXPECT_EQ(updatesWithin(100), 0);
  swappedRightNow();
  paint(kBlue, nullptr);
  paint(kBlue, &force);
  EXPECT_EQ(updatesWithin(200), 0);
}

TEST_F(QGLSurfaceFlushTest, owes_nothing_after_done) {
  updatesWithin(100);
  paint(kRed, &force);
  swappedRightNow();
  paint(kBlue, nullptr);
  surface->done();
  EXPECT_EQ(updatesWithin(200), 0);
}

TEST_F(QGLSurfaceFlushTest, an_update_that_is_due_survives_the_window) {
  paint(kRed, &force);
  swappedRightNow();
  paint(kBlue, nullptr);
  window.reset();
  QElapsedTimer timer;
  for (timer.start(); timer.elapsed() < 200; QThread::msleep(1)) QCoreApplication::processEvents();
  EXPECT_FALSE(surface->begin(nullptr));
}

TEST_F(QGLSurfaceFlushTest, asks_for_errors_after_a_swap) {
  surface->glEnable(0xffff);
  surface->flush(&force);
  EXPECT_EQ(surface->properties.GetString("error"),
            "QGLSurface::flush() OpenGL error 1280 (GL_INVALID_ENUM)");
}

TEST_F(QGLSurfaceFlushTest, does_not_swap_outside_begin_and_end) {
  paint(kRed, &force);
  clearWindow(0, 0, 1);
  surface->end(nullptr, false);
  surface->flush(&force);
  EXPECT_EQ(updatesWithin(50), 0);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(shown(), kRed);
}

TEST_F(QGLSurfaceFlushTest, skips_the_swap_while_another_thread_is_inside) {
  paint(kRed, &force);
  std::atomic<bool> held{false}, release{false};
  std::thread holder([&] {
    LockOf(*surface).lock();
    held = true;
    while (!release) std::this_thread::yield();
    LockOf(*surface).unlock();
  });
  while (!held) std::this_thread::yield();
  paint(kBlue, &force);  // must not wait: the other thread lets go afterwards
  release = true;
  holder.join();
  EXPECT_EQ(shown(), kRed);
}

TEST_F(QGLSurfaceFlushTest, makes_up_for_a_swap_that_another_thread_prevented) {
  updatesWithin(100);
  paint(kRed, &force);
  std::atomic<bool> held{false}, release{false};
  std::thread holder([&] {
    LockOf(*surface).lock();
    held = true;
    while (!release) std::this_thread::yield();
    LockOf(*surface).unlock();
  });
  while (!held) std::this_thread::yield();
  for (int i = 0; i < 3; ++i) paint(kBlue, &force);
  release = true;
  holder.join();
  EXPECT_EQ(updatesWithin(300), 1);
  EXPECT_EQ(updatesWithin(100), 0);
}

TEST_F(QGLSurfaceFlushTest, owes_no_swap_to_a_surface_that_is_gone) {
  std::atomic<bool> held{false}, release{false};
  std::thread holder([&] {
    LockOf(*surface).lock();
    held = true;
    while (!release) std::this_thread::yield();
    LockOf(*surface).unlock();
  });
  while (!held) std::this_thread::yield();
  surface->flush(&force);
  release = true;
  holder.join();
  surface.reset();
  EXPECT_EQ(updatesWithin(100), 0);
}

TEST_F(QGLSurfaceFlushTest, always_gives_its_lock_back) {
  const auto isFree = [this] {
    bool free = false;
    std::thread([&] {
      free = LockOf(*surface).try_lock();
      if (free) LockOf(*surface).unlock();
    }).join();
    return free;
  };
  surface->flush(&force);
  EXPECT_TRUE(isFree());
  swappedRightNow();
  surface->flush(nullptr);  // too early
  EXPECT_TRUE(isFree());
  force.Set("force", "soon");
  EXPECT_THROW(surface->flush(&force), std::invalid_argument);
  EXPECT_TRUE(isFree());
  surface->done();
  surface->flush(nullptr);
  EXPECT_TRUE(isFree());
}

}  // namespace
