// The commands that begin with "cmd.display.overlay".
#include <stdexcept>
#include <utility>

#include "tests/display/PictureFixture.h"

namespace display_test {

class OverlayCommands : public PictureTest {
 protected:
  static std::string Pointer(const void* address) { return QTD::ToText(address); }
};

TEST_F(OverlayCommands, without_arguments_and_for_unknown_names_they_answer_0) {
  Show();
  for (const char* name : {"params", "text.add", "rect.add", "add", "del", "text.del", "rect.del"}) {
    EXPECT_EQ(Run((std::string("cmd.display.overlay.") + name).c_str()), 0u) << name;
  }
  QTD::ARGUMENTS args{{"text.text", "a"}};
  for (const char* name : {"cmd.display.overlay", "cmd.display.overlay.text", "cmd.display.overlay.text.addx",
                           "cmd.display.OVERLAY.text.add"}) {
    EXPECT_EQ(Run(name, &args), 0u) << name;
  }
  EXPECT_EQ(display->RunCommandDisplayOverlay(nullptr, &args), 0u);
  EXPECT_EQ(Objects().count(), 0);
}

TEST_F(OverlayCommands, case_behind_the_prefix_does_not_count) {
  Show();
  EXPECT_EQ(Run("cmd.display.overlay.TEXT.Add", {{"text.text", "a"}}), 1u);
  EXPECT_EQ(Objects().count(), 1);
}

TEST_F(OverlayCommands, a_text_is_added_with_all_that_was_given) {
  Show();
  QTD::ARGUMENTS args{{"text.font", "medium"}, {"text.clr", "255"},    {"text.pos.x", "30"},
                      {"text.pos.y", "40"},    {"text.text", "hello"}, {"cs", "win"},
                      {"objectID", "mine"},    {"back.mode", "2"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &args), 1u);
  EXPECT_EQ(args["objectID"], "mine");
  const std::pair<const char*, const char*> expected[] = {
      {"text", "hello"},   {"x", "30"},   {"y", "40"},       {"text.font", "medium"},
      {"text.clr", "255"}, {"cs", "win"}, {"back.mode", "2"}};
  for (const auto& [name, value] : expected) EXPECT_EQ(Attribute("mine", name), value) << name;
}

TEST_F(OverlayCommands, a_text_lacks_nothing_but_what_has_a_default) {
  Show();
  QTD::ARGUMENTS args{{"text.text", "a"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &args), 1u);
  EXPECT_EQ(args["text.font"], "default");
  EXPECT_EQ(args["text.clr"], "0");
  EXPECT_NE(args["objectID"], "");
  EXPECT_EQ(Attribute(args["objectID"].c_str(), "x"), "0");
  EXPECT_EQ(Attribute(args["objectID"].c_str(), "y"), "0");

  display->SetParameterString("display.overlay.text.font", "medium");
  display->SetParameterString("display.overlay.text.clr", "99");
  QTD::ARGUMENTS styled{{"text.text", "a"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &styled), 1u);
  EXPECT_EQ(styled["text.font"], "medium");
  EXPECT_EQ(styled["text.clr"], "99");

  QTD::ARGUMENTS empty{{"objectID", "mine"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &empty), 0u);  // no text
  EXPECT_EQ(empty["objectID"], "");
  EXPECT_EQ(empty["text.font"], "medium");
}

TEST_F(OverlayCommands, a_rectangle_is_added_with_all_that_was_given) {
  Show();
  QTD::ARGUMENTS args{{"line.width", "3"}, {"line.clr", "7"}, {"rect.x", "1"},    {"rect.y", "2"},
                      {"rect.w", "30"},    {"rect.h", "40"},  {"objectID", "box"}};
  EXPECT_EQ(Run("cmd.display.overlay.rect.add", &args), 1u);
  EXPECT_EQ(args["objectID"], "box");
  const std::pair<const char*, const char*> expected[] = {
      {"x", "1"}, {"y", "2"}, {"w", "30"}, {"h", "40"}, {"line.width", "3"}, {"line.clr", "7"}};
  for (const auto& [name, value] : expected) EXPECT_EQ(Attribute("box", name), value) << name;
}

TEST_F(OverlayCommands, a_rectangle_lacks_nothing_but_what_has_a_default) {
  Show();
  QTD::ARGUMENTS args;
  EXPECT_EQ(Run("cmd.display.overlay.rect.add", &args), 1u);
  EXPECT_EQ(args["line.width"], "1");
  EXPECT_EQ(args["line.clr"], "0");
  EXPECT_NE(args["objectID"], "");
  display->SetParameterString("display.overlay.line.width", "5");
  display->SetParameterString("display.overlay.line.clr", "11");
  QTD::ARGUMENTS styled;
  EXPECT_EQ(Run("cmd.display.overlay.rect.add", &styled), 1u);
  EXPECT_EQ(styled["line.width"], "5");
  EXPECT_EQ(styled["line.clr"], "11");
}

TEST_F(OverlayCommands, without_a_picture_nothing_is_added) {
  QTD::ARGUMENTS args{{"text.text", "a"}, {"objectID", "mine"}};
  EXPECT_EQ(Run("cmd.display.overlay.text.add", &args), 0u);
  EXPECT_EQ(args["objectID"], "");
  EXPECT_EQ(Run("cmd.display.overlay.rect.add", &args), 0u);
  EXPECT_EQ(Run("cmd.display.overlay.del", &args), 0u);
  EXPECT_EQ(Run("cmd.display.overlay.params", &args), 1u);
}

TEST_F(OverlayCommands, a_malformed_number_raises_and_adds_nothing) {
  Show();
  const std::pair<const char*, const char*> rows[] = {{"text.add", "text.pos.x"}, {"text.add", "text.pos.y"},
                                                      {"rect.add", "rect.x"},     {"rect.add", "rect.y"},
                                                      {"rect.add", "rect.w"},     {"rect.add", "rect.h"}};
  for (const auto& [name, argument] : rows) {
    QTD::ARGUMENTS args{{"text.text", "a"}, {argument, "left"}};
    EXPECT_THROW(Run((std::string("cmd.display.overlay.") + name).c_str(), &args), std::invalid_argument)
        << argument;
  }
  EXPECT_EQ(Objects().count(), 0);
}

TEST_F(OverlayCommands, the_defaults_of_later_texts_are_set) {
  Show();
  QTD::ARGUMENTS props{{"back.mode", "1"}}, vars{{"operator", "Ann"}};
  QTD::ARGUMENTS args{{"props", Pointer(&props)}, {"vars", Pointer(&vars)}, {"text.font", "medium"}};
  EXPECT_EQ(Run("cmd.display.overlay.params", &args), 1u);
  EXPECT_EQ(Objects().Defaults().GetString("back.mode"), "1");
  EXPECT_EQ(Objects().Parser()->variables.GetString("operator"), "Ann");
  EXPECT_EQ(Parameter("display.overlay.text.font"), "medium");
  EXPECT_EQ(Parameter("display.overlay.text.clr"), "0");  // not given: as it was

  EXPECT_EQ(Run("cmd.display.overlay.params", {{"text.clr", "5"}}), 1u);
  EXPECT_EQ(Parameter("display.overlay.text.font"), "medium");
  EXPECT_EQ(Parameter("display.overlay.text.clr"), "5");
  for (const char* nothing : {"", "(nil)", "0", "unreadable"}) {
    EXPECT_EQ(Run("cmd.display.overlay.params", {{"props", nothing}, {"vars", nothing}}), 1u) << nothing;
  }
  EXPECT_EQ(Objects().Defaults().GetString("back.mode"), "1");
}

TEST_F(OverlayCommands, the_general_addition_never_adds_anything) {
  Show();
  for (const char* type : {"text", "rect", "circle", ""}) {
    QTD::ARGUMENTS args{{"type", type}, {"text.text", "a"}, {"rect.w", "5"}, {"rect.h", "5"}};
    EXPECT_EQ(Run("cmd.display.overlay.add", &args), 0u) << type;
    EXPECT_EQ(args.count("objectID"), 0u) << type;
  }
  QTD::ARGUMENTS none;
  EXPECT_EQ(Run("cmd.display.overlay.add", &none), 0u);
  EXPECT_EQ(Objects().count(), 0);
}

TEST_F(OverlayCommands, each_deletion_deletes_any_object) {
  Show();
  for (const char* name :
       {"cmd.display.overlay.del", "cmd.display.overlay.text.del", "cmd.display.overlay.rect.del"}) {
    ASSERT_EQ(Run("cmd.display.overlay.text.add", {{"text.text", "a"}, {"objectID", "mine"}}), 1u);
    EXPECT_EQ(Run(name, {{"objectID", "other"}}), 0u) << name;
    EXPECT_TRUE(Has("mine"));
    EXPECT_EQ(Run(name, {{"objectID", "mine"}}), 1u) << name;
    EXPECT_FALSE(Has("mine"));
    EXPECT_EQ(Run(name, {{"objectID", "mine"}}), 0u) << name;
    QTD::ARGUMENTS none;
    EXPECT_EQ(Run(name, &none), 0u) << name;
  }
}

}  // namespace display_test
