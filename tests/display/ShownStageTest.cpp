// The stage whose picture is on the screen is prepared anew or released by the host.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "QTD/image/HeldRecords.h"
#include "tests/display/HostCodeStage.h"
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

  // Writes another level into what comes in.
  class Relighting : public HostCodeStage {
   public:
    Relighting() : HostCodeStage([] { return 0u; }) {}
    uint32_t ProcessImage(const ZynImage* source, ZynImage*, void*) override {
      std::fill_n(source->imageData, source->imageSize, kNextLevel);
      return 0;
    }
  };

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

TEST_F(ShownStage, prepared_anew_comes_back_with_a_rebuild_on_the_screen) {
  for (const bool opengl : {false, true}) {
    SCOPED_TRACE(opengl);
    ShowFirst(opengl);
    ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", new Relighting), 0u);
    const ZynImage* const shown = display->GetProcessor()->Out();
    ZynImgProcessor& stage = *Stage(opengl ? "image.coloration" : "image.display");
    ASSERT_EQ(PrepareAnew(stage), 0u);
    if (opengl) stage.Enable(false);
    const int64_t before = display->OutputRate().Total();
    ASSERT_EQ(Run("cmd.image.rebuild"), 1u);
    ASSERT_TRUE(WaitFor([&] { return display->OutputRate().Total() == before + 1; }));
    EXPECT_EQ(display->Viewer()->Picture(), display->GetProcessor()->Out());
    EXPECT_NE(display->Viewer()->Picture(), shown);
    EXPECT_FALSE(IsHeld(shown));
    Window()->render();
    Settle(120);
    EXPECT_TRUE(Window()->hasImage());
    ExpectOnScreen(kNextLevel);
  }
}

// The window takes whole pictures only, whatever a thread of the host's does to the stage.
TEST_F(ShownStage, prepared_and_released_on_another_thread_while_frames_are_shown) {
  ShowFirst(false);
  ZynImgProcessor& stage = *Stage("image.display");
  ZynImage source = *stage.GetImageInfo(true), output = *stage.GetImageInfo(false);
  std::atomic<bool> stop{false};
  std::atomic<int> rounds{0}, failures{0};
  std::thread host([&] {
    while (!stop) {
      failures += stage.Init(&source, &output) != 0;
      std::this_thread::sleep_for(std::chrono::microseconds(300));
      if (++rounds % 2 == 0) stage.Release();
    }
  });
  QElapsedTimer clock;
  clock.start();
  int good = 0;
  while (clock.elapsed() < 1000) {
    const std::size_t before = receiver.Images();
    display->DisplayVideo(&picture.record);
    EXPECT_TRUE(WaitForImages(before + 1));
    good += receiver.LastResult() == "0";
    Window()->render();
  }
  stop = true;
  host.join();
  EXPECT_EQ(failures, 0);
  EXPECT_GT(rounds, 10);
  EXPECT_GT(good, 0);
  ASSERT_EQ(stage.Init(&source, &output), 0u);
  ShowNext(next);
  EXPECT_EQ(display->Viewer()->Picture(), display->GetProcessor()->Out());
  ExpectOnScreen(kNextLevel);
}

}  // namespace
}  // namespace display_test
