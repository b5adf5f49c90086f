// The commands that begin with "cmd.display.view".
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/display/PictureFixture.h"
#include "tests/display/RecordingHost.h"

namespace display_test {

class ViewCommands : public PictureTest {
 protected:
  double Number(QTD::ARGUMENTS& args, const char* name) { return std::atof(args[name].c_str()); }

  // Steps multiply by the coefficient, so that it can be seen.
  void ShowWithoutLadder(double scale) {
    Show();
    Screen()->properties.Set("zoom.align", "0");
    ASSERT_TRUE(display->SetScale(scale, false));
  }
};

// Tells which handler each name reaches.
class Dispatch : public QTDDisplay {
 public:
  Dispatch() : QTDDisplay(nullptr, false) {}
  uint32_t RunCommandDisplayView(const char*, QTD::ARGUMENTS*) override { return 2; }
  uint32_t RunCommandDisplayOverlay(const char*, QTD::ARGUMENTS*) override { return 3; }
  uint32_t RunCommandSystemMenu(const char*, QTD::ARGUMENTS*) override { return 7; }
};

TEST(CommandDispatch, a_prefix_fits_as_far_as_the_name_goes_and_case_counts) {
  const std::pair<const char*, uint32_t> rows[] = {
      {"", 0},
      {"c", 2},
      {"cmd", 2},
      {"cmd.display", 2},
      {"cmd.display.view", 2},
      {"cmd.display.view.anything", 2},
      {"cmd.display.viewer", 2},
      {"cmd.display.o", 3},
      {"cmd.display.overlay.text.add", 3},
      {"cmd.display.x", 0},
      {"cmd.s", 7},
      {"cmd.system.menu", 7},
      {"cmd.system.menus", 7},
      {"cmd.system.other", 0},
      {"Cmd", 0},
      {"cmd.Display.view.fit", 0},
      {"cmd.display.VIEW.fit", 0},
      {"cmd.display.Overlay.add", 0},
      {"cmd.system.MENU.create", 0},
      {"display.view.fit", 0},
      {"cmd.parameter.set", 0},
  };
  Dispatch display;
  for (const auto& [name, result] : rows) EXPECT_EQ(display.RunCommand(name, nullptr), result) << name;
  EXPECT_EQ(display.RunCommand(nullptr, nullptr), 0u);
}

TEST_F(ViewCommands, without_a_screen_nothing_moves_and_the_arguments_stay) {
  QTD::ARGUMENTS args{{"pos.x", "1"},    {"pos.y", "2"}, {"cs.src", "win"},
                      {"cs.dst", "img"}, {"mode", "2"},  {"scale", "2.0"}};
  const QTD::ARGUMENTS before = args;
  for (const char* name : {"zoom.in", "zoom.out", "fit", "scale", "translate", "at", "image"}) {
    const std::string command = std::string("cmd.display.view.") + name;
    EXPECT_EQ(Run(command.c_str(), &args), 0u) << name;
    EXPECT_EQ(Run(command.c_str()), 0u) << name;
  }
  EXPECT_EQ(args, before);
  EXPECT_EQ(Parameter("display.view.fit"), "3");
  EXPECT_EQ(Run("cmd.display.view.translate", {{"pos.x", "no number"}}), 0u);
  EXPECT_EQ(Run("cmd.display.view.nofication", {{"flags", "no number"}}), 1u);
}

TEST_F(ViewCommands, unknown_names_answer_0_and_case_behind_the_prefix_does_not_count) {
  Show();
  ASSERT_TRUE(display->SetFit(3, false));
  for (const char* name : {"cmd", "cmd.display.view", "cmd.display.view.", "cmd.display.view.fit.x",
                           "cmd.display.viewfit", "cmd.display.view.notification", "CMD.display.view.fit"}) {
    EXPECT_EQ(Run(name), 0u) << name;
  }
  EXPECT_EQ(display->RunCommandDisplayView(nullptr, nullptr), 0u);
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 3);
  EXPECT_EQ(Run("cmd.display.view.FIT", {{"mode", "2"}}), 1u);
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 2);
  EXPECT_EQ(display->RunCommandDisplayView("CMD.DISPLAY.VIEW.FIT", nullptr), 1u);
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 1);
}

