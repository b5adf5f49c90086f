// The arguments of the view commands: absent, empty, out of range and malformed.
#include <stdexcept>
#include <utility>

#include "tests/display/PictureFixture.h"
#include "tests/display/RecordingHost.h"

namespace display_test {

class ViewArguments : public PictureTest {
 protected:
  // A window of 200 by 100 pixels with the picture's middle in its own, whatever the platform lays out. No
  // event may be handled afterwards.
  void ShowAt(double scale) {
    Show();
    Screen()->setWindowSize(200, 100);
    Screen()->properties.Set("zoom.align", "0");
    Screen()->setScale(scale);
    Screen()->setCenter(0.5, 0.5);
    ASSERT_DOUBLE_EQ(Screen()->Scale(), scale);
  }
  double Scale() { return Screen()->Scale(); }
  // The point that the command makes of one in another system.
  std::string Translated(QTD::ARGUMENTS args) {
    EXPECT_EQ(Run("cmd.display.view.translate", &args), 1u);
    return args["pos.x"] + " " + args["pos.y"] + " " + args["result"];
  }
  // Lets the window's client area be the part of the viewer that this widget covers.
  void Cover(QWidget& cover, int x, int y, int width, int height) {
    cover.setGeometry(x, y, width, height);
    cover.show();
    cover.raise();
    ASSERT_EQ(display->Viewer()->childAt(display->Viewer()->rect().center()), &cover);
  }
};

TEST_F(ViewArguments, zooming_out_takes_what_is_given_like_zooming_in) {
  ShowAt(2.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.in"), 1u);
  EXPECT_NEAR(Scale(), 2.0 / 1.1, 1e-9);
  for (const char* coefficient : {"0", "-1.", "-7", "", "0.000001"}) {
    Screen()->setScale(2.0);
    EXPECT_EQ(Run("cmd.display.view.zoom.out", {{"zoom.coef", coefficient}}), 1u) << coefficient;
    EXPECT_NEAR(Scale(), 2.2, 1e-9) << coefficient;
  }
  Screen()->setScale(2.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.out", {{"zoom.coef", "1.5"}}), 1u);
  EXPECT_NEAR(Scale(), 3.0, 1e-9);
  // Just above the limit the coefficient counts: the step is held at the scale's own.
  Screen()->setScale(2.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.out", {{"zoom.coef", "0.5"}}), 1u);
  EXPECT_NEAR(Scale(), 1.0, 1e-9);
}

TEST_F(ViewArguments, a_step_by_1_changes_nothing_and_answers_0) {
  ShowAt(2.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.in", {{"zoom.coef", "1"}}), 0u);
  EXPECT_DOUBLE_EQ(Scale(), 2.0);
}

TEST_F(ViewArguments, a_fit_beyond_the_modes_is_held_by_the_screen_and_stored_as_given) {
  Show();
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "-5"}}), 1u);
  EXPECT_EQ(Parameter("display.view.fit"), "-5");
  EXPECT_EQ(Screen()->properties.GetString("fit"), "0");
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "7"}}), 1u);
  EXPECT_EQ(Parameter("display.view.fit"), "7");
  EXPECT_EQ(Screen()->properties.GetString("fit"), "3");
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "2 and more"}}), 1u);  // a number ends where it ends
  EXPECT_EQ(Parameter("display.view.fit"), "2 and more");
  EXPECT_EQ(Screen()->properties.GetString("fit"), "2");
}

TEST_F(ViewArguments, scales_that_no_picture_can_have_are_refused) {
  ShowAt(2.0);
  // 1000 image pixels on at most 40000 window pixels, and 800 on at least 60.
  const double least = 1000 / 40000.0, most = 800 / 60.0;
  const std::pair<const char*, double> rows[] = {
      {"", least}, {"0", least}, {"0.001", least}, {"13.4", most}, {"1e300", most}, {"inf", most},
  };
  for (const auto& [scale, held] : rows) {
    Screen()->setScale(2.0);
    EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", scale}}), 0u) << scale;
    EXPECT_DOUBLE_EQ(Scale(), held) << scale;
  }
  for (const char* scale : {"-1", "-0.5", "nan"}) {
    Screen()->setScale(2.0);
    EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", scale}}), 0u) << scale;
    EXPECT_DOUBLE_EQ(Scale(), 2.0) << scale;
  }
  EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", "0.025"}}), 1u);  // the limit itself
  EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", "0.0250001"}}), 1u);
}

