// A chain on a surface that cannot begin, and to whom errors of the driver are told. Needs an X server.
#include <algorithm>

#include "ChainFakes.h"
#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "gl/AskedSurface.h"
#include "gl/GLFixture.h"

using chain_test::FakeDisplay;
using chain_test::Picture;

namespace {

constexpr uint32_t kFailed = 0x80FF0001;

class QglChainBegin : public GLFixture {
 protected:
  QglChainBegin() { surface = std::make_unique<AskedSurface>(); }

  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    display.Publish(surface.get());
    surface->end(nullptr, false);
  }
  uint32_t Run(QTDProcessor& chain) { return chain.ProcessImage(format, nullptr, nullptr); }

  AskedSurface& Asked() { return static_cast<AskedSurface&>(*surface); }
  int64_t TimesAsked(const char* where) {
    return std::count(Asked().asked.begin(), Asked().asked.end(), where);
  }

  FakeDisplay display;
  const Picture format{12, 10, ZYN_PIXEL_MONO8};
};

TEST_F(QglChainBegin, is_not_built_while_the_native_window_is_gone_on_the_screen) {
  QTDProcessor chain(&display, true);
  window->destroy();
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(Run(chain), kFailed);
  window->create();
  EXPECT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(Run(chain), 0u);
  EXPECT_FALSE(surface->isActive());
}

TEST_F(QglChainBegin, is_not_built_on_a_display_of_the_processors_variant_on_the_screen) {
  chain_test::Journal journal;
  chain_test::FakeSurface memory(&journal);
  display.Publish(&memory);
  QTDProcessor chain(&display, false);
  chain.SetParameterInt("opengl", 1);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_TRUE(journal.empty());  // its painter is not asked for
  chain.SetParameterInt("opengl", 0);
  EXPECT_EQ(chain.Init(format), 0u);
}

TEST_F(QglChainBegin, outlives_the_native_window_and_is_built_anew_on_the_screen) {
  QTDProcessor chain(&display, true);
  ASSERT_EQ(chain.Init(format), 0u);
  window->destroy();
  EXPECT_EQ(Run(chain), kFailed);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  window->create();
  EXPECT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(Run(chain), 0u);
}

TEST_F(QglChainBegin, waits_once_for_a_context_that_is_not_to_be_had_on_the_screen) {
  QTDProcessor chain(&display, true);
  ASSERT_EQ(chain.Init(format), 0u);
  window->setSurfaceType(QSurface::RasterSurface);  // no context takes it
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(Run(chain), kFailed);
  EXPECT_GE(timer.elapsed(), 3000);
  EXPECT_LT(timer.elapsed(), 5000);
  timer.start();
  EXPECT_EQ(Run(chain), kFailed);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_LT(timer.elapsed(), 2000);
  window->setSurfaceType(QSurface::OpenGLSurface);
  EXPECT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(Run(chain), 0u);
}

TEST_F(QglChainBegin, tells_errors_by_the_place_where_they_happened_on_the_screen) {
  QTDProcessor chain(&display, true);
  for (const char* place : {"QTDProcessor::initQGL()", "QGLIPImage::ProcessImage()"}) {
    Asked().faulty = place;
    Asked().asked.clear();
    Asked().properties.Set("error", "");
    EXPECT_EQ(chain.Init(format), 0u);
    Run(chain);
    EXPECT_EQ(parameter("error"), std::string(place) + " OpenGL error 1280 (GL_INVALID_ENUM)");
    EXPECT_GE(TimesAsked(place), 1);
  }
}

TEST_F(QglChainBegin, asks_for_errors_once_at_each_end_of_a_run_on_the_screen) {
  QTDProcessor chain(&display, true);
  ASSERT_EQ(chain.Init(format), 0u);
  Asked().asked.clear();
  ASSERT_EQ(Run(chain), 0u);
  EXPECT_EQ(TimesAsked("QGLSurface::begin()"), 1);
  EXPECT_EQ(TimesAsked("QGLSurface::end()"), 1);
  EXPECT_EQ(Asked().asked.front(), "QGLSurface::begin()");
  EXPECT_EQ(Asked().asked.back(), "QGLSurface::end()");
}

}  // namespace