TEST_F(ViewCommands, zooming_takes_the_coefficient_that_is_given) {
  ShowWithoutLadder(2.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.in", {{"zoom.coef", "2"}}), 1u);
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 1.0);
  EXPECT_EQ(Run("cmd.display.view.zoom.out", {{"zoom.coef", "3"}}), 1u);
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 3.0);
}

TEST_F(ViewCommands, zooming_by_no_or_no_positive_coefficient_takes_the_default_step) {
  ShowWithoutLadder(2.0);
  for (const char* coefficient : {"0", "-1.", "-7", ""}) {
    ASSERT_TRUE(display->SetScale(2.0, false));
    EXPECT_EQ(Run("cmd.display.view.zoom.in", {{"zoom.coef", coefficient}}), 1u) << coefficient;
    EXPECT_NEAR(Screen()->Scale(), 2.0 / 1.1, 1e-9) << coefficient;
  }
  ASSERT_TRUE(display->SetScale(2.0, false));
  EXPECT_EQ(Run("cmd.display.view.zoom.out"), 1u);  // without arguments
  EXPECT_NEAR(Screen()->Scale(), 2.0 * 1.1, 1e-9);

  display->SetParameterString("display.view.zoom.coef", "1.25");
  ASSERT_TRUE(display->SetScale(2.0, false));
  EXPECT_EQ(Run("cmd.display.view.zoom.in", {{"zoom.coef", "0"}}), 1u);
  EXPECT_NEAR(Screen()->Scale(), 2.0 / 1.25, 1e-9);
  ASSERT_TRUE(display->SetScale(2.0, false));
  EXPECT_EQ(Run("cmd.display.view.zoom.out", {}), 1u);
  EXPECT_NEAR(Screen()->Scale(), 2.0 * 1.25, 1e-9);
}

TEST_F(ViewCommands, a_malformed_number_raises_and_leaves_no_lock_held) {
  Show();
  const std::pair<const char*, const char*> rows[] = {
      {"cmd.display.view.zoom.in", "zoom.coef"}, {"cmd.display.view.zoom.out", "zoom.coef"},
      {"cmd.display.view.fit", "mode"},          {"cmd.display.view.scale", "scale"},
      {"cmd.display.view.translate", "pos.x"},   {"cmd.display.view.translate", "pos.y"},
      {"cmd.display.view.at", "pos.x"},          {"cmd.display.view.at", "pos.y"},
      {"cmd.display.view.nofication", "flags"},
  };
  const double scale = Screen()->Scale();
  for (const auto& [name, argument] : rows) {
    EXPECT_THROW(Run(name, {{argument, "wide"}}), std::invalid_argument) << name << " " << argument;
  }
  EXPECT_THROW(Run("cmd.display.view.fit", {{"mode", "99999999999"}}), std::out_of_range);
  display->SetParameterString("display.view.zoom.coef", "much");
  EXPECT_THROW(Run("cmd.display.view.zoom.in"), std::invalid_argument);
  for (const char* flag : {"status", "info"}) {
    const std::string name = std::string("display.view.") + flag;
    display->SetParameterString(name.c_str(), "maybe");
    EXPECT_THROW(Run(("cmd." + name).c_str()), std::invalid_argument) << name;
  }
  EXPECT_DOUBLE_EQ(Screen()->Scale(), scale);
  EXPECT_EQ(display->LastError(), 0u);
  uint32_t result = 0;
  std::thread other([&] { result = Run("cmd.display.view.fit", {{"mode", "2"}}); });
  other.join();
  EXPECT_EQ(result, 1u);
}

TEST_F(ViewCommands, fitting_stores_the_text_that_was_given) {
  Show();
  ASSERT_TRUE(display->SetFit(3, false));
  EXPECT_EQ(Run("cmd.display.view.fit"), 1u);
  EXPECT_EQ(Parameter("display.view.fit"), "1");
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 1);
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "02"}}), 1u);
  EXPECT_EQ(Parameter("display.view.fit"), "02");
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 2);
  EXPECT_THROW(Run("cmd.display.view.fit", {{"mode", "whole"}}), std::invalid_argument);
  EXPECT_EQ(Parameter("display.view.fit"), "02");
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", ""}}), 1u);  // an empty text is 0
  EXPECT_EQ(Screen()->properties.GetInt("fit"), 0);
}