TEST_F(ViewArguments, translation_between_each_pair_of_systems) {
  ShowAt(2.0);  // the picture is 500 by 400 window pixels, its corner at (-150, -150)
  EXPECT_EQ(Translated({{"pos.x", "0"}, {"pos.y", "0"}, {"cs.src", "win"}, {"cs.dst", "img"}}),
            "300.000000 300.000000 1");
  EXPECT_EQ(Translated({{"pos.x", "0"}, {"pos.y", "0"}, {"cs.src", "win"}, {"cs.dst", "scr"}}),
            "150.000000 150.000000 1");
  EXPECT_EQ(Translated({{"pos.x", "10"}, {"pos.y", "20"}, {"cs.src", "img"}, {"cs.dst", "win"}}),
            "-145.000000 -140.000000 1");
  EXPECT_EQ(Translated({{"pos.x", "10"}, {"pos.y", "20"}, {"cs.src", "scr"}, {"cs.dst", "win"}}),
            "-140.000000 -130.000000 1");
  EXPECT_EQ(Translated({{"pos.x", "10"}, {"pos.y", "20"}, {"cs.src", "scr"}, {"cs.dst", "img"}}),
            "20.000000 40.000000 1");
  EXPECT_EQ(Translated({{"pos.x", "1000.5"}, {"pos.y", "20"}, {"cs.src", "img"}, {"cs.dst", "img"}}),
            "1000.500000 20.000000 0");
}

TEST_F(ViewArguments, translation_reads_each_absent_number_as_0) {
  ShowAt(2.0);
  EXPECT_EQ(Translated({{"pos.x", "10"}, {"cs.src", "img"}, {"cs.dst", "scr"}}), "5.000000 0.000000 1");
  EXPECT_EQ(Translated({{"pos.y", "10"}, {"cs.src", "img"}, {"cs.dst", "scr"}}), "0.000000 5.000000 1");
  EXPECT_EQ(Translated({{"pos.x", ""}, {"pos.y", ""}, {"cs.src", "img"}, {"cs.dst", "scr"}}),
            "0.000000 0.000000 1");
}

TEST_F(ViewArguments, translation_goes_as_far_as_the_systems_are_known) {
  ShowAt(2.0);
  // Without a known target fractions of the picture come back.
  const char* const fractions = "0.250000 0.500000 0";
  for (const char* target : {"", "base", "BASE", "room"}) {
    EXPECT_EQ(Translated({{"pos.x", "250"}, {"pos.y", "400"}, {"cs.src", "img"}, {"cs.dst", target}}),
              fractions)
        << target;
  }
  EXPECT_EQ(Translated({{"pos.x", "250"}, {"pos.y", "400"}, {"cs.src", "img"}}), fractions);
  // Without a known source the point comes back as it was.
  const char* const unchanged = "250.000000 400.000000 0";
  for (const char* source : {"", "base", "room"}) {
    EXPECT_EQ(Translated({{"pos.x", "250"}, {"pos.y", "400"}, {"cs.src", source}, {"cs.dst", "img"}}),
              unchanged)
        << source;
  }
  EXPECT_EQ(Translated({{"pos.x", "250"}, {"pos.y", "400"}, {"cs.dst", "img"}}), unchanged);
}

TEST_F(ViewArguments, a_malformed_number_leaves_the_arguments_and_the_view_as_they_were) {
  ShowAt(2.0);
  Screen()->setCenter(0.4, 0.6);
  for (const char* name : {"translate", "at"}) {
    for (const char* malformed : {"pos.x", "pos.y"}) {
      QTD::ARGUMENTS args{{"pos.x", "0.5"}, {"pos.y", "0.5"}, {"cs.src", "img"}, {"cs.dst", "win"}};
      args[malformed] = "left";
      const QTD::ARGUMENTS before = args;
      EXPECT_THROW(Run((std::string("cmd.display.view.") + name).c_str(), &args), std::invalid_argument)
          << name << " " << malformed;
      EXPECT_EQ(args, before) << name << " " << malformed;
    }
  }
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.4, 0.6));
  EXPECT_DOUBLE_EQ(Scale(), 2.0);
}

