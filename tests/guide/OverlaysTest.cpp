// Texts and rectangles over the picture and in it.
#include "tests/guide/GuideTest.h"

namespace guide {

class Overlays : public GuideTest {
 protected:
  // One to one, with the picture's top left corner in the window's.
  void ShowCorner() {
    Show(image.record);
    Command(display, "cmd.display.view.fit", {{"mode", "3"}});
    Command(display, "cmd.display.view.at", {{"pos.x", "0"}, {"pos.y", "0"}});
  }
  static bool Appears(const QColor& colour, const QRect& part) {
    return WaitFor([&] { return Stands(colour, part); });
  }
  // The picture as it is converted with a text in it.
  std::vector<uint8_t> WithText(const std::string& text) {
    auto* stage =
        static_cast<ZynDisplayQT::ImageOverlay*>(display->GetProcessor()->FindProcessor("image.overlay"));
    QTD::ARGUMENTS args{
        {"text.text", text}, {"text.clr", "16777215"}, {"text.pos.x", "4"}, {"text.pos.y", "4"}};
    EXPECT_EQ(stage->RunCommand("cmd.text.add", &args), 1u);
    Picture input(ZYN_PIXEL_MONO8, 1200, 900), output(ZYN_PIXEL_MONO8, 1200, 900);
    input.record.imageID = 42;
    input.record.timestamp = 7777;
    EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
    EXPECT_EQ(stage->RunCommand("cmd.text.del", &args), 1u);
    return output.bytes;
  }