TEST_F(ViewCommands, scaling_answers_whether_the_scale_was_taken) {
  Show();
  EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", "2.5"}}), 1u);
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 2.5);
  EXPECT_EQ(Run("cmd.display.view.scale"), 1u);
  EXPECT_DOUBLE_EQ(Screen()->Scale(), 1.0);
  EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", "1000"}}), 0u);  // held at the limit
}

TEST_F(ViewCommands, translation_counts_from_the_windows_centre) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  ASSERT_TRUE(display->SetCenter(0.5, 0.5, false));
  const double centerX = Window()->width() / 2.0, centerY = Window()->height() / 2.0;
  // Half an image pixel to a window pixel; the picture's middle is at the window's.
  QTD::ARGUMENTS args{{"pos.x", QTD::ToText(centerX + 10)},
                      {"pos.y", QTD::ToText(centerY - 20)},
                      {"cs.src", "win"},
                      {"cs.dst", "img"}};
  EXPECT_EQ(Run("cmd.display.view.translate", &args), 1u);
  EXPECT_EQ(args["pos.x"], "505.000000");
  EXPECT_EQ(args["pos.y"], "390.000000");
  EXPECT_EQ(args["result"], "1");

  args["cs.src"] = "IMG";
  args["cs.dst"] = "win";
  EXPECT_EQ(Run("cmd.display.view.translate", &args), 1u);
  EXPECT_EQ(args["pos.x"], QTD::ToText(centerX + 10));
  EXPECT_EQ(args["pos.y"], QTD::ToText(centerY - 20));
}

TEST_F(ViewCommands, a_point_outside_the_picture_is_translated_and_not_held) {
  Show();
  ASSERT_TRUE(display->SetScale(2.0, false));
  QTD::ARGUMENTS args{{"pos.x", "-100"}, {"pos.y", "900"}, {"cs.src", "img"}, {"cs.dst", "scr"}};
  EXPECT_EQ(Run("cmd.display.view.translate", &args), 1u);
  EXPECT_EQ(args["pos.x"], "-50.000000");
  EXPECT_EQ(args["pos.y"], "450.000000");
  EXPECT_EQ(args["result"], "0");
}

TEST_F(ViewCommands, translation_reads_what_is_absent_as_empty) {
  Show();
  QTD::ARGUMENTS args{{"cs.src", "img"}, {"cs.dst", "scr"}};
  EXPECT_EQ(Run("cmd.display.view.translate", &args), 1u);
  EXPECT_EQ(args["pos.x"], "0.000000");
  EXPECT_EQ(args["result"], "1");
  QTD::ARGUMENTS noSystems{{"pos.x", "7"}, {"pos.y", "8"}};
  EXPECT_EQ(Run("cmd.display.view.translate", &noSystems), 1u);
  EXPECT_EQ(noSystems["pos.x"], "7.000000");
  EXPECT_EQ(noSystems["pos.y"], "8.000000");
  EXPECT_EQ(noSystems["result"], "0");
  EXPECT_EQ(Run("cmd.display.view.translate"), 1u);  // works on a map of its own
}

TEST_F(ViewCommands, the_view_is_centred_at_a_fraction_or_at_a_point) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "0.25"}, {"pos.y", "0.75"}}), 1u);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.25, 0.75));
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "0.5"}, {"pos.y", "0.5"}, {"cs", "base"}}), 1u);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.5, 0.5));
  // 300 of 1000 image pixels, 600 of 800.
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "300"}, {"pos.y", "600"}, {"cs", "img"}}), 1u);
  EXPECT_NEAR(Screen()->Center().first, 0.3, 1e-9);
  EXPECT_NEAR(Screen()->Center().second, 0.75, 1e-9);
  // "BASE" is not exactly "base", and no system to carry a point from: the point is used as it came.
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}, {"cs", "BASE"}, {"base", "img"}}),
            1u);
  EXPECT_EQ(Screen()->Center(), QTD::PairD(0.4, 0.6));
}

