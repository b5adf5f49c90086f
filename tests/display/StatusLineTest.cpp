// What the status line and the information text show of a running display, and when they do not appear.
#include <QKeyEvent>
#include <utility>

#include "tests/display/PictureFixture.h"
#include "tests/display/RepaintCounter.h"

namespace display_test {

class StatusLine : public PictureTest {
 protected:
  // Without ticks of the display's own.
  StatusLine() { display->SetParameterInt("system.timer", 1000000); }

  // The value of one item of the line that is shown.
  std::string Item(const std::string& name) {
    const std::string text = " " + Attribute("@status", "text");
    const std::string head = " " + name + "=\"";
    const std::size_t start = text.find(head);
    if (start == std::string::npos) return "absent";
    const std::size_t from = start + head.size();
    return text.substr(from, text.find('"', from) - from);
  }
  // Fills a meter with that many events a second, over so long a time that a moment more does not matter.
  static void Fill(QTD::RateMeter& meter, int rate) {
    const int64_t seconds = 10000;
    const int64_t now = QTD::TickMilliseconds();
    meter.ResetAt(now - seconds * 1000);
    for (int64_t event = 0; event < seconds * rate; ++event) meter.TickAt(true, now - seconds * 1000);
  }
  void Key(int code) {
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier);
    QCoreApplication::sendEvent(Window(), &press);
  }
};

TEST_F(StatusLine, a_tick_with_the_line_switched_off_changes_the_rates_and_nothing_else) {
  Start(image);
  ASSERT_NE(display->AddText("the host's own", 1, 1, nullptr), "");
  Fill(display->InputRate(), 8);
  Fill(display->OutputRate(), 6);
  EXPECT_EQ(display->InputRate().Rate(), 0);
  EXPECT_EQ(Repaints(*Window(), [&] { display->slotTimer(); }), 0);
  EXPECT_NEAR(display->InputRate().Rate(), 8, 0.01);
  EXPECT_NEAR(display->OutputRate().Rate(), 6, 0.01);
  EXPECT_EQ(display->InputRate().Total(), 80000);
  EXPECT_EQ(display->OutputRate().Total(), 60000);
  EXPECT_EQ(Objects().count(), 1);
  EXPECT_FALSE(Has("@status"));
}

TEST_F(StatusLine, the_frame_rate_is_the_mean_of_the_last_three) {
  Start(image);
  Fill(display->OutputRate(), 6);
  const char* const expected[] = {"2.0", "4.0", "6.0", "6.0"};  // three zeros at first
  for (const char* rate : expected) {
    display->slotTimer();
    Run("cmd.display.view.status");
    EXPECT_EQ(Item("fps"), rate);
    Run("cmd.display.view.status");
  }
  Fill(display->OutputRate(), 9);
  display->SetParameterInt("display.view.status", 1);
  display->slotTimer();
  EXPECT_EQ(Item("fps"), "7.0");
}

TEST_F(StatusLine, a_tick_shows_the_rate_that_it_has_just_measured) {
  Start(image);
  Fill(display->OutputRate(), 3);
  display->SetParameterInt("display.view.status", 1);
  display->slotTimer();
  EXPECT_EQ(Item("fps"), "1.0");
}

TEST_F(StatusLine, images_received_and_processed_are_counted_apart) {
  Show();
  for (int frame = 0; frame < 4; ++frame) display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(2));
  Settle(20);
  ASSERT_EQ(receiver.Images(), 2u);  // three were overtaken
  Run("cmd.display.view.status");
  EXPECT_EQ(Item("in/p"), "5/2");
}

TEST_F(StatusLine, the_centre_is_shown_with_two_decimals) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  ASSERT_TRUE(display->SetCenter(0.2567, 0.7349, false));
  Run("cmd.display.view.status");
  EXPECT_EQ(Item("at"), "0.26;0.73");
  EXPECT_EQ(Item("zoom"), "200%");
  EXPECT_EQ(Item("size"), "1000x800");
}

TEST_F(StatusLine, the_last_image_is_the_one_shown) {
  image.record.imageID = 0x700000063;
  Show();
  Run("cmd.display.view.status");
  EXPECT_EQ(Item("last"), "000099");
}

TEST_F(StatusLine, the_chains_time_is_shown_as_it_stands) {
  Show();
  auto* chain = dynamic_cast<QTD::ComponentImpl*>(display->GetProcessor());
  ASSERT_NE(chain, nullptr);
  chain->Parameters().Set("time", "a while");
  Run("cmd.display.view.status");
  EXPECT_EQ(Item("proc"), "a while");
}

