// The controller's note of its window's surface.
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

class SurfaceParameter : public OpenGLDisplay, public testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    SetVariant(GetParam());
    Start(picture);
    ASSERT_TRUE(display->Viewer() && Window());
    ASSERT_EQ(Parameter("surface"), Present());
    ASSERT_NE(Parameter("surface"), kNone);
  }
  std::string Present() { return QTD::ToText(static_cast<const void*>(Window()->Surface())); }

  const std::string kNone = QTD::ToText(nullptr);
  HostImage picture{ZYN_PIXEL_MONO8, 120, 80};
};

TEST_P(SurfaceParameter, follows_the_window_when_it_is_closed_and_opened) {
  ASSERT_TRUE(Window()->close());
  EXPECT_EQ(Window()->Surface(), nullptr);
  EXPECT_EQ(Parameter("surface"), kNone);
  ASSERT_TRUE(Window()->open());
  ASSERT_NE(Window()->Surface(), nullptr);
  EXPECT_EQ(Parameter("surface"), Present());
}

TEST_P(SurfaceParameter, is_null_when_the_host_has_deleted_the_window) {
  std::string atItsEnd;
  QObject::connect(Window(), &QTDWindow::signalClosing, [&] { atItsEnd = Parameter("surface"); });
  delete Window();
  EXPECT_EQ(atItsEnd, kNone);
  ASSERT_EQ(Window(), nullptr);
  EXPECT_EQ(Parameter("surface"), kNone);
  Settle(20);
}

INSTANTIATE_TEST_SUITE_P(Variants, SurfaceParameter, testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "on_the_card_on_the_screen" : "on_the_processor");
});

}  // namespace
}  // namespace display_test