TEST_F(ViewArguments, a_centre_in_an_unknown_system_is_used_as_it_came) {
  ShowAt(0.5);
  for (const char* source : {"room", "", "Base"}) {
    Screen()->setCenter(0.5, 0.5);
    EXPECT_EQ(
        Run("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}, {"cs", source}, {"base", "img"}}), 1u)
        << source;
    EXPECT_EQ(Screen()->Center(), QTD::PairD(0.4, 0.6)) << source;
  }
  // A known one, to an unknown target: fractions.
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "400"}, {"pos.y", "480"}, {"cs", "img"}, {"base", "room"}}),
            1u);
  EXPECT_NEAR(Screen()->Center().first, 0.4, 1e-12);
  EXPECT_NEAR(Screen()->Center().second, 0.6, 1e-12);
  // And to the one named "base".
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "600"}, {"pos.y", "320"}, {"cs", "img"}, {"base", "base"}}),
            1u);
  EXPECT_NEAR(Screen()->Center().first, 0.6, 1e-12);
  EXPECT_NEAR(Screen()->Center().second, 0.4, 1e-12);
}

TEST_F(ViewArguments, a_centre_without_a_system_is_a_fraction) {
  ShowAt(0.5);
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}, {"base", "img"}}), 1u);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.4, 0.6));
  // 110 window pixels right of the corner at (-900, -750) are 1010 of 2000; 30 down 780 of 1600.
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "0"}}), 1u);
  Screen()->setCenter(0.5, 0.5);
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "110"}, {"pos.y", "30"}, {"cs", "win"}}), 1u);
  EXPECT_NEAR(Screen()->Center().first, 0.505, 1e-12);
  EXPECT_NEAR(Screen()->Center().second, 0.4875, 1e-12);
}

TEST_F(ViewArguments, the_part_in_view_is_the_client_area_from_the_windows_corner) {
  ShowAt(2.0);
  QWidget cover(display->Viewer());
  Cover(cover, 0, 0, 120, 90);
  QTD::ARGUMENTS args;
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  EXPECT_EQ(args["pos.x"], "300.000000");
  EXPECT_EQ(args["pos.y"], "300.000000");
  EXPECT_EQ(args["dim.w"], "240.000000");
  EXPECT_EQ(args["dim.h"], "180.000000");
  EXPECT_EQ(args["inside"], "1");
  EXPECT_EQ(args.size(), 5u);
}

TEST_F(ViewArguments, a_client_area_counts_by_its_absolute_size) {
  ShowAt(2.0);
  const QPoint middle = display->Viewer()->rect().center();
  QWidget cover(display->Viewer());
  // Its width less its place is -30, its height less its place -20.
  Cover(cover, middle.x() - 10, middle.y() - 10, middle.x() - 40, middle.y() - 30);
  ASSERT_EQ(Window()->geometry(false).size(), QSize(-30, -20));
  QTD::ARGUMENTS args;
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  EXPECT_EQ(args["dim.w"], "60.000000");
  EXPECT_EQ(args["dim.h"], "40.000000");
  EXPECT_EQ(args["inside"], "1");
}

