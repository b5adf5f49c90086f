// The life of a surface between its start and its end: passes, errors, and what it outlives.
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <thread>

#include "GLFixture.h"
#include "GLSpy.h"
#include "gl/image/QGLTexture.h"

namespace {

using QGLSurfaceTest = GLFixture;

std::vector<GLenum> pendingErrors;
GLenum NextError() {
  if (pendingErrors.empty()) return GL_NO_ERROR;
  const GLenum error = pendingErrors.front();
  pendingErrors.erase(pendingErrors.begin());
  return error;
}

TEST_F(QGLSurfaceTest, starts_created_and_smooth) {
  QGLSurface fresh;
  EXPECT_EQ(fresh.properties.GetString("state"), "created");
  EXPECT_EQ(fresh.properties.GetString("smoothing"), "1");
  EXPECT_FALSE(fresh.isValid());
  EXPECT_EQ(fresh.Context(), nullptr);
}

TEST_F(QGLSurfaceTest, done_deletes_the_context_and_may_be_repeated) {
  const QPointer<QOpenGLContext> context = surface->Context();
  EXPECT_TRUE(surface->done());
  EXPECT_TRUE(context.isNull());
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
  EXPECT_EQ(parameter("state"), "deleted");
  EXPECT_EQ(surface->Text(), nullptr);
  EXPECT_FALSE(surface->isValid());
  EXPECT_TRUE(surface->done());
}

TEST_F(QGLSurfaceTest, a_second_init_is_a_rebuild) {
  const QPointer<QOpenGLContext> context = surface->Context();
  ASSERT_TRUE(surface->init(&list));
  EXPECT_TRUE(context.isNull());
  EXPECT_EQ(parameter("state"), "ready");
  EXPECT_TRUE(surface->begin(nullptr));
}

TEST_F(QGLSurfaceTest, init_leaves_no_context_current) {
  ASSERT_TRUE(surface->init(&list));
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
}

TEST_F(QGLSurfaceTest, begin_and_end_nest_by_counting) {
  EXPECT_TRUE(surface->begin(nullptr));
  EXPECT_TRUE(surface->begin(nullptr));
  surface->end(nullptr, false);
  surface->end(nullptr, true);
  EXPECT_EQ(QOpenGLContext::currentContext(), surface->Context());
  surface->end(nullptr, false);
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
  surface->end(nullptr, false);  // one too many
  EXPECT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(QOpenGLContext::currentContext(), surface->Context());
  surface->end(nullptr, false);
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
}

TEST_F(QGLSurfaceTest, begin_takes_the_context_back_from_another_surface) {
  QWindow other;
  other.setSurfaceType(QSurface::OpenGLSurface);
  QTD::PROPERTIES otherList;
  otherList.Set("window", pointerText(&other));
  QGLSurface second;
  ASSERT_TRUE(second.init(&otherList));
  ASSERT_TRUE(second.begin(nullptr));
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_TRUE(surface->isActive());
  EXPECT_FALSE(second.isActive());
  surface->end(nullptr, false);
}

TEST_F(QGLSurfaceTest, is_refused_on_a_foreign_thread) {
  surface->end(nullptr, false);
  bool begun = true;
  std::thread([&] {
    begun = surface->begin(nullptr);
    surface->flush(nullptr);
    surface->end(nullptr, false);
  }).join();
  EXPECT_FALSE(begun);
  EXPECT_TRUE(surface->begin(nullptr));
}

TEST_F(QGLSurfaceTest, begin_gives_up_after_three_seconds) {
  surface->end(nullptr, false);
  window->setSurfaceType(QSurface::RasterSurface);  // no context takes it
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_GE(timer.elapsed(), 3000);
  EXPECT_LT(timer.elapsed(), 8000);
  window->setSurfaceType(QSurface::OpenGLSurface);
  EXPECT_TRUE(surface->begin(nullptr));
}

TEST_F(QGLSurfaceTest, begin_fails_at_once_without_a_native_window) {
  surface->end(nullptr, false);
  window->destroy();
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_LT(timer.elapsed(), 2000);
}

TEST_F(QGLSurfaceTest, begins_for_deletions_without_a_native_window) {
  surface->end(nullptr, false);
  QTD::PROPERTIES deletion;
  deletion.Set("deletion", "1");
  const auto deletesANameOfItsContext = [&] {
    if (!surface->begin(&deletion) || !surface->isActive()) return false;
    GLuint name = 0;
    surface->glGenTextures(1, &name);
    surface->glBindTexture(GL_TEXTURE_2D, name);
    const bool given = surface->glIsTexture(name);
    surface->glDeleteTextures(1, &name);
    EXPECT_TRUE(surface->begin(&deletion));  // nests
    surface->end(nullptr, false);
    EXPECT_TRUE(surface->isActive());
    surface->end(nullptr, false);
    return given && !surface->isActive();
  };
  window->destroy();
  EXPECT_TRUE(deletesANameOfItsContext());
  EXPECT_FALSE(surface->begin(nullptr));  // there is still nothing to draw on
  {
    QOpenGLContext other;
    ASSERT_TRUE(other.create());
    QOffscreenSurface place;
    place.create();
    ASSERT_TRUE(other.makeCurrent(&place));
    EXPECT_FALSE(surface->begin(&deletion));  // whoever drew there goes on drawing
    EXPECT_EQ(QOpenGLContext::currentContext(), &other);
  }
  window->create();
  EXPECT_TRUE(deletesANameOfItsContext());
  EXPECT_TRUE(surface->begin(nullptr));
  surface->end(nullptr, false);
  window.reset();
  EXPECT_TRUE(deletesANameOfItsContext());
}

TEST_F(QGLSurfaceTest, draws_on_a_window_that_comes_back_within_a_pass_for_deletions) {
  surface->end(nullptr, false);
  QTD::PROPERTIES deletion;
  deletion.Set("deletion", "1");
  window->destroy();
  ASSERT_TRUE(surface->begin(&deletion));
  EXPECT_NE(surface->Context()->surface(), window.get());
  window->create();
  ASSERT_TRUE(ShowAndWait(*window));
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(surface->Context()->surface(), window.get());
  surface->end(nullptr, false);
  surface->end(nullptr, false);
  EXPECT_FALSE(surface->isActive());
}

TEST_F(QGLSurfaceTest, outlives_its_window) {
  QGLTexture texture;
  QTD::PROPERTIES parameters = surfaceList();
  const Record record = MakeRecord(4, 4, 0x01080101, Samples(16, 7));
  ASSERT_TRUE(texture.init(record.get(), &parameters));
  window.reset();
  EXPECT_FALSE(surface->begin(nullptr));
  EXPECT_FALSE(texture.bind());
  EXPECT_FALSE(texture.fill(record.get()));
  texture.done();
  surface->text("text", 1, 1, "default", nullptr);
  surface->polyline({{0, 0}, {5, 5}}, nullptr, 1, 0);
  surface->fill(-1, -1, -1, -1, nullptr);
  surface->renderTexture(5, 5);
  surface->flush(nullptr);
  EXPECT_EQ(surface->checkError("here", 1, 1), 0);
  surface->end(nullptr, false);
  EXPECT_TRUE(surface->done());
  EXPECT_FALSE(surface->init(&list));
  EXPECT_EQ(parameter("state"), "failed");
}

TEST_F(QGLSurfaceTest, does_nothing_before_init) {
  QGLSurface fresh;
  EXPECT_FALSE(fresh.begin(nullptr));
  fresh.text("text", 1, 1, "default", nullptr);
  EXPECT_EQ(fresh.LastError(), 1u);
  fresh.polyline({{0, 0}, {5, 5}}, nullptr, 1, 0);
  fresh.rect(0, 0, 5, 5, nullptr, 1, 0);
  fresh.fill(-1, -1, -1, -1, nullptr);
  fresh.image(nullptr, nullptr, nullptr);
  fresh.renderTexture(5, 5);
  fresh.flush(nullptr);
  EXPECT_EQ(fresh.checkError("here", 1, 1), 0);
  fresh.end(nullptr, false);
  EXPECT_TRUE(fresh.done());
}

TEST_F(QGLSurfaceTest, describes_itself_with_context_and_thread) {
  const std::string tail = " [" + pointerText(surface->Context()) + "/" + parameter("thread") + "]";
  const std::string middle = "(size=200;150; area=0.000000;0.000000-200.000000;150.000000)";
  EXPECT_EQ(surface->describe("view"), "view " + middle + tail);
  EXPECT_EQ(surface->describe(""), middle + tail);
}

TEST_F(QGLSurfaceTest, names_the_errors_of_the_table) {
  const Swapped failing(FunctionTable::of(*surface).GetError, &NextError);
  const std::pair<GLenum, const char*> names[] = {
      {0x500, "here OpenGL error 1280 (GL_INVALID_ENUM)"},
      {0x501, "here OpenGL error 1281 (GL_INVALID_VALUE)"},
      {0x502, "here OpenGL error 1282 (GL_INVALID_OPERATION)"},
      {0x503, "here OpenGL error 1283 (GL_STACK_OVERFLOW)"},
      {0x504, "here OpenGL error 1284 (GL_STACK_UNDERFLOW)"},
      {0x505, "here OpenGL error 1285 (GL_OUT_OF_MEMORY)"},
      {0x506, "here OpenGL error 1286"},
      {0x4ff, "here OpenGL error 1279"},
  };
  for (const auto& [code, text] : names) {
    pendingErrors = {code};
    EXPECT_EQ(surface->checkError("here", 1, 1), static_cast<int>(code));
    EXPECT_EQ(parameter("error"), text);
    EXPECT_EQ(surface->LastError(), code);
  }
}

TEST_F(QGLSurfaceTest, passes_over_an_invalid_operation_but_keeps_its_code) {
  const Swapped failing(FunctionTable::of(*surface).GetError, &NextError);
  pendingErrors = {GL_INVALID_OPERATION};
  EXPECT_EQ(surface->checkError("here", 1, 0), 0);
  EXPECT_FALSE(surface->properties.Has("error"));
  EXPECT_EQ(surface->LastError(), uint32_t{GL_INVALID_OPERATION});
  EXPECT_EQ(surface->checkError("here", 1, 0), 0);
  EXPECT_EQ(surface->LastError(), 0u);
}

TEST_F(QGLSurfaceTest, says_where_only_when_asked) {
  const Swapped failing(FunctionTable::of(*surface).GetError, &NextError);
  pendingErrors = {0x500, 0x501};
  EXPECT_EQ(surface->checkError(nullptr, 1, 0), 0x500);
  EXPECT_EQ(parameter("error"), "OpenGL error 1280 (GL_INVALID_ENUM)");
  EXPECT_EQ(surface->checkError("here", 0, 0), 0x501);
  EXPECT_EQ(parameter("error"), "");
  EXPECT_EQ(surface->LastError(), 0x501u);
}

TEST_F(QGLSurfaceTest, end_asks_for_errors_while_the_context_is_current) {
  surface->glEnable(0xffff);
  surface->end(nullptr, false);
  EXPECT_EQ(parameter("error"), "QGLSurface::end() OpenGL error 1280 (GL_INVALID_ENUM)");
  EXPECT_EQ(surface->LastError(), uint32_t{GL_INVALID_ENUM});
}

}  // namespace