TEST_F(ViewCommands, a_point_without_coordinates_is_the_first_one) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  // The picture is 2000 by 1600 window pixels: the centre closest to its corner leaves no gap.
  const double leastX = Window()->width() / 2.0 / 2000, leastY = Window()->height() / 2.0 / 1600;
  EXPECT_EQ(Run("cmd.display.view.at"), 1u);
  EXPECT_NEAR(Screen()->Center().first, leastX, 1e-9);
  EXPECT_NEAR(Screen()->Center().second, leastY, 1e-9);
}

TEST_F(ViewCommands, the_target_of_a_point_is_in_the_argument_base) {
  Show();
  ASSERT_TRUE(display->SetScale(0.5, false));
  // As image pixels the point is far beyond the fractions that a centre is given in.
  EXPECT_EQ(Run("cmd.display.view.at", {{"pos.x", "300"}, {"pos.y", "300"}, {"cs", "scr"}, {"base", "img"}}),
            1u);
  EXPECT_NEAR(Screen()->Center().first, 1 - Window()->width() / 2.0 / 2000, 1e-9);
  EXPECT_NEAR(Screen()->Center().second, 1 - Window()->height() / 2.0 / 1600, 1e-9);
}

TEST_F(ViewCommands, the_part_of_the_image_in_view_is_told) {
  Show();
  ASSERT_TRUE(display->SetScale(2.0, false));
  ASSERT_TRUE(display->SetCenter(0.5, 0.5, false));
  const QRect client = Window()->geometry(false);
  ASSERT_GT(client.width(), 0);
  QTD::ARGUMENTS args;
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  // Two image pixels to a window pixel, the image's middle at the window's.
  EXPECT_NEAR(Number(args, "pos.x"), 500 - Window()->width(), 1e-5);
  EXPECT_NEAR(Number(args, "pos.y"), 400 - Window()->height(), 1e-5);
  EXPECT_EQ(args["dim.w"], QTD::ToText(2.0 * client.width()));
  EXPECT_EQ(args["dim.h"], QTD::ToText(2.0 * client.height()));
  EXPECT_EQ(args["inside"], "1");
  EXPECT_EQ(Run("cmd.display.view.image"), 1u);

  // The picture is smaller than the window: its corner, and its whole size, are as far as it goes.
  ASSERT_TRUE(display->SetScale(10.0, false));
  EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
  EXPECT_EQ(args["pos.x"], "0.000000");
  EXPECT_EQ(args["pos.y"], "0.000000");
  EXPECT_EQ(args["dim.w"], "1000.000000");
  EXPECT_EQ(args["dim.h"], "800.000000");
  EXPECT_EQ(args["inside"], "0");
}

TEST_F(ViewCommands, the_windows_notification_flags_are_set) {
  Show();
  RecordingHost host;
  display->AddNotification(&host);
  const auto hears = [&] { return HearsTheView(host, *display); };
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run("cmd.display.view.nofication", {{"flags", "4"}}), 1u);
  EXPECT_FALSE(hears());
  EXPECT_EQ(Run("cmd.display.view.nofication", {{"flags", "1"}}), 1u);
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run("cmd.display.view.nofication", {{"flags", "-1"}}), 1u);  // keeps them
  EXPECT_TRUE(hears());
  EXPECT_EQ(Run("cmd.display.view.nofication"), 1u);  // absent flags read as 0
  EXPECT_FALSE(hears());
  display->DelNotification(&host);
}

TEST_F(ViewCommands, the_geometry_changes_at_once_on_any_thread) {
  Show();
  std::thread host([&] {
    for (int round = 0; round < 50; ++round) {
      Run("cmd.display.view.fit", {{"mode", "1"}});
      EXPECT_EQ(Run("cmd.display.view.scale", {{"scale", "2"}}), 1u);
      EXPECT_DOUBLE_EQ(Screen()->Scale(), 2.0);
      Run("cmd.display.view.zoom.in");
      Run("cmd.display.view.status");
      Run("cmd.display.view.info");
      QTD::ARGUMENTS args;
      EXPECT_EQ(Run("cmd.display.view.image", &args), 1u);
      Run("cmd.display.view.at", &args);
    }
  });
  host.join();  // the GUI thread is not needed for any of it
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(2));
}

}  // namespace display_test
