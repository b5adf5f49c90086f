// A thousand changes of the variant while pictures come: what each of them made has gone again.
#include "gl/surface/QGLSurface.h"
#include "support/ResidentMemory.h"
#include "tests/display/PictureFixture.h"
#include "tests/display/Sanitized.h"

namespace display_test {
namespace {

constexpr int kSwitches = kSanitized ? 60 : 1000;
constexpr int kWarmUp = kSwitches / 5;  // until caches of fonts, of the driver and of the allocator are full

class VariantSwitch : public PictureTest {
 protected:
  QGLSurface* Surface() { return dynamic_cast<QGLSurface*>(Window()->Surface()); }

  // How many names live in the display's context, as the driver counts them.
  std::vector<int> Names() {
    QGLSurface& gl = *Surface();
    std::vector<int> counts(4, 0);
    if (!gl.begin(nullptr)) return {};
    for (GLuint name = 1; name <= 500; ++name) {
      counts[0] += gl.glIsTexture(name);
      counts[1] += gl.glIsFramebuffer(name);
      counts[2] += gl.glIsRenderbuffer(name);
      counts[3] += gl.glIsProgram(name);
    }
    gl.end(nullptr, false);
    return counts;
  }
};

TEST_F(VariantSwitch, a_thousand_times_in_mid_run_leaves_nothing_behind_on_the_screen) {
  HostImage picture(ZYN_PIXEL_BAYERRG12P, 96, 64);
  display->AddNotification(&receiver);
  display->SetParameterInt("image.notification.flags.set", 1);
  std::vector<int> names;
  int64_t early = 0;
  for (int n = 0; n < kSwitches; ++n) {
    const bool opengl = n % 2 == 0;
    display->SetParameterInt("system.opengl", opengl);
    ASSERT_EQ(display->Initialize(&picture.record), 0u) << n;
    const std::size_t before = receiver.Images();
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
    ASSERT_EQ(Surface() != nullptr, opengl) << n;
    if (n % 5 == 0) {
      ASSERT_TRUE(WaitForImages(before + 1)) << n;
      ASSERT_EQ(receiver.LastResult(), "0") << n;
    }
    if (opengl && n % 50 == 0) {
      if (names.empty()) names = Names();
      ASSERT_EQ(Names(), names) << n;
      ASSERT_GT(names.size(), 3u);
      ASSERT_GT(names[0], 0);
    }
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);  // still under way when the variant changes
    if (n == kWarmUp) early = ResidentBytes();
  }
  const int64_t growth = ResidentBytes() - early;
  RecordProperty("growth", std::to_string(growth));
  // One picture of this size a change would be 24 MiB, a context a change a lot more.
  if (!kSanitized) {
    EXPECT_LT(growth, 12 << 20);
  }
}

}  // namespace
}  // namespace display_test
