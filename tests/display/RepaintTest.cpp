// Which operations and commands ask for a new painting, and how often.
#include "tests/display/RepaintCounter.h"

namespace display_test {

class Repaint : public PictureTest {
 protected:
  int Count(const std::function<void()>& action) { return Repaints(*Window(), action); }
  int CountRun(const char* name, QTD::ARGUMENTS args = {}) {
    return Count([&] { Run(name, &args); });
  }
  // An image that does not fit leaves an error.
  void LeaveError() {
    HostImage small(ZYN_PIXEL_MONO8, 8, 8);
    display->DisplayVideo(&small.record);
    ASSERT_EQ(display->LastError(), 8u);
  }
};

TEST_F(Repaint, a_zoom_asks_once_and_only_with_refresh) {
  Show();
  ASSERT_TRUE(display->SetScale(2.0, false));
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->Zoom(true, 0, true)); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->Zoom(false, 0, true)); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->Zoom(true, 0, false)); }), 0);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->CanZoom(true, 0)); }), 0);
}

TEST_F(Repaint, a_fit_asks_once_and_only_with_refresh) {
  Show();
  for (int mode : {0, 1, 2, 3}) {
    EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetFit(mode, true)); }), 1) << mode;
    EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetFit(mode, false)); }), 0) << mode;
  }
}

TEST_F(Repaint, a_scale_asks_once_and_only_with_refresh_and_when_it_was_taken) {
  Show();
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetScale(2.0, true)); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetScale(3.0, false)); }), 0);
  EXPECT_EQ(Count([&] { EXPECT_FALSE(display->SetScale(1000.0, true)); }), 0);
}

TEST_F(Repaint, a_centre_asks_once_and_only_with_refresh) {
  Show();
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetCenter(0.4, 0.6, true)); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetCenter(0.5, 0.5, false)); }), 0);
}

TEST_F(Repaint, view_commands_that_move_the_picture_ask_once) {
  Show();
  ASSERT_TRUE(display->SetScale(2.0, false));
  EXPECT_EQ(CountRun("cmd.display.view.zoom.in"), 1);
  EXPECT_EQ(CountRun("cmd.display.view.zoom.out"), 1);
  EXPECT_EQ(CountRun("cmd.display.view.fit", {{"mode", "2"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.view.scale", {{"scale", "2"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.4"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.view.scale", {{"scale", "1000"}}), 0);  // held, so not taken
}

TEST_F(Repaint, view_commands_that_only_tell_do_not_ask) {
  Show();
  EXPECT_EQ(CountRun("cmd.display.view.translate", {{"cs.src", "win"}, {"cs.dst", "img"}}), 0);
  EXPECT_EQ(CountRun("cmd.display.view.image"), 0);
  EXPECT_EQ(CountRun("cmd.display.view.nofication", {{"flags", "7"}}), 0);
  EXPECT_EQ(CountRun("cmd.display.view.unknown"), 0);
  EXPECT_EQ(CountRun("cmd.display.overlay.params", {{"text.clr", "7"}}), 0);
}

TEST_F(Repaint, status_and_information_ask_when_they_come_and_when_they_go) {
  display->SetParameterInt("system.timer", 1000000);
  Show();
  for (const char* name : {"cmd.display.view.status", "cmd.display.view.info"}) {
    EXPECT_EQ(CountRun(name), 1) << name;
    EXPECT_EQ(CountRun(name), 1) << name;
  }
}

TEST_F(Repaint, an_object_that_comes_or_goes_asks_once) {
  Show();
  std::string text, rect;
  EXPECT_EQ(Count([&] { text = display->AddText("a", 1, 1, nullptr); }), 1);
  EXPECT_EQ(Count([&] { rect = display->AddRect(1, 1, 5, 5, nullptr); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_EQ(display->AddText("", 1, 1, nullptr), ""); }), 0);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->DeleteObject(text)); }), 1);
  EXPECT_EQ(Count([&] { EXPECT_FALSE(display->DeleteObject(text)); }), 0);
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->DeleteObject(rect)); }), 1);

  EXPECT_EQ(CountRun("cmd.display.overlay.text.add", {{"text.text", "a"}, {"objectID", "one"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.overlay.rect.add", {{"rect.w", "5"}, {"objectID", "two"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.overlay.text.del", {{"objectID", "one"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.overlay.rect.del", {{"objectID", "two"}}), 1);
  EXPECT_EQ(CountRun("cmd.display.overlay.del", {{"objectID", "two"}}), 0);
}

TEST_F(Repaint, a_background_colour_set_afterwards_asks_once) {
  Show();
  EXPECT_EQ(Count([&] { display->SetParameterInt("display.view.bgcolor", 255); }), 1);
  EXPECT_EQ(Screen()->properties.GetString("color"), "255");
  // Any other parameter does not.
  EXPECT_EQ(Count([&] { display->SetParameterInt("display.view.other", 255); }), 0);
}

TEST_F(Repaint, with_an_error_the_background_colour_is_stored_and_not_painted) {
  Show();
  LeaveError();
  EXPECT_EQ(Count([&] { display->SetParameterInt("display.view.bgcolor", 511); }), 0);
  EXPECT_EQ(Screen()->properties.GetString("color"), "511");
  EXPECT_EQ(Parameter("display.view.bgcolor"), "511");
}

TEST_F(Repaint, with_an_error_no_object_comes_or_goes) {
  Show();
  const std::string kept = display->AddText("a", 1, 1, nullptr);
  LeaveError();
  QTD::ARGUMENTS pairs{{"text.clr", "77"}};
  EXPECT_EQ(Count([&] {
              EXPECT_EQ(display->AddText("b", 1, 1, nullptr), "");
              EXPECT_EQ(display->AddRect(1, 1, 5, 5, nullptr), "");
              EXPECT_FALSE(display->DeleteObject(kept));
              EXPECT_FALSE(display->SetOverlayProperties(&pairs));
              EXPECT_FALSE(display->SetOverlayVariables(&pairs));
            }),
            0);
  EXPECT_EQ(Objects().count(), 1);
  EXPECT_EQ(Objects().Defaults().GetString("text.clr"), "0");
  EXPECT_EQ(Objects().Parser()->variables.GetString("text.clr", "absent"), "absent");
  EXPECT_EQ(display->LastError(), 8u);
  // The view needs the screen only.
  EXPECT_EQ(Count([&] { EXPECT_TRUE(display->SetScale(2.0, true)); }), 1);
}

// While the viewer takes a picture in it is not waited for: the change shows with the painting that follows.
TEST_F(Repaint, a_change_during_a_drawing_in_progress_shows_at_the_next_drawing) {
  Show();
  ASSERT_NE(display->AddText("leaves", 1, 1, nullptr), "");
  const std::string leaving = Objects().idAt(0);
  DrawingInProgress drawing(*display->Viewer());
  std::string text, rect;
  bool deleted = false, zoomed = false;
  EXPECT_EQ(Count([&] {
              text = display->AddText("comes", 1, 1, nullptr);
              rect = display->AddRect(1, 1, 5, 5, nullptr);
              deleted = display->DeleteObject(leaving);
              zoomed = display->SetScale(2.0, true);
            }),
            0);
  EXPECT_NE(text, "");
  EXPECT_NE(rect, "");
  EXPECT_TRUE(deleted);
  EXPECT_TRUE(zoomed);
  drawing.End();
  EXPECT_EQ(Objects().count(), 2);
  EXPECT_GE(Count([&] {
              display->DisplayVideo(&image.record);
              ASSERT_TRUE(WaitForImages(2));
            }),
            1);
}

}  // namespace display_test
