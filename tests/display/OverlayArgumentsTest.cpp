// The arguments of the overlay commands: absent, empty and malformed ones, positions in each system.
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/display/RepaintCounter.h"

namespace display_test {

class OverlayArguments : public PictureTest {
 protected:
  // A window of 200 by 100 pixels; the picture is 500 by 400 of them, its corner at (-150, -150). No event
  // may be handled afterwards.
  void ShowSmall() {
    Show();
    Screen()->setWindowSize(200, 100);
    Screen()->setScale(2.0);
    Screen()->setCenter(0.5, 0.5);
    ASSERT_EQ(Screen()->Picture().x, -150);
  }
  uint32_t AddText(QTD::ARGUMENTS args) {
    args["objectID"] = "mine";
    if (!args.count("text.text")) args["text.text"] = "a";
    return Run("cmd.display.overlay.text.add", &args);
  }
  uint32_t AddRect(QTD::ARGUMENTS args) {
    args["objectID"] = "mine";
    return Run("cmd.display.overlay.rect.add", &args);
  }
  std::string Place(std::initializer_list<const char*> names) {
    std::string all;
    for (const char* name : names) all += (all.empty() ? "" : " ") + Attribute("mine", name);
    return all;
  }
  void ExpectFree() {
    bool free = false;
    std::thread other([&] {
      display->CanZoom(true, 0);
      free = true;
    });
    other.join();
    EXPECT_TRUE(free);
  }
};

TEST_F(OverlayArguments, a_rectangle_without_place_or_size_is_stored_with_zeros) {
  Show();
  EXPECT_EQ(AddRect({}), 1u);
  EXPECT_EQ(Place({"x", "y", "w", "h"}), "0 0 0 0");
  EXPECT_EQ(Place({"x.cs", "y.cs", "w.cs", "h.cs"}), "0 0 0 0");
  EXPECT_EQ(Place({"cs", "type", "line.width", "line.clr"}), "win rect 1 0");
}

TEST_F(OverlayArguments, each_number_of_a_rectangle_goes_to_its_own_place) {
  Show();
  const std::pair<const char*, const char*> rows[] = {
      {"rect.x", "9 0 0 0"}, {"rect.y", "0 9 0 0"}, {"rect.w", "0 0 9 0"}, {"rect.h", "0 0 0 9"}};
  for (const auto& [name, expected] : rows) {
    EXPECT_EQ(AddRect({{name, "9"}}), 1u);
    EXPECT_EQ(Place({"x", "y", "w", "h"}), expected) << name;
    EXPECT_EQ(AddRect({{name, ""}}), 1u);
    EXPECT_EQ(Place({"x", "y", "w", "h"}), "0 0 0 0") << name;
    EXPECT_EQ(AddRect({{name, "-9 pixels"}}), 1u);
    EXPECT_NE(Place({"x", "y", "w", "h"}).find("-9"), std::string::npos) << name;
    EXPECT_THROW(AddRect({{name, "9999999999"}}), std::out_of_range) << name;
  }
}

TEST_F(OverlayArguments, an_empty_attribute_that_is_given_does_not_take_the_default) {
  Show();
  display->SetParameterString("display.overlay.text.font", "medium");
  display->SetParameterString("display.overlay.text.clr", "99");
  EXPECT_EQ(AddText({{"text.font", ""}, {"text.clr", ""}}), 1u);
  EXPECT_EQ(Attribute("mine", "text.font"), "");
  EXPECT_EQ(Attribute("mine", "text.clr"), "");
  display->SetParameterString("display.overlay.line.width", "7");
  EXPECT_EQ(AddRect({{"line.width", ""}, {"line.clr", ""}}), 1u);
  EXPECT_EQ(Attribute("mine", "line.width"), "");
  EXPECT_EQ(Attribute("mine", "line.clr"), "");
}

TEST_F(OverlayArguments, a_text_stands_where_its_system_says) {
  ShowSmall();
  const auto at = [&](const char* system) {
    EXPECT_EQ(AddText({{"text.pos.x", "401"}, {"text.pos.y", "350"}, {"cs", system}}), 1u);
    EXPECT_EQ(Place({"x.cs", "y.cs", "cs"}), std::string("401 350 ") + system);
    return Place({"x", "y"});
  };
  EXPECT_EQ(at("win"), "401 350");
  EXPECT_EQ(at(""), "401 350");
  EXPECT_EQ(at("WIN"), "401 350");
  EXPECT_EQ(at("scr"), "251 200");
  EXPECT_EQ(at("img"), "51 25");  // 200.5 - 150 is rounded up
  EXPECT_EQ(at("IMG"), "51 25");
  EXPECT_EQ(at("room"), "401 350");  // an unknown one
  EXPECT_EQ(at("base"), "401 350");
}

TEST_F(OverlayArguments, a_text_without_a_system_is_in_the_window) {
  ShowSmall();
  EXPECT_EQ(AddText({{"text.pos.x", "30"}, {"text.pos.y", "40"}}), 1u);
  EXPECT_EQ(Place({"x", "y"}), "30 40");
}

TEST_F(OverlayArguments, a_rectangle_stands_where_its_system_says) {
  ShowSmall();
  const auto at = [&](const char* system) {
    EXPECT_EQ(
        AddRect({{"rect.x", "400"}, {"rect.y", "350"}, {"rect.w", "20"}, {"rect.h", "10"}, {"cs", system}}),
        1u);
    return Place({"x", "y", "w", "h"});
  };
  EXPECT_EQ(at("win"), "400 350 20 10");
  EXPECT_EQ(at("scr"), "250 200 20 10");
  EXPECT_EQ(at("img"), "50 25 10 5");
}

TEST_F(OverlayArguments, a_rectangle_is_held_on_the_picture_when_asked_to_adjust) {
  ShowSmall();
  const QTD::ARGUMENTS beyond{
      {"rect.x", "900"}, {"rect.y", "-20"}, {"rect.w", "300"}, {"rect.h", "100"}, {"cs", "img"}};
  EXPECT_EQ(AddRect(beyond), 1u);
  EXPECT_EQ(Place({"x", "y", "w", "h"}), "300 -160 150 50");
  QTD::ARGUMENTS adjusted = beyond;
  adjusted["adjust"] = "1";
  EXPECT_EQ(AddRect(adjusted), 1u);
  EXPECT_EQ(Place({"x", "y", "w", "h"}), "300 -150 50 50");
  adjusted["adjust"] = "0";
  EXPECT_EQ(AddRect(adjusted), 1u);
  EXPECT_EQ(Place({"x", "y", "w", "h"}), "300 -160 150 50");
}

TEST_F(OverlayArguments, a_negative_height_makes_the_other_number_a_placement) {
  Show();
  EXPECT_EQ(AddText({{"text.pos.x", "2"}, {"text.pos.y", "-1"}}), 1u);
  EXPECT_EQ(Attribute("mine", "placement"), "2");
  // At the left margin, with its bottom two pixels above the window's.
  EXPECT_EQ(Attribute("mine", "x"), "4");
  EXPECT_EQ(std::stoi(Attribute("mine", "y")) + std::stoi(Attribute("mine", "h")), Window()->height() - 2);
  EXPECT_EQ(AddText({{"text.pos.x", "1"}, {"text.pos.y", "-77"}}), 1u);
  EXPECT_EQ(Attribute("mine", "placement"), "1");
  EXPECT_EQ(Place({"x", "y"}), "4 2");
  // The text is stored anew: what has a place of its own has no placement.
  EXPECT_EQ(AddText({{"text.pos.x", "1"}, {"text.pos.y", "0"}}), 1u);
  EXPECT_EQ(Attribute("mine", "placement"), "absent");
}

TEST_F(OverlayArguments, all_other_attributes_of_a_text_are_kept) {
  Show();
  EXPECT_EQ(AddText({{"adjust", "1"}, {"update", "1"}, {"back.mode", "2"}, {"host.own", "kept"}}), 1u);
  EXPECT_EQ(Place({"adjust", "update", "back.mode", "host.own"}), "1 1 2 kept");
}

TEST_F(OverlayArguments, a_rectangle_repaints_by_itself_when_asked_to_update) {
  Show();
  // The command's own request is not made while a drawing is in progress.
  const auto repaints = [&](QTD::ARGUMENTS args) {
    DrawingInProgress drawing(*display->Viewer());
    return Repaints(*Window(), [&] { EXPECT_EQ(AddRect(std::move(args)), 1u); });
  };
  EXPECT_EQ(repaints({}), 0);
  EXPECT_EQ(repaints({{"update", "0"}}), 0);
  EXPECT_EQ(repaints({{"update", ""}}), 0);
  EXPECT_EQ(repaints({{"update", "1"}}), 1);
  EXPECT_EQ(repaints({{"update", "-1"}}), 1);
  EXPECT_THROW(AddRect({{"update", "later"}}), std::invalid_argument);
}

TEST_F(OverlayArguments, a_colour_that_is_no_number_is_stored_and_not_drawn) {
  Show();
  EXPECT_EQ(AddText({{"text.clr", "red"}}), 1u);
  EXPECT_EQ(Attribute("mine", "text.clr"), "red");
  EXPECT_EQ(AddRect({{"line.clr", "red"}, {"line.width", "wide"}, {"rect.w", "5"}, {"rect.h", "5"}}), 1u);
  EXPECT_EQ(Attribute("mine", "line.clr"), "red");
  ASSERT_EQ(Run("cmd.display.overlay.text.add", {{"text.text", "b"}, {"objectID", "next"}}), 1u);
  EXPECT_NO_THROW(Window()->render());
  Settle();
  EXPECT_EQ(Objects().count(), 2);
}

TEST_F(OverlayArguments, a_placement_that_is_no_number_raises_and_stores_nothing) {
  Show();
  EXPECT_THROW(AddText({{"placement", "corner"}}), std::invalid_argument);
  EXPECT_EQ(Objects().count(), 0);
  ExpectFree();
  EXPECT_EQ(AddText({}), 1u);
}

TEST_F(OverlayArguments, empty_defaults_that_are_given_are_stored) {
  Show();
  EXPECT_EQ(Run("cmd.display.overlay.params", {{"text.font", "medium"}, {"text.clr", "7"}}), 1u);
  EXPECT_EQ(Run("cmd.display.overlay.params", {{"text.font", ""}, {"text.clr", ""}}), 1u);
  EXPECT_EQ(Parameter("display.overlay.text.font"), "");
  EXPECT_EQ(Parameter("display.overlay.text.clr"), "");
  QTD::ARGUMENTS args{{"text.text", "a"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &args), 1u);
  EXPECT_EQ(args["text.font"], "");
  EXPECT_EQ(args["text.clr"], "");
}

TEST_F(OverlayArguments, without_a_picture_defaults_are_stored_and_pairs_are_not) {
  QTD::ARGUMENTS props{{"back.mode", "1"}}, vars{{"operator", "Ann"}};
  const QTD::ARGUMENTS args{{"props", QTD::ToText(static_cast<const void*>(&props))},
                            {"vars", QTD::ToText(static_cast<const void*>(&vars))},
                            {"text.font", "medium"},
                            {"text.clr", "7"}};
  QTD::ARGUMENTS before = args;
  EXPECT_EQ(Run("cmd.display.overlay.params", &before), 1u);
  EXPECT_EQ(before, args);
  EXPECT_EQ(Parameter("display.overlay.text.font"), "medium");
  EXPECT_EQ(Parameter("display.overlay.text.clr"), "7");

  // A window that is there, but with an error.
  Show();
  EXPECT_EQ(Objects().Defaults().GetString("back.mode"), "0");
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);
  ASSERT_NE(display->LastError(), 0u);
  EXPECT_EQ(Run("cmd.display.overlay.params", &before), 1u);
  EXPECT_EQ(Objects().Defaults().GetString("back.mode"), "0");
  EXPECT_EQ(Objects().Parser()->variables.GetString("operator", "absent"), "absent");
  display->DisplayVideo(nullptr);
  EXPECT_EQ(Run("cmd.display.overlay.params", &before), 1u);
  EXPECT_EQ(Objects().Defaults().GetString("back.mode"), "1");
  EXPECT_EQ(Objects().Parser()->variables.GetString("operator"), "Ann");
}

TEST_F(OverlayArguments, an_object_without_an_identifier_is_not_deleted) {
  Show();
  ASSERT_EQ(AddText({}), 1u);
  for (const char* name :
       {"cmd.display.overlay.del", "cmd.display.overlay.text.del", "cmd.display.overlay.rect.del"}) {
    EXPECT_EQ(Run(name, {{"objectID", ""}}), 0u) << name;
    QTD::ARGUMENTS none;
    EXPECT_EQ(Run(name, &none), 0u) << name;
  }
  EXPECT_EQ(Objects().count(), 1);
}

TEST_F(OverlayArguments, an_identifier_that_is_given_again_replaces_the_object) {
  Show();
  ASSERT_EQ(AddText({{"text.text", "first"}}), 1u);
  ASSERT_EQ(AddText({{"text.text", "second"}}), 1u);
  EXPECT_EQ(Objects().count(), 1);
  EXPECT_EQ(Attribute("mine", "text"), "second");
  ASSERT_EQ(AddRect({}), 1u);
  EXPECT_EQ(Objects().count(), 1);
  EXPECT_EQ(Attribute("mine", "type"), "rect");
}

}  // namespace display_test
