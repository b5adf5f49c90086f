// A host whose own windows want another format of OpenGL than the display: it sets a default one for all.
#include <QSurfaceFormat>

#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

struct Wish {
  const char* name;
  QSurfaceFormat format;
};

Wish WithAlpha() {
  QSurfaceFormat format;
  format.setAlphaBufferSize(8);
  return {"alpha", format};
}
Wish WithSamples() {
  QSurfaceFormat format;
  format.setSamples(4);
  return {"samples", format};
}
Wish WithDepthAndStencil() {
  QSurfaceFormat format;
  format.setDepthBufferSize(24);
  format.setStencilBufferSize(8);
  return {"depth_and_stencil", format};
}
Wish WithProfile() {
  QSurfaceFormat format;
  format.setVersion(3, 3);
  format.setProfile(QSurfaceFormat::CoreProfile);
  return {"core_profile", format};
}

class DefaultFormat : public OpenGLDisplay, public testing::WithParamInterface<Wish> {
 protected:
  void SetUp() override {
    former = QSurfaceFormat::defaultFormat();
    QSurfaceFormat::setDefaultFormat(GetParam().format);
  }
  void TearDown() override { QSurfaceFormat::setDefaultFormat(former); }

  QSurfaceFormat former;
};

TEST_P(DefaultFormat, of_the_host_leaves_the_picture_as_it_is) {
  HostImage picture(ZYN_PIXEL_RGB8, 120, 80);
  FillHalves(picture);
  ASSERT_NO_FATAL_FAILURE(ShowOnCard(picture));
  ExpectHalves(Grab());
}

INSTANTIATE_TEST_SUITE_P(Wishes, DefaultFormat,
                         testing::Values(WithAlpha(), WithSamples(), WithDepthAndStencil(), WithProfile()),
                         [](const testing::TestParamInfo<Wish>& wish) {
                           return std::string(wish.param.name) + "_on_the_screen";
                         });

}  // namespace
}  // namespace display_test
