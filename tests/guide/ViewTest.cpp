// Parameters of a controller, and the commands that move the view.
#include "tests/guide/GuideTest.h"

namespace guide {

class View : public GuideTest {
 protected:
  Picture image{ZYN_PIXEL_MONO8, 1200, 900};
};

TEST_F(View, parameters) {
  settings->SetParameterInt("system.opengl", 0);
  settings->SetParameterString("system.parentWidget", PointerText(&widget).c_str());
  settings->SetParameterInt("system.timer", 500);
  settings->SetParameterDouble("display.init.view.at.y", 0.5);
  settings->SetParameterInt("processing.image.downscale", 0);
  // [controller]
  settings->SetParameterBool("system.silent", false);            // tell of formats that cannot be shown
  settings->SetParameterInt("display.init.view.fit", 3);         // one to one,
  settings->SetParameterDouble("display.init.view.at.x", 0.75);  // in the right half
  const uint32_t code = display->Initialize(&image.record);
  settings->SetParameterInt("display.view.bgcolor", 0x804020);
  double scale = 0;
  settings->GetParameterDouble("display.view.scale", &scale);  // image pixels to one window pixel
  // [/controller]
  ASSERT_EQ(code, 0u);
  EXPECT_EQ(Number("display.view.fit"), 3);
  EXPECT_NE(Parameter(settings, "processor"), "0");
  EXPECT_NE(Parameter(settings, "surface"), "none");
  EXPECT_EQ(Parameter(settings, "strict"), "0");
  EXPECT_EQ(PointerFrom(Parameter(settings, "system.objectID")), static_cast<void*>(display));
  Show(image.record);
  QTD::ARGUMENTS point{{"pos.x", "900"}, {"pos.y", "450"}, {"cs.src", "img"}, {"cs.dst", "win"}};
  ASSERT_EQ(display->RunCommand("cmd.display.view.translate", &point), 1u);
  EXPECT_NEAR(std::stod(point["pos.x"]), DisplayWindow()->width() / 2.0, 1);
}

TEST_F(View, parameters_that_hold_at_once) {
  Show(image.record);
  settings->SetParameterInt("display.view.bgcolor", 0x804020);
  settings->SetParameterDouble("display.view.zoom.coef", 1.5);  // the ladder does not ask for it
  Command(display, "cmd.display.view.scale");
  Command(display, "cmd.display.view.zoom.in");
  EXPECT_EQ(Number("display.view.scale"), 0.8);
  Command(display, "cmd.display.view.scale", {{"scale", "15"}});
  EXPECT_TRUE(WaitFor([] { return OnScreen(10, 10) == QColor(0x20, 0x40, 0x80); }))
      << qPrintable(OnScreen(10, 10).name());
}

TEST_F(View, colours_and_fonts_of_overlays) {
  Show(image.record);
  settings->SetParameterInt("display.overlay.line.width", 3);
  settings->SetParameterInt("display.overlay.line.clr", 0x00FF00);
  Command(display, "cmd.display.overlay.rect.add",
          {{"rect.x", "50"}, {"rect.y", "50"}, {"rect.w", "40"}, {"rect.h", "40"}});
  EXPECT_TRUE(WaitFor([] { return OnScreen(50, 70) == QColor(0, 255, 0); }));
  settings->SetParameterInt("display.overlay.text.clr", 0xFF0000);
  settings->SetParameterString("display.overlay.text.font", "large");
  Command(display, "cmd.display.overlay.text.add",
          {{"text.text", "x"}, {"text.pos.x", "120"}, {"text.pos.y", "120"}});
  EXPECT_TRUE(WaitFor([] { return Stands(QColor(0, 0, 255), {110, 100, 40, 50}); }));
  settings->SetParameterString("display.overlay.status.font", "fixed");
  settings->SetParameterInt("display.overlay.status.clr", 0x0000FF);
  Command(display, "cmd.display.view.status");
  EXPECT_TRUE(WaitFor([] { return Stands(Qt::red, {0, 0, 400, 30}); }));
}

TEST_F(View, parameters_by_command) {
  Command(display, "cmd.parameter.set", {{"name", "system.timer"}, {"value", "250"}});
  QTD::ARGUMENTS asked{{"name", "system.timer"}};
  display->RunCommand("cmd.parameter.get", &asked);
  const std::string timer = asked["value"];
  EXPECT_EQ(timer, "250");
  EXPECT_EQ(Parameter(settings, "system.timer"), "250");
  Show(image.record);
  QTD::ARGUMENTS fit{{"name", "display.view.fit"}};
  EXPECT_EQ(display->RunCommand("cmd.parameter.get", &fit), 0u);
  EXPECT_EQ(fit.count("value"), 0u);
}

TEST_F(View, zoom_fit_and_place) {
  Show(image.record);
  // [view]
  Command(display, "cmd.display.view.fit", {{"mode", "2"}});
  Command(display, "cmd.display.view.scale", {{"scale", "0.5"}});  // two window pixels to one of the image
  Command(display, "cmd.display.view.at", {{"pos.x", "0.25"}, {"pos.y", "0.5"}});                // parts
  Command(display, "cmd.display.view.at", {{"pos.x", "300"}, {"pos.y", "200"}, {"cs", "img"}});  // pixels
  Command(display, "cmd.display.view.zoom.in");

  QTD::ARGUMENTS point{{"pos.x", "300"}, {"pos.y", "200"}, {"cs.src", "img"}, {"cs.dst", "win"}};
  display->RunCommand("cmd.display.view.translate", &point);
  const double inWindow = std::stod(point["pos.x"]);
  const bool onPicture = point["result"] == "1";
  // [/view]
  EXPECT_NEAR(Number("display.view.scale"), 0.4, 1e-6);  // 250 per cent
  EXPECT_EQ(Command(display, "cmd.display.view.zoom.out"), 1u);
  EXPECT_NEAR(Number("display.view.scale"), 0.5, 1e-6);
  QTD::ARGUMENTS view;
  ASSERT_EQ(display->RunCommand("cmd.display.view.image", &view), 1u);
  const double left = std::stod(view["pos.x"]), width = std::stod(view["dim.w"]);
  EXPECT_NEAR(left + width / 2, 300, 1);
  EXPECT_TRUE(onPicture);
  EXPECT_NEAR(inWindow, DisplayWindow()->width() / 2.0, 1);
  EXPECT_EQ(view["inside"], "1");
  EXPECT_GT(std::stod(view["dim.h"]), 10);
  EXPECT_GT(std::stod(view["pos.y"]), 10);
}

TEST_F(View, before_the_first_image_the_picture_is_0_by_0) {
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  ASSERT_TRUE(WaitFor([] { return DisplayWindow() && DisplayWindow()->isExposed(); }));
  for (const char* name : {"zoom.in", "zoom.out", "fit", "scale", "at"})
    EXPECT_EQ(Command(display, (std::string("cmd.display.view.") + name).c_str()), 1u) << name;
  EXPECT_EQ(Command(display, "cmd.display.view.scale", {{"scale", "0.5"}}), 0u);
  QTD::ARGUMENTS view, point{{"pos.x", "3"}, {"pos.y", "3"}, {"cs.src", "win"}, {"cs.dst", "img"}};
  EXPECT_EQ(display->RunCommand("cmd.display.view.image", &view), 1u);
  EXPECT_EQ(std::stod(view["dim.w"]), 0);
  EXPECT_EQ(view["inside"], "1");
  EXPECT_EQ(display->RunCommand("cmd.display.view.translate", &point), 1u);
  EXPECT_EQ(std::stod(point["pos.x"]), 0);
  EXPECT_EQ(point["result"], "1");
}

TEST_F(View, coordinate_systems) {
  Show(image.record);
  Command(display, "cmd.display.view.scale", {{"scale", "0.5"}});
  QTD::ARGUMENTS point{{"pos.x", "300"}, {"pos.y", "200"}, {"cs.src", "img"}, {"cs.dst", "scr"}};
  ASSERT_EQ(display->RunCommand("cmd.display.view.translate", &point), 1u);
  EXPECT_NEAR(std::stod(point["pos.x"]), 600, 1e-3);
  EXPECT_NEAR(std::stod(point["pos.y"]), 400, 1e-3);
  const QTD::ARGUMENTS same[] = {{{"cs", "scr"}, {"pos.x", "1200"}, {"pos.y", "900"}},
                                 {{"cs", "img"}, {"pos.x", "600"}, {"pos.y", "450"}},
                                 {{"cs", "base"}, {"pos.x", "0.5"}, {"pos.y", "0.5"}}};
  for (const QTD::ARGUMENTS& place : same) {
    Command(display, "cmd.display.view.at", {{"pos.x", "0.3"}, {"pos.y", "0.3"}});
    EXPECT_EQ(Command(display, "cmd.display.view.at", place), 1u);
    QTD::ARGUMENTS view;
    display->RunCommand("cmd.display.view.image", &view);
    EXPECT_NEAR(std::stod(view["pos.x"]) + std::stod(view["dim.w"]) / 2, 600, 1) << place.at("cs");
  }
}

TEST_F(View, results_of_the_view_commands) {
  Picture other(ZYN_PIXEL_MONO8, 64, 48);
  EXPECT_EQ(Command(display, "cmd.display.view.zoom.in"), 0u);  // no window yet
  EXPECT_EQ(Command(display, "cmd.display.view.fit"), 0u);
  EXPECT_EQ(Command(display, "cmd.display.view.at"), 0u);
  EXPECT_EQ(Command(display, "cmd.display.view.translate"), 0u);
  EXPECT_EQ(Command(display, "cmd.display.view.image"), 0u);
  Show(image.record);
  EXPECT_EQ(Command(display, "cmd.display.view.fit"), 1u);
  EXPECT_EQ(Number("display.view.fit"), 1);
  EXPECT_EQ(Command(display, "cmd.display.view.fit", {{"mode", "9"}}), 1u);  // held
  EXPECT_EQ(Number("display.view.fit"), 3);
  EXPECT_EQ(Command(display, "cmd.display.view.scale"), 1u);
  EXPECT_EQ(Number("display.view.scale"), 1);
  EXPECT_EQ(Command(display, "cmd.display.view.scale", {{"scale", "1000"}}), 0u);     // held at the limit
  EXPECT_EQ(Number("display.view.scale"), 15);                                        // 900 lines on 60
  EXPECT_EQ(Command(display, "cmd.display.view.zoom.in", {{"zoom.coef", "7"}}), 1u);  // a step is a step
  EXPECT_EQ(Number("display.view.scale"), 10);
  QTD::ARGUMENTS off{{"pos.x", "-1"}, {"pos.y", "0"}, {"cs.src", "img"}, {"cs.dst", "win"}};
  EXPECT_EQ(display->RunCommand("cmd.display.view.translate", &off), 1u);
  EXPECT_EQ(off["result"], "0");
  EXPECT_THROW(Command(display, "cmd.display.view.scale", {{"scale", "wide"}}), std::invalid_argument);
  EXPECT_EQ(Command(display, "cmd.no.such.command"), 0u);
  EXPECT_EQ(Command(display, "@no.such.message"), 0u);
}

TEST_F(View, status_line_and_information) {
  Show(image.record);
  Command(display, "cmd.display.view.status");  // each call switches: size, last image, rates, zoom, place
  Command(display, "cmd.display.view.info");    // variant; with OpenGL vendor and version
  int64_t status = 0;
  settings->GetParameterInt("display.view.status", &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(Parameter(settings, "display.view.info"), "1");
  EXPECT_EQ(Command(display, "cmd.display.view.status"), 1u);
  EXPECT_EQ(Parameter(settings, "display.view.status"), "0");
}

TEST_F(View, an_initialisation_by_command) {
  Command(display, "@init.display", {{"inputImageFormat", PointerText(&image.record)}});  // as Initialize
  const bool ready = Parameter(settings, "processor") != "0";
  EXPECT_TRUE(ready);
}

}  // namespace guide