TEST_F(StatusLine, colour_and_font_follow_their_parameters) {
  Show();
  display->SetParameterString("display.overlay.status.clr", "255");
  display->SetParameterString("display.overlay.status.font", "default");
  for (const auto& [command, object] :
       {std::pair("cmd.display.view.status", "@status"), std::pair("cmd.display.view.info", "@info")}) {
    Run(command);
    EXPECT_EQ(Attribute(object, "text.clr"), "255") << object;
    EXPECT_EQ(Attribute(object, "text.font"), "default") << object;
  }
  display->SetParameterString("display.overlay.status.clr", "511");
  display->SetParameterString("display.overlay.status.font", "");
  display->slotTimer();
  EXPECT_EQ(Attribute("@status", "text.clr"), "511");
  EXPECT_EQ(Attribute("@status", "text.font"), "");
  EXPECT_EQ(Attribute("@info", "text.clr"), "255");  // the information is drawn once
}

TEST_F(StatusLine, the_information_stays_as_it_is_until_it_is_switched_off) {
  Show();
  Run("cmd.display.view.info");
  const std::string before = Attribute("@info", "text");
  display->Parameters().Set("system.objectID", "another");
  display->slotTimer();
  EXPECT_EQ(Attribute("@info", "text"), before);
  Run("cmd.display.view.info");
  Run("cmd.display.view.info");
  EXPECT_EQ(Attribute("@info", "text"), "ID=\"another\" type=\"CPU\"");
}

TEST_F(StatusLine, the_information_of_the_other_variant_names_the_driver) {
  Show();
  QTDSurface* surface = Window()->Surface();
  surface->properties.Set("gl.vendor", "Maker");
  surface->properties.Set("gl.version", "4.5");
  display->Parameters().Set("system.objectID", "mine");
  display->Parameters().Set("system.opengl", "1");
  Run("cmd.display.view.info");
  EXPECT_EQ(Attribute("@info", "text"), "ID=\"mine\" type=\"GPU\" vendor=\"Maker\" opengl=\"4.5\"");
  EXPECT_EQ(Attribute("@info", "adjust"), "1");
  Run("cmd.display.view.info");
  display->Parameters().Set("system.opengl", "2");  // only 1 is that variant
  Run("cmd.display.view.info");
  EXPECT_EQ(Attribute("@info", "text"), "ID=\"mine\" type=\"CPU\"");
  EXPECT_EQ(Attribute("@info", "adjust"), "0");
}

TEST_F(StatusLine, an_error_keeps_them_from_appearing_in_a_window_that_is_there) {
  Show();
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);
  ASSERT_EQ(display->LastError(), 8u);
  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Parameter("display.view.status"), "1");
  EXPECT_EQ(Parameter("display.view.info"), "1");
  EXPECT_EQ(Objects().count(), 0);
  display->slotTimer();
  EXPECT_EQ(Objects().count(), 0);
  EXPECT_EQ(display->LastError(), 8u);
  // The tick brings the line as soon as the error is gone; the information has no timer.
  display->DisplayVideo(nullptr);
  display->slotTimer();
  EXPECT_TRUE(Has("@status"));
  EXPECT_FALSE(Has("@info"));
}

TEST_F(StatusLine, a_host_that_has_its_own_objects_keeps_them) {
  Show();
  QTD::ARGUMENTS args{{"objectID", "mine"}};
  ASSERT_EQ(display->AddText("a", 1, 1, &args), "mine");
  Run("cmd.display.view.status");
  Run("cmd.display.view.info");
  EXPECT_EQ(Objects().count(), 3);
  Run("cmd.display.view.status");
  EXPECT_FALSE(Has("@status"));
  EXPECT_TRUE(Has("@info"));
  Run("cmd.display.view.info");
  EXPECT_FALSE(Has("@info"));
  EXPECT_TRUE(Has("mine"));
}

TEST_F(StatusLine, the_keys_s_and_d_switch_it_and_s_and_i_the_information) {
  Show();
  Key(Qt::Key_S);
  Key(Qt::Key_D);
  EXPECT_TRUE(WaitFor([&] { return Has("@status"); }));
  EXPECT_EQ(Parameter("display.view.status"), "1");
  EXPECT_EQ(Parameter("display.view.info"), "absent");
  Key(Qt::Key_S);
  Key(Qt::Key_I);
  EXPECT_TRUE(WaitFor([&] { return Has("@info"); }));
  EXPECT_TRUE(Has("@status"));
  Key(Qt::Key_S);
  Key(Qt::Key_D);
  EXPECT_TRUE(WaitFor([&] { return !Has("@status"); }));
  Key(Qt::Key_S);
  Key(Qt::Key_I);
  EXPECT_TRUE(WaitFor([&] { return !Has("@info"); }));
  EXPECT_EQ(Parameter("display.view.status"), "0");
  EXPECT_EQ(Parameter("display.view.info"), "0");
}

}  // namespace display_test
