#include "gl/surface/QGLSurfaceRef.h"

#include "GLFixture.h"
#include "GLSpy.h"
#include "QTD/screen/SurfaceText.h"
#include "gl/surface/ActiveSurface.h"

namespace {

class QGLSurfaceRefTest : public GLFixture {
 protected:
  static QTD::PROPERTIES sizeList(const char* width, const char* height) {
    QTD::PROPERTIES size;
    size.Set("size.x", width);
    size.Set("size.y", height);
    return size;
  }
};

TEST_F(QGLSurfaceRefTest, has_a_size_of_its_own_on_the_context_of_the_other) {
  QGLSurfaceRef ref(surface.get());
  QTD::PROPERTIES size = sizeList("40", "30");
  ASSERT_TRUE(ref.init(&size));
  EXPECT_TRUE(ref.isValid());
  EXPECT_EQ(ref.Context(), surface->Context());
  EXPECT_EQ(ref.size.width, 40);
  EXPECT_EQ(ref.size.height, 30);
  EXPECT_EQ(ref.properties.GetString("size"), "40;30");
  EXPECT_EQ(ref.properties.GetString("area"), "0.000000;0.000000-40.000000;30.000000");
  EXPECT_EQ(ref.properties.GetString("class"), "QGLSurfaceRef");
  EXPECT_EQ(ref.properties.GetString("state"), "ready");
  EXPECT_EQ(ref.properties.GetString("gl.texture"), surface->properties.GetString("gl.texture"));
  ASSERT_NE(ref.Text(), nullptr);
  EXPECT_NE(ref.Text(), surface->Text());
  EXPECT_EQ(surface->size.width, kGLWindowWidth);
  EXPECT_EQ(surface->properties.GetString("class"), "QGLSurface");
}

TEST_F(QGLSurfaceRefTest, finds_the_other_surface_in_the_list) {
  QGLSurfaceRef ref(nullptr);
  QTD::PROPERTIES properties = surfaceList();
  EXPECT_TRUE(ref.init(&properties));
  EXPECT_EQ(ref.size.width, 0);
  ref.done();
  EXPECT_TRUE(ref.init(nullptr));  // it stays known
}

TEST_F(QGLSurfaceRefTest, fails_without_another_surface) {
  QGLSurfaceRef ref(nullptr);
  EXPECT_FALSE(ref.init(nullptr));
  QTD::PROPERTIES garbage;
  garbage.Set("surface", "0x1234");
  EXPECT_FALSE(ref.init(&garbage));
  EXPECT_FALSE(ref.isValid());
  EXPECT_EQ(ref.properties.GetString("state"), "deleted");
}

TEST_F(QGLSurfaceRefTest, fails_on_a_surface_without_a_context) {
  surface->done();
  QGLSurfaceRef ref(surface.get());
  EXPECT_FALSE(ref.init(nullptr));
  EXPECT_FALSE(ref.isValid());
  EXPECT_EQ(ref.properties.GetString("state"), "failed");
  EXPECT_EQ(ref.checkError("here", 1, 1), 0);
}

TEST_F(QGLSurfaceRefTest, fails_outside_the_pass_of_the_other) {
  surface->end(nullptr, false);
  QGLSurfaceRef ref(surface.get());
  EXPECT_FALSE(ref.init(nullptr));
  EXPECT_FALSE(ref.isValid());
  EXPECT_EQ(ref.properties.GetString("state"), "failed");
  EXPECT_EQ(ref.Text(), nullptr);
  ref.fill(-1, -1, -1, -1, nullptr);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_TRUE(ref.init(nullptr));
  EXPECT_TRUE(ref.isValid());
  EXPECT_EQ(ref.properties.GetString("state"), "ready");
}

TEST_F(QGLSurfaceRefTest, fails_on_a_surface_that_is_gone) {
  QGLSurfaceRef ref(surface.get());
  ASSERT_TRUE(ref.init(nullptr));
  surface.reset();
  EXPECT_FALSE(ref.isValid());
  ref.fill(-1, -1, -1, -1, nullptr);
  ref.polyline({{0, 0}, {5, 5}}, nullptr, 1, 0);
  EXPECT_FALSE(ref.init(nullptr));
}

TEST_F(QGLSurfaceRefTest, begins_always_and_switches_no_context) {
  QGLSurfaceRef ref(surface.get());
  EXPECT_TRUE(ref.begin(nullptr));
  ASSERT_TRUE(ref.init(nullptr));
  EXPECT_TRUE(ref.begin(nullptr));
  ref.end(nullptr, true);
  EXPECT_EQ(QOpenGLContext::currentContext(), surface->Context());
  ref.done();
  EXPECT_TRUE(ref.begin(nullptr));
}

TEST_F(QGLSurfaceRefTest, has_the_context_of_the_other_at_hand_for_deletions_while_that_one_lives) {
  QGLSurfaceRef ref(surface.get());
  ASSERT_TRUE(ref.init(nullptr));
  surface->end(nullptr, false);
  {
    const ActiveSurface active(&ref);
    EXPECT_TRUE(active);
    EXPECT_TRUE(surface->isActive());
  }
  EXPECT_FALSE(surface->isActive());
  window->destroy();
  EXPECT_TRUE(ActiveSurface(&ref));
  EXPECT_FALSE(surface->isActive());
  surface.reset();
  EXPECT_FALSE(ActiveSurface(&ref));
}

TEST_F(QGLSurfaceRefTest, done_leaves_the_context_alone) {
  QGLSurfaceRef ref(surface.get());
  ASSERT_TRUE(ref.init(nullptr));
  EXPECT_TRUE(ref.done());
  EXPECT_FALSE(ref.isValid());
  EXPECT_EQ(ref.Text(), nullptr);
  EXPECT_EQ(ref.properties.GetString("state"), "deleted");
  EXPECT_NE(surface->Context(), nullptr);
  EXPECT_EQ(QOpenGLContext::currentContext(), surface->Context());
  EXPECT_EQ(surface->properties.GetString("state"), "ready");
}

TEST_F(QGLSurfaceRefTest, flush_does_not_swap) {
  QGLSurfaceRef ref(surface.get());
  QTD::PROPERTIES properties;
  properties.Set("window", pointerText(window.get()));
  properties.Set("force", "1");
  ASSERT_TRUE(ref.init(&properties));
  surface->glEnable(0xffff);
  ref.flush(&properties);
  ref.end(&properties, true);
  EXPECT_EQ(glError(), uint32_t{GL_INVALID_ENUM});  // a swap would have asked for it
}

TEST_F(QGLSurfaceRefTest, draws_in_its_own_coordinates) {
  QGLSurfaceRef ref(surface.get());
  QTD::PROPERTIES size = sizeList("100", "50");
  ASSERT_TRUE(ref.init(&size));
  clearWindow();
  const Drawn drawn = FeedbackOf([&] { ref.polyline({{10, 10}, {20, 50}}, nullptr, 1, 0); });
  ASSERT_EQ(drawn.lines.size(), 2u);
  EXPECT_FLOAT_EQ(drawn.lines[0].y, 40);
  EXPECT_FLOAT_EQ(drawn.lines[1].y, 0);
}

}  // namespace
