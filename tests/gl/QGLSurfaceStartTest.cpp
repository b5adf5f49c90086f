// How a surface starts: on which windows and contexts, and what it publishes then.
#include <QApplication>
#include <QOpenGLContext>
#include <QSurfaceFormat>
#include <algorithm>
#include <cstdlib>

#include "GLFixture.h"
#include "GLSpy.h"
#include "QTD/screen/SurfaceText.h"

namespace {

// What the tests look at beside the interface.
struct OpenSurface : QGLSurface {
  using QGLSurface::publishDriver;
};

using QGLSurfaceStartTest = GLFixture;

TEST_F(QGLSurfaceStartTest, publishes_window_context_and_driver) {
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

TEST_F(QGLSurfaceStartTest, publishes_in_a_fixed_order) {
  std::vector<std::string> names;
  for (int i = 0; i < surface->properties.Count(); ++i) names.push_back(surface->properties.NameAt(i));
  EXPECT_EQ(names,
            (std::vector<std::string>{"state", "smoothing", "window", "context", "thread", "functions",
                                      "area", "size", "program", "class", "gl.renderbuffer", "gl.texture",
                                      "gl.viewport", "gl.vendor", "gl.strict", "gl.version"}));
}

TEST_F(QGLSurfaceStartTest, asks_for_a_context_without_version_and_profile) {
  // What an application asks for by default is not what this one wants.
  QSurfaceFormat core;
  core.setVersion(3, 3);
  core.setProfile(QSurfaceFormat::CoreProfile);
  const QSurfaceFormat before = QSurfaceFormat::defaultFormat();
  QSurfaceFormat::setDefaultFormat(core);
  EXPECT_TRUE(surface->init(&list));
  QSurfaceFormat::setDefaultFormat(before);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(surface->Context()->parent(), window.get());
  GLint profile = 0;
  glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
  EXPECT_FALSE(profile & GL_CONTEXT_CORE_PROFILE_BIT);
}

TEST_F(QGLSurfaceStartTest, blends_by_alpha_and_has_text) {
  GLint source = 0, target = 0;
  glGetIntegerv(GL_BLEND_SRC, &source);
  glGetIntegerv(GL_BLEND_DST, &target);
  EXPECT_EQ(source, GL_SRC_ALPHA);
  EXPECT_EQ(target, GL_ONE_MINUS_SRC_ALPHA);
  ASSERT_NE(surface->Text(), nullptr);
  EXPECT_TRUE(surface->Text()->isValid());
}

TEST_F(QGLSurfaceStartTest, takes_size_and_area_from_the_list) {
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

TEST_F(QGLSurfaceStartTest, fails_without_a_list_or_a_living_window) {
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

TEST_F(QGLSurfaceStartTest, fails_at_once_on_a_window_of_another_kind) {
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

TEST_F(QGLSurfaceStartTest, starts_on_a_window_that_was_never_shown) {
  QWindow hidden;
  hidden.setSurfaceType(QSurface::OpenGLSurface);
  QTD::PROPERTIES hiddenList;
  hiddenList.Set("window", pointerText(&hidden));
  QGLSurface other;
  EXPECT_TRUE(other.init(&hiddenList));
  EXPECT_EQ(other.properties.GetString("state"), "ready");
}

TEST_F(QGLSurfaceStartTest, publishes_1024_for_a_limit_that_the_driver_does_not_tell) {
  const Swapped silent(
      FunctionTable::of(*surface).GetIntegerv, +[](GLenum, GLint* values) { values[0] = 0; });
  surface->properties.Clear();
  (surface.get()->*&OpenSurface::publishDriver)();
  EXPECT_EQ(parameter("gl.renderbuffer"), "1024");
  EXPECT_EQ(parameter("gl.texture"), "1024");
  EXPECT_EQ(parameter("gl.viewport"), "1024");
}

TEST_F(QGLSurfaceStartTest, takes_the_smaller_side_of_the_viewport_limit) {
  const Swapped lying(
      FunctionTable::of(*surface).GetIntegerv, +[](GLenum name, GLint* values) {
        values[0] = 5000;
        if (name == GL_MAX_VIEWPORT_DIMS) values[1] = 3000;
      });
  (surface.get()->*&OpenSurface::publishDriver)();
  EXPECT_EQ(parameter("gl.viewport"), "3000");
  EXPECT_EQ(parameter("gl.texture"), "5000");
}

TEST_F(QGLSurfaceStartTest, names_no_vendor_and_version_that_the_driver_does_not_tell) {
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
