// What the guide says of the OpenGL variant; where no OpenGL is to be had, that it says so.
#include "tests/guide/GuideTest.h"

namespace guide {

class OpenGL : public testing::Test {
 protected:
  OpenGL() {
    widget.resize(420, 320);
    widget.show();
    display = ZynDisplayQGL::CreateComponent(&widget);
    image.bytes.assign(image.bytes.size(), 100);
  }
  ~OpenGL() override { ZynDisplayQGL::DeleteComponent(display); }
  bool Start() {
    const uint32_t code = display->Initialize(&image.record);
    EXPECT_TRUE(code == 0 || code == 0x80FF0001u) << code;
    return code == 0;
  }
  ZynImgProcessor* Stage(const char* name) { return display->GetProcessor()->FindProcessor(name); }
  bool Shows(const QColor& colour) {
    display->DisplayVideo(&image.record);
    const auto near = [](int one, int other) { return std::abs(one - other) < 2; };
    return WaitFor([&] {
      const QColor seen = OnScreen(200, 150);
      return near(seen.red(), colour.red()) && near(seen.green(), colour.green()) &&
             near(seen.blue(), colour.blue());
    });
  }

  QWidget widget;
  ZynDisplayProcessor* display = nullptr;
  Picture image{ZYN_PIXEL_MONO8, 640, 480};
};

TEST_F(OpenGL, it_is_its_own_default) {
  EXPECT_EQ(Parameter(display->GetComponent(), "system.opengl"), "1");
}

TEST_F(OpenGL, eight_bits_are_corrected_and_gamma_is_of_parts_of_the_top) {
  if (!Start()) return;
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  QTD::ARGUMENTS gain{{"gain.r", "1.5"}, {"gain.g", "1.5"}, {"gain.b", "1.5"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &gain), 1u);
  EXPECT_TRUE(Shows(QColor(150, 150, 150))) << qPrintable(OnScreen(200, 150).name());
  QTD::ARGUMENTS gamma{{"gain.r", "1"}, {"gain.g", "1"}, {"gain.b", "1"}, {"gamma", "0.5"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &gamma), 1u);
  EXPECT_TRUE(Shows(QColor(160, 160, 160))) << qPrintable(OnScreen(200, 150).name());  // 255 sqrt(100 / 255)
}

TEST_F(OpenGL, marks_are_read_when_the_stage_is_prepared) {
  if (!Start()) return;
  ZynImgProcessor* marks = Stage("image.coloration");
  ASSERT_NE(marks, nullptr);
  ZynImage own = *marks->GetImageInfo(true);
  own.attachments = nullptr;
  own.ownedData = nullptr;
  marks->GetComponent()->SetParameterInt("thres.lo", 101);
  marks->GetComponent()->SetParameterInt("color.lo", 0xFF0000);
  EXPECT_EQ(marks->Init(&own, nullptr), 0u);
  EXPECT_TRUE(Shows(QColor(0, 0, 255))) << qPrintable(OnScreen(200, 150).name());
  EXPECT_FALSE(marks->Enable(false));
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
}

// The window is painted and laid out anew before the next image comes.
TEST_F(OpenGL, a_stage_that_is_prepared_anew_shows_the_next_image) {
  if (!Start()) return;
  EXPECT_TRUE(Shows(QColor(100, 100, 100)));
  ZynImgProcessor* marks = Stage("image.coloration");
  ZynImage own = *marks->GetImageInfo(true);
  EXPECT_EQ(marks->Init(&own, nullptr), 0u);
  widget.resize(440, 340);
  WaitFor([] { return false; }, 50);
  marks->Enable(false);
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
}

}  // namespace guide
