// Passes within passes, passes that cannot begin, and to whom an error of the driver is told.
#include <QOpenGLContext>
#include <atomic>
#include <thread>

#include "AskedSurface.h"
#include "GLFixture.h"
#include "GLSpy.h"
#include "QTD/screen/SurfacePass.h"
#include "gl/surface/LivingObjects.h"

namespace {

using QGLSurfacePassTest = GLFixture;

std::atomic<int> warnings{0};
void CountWarnings(QtMsgType, const QMessageLogContext&, const QString&) {
  ++warnings;
}

GLenum nextError = GL_NO_ERROR;
GLenum TellOnce() {
  const GLenum told = nextError;
  nextError = GL_NO_ERROR;
  return told;
}

TEST_F(QGLSurfacePassTest, the_outermost_begin_asks_for_errors) {
  surface->end(nullptr, false);
  const Swapped failing(FunctionTable::of(*surface).GetError, &TellOnce);
  nextError = GL_INVALID_VALUE;
  EXPECT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(parameter("error"), "QGLSurface::begin() OpenGL error 1281 (GL_INVALID_VALUE)");
}

TEST_F(QGLSurfacePassTest, passes_within_a_pass_leave_errors_to_the_code_around) {
  surface->glEnable(0xffff);
  EXPECT_TRUE(surface->begin(nullptr));
  surface->end(nullptr, false);
  EXPECT_FALSE(surface->properties.Has("error"));
  EXPECT_EQ(surface->checkError("around", 1, 0), GL_INVALID_ENUM);
  EXPECT_EQ(parameter("error"), "around OpenGL error 1280 (GL_INVALID_ENUM)");
}

TEST_F(QGLSurfacePassTest, an_error_of_the_start_is_told_as_one_and_kept) {
  AskedSurface other;
  other.faulty = "QGLSurface::init()";
  ASSERT_TRUE(other.init(&list));
  EXPECT_EQ(other.asked, (std::vector<std::string>{"QGLSurface::begin()", "QGLSurface::init()"}));
  EXPECT_EQ(other.properties.GetString("error"), "QGLSurface::init() OpenGL error 1280 (GL_INVALID_ENUM)");
  EXPECT_EQ(other.LastError(), uint32_t{GL_INVALID_ENUM});
  EXPECT_EQ(other.properties.GetString("state"), "ready");
  EXPECT_FALSE(other.isActive());
}

TEST_F(QGLSurfacePassTest, a_wait_in_vain_is_not_repeated_until_the_context_was_to_be_had) {
  surface->end(nullptr, false);
  window->setSurfaceType(QSurface::RasterSurface);  // no context takes it
  warnings = 0;
  const QtMessageHandler before = qInstallMessageHandler(&CountWarnings);
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_GE(timer.elapsed(), 3000);
  EXPECT_GT(warnings, 1);
  EXPECT_LE(warnings, 400) << "Qt complains about each try";
  timer.start();
  for (int i = 0; i < 20; ++i) EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_LT(timer.elapsed(), 1000);

  window->setSurfaceType(QSurface::OpenGLSurface);
  EXPECT_TRUE(surface->begin(nullptr));
  surface->end(nullptr, false);
  window->setSurfaceType(QSurface::RasterSurface);
  timer.start();
  EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_GE(timer.elapsed(), 3000) << "it may be a matter of a moment again";
  qInstallMessageHandler(before);
  window->setSurfaceType(QSurface::OpenGLSurface);
}

TEST_F(QGLSurfacePassTest, tells_whether_it_has_begun) {
  EXPECT_TRUE(SurfacePass(surface.get()));
  surface->end(nullptr, false);
  window->destroy();
  EXPECT_FALSE(SurfacePass(surface.get()));
  EXPECT_TRUE(SurfacePass(nullptr)) << "there is nothing to begin";
  window->create();
  EXPECT_TRUE(SurfacePass(surface.get()));
  EXPECT_FALSE(surface->isActive());
}

TEST_F(QGLSurfacePassTest, a_foreign_thread_is_refused_while_the_window_goes_and_comes) {
  surface->end(nullptr, false);
  std::atomic<bool> stop{false}, begun{false};
  std::thread other([&] {
    while (!stop) {
      if (surface->begin(nullptr)) begun = true;
    }
  });
  for (int i = 0; i < 20; ++i) {
    window->destroy();
    window->create();
  }
  stop = true;
  other.join();
  EXPECT_FALSE(begun);
}

TEST_F(QGLSurfacePassTest, a_surface_on_its_way_out_is_none_of_the_living) {
  QGLSurface* const leaving = surface.get();
  ASSERT_EQ(LivingSurface(leaving), leaving);
  QGLSurface* found = leaving;
  QObject::connect(surface->Context(), &QObject::destroyed, [&] { found = LivingSurface(leaving); });
  surface.reset();
  EXPECT_EQ(found, nullptr);
}

TEST_F(QGLSurfacePassTest, a_surface_of_another_kind_is_none_of_the_living) {
  QTDSurface plain;
  EXPECT_EQ(LivingSurface(&plain), nullptr);
  EXPECT_EQ(LivingSurface(nullptr), nullptr);
}

}  // namespace