TEST_F(ViewArguments, a_view_is_inside_when_both_its_corner_and_its_size_are) {
  ShowAt(5.0);  // 200 by 160 window pixels, as wide as the window
  QWidget cover(display->Viewer());
  Cover(cover, 0, 0, 110, 100);
  QTD::ARGUMENTS args;
  Screen()->setWindowSize(100, 80);
  Screen()->setScale(10.0);  // 100 by 80: the corner is the picture's, the client area is larger
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  EXPECT_EQ(args["pos.x"], "0.000000");
  EXPECT_EQ(args["pos.y"], "0.000000");
  EXPECT_EQ(args["dim.w"], "1000.000000");
  EXPECT_EQ(args["dim.h"], "800.000000");
  EXPECT_EQ(args["inside"], "0");

  Screen()->setWindowSize(400, 300);
  Screen()->setScale(5.0);  // 200 by 160: the client area fits, the window's corner lies outside
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  EXPECT_EQ(args["pos.x"], "0.000000");
  EXPECT_EQ(args["dim.w"], "550.000000");
  EXPECT_EQ(args["dim.h"], "500.000000");
  EXPECT_EQ(args["inside"], "0");
}

TEST_F(ViewArguments, a_switch_is_off_for_0_and_empty_and_on_for_all_else) {
  display->SetParameterInt("system.timer", 1000000);
  Show();
  for (const auto& [command, object] :
       {std::pair("cmd.display.view.status", "@status"), std::pair("cmd.display.view.info", "@info")}) {
    const std::string parameter = std::string(command).substr(4);
    for (const char* on : {"5", "-1", "1"}) {
      display->SetParameterString(parameter.c_str(), on);
      EXPECT_EQ(Run(command), 1u);
      EXPECT_EQ(Parameter(parameter.c_str()), "0") << parameter << " " << on;
      EXPECT_FALSE(Has(object)) << parameter << " " << on;
    }
    for (const char* off : {"", "0"}) {
      display->SetParameterString(parameter.c_str(), off);
      EXPECT_EQ(Run(command), 1u);
      EXPECT_EQ(Parameter(parameter.c_str()), "1") << parameter << " " << off;
      EXPECT_TRUE(Has(object)) << parameter << " " << off;
    }
  }
}

TEST_F(ViewArguments, the_notification_flags_are_kept_where_no_new_ones_can_be_read) {
  Show();
  RecordingHost host;
  display->AddNotification(&host);
  const auto hears = [&] { return HearsTheView(host, *display); };
  const char* const command = "cmd.display.view.nofication";
  EXPECT_EQ(Run(command, {{"flags", "1"}}), 1u);
  EXPECT_TRUE(hears());
  EXPECT_THROW(Run(command, {{"flags", "none"}}), std::invalid_argument);
  EXPECT_TRUE(hears());
  EXPECT_THROW(Run(command, {{"flags", "99999999999"}}), std::out_of_range);
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run(command, {{"flags", "-1"}}), 1u);
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run(command, {{"flags", ""}}), 1u);  // an empty text is 0
  EXPECT_FALSE(hears());
  EXPECT_THROW(Run(command, {{"flags", "all"}}), std::invalid_argument);
  EXPECT_FALSE(hears());
  EXPECT_EQ(Run(command, {{"flags", "-3"}}), 1u);  // all bits but the second
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run(command), 1u);
  EXPECT_FALSE(hears());
  display->DelNotification(&host);
}

TEST_F(ViewArguments, no_command_touches_an_error_that_is_there) {
  display->SetParameterInt("system.timer", 1000000);
  Show();
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);
  ASSERT_EQ(display->LastError(), 8u);
  for (const char* name :
       {"view.zoom.in",     "view.zoom.out",   "view.fit",     "view.scale",       "view.translate",
        "view.at",          "view.status",     "view.status",  "view.info",        "view.info",
        "view.image",       "view.nofication", "view.unknown", "overlay.params",   "overlay.text.add",
        "overlay.rect.add", "overlay.add",     "overlay.del",  "overlay.text.del", "overlay.rect.del"}) {
    QTD::ARGUMENTS args{{"text.text", "a"}};
    Run((std::string("cmd.display.") + name).c_str(), &args);
    EXPECT_EQ(display->LastError(), 8u) << name;
  }
  QTD::ARGUMENTS menu;
  Run("cmd.system.menu.create", &menu);
  Run("cmd.system.menu.delete", &menu);
  EXPECT_EQ(display->LastError(), 8u);
  display->SetParameterInt("display.view.bgcolor", 5);
  EXPECT_EQ(display->LastError(), 8u);
}

}  // namespace display_test