  Picture image{ZYN_PIXEL_MONO8, 1200, 900};
};

TEST_F(Overlays, a_text_and_a_rectangle_that_follow_the_picture) {
  ShowCorner();
  // [overlay]
  QTD::ARGUMENTS text{{"text.text", "part 17"}, {"text.clr", "65535"}, {"text.font", "large"},
                      {"text.pos.x", "120"},    {"text.pos.y", "80"},  {"cs", "img"}};
  display->RunCommand("cmd.display.overlay.text.add", &text);
  const std::string id = text["objectID"];  // made by the display, as none was given

  QTD::ARGUMENTS frame{{"objectID", "host.frame"},  // added again under its name, it moves
                       {"rect.x", "100"},          {"rect.y", "60"}, {"rect.w", "80"},
                       {"rect.h", "40"},           {"cs", "img"},    {"line.width", "2"},
                       {"line.clr", "16711680"}};  // blue
  display->RunCommand("cmd.display.overlay.rect.add", &frame);
  // [/overlay]
  ASSERT_FALSE(id.empty());
  EXPECT_TRUE(Appears(QColor(255, 255, 0), {120, 70, 90, 50}));
  EXPECT_TRUE(Appears(QColor(0, 0, 255), {100, 80, 1, 1}));
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.del", {{"objectID", id}}), 1u);
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.del", {{"objectID", id}}), 0u);
  EXPECT_EQ(Command(display, "cmd.display.overlay.del", {{"objectID", "host.frame"}}), 1u);
  EXPECT_TRUE(WaitFor([] { return OnScreen(100, 80) == Qt::black; }));
  EXPECT_EQ(Command(display, "cmd.display.overlay.rect.del", {{"objectID", "host.frame"}}), 0u);
}

TEST_F(Overlays, a_rectangle_is_kept_on_the_picture) {
  ShowCorner();
  EXPECT_EQ(Command(display, "cmd.display.overlay.rect.add",
                    {{"rect.x", "-50"},
                     {"rect.y", "20"},
                     {"rect.w", "90"},
                     {"rect.h", "40"},
                     {"cs", "img"},
                     {"line.clr", "255"},
                     {"adjust", "1"},
                     {"update", "1"}}),
            1u);
  EXPECT_TRUE(Appears(Qt::red, {0, 40, 3, 1}));
}

TEST_F(Overlays, a_text_in_a_corner_of_the_window) {
  ShowCorner();
  // [placed]
  QTD::ARGUMENTS variables{{"station", "Station 4"}};
  Command(display, "cmd.display.overlay.params", {{"vars", PointerText(&variables)}, {"text.clr", "65280"}});
  Command(display, "cmd.display.overlay.text.add",
          {{"text.text", "${station}${br}frame ${image.id:%06u} of ${date:%d.%m.%Y}"},
           {"text.pos.x", "3"},
           {"text.pos.y", "-1"}});  // bottom right
  // [/placed]
  const int right = DisplayWindow()->width(), bottom = DisplayWindow()->height();
  EXPECT_TRUE(Appears(QColor(0, 255, 0), {right / 2, bottom / 2, right / 2, bottom / 2}));
}

TEST_F(Overlays, each_code_has_its_place) {
  ShowCorner();
  const int right = DisplayWindow()->width(), bottom = DisplayWindow()->height();
  const QRect top(0, 0, right, bottom / 3), middle(0, bottom / 3, right, bottom / 3);
  const QRect low(0, bottom * 2 / 3, right, bottom - bottom * 2 / 3);
  const QRect west(0, 0, right / 3, bottom), centre(right / 3, 0, right / 3, bottom);
  const QRect east(right * 2 / 3, 0, right - right * 2 / 3, bottom);
  const std::pair<const char*, QRect> places[] = {
      {"1", top & west},      {"2", low & west},   {"3", low & east},  {"4", top & east},
      {"5", middle & centre}, {"7", low & centre}, {"9", top & centre}};
  for (const auto& [code, place] : places) {
    Command(display, "cmd.display.overlay.text.add",
            {{"objectID", "one"},
             {"text.text", "x"},
             {"text.clr", "255"},
             {"text.pos.x", code},
             {"text.pos.y", "-1"}});
    EXPECT_TRUE(Appears(Qt::red, place)) << code;
    Command(display, "cmd.display.overlay.del", {{"objectID", "one"}});
    EXPECT_TRUE(WaitFor([&place = place] { return !Stands(Qt::red, place); })) << code;
  }
}

TEST_F(Overlays, defaults) {
  ShowCorner();
  QTD::ARGUMENTS properties{{"back.mode", "1"}};
  Command(display, "cmd.display.overlay.params",
          {{"props", PointerText(&properties)}, {"text.font", "medium"}, {"text.clr", "65280"}});
  EXPECT_EQ(Parameter(settings, "display.overlay.text.font"), "medium");
  EXPECT_EQ(Parameter(settings, "display.overlay.text.clr"), "65280");
  Command(display, "cmd.display.overlay.text.add",
          {{"text.text", "x"}, {"text.pos.x", "10"}, {"text.pos.y", "40"}});
  EXPECT_TRUE(Appears(QColor(0, 255, 0), {10, 30, 60, 40}));
  const QRect window(0, 0, DisplayWindow()->width(), DisplayWindow()->height());
  EXPECT_FALSE(Stands(Qt::white, window));  // a band is for placed texts
  Command(display, "cmd.display.overlay.text.add",
          {{"text.text", "x"}, {"text.pos.x", "2"}, {"text.pos.y", "-1"}});
  EXPECT_TRUE(Appears(Qt::white, window));
}

TEST_F(Overlays, a_text_in_the_picture_itself) {
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const ZynImage& input = image.record;
  Picture target(ZYN_PIXEL_RGB8, 1200, 900);
  ZynImage& output = target.record;
  auto* stamp =
      static_cast<ZynDisplayQT::ImageOverlay*>(display->GetProcessor()->FindProcessor("image.overlay"));
  QTD::ARGUMENTS text{{"text.text", "${image.id:%06u}"},
                      {"text.clr", "16777215"},
                      {"text.pos.x", "2"},
                      {"text.pos.y", "-1"}};  // bottom left
  stamp->RunCommand("cmd.text.add", &text);
  display->ConvertImage(&input, &output);  // carries the text
  EXPECT_EQ(stamp->RunCommand("cmd.text.del", &text), 1u);
  EXPECT_GT(std::count(target.bytes.begin(), target.bytes.end(), 255), 20);
  QTD::ARGUMENTS rect{{"rect.x", "1"}, {"rect.y", "1"}, {"rect.w", "5"}, {"rect.h", "5"}};
  EXPECT_EQ(stamp->RunCommand("cmd.rect.add", &rect), 1u);  // kept, and not painted on the processor
  EXPECT_EQ(stamp->RunCommand("cmd.rect.del", &rect), 1u);
  EXPECT_EQ(stamp->RunCommand("cmd.del", &rect), 0u);
}

TEST_F(Overlays, what_templates_stand_for) {
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const std::pair<const char*, const char*> rows[] = {{"${image.id}", "00000042"},
                                                      {"${image.id:%u}", "42"},
                                                      {"${image.time}", "7777"},
                                                      {"${image.dims}", "1200x900"},
                                                      {"${image.dims:%u by %u}", "1200 by 900"},
                                                      {"${image.type}", "17301761"},
                                                      {"a${br}b", "a\nb"},
                                                      {"a${tab}b", "a\tb"},
                                                      {"a${unknown}b", "ab"}};
  const std::vector<uint8_t> nothing(image.bytes.size());
  for (const auto& [text, literal] : rows) {
    const std::vector<uint8_t> seen = WithText(text);
    EXPECT_NE(seen, nothing) << text;
    EXPECT_TRUE(seen == WithText(literal)) << text;
  }
  for (const char* changing : {"${time}", "${time:%H-%M}", "${date}", "${millis}"})
    EXPECT_NE(WithText(changing), nothing) << changing;
  EXPECT_TRUE(WithText("${time:%Y:%M}") == WithText("${time:%Y}"));  // a format ends at a colon
}

TEST_F(Overlays, each_font_draws_and_an_unknown_one_does_not) {
  ShowCorner();
  const auto write = [&](const char* font) {
    EXPECT_EQ(Command(display, "cmd.display.overlay.text.add",
                      {{"objectID", font},
                       {"text.text", "x"},
                       {"text.clr", "255"},
                       {"text.font", font},
                       {"text.pos.x", "40"},
                       {"text.pos.y", "60"}}),
              1u);
  };
  const QRect place(30, 40, 60, 60);
  for (const char* font : {"default", "fixed", "bold", "medium", "large"}) {
    write(font);
    EXPECT_TRUE(Appears(Qt::red, place)) << font;
    EXPECT_EQ(Command(display, "cmd.display.overlay.del", {{"objectID", font}}), 1u);
    EXPECT_TRUE(WaitFor([&] { return !Stands(Qt::red, place); })) << font;
  }
  write("no such font");
  Command(display, "cmd.display.overlay.rect.add",
          {{"rect.x", "5"}, {"rect.y", "5"}, {"rect.w", "9"}, {"rect.h", "9"}, {"line.clr", "65280"}});
  EXPECT_TRUE(Appears(QColor(0, 255, 0), {5, 5, 1, 1}));
  EXPECT_FALSE(Stands(Qt::red, place));
}

TEST_F(Overlays, there_are_none_before_the_start_and_after_a_failed_image) {
  const QTD::ARGUMENTS text{{"text.text", "x"}};
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.add", text), 0u);
  Show(image.record);
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.add", text), 1u);
  ZynImage lying = image.record;
  lying.imageSize = 100;
  display->DisplayVideo(&lying);
  EXPECT_TRUE(WaitFor([&] { return Command(display, "cmd.display.overlay.text.add", text) == 0; }));
  display->DisplayVideo(&image.record);
  EXPECT_TRUE(WaitFor([&] { return Command(display, "cmd.display.overlay.text.add", text) == 1; }));
}

// Kept as it is: it never adds anything.
TEST_F(Overlays, the_command_without_a_kind_adds_nothing) {
  ShowCorner();
  EXPECT_EQ(Command(display, "cmd.display.overlay.add", {{"type", "text"}, {"text.text", "x"}}), 0u);
  EXPECT_EQ(Command(display, "cmd.display.overlay.add", {{"type", "rect"}, {"rect.w", "9"}}), 0u);
  EXPECT_EQ(display->RunCommand("cmd.display.overlay.text.add", nullptr), 0u);
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.add", {{"text.text", ""}}), 0u);
}

}  // namespace guide
