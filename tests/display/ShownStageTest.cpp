// The stage whose picture is on the screen is prepared anew or released by the host.
#include "QTD/image/HeldRecords.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

class ShownStage : public OpenGLDisplay {
 protected:
  static constexpr uint8_t kLevel = 90, kNextLevel = 200;

  void ShowFirst(bool opengl) {
    SetVariant(opengl);
    Start(picture);
    ASSERT_TRUE(display->Viewer() && Window()) << "there is no OpenGL";
    ASSERT_TRUE(WaitFor([&] { return Window()->isExposed() && Screen()->isReady(); }));
    ShowNext(picture);
    ASSERT_TRUE(Window()->hasImage());
  }
  // As hosts do it: with the stage's own formats.
  static uint32_t PrepareAnew(ZynImgProcessor& stage) {
    ZynImage source = *stage.GetImageInfo(true), output = *stage.GetImageInfo(false);
    return stage.Init(&source, &output);
  }
  ZynImgProcessor* Stage(const char* name) { return display->GetProcessor()->FindProcessor(name); }
  // Of a record that its stage has deleted.
  static bool IsHeld(const ZynImage* record) { return QTD::LeaveToHolders(const_cast<ZynImage*>(record)); }

  // All that looks at the picture in the window.
  void LookAtIt() {
    parent.resize(parent.width() + 17, parent.height() + 9);
    Settle(40);
    Window()->render();
    Run("cmd.display.view.fit", {{"mode", "2"}});
    Settle(20);
  }
  void ExpectOnScreen(uint8_t level) {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) return;
    const QImage seen = Grab();
    EXPECT_EQ(seen.pixel(seen.width() / 2, seen.height() / 2), qRgb(level, level, level));
  }

  HostImage picture{ZYN_PIXEL_MONO8, 120, 80, 0, kLevel};
  HostImage next{ZYN_PIXEL_MONO8, 120, 80, 0, kNextLevel};
};

TEST_F(ShownStage, prepared_anew_leaves_its_picture_in_the_window) {
  ShowFirst(false);
  const ZynImage* const shown = display->GetProcessor()->Out();
  ASSERT_EQ(PrepareAnew(*Stage("image.display")), 0u);
  EXPECT_TRUE(IsHeld(shown));
  LookAtIt();
  EXPECT_TRUE(Window()->hasImage());
  ExpectOnScreen(kLevel);
  ShowNext(next);
  EXPECT_FALSE(IsHeld(shown));
  ExpectOnScreen(kNextLevel);
}

TEST_F(ShownStage, released_leaves_its_picture_in_the_window) {
  ShowFirst(false);
  const ZynImage* const shown = display->GetProcessor()->Out();
  Stage("image.display")->Release();
  EXPECT_TRUE(IsHeld(shown));
  LookAtIt();
  EXPECT_TRUE(Window()->hasImage());
  ExpectOnScreen(kLevel);
  // The chain fails, and the picture is taken away with the display's next initialisation.
  const std::size_t before = receiver.Images();
  ASSERT_EQ(display->DisplayVideo(&next.record), 0u);
  ASSERT_TRUE(WaitForImages(before + 1));
  EXPECT_NE(receiver.LastResult(), "0");
  ASSERT_EQ(display->Initialize(&picture.record), 0u);
  EXPECT_FALSE(IsHeld(shown));
}

TEST_F(ShownStage, goes_with_the_display_after_it_was_released) {
  ShowFirst(false);
  const ZynImage* const shown = display->GetProcessor()->Out();
  Stage("image.display")->Release();
  display.reset();
  EXPECT_FALSE(IsHeld(shown));
}

// On the card the picture goes with its texture: nothing is shown until the next one.
TEST_F(ShownStage, prepared_anew_or_released_is_no_longer_drawn_on_the_screen) {
  for (const char* name : {"image.display", "image.coloration"}) {
    for (const bool release : {false, true}) {
      SCOPED_TRACE(std::string(name) + (release ? " released" : " prepared anew"));
      ShowFirst(true);
      ExpectOnScreen(kLevel);
      const ZynImage* const shown = display->GetProcessor()->Out();
      const bool isShown = Stage(name)->Out() == shown;
      EXPECT_EQ(isShown, std::string(name) == "image.coloration");
      if (release) {
        Stage(name)->Release();
      } else {
        ASSERT_EQ(PrepareAnew(*Stage(name)), 0u);
      }
      if (isShown) {
        EXPECT_EQ(shown->attachments, nullptr);
      }
      LookAtIt();
      EXPECT_TRUE(Window()->hasImage());
      if (release) continue;
      if (std::string(name) == "image.coloration") Stage(name)->Enable(false);
      ShowNext(next);
      ExpectOnScreen(kNextLevel);
      if (isShown) {
        EXPECT_FALSE(IsHeld(shown));
      }
    }
  }
}

}  // namespace
}  // namespace display_test
