#include <QApplication>
#include <QOpenGLContext>
#include <cstdlib>
#include <thread>

#include "GLFixture.h"
#include "GLSpy.h"
#include "QTD/screen/SurfaceText.h"
#include "gl/image/QGLTexture.h"

namespace {

// What the tests look at beside the interface.
struct OpenSurface : QGLSurface {
  using QGLSurface::lock;
  using QGLSurface::publishDriver;
};

class QGLSurfaceTest : public GLFixture {
 protected:
  std::string parameter(const char* key) { return surface->properties.GetString(key); }
};

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

TEST_F(QGLSurfaceTest, publishes_window_context_and_driver) {
  GLint renderbuffer = 0, texture = 0, viewport[2] = {0, 0};
  glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
  glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
  EXPECT_TRUE(surface->isValid());
  EXPECT_EQ(parameter("state"), "ready");
  EXPECT_EQ(surface->properties.GetPointer("window"), window.get());
  EXPECT_EQ(surface->properties.GetPointer("context"), QOpenGLContext::currentContext());
  EXPECT_EQ(surface->properties.GetPointer("functions"), static_cast<QOpenGLFunctions*>(surface.get()));
  EXPECT_EQ(surface->properties.GetInt64("thread"), reinterpret_cast<intptr_t>(QThread::currentThreadId()));
  EXPECT_EQ(parameter("area"), "0.000000;0.000000-200.000000;150.000000");
  EXPECT_EQ(parameter("size"), "200;150");
  EXPECT_EQ(parameter("program"), "0");
  EXPECT_EQ(parameter("class"), "QGLSurface");
  EXPECT_EQ(parameter("gl.renderbuffer"), std::to_string(renderbuffer));
  EXPECT_EQ(parameter("gl.texture"), std::to_string(texture));
  EXPECT_EQ(parameter("gl.viewport"), std::to_string(std::min(viewport[0], viewport[1])));
  EXPECT_EQ(parameter("gl.vendor"), reinterpret_cast<const char*>(glGetString(GL_VENDOR)));
  EXPECT_EQ(parameter("gl.version"), reinterpret_cast<const char*>(glGetString(GL_VERSION)));
  EXPECT_EQ(parameter("gl.strict"), "1");
}

TEST_F(QGLSurfaceTest, publishes_in_a_fixed_order) {
  std::vector<std::string> names;
  for (int i = 0; i < surface->properties.Count(); ++i) names.push_back(surface->properties.NameAt(i));
  EXPECT_EQ(names,
            (std::vector<std::string>{"state", "smoothing", "window", "context", "thread", "functions",
                                      "area", "size", "program", "class", "gl.renderbuffer", "gl.texture",
                                      "gl.viewport", "gl.vendor", "gl.strict", "gl.version"}));
}

TEST_F(QGLSurfaceTest, asks_for_a_context_without_version_and_profile) {
  EXPECT_EQ(surface->Context()->parent(), window.get());
  GLint profile = 0;
  glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
  EXPECT_FALSE(profile & GL_CONTEXT_CORE_PROFILE_BIT);
}

TEST_F(QGLSurfaceTest, blends_by_alpha_and_has_text) {
  GLint source = 0, target = 0;
  glGetIntegerv(GL_BLEND_SRC, &source);
  glGetIntegerv(GL_BLEND_DST, &target);
  EXPECT_EQ(source, GL_SRC_ALPHA);
  EXPECT_EQ(target, GL_ONE_MINUS_SRC_ALPHA);
  ASSERT_NE(surface->Text(), nullptr);
  EXPECT_TRUE(surface->Text()->isValid());
}

TEST_F(QGLSurfaceTest, takes_size_and_area_from_the_list) {
  for (const auto& [key, value] : {std::pair{"size.x", "64"},
                                   {"size.y", "48"},
                                   {"area.pos.x", "1.5"},
                                   {"area.pos.y", "2"},
                                   {"area.dim.w", "30"},
                                   {"area.dim.h", "20.25"}}) {
    list.Set(key, value);
  }
  ASSERT_TRUE(surface->init(&list));
  EXPECT_EQ(surface->size.width, 64);
  EXPECT_EQ(surface->size.height, 48);
  EXPECT_EQ(parameter("size"), "64;48");
  EXPECT_EQ(parameter("area"), "1.500000;2.000000-30.000000;20.250000");
}

TEST_F(QGLSurfaceTest, fails_without_a_list_or_a_living_window) {
  QTD::PROPERTIES empty, nowhere, garbage;
  nowhere.Set("window", "0");
  garbage.Set("window", "0x1234");
  for (QTD::PROPERTIES* wrong : {static_cast<QTD::PROPERTIES*>(nullptr), &empty, &nowhere, &garbage}) {
    ASSERT_TRUE(surface->init(&list));
    EXPECT_FALSE(surface->init(wrong));
    EXPECT_EQ(parameter("state"), "failed");
    EXPECT_FALSE(surface->isValid());
    EXPECT_FALSE(surface->begin(nullptr));
  }
}

TEST_F(QGLSurfaceTest, fails_at_once_on_a_window_of_another_kind) {
  QWindow raster;
  raster.setSurfaceType(QSurface::RasterSurface);
  QTD::PROPERTIES rasterList;
  rasterList.Set("window", pointerText(&raster));
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(surface->init(&rasterList));
  EXPECT_LT(timer.elapsed(), 1000);
  EXPECT_EQ(parameter("state"), "failed");
}

TEST_F(QGLSurfaceTest, starts_on_a_window_that_was_never_shown) {
  QWindow hidden;
  hidden.setSurfaceType(QSurface::OpenGLSurface);
  QTD::PROPERTIES hiddenList;
  hiddenList.Set("window", pointerText(&hidden));
  QGLSurface other;
  EXPECT_TRUE(other.init(&hiddenList));
  EXPECT_EQ(other.properties.GetString("state"), "ready");
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

TEST_F(QGLSurfaceTest, publishes_1024_for_a_limit_that_the_driver_does_not_tell) {
  const Swapped silent(
      FunctionTable::of(*surface).GetIntegerv, +[](GLenum, GLint* values) { values[0] = 0; });
  surface->properties.Clear();
  (surface.get()->*&OpenSurface::publishDriver)();
  EXPECT_EQ(parameter("gl.renderbuffer"), "1024");
  EXPECT_EQ(parameter("gl.texture"), "1024");
  EXPECT_EQ(parameter("gl.viewport"), "1024");
}

TEST_F(QGLSurfaceTest, takes_the_smaller_side_of_the_viewport_limit) {
  const Swapped lying(
      FunctionTable::of(*surface).GetIntegerv, +[](GLenum name, GLint* values) {
        values[0] = 5000;
        if (name == GL_MAX_VIEWPORT_DIMS) values[1] = 3000;
      });
  (surface.get()->*&OpenSurface::publishDriver)();
  EXPECT_EQ(parameter("gl.viewport"), "3000");
  EXPECT_EQ(parameter("gl.texture"), "5000");
}

TEST_F(QGLSurfaceTest, names_no_vendor_and_version_that_the_driver_does_not_tell) {
  {
    const Swapped mute(
        FunctionTable::of(*surface).GetString, +[](GLenum) { return static_cast<const GLubyte*>(nullptr); });
    surface->properties.Clear();
    (surface.get()->*&OpenSurface::publishDriver)();
    EXPECT_FALSE(surface->properties.Has("gl.vendor"));
    EXPECT_FALSE(surface->properties.Has("gl.version"));
  }
  const Swapped empty(
      FunctionTable::of(*surface).GetString, +[](GLenum) { return reinterpret_cast<const GLubyte*>(""); });
  (surface.get()->*&OpenSurface::publishDriver)();
  EXPECT_FALSE(surface->properties.Has("gl.vendor"));
  EXPECT_TRUE(surface->properties.Has("gl.version"));
  EXPECT_EQ(parameter("gl.strict"), "1");
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

TEST_F(QGLSurfaceTest, begin_asks_for_errors) {
  surface->glEnable(0xffff);
  EXPECT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(parameter("error"), "QGLSurface::begin() OpenGL error 1280 (GL_INVALID_ENUM)");
}

// In a process of its own: the driver's profile and the platform are chosen at its start.
class QGLSurfaceDeathTest : public testing::Test {
 protected:
  void SetUp() override { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }

  static std::string StateOnAWindow() {
    QWindow window;
    window.setSurfaceType(QSurface::OpenGLSurface);
    QTD::PROPERTIES list;
    list.Set("window", QTD::ToText(static_cast<const void*>(&window)));
    QGLSurface surface;
    const bool ready = surface.init(&list);
    if (surface.begin(nullptr) != ready || surface.isValid() != ready) return "contradiction";
    surface.end(nullptr, false);
    return surface.properties.GetString("state");
  }
};

// Variables for the processes that are started within the scope.
class Environment {
 public:
  Environment(const char* usedName, const char* value) : name(usedName), before(qgetenv(usedName)) {
    value ? qputenv(name, value) : qunsetenv(name);
  }
  ~Environment() { before.isNull() ? qunsetenv(name) : qputenv(name, before); }

 private:
  const char* name;
  QByteArray before;
};

TEST_F(QGLSurfaceDeathTest, fails_where_the_platform_has_no_opengl) {
  const Environment display("DISPLAY", nullptr), platform("QT_QPA_PLATFORM", "offscreen");
  EXPECT_EXIT(std::_Exit(StateOnAWindow() == "failed" ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(QGLSurfaceDeathTest, fails_where_the_window_system_has_no_opengl) {
  const Environment integration("QT_XCB_GL_INTEGRATION", "none");
  EXPECT_EXIT(std::_Exit(StateOnAWindow() == "failed" ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(QGLSurfaceDeathTest, outlives_the_application) {
  const auto outlive = [] {
    auto* const window = new QWindow;  // a host's that it never deletes
    window->setSurfaceType(QSurface::OpenGLSurface);
    QTD::PROPERTIES list;
    list.Set("window", QTD::ToText(static_cast<const void*>(window)));
    auto surface = std::make_unique<QGLSurface>();
    if (!surface->init(&list)) std::_Exit(1);
    static_cast<QApplication*>(QCoreApplication::instance())->~QApplication();
    if (surface->init(&list)) std::_Exit(2);
    surface.reset();
    std::_Exit(0);
  };
  EXPECT_EXIT(outlive(), testing::ExitedWithCode(0), "");
}

// The driver under test takes its version from the environment; "FC" stands for a core profile.
TEST_F(QGLSurfaceDeathTest, fails_in_a_core_profile) {
  const Environment version("MESA_GL_VERSION_OVERRIDE", "3.3FC");
  EXPECT_EXIT(std::_Exit(StateOnAWindow() == "failed" ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(QGLSurfaceDeathTest, starts_in_a_compatibility_profile) {
  const Environment version("MESA_GL_VERSION_OVERRIDE", "3.3");
  EXPECT_EXIT(std::_Exit(StateOnAWindow() == "ready" ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
