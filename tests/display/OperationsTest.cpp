// Which operation of the controller each command calls, with which arguments, and under which lock.
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/display/PictureFixture.h"

namespace display_test {

namespace {

std::string Line(const char* name, std::initializer_list<std::string> arguments) {
  std::string line = name;
  for (const std::string& argument : arguments) line += " " + argument;
  return line;
}

// Answers what it is told to, and does nothing itself.
class Operations : public QTDDisplay {
 public:
  using QTDDisplay::QTDDisplay;

  bool Zoom(bool in, double coefficient, bool refresh) override {
    return Called(Line("Zoom", {QTD::ToText(in), QTD::ToText(coefficient), QTD::ToText(refresh)}));
  }
  bool SetFit(int mode, bool refresh) override {
    return Called(Line("SetFit", {QTD::ToText(mode), QTD::ToText(refresh)}));
  }
  bool SetScale(double scale, bool refresh) override {
    return Called(Line("SetScale", {QTD::ToText(scale), QTD::ToText(refresh)}));
  }
  bool SetCenter(double x, double y, bool refresh) override {
    return Called(Line("SetCenter", {QTD::ToText(x), QTD::ToText(y), QTD::ToText(refresh)}));
  }
  std::string AddText(const char* text, int x, int y, QTD::ARGUMENTS* args) override {
    texts.emplace_back(text);
    given = *args;
    return Called(Line("AddText", {QTD::ToText(x), QTD::ToText(y)})) ? "new" : "";
  }
  std::string AddRect(int x, int y, int width, int height, QTD::ARGUMENTS* args) override {
    given = *args;
    return Called(Line("AddRect", {QTD::ToText(x), QTD::ToText(y), QTD::ToText(width), QTD::ToText(height)}))
               ? "new"
               : "";
  }
  bool DeleteObject(const std::string& id) override { return Called("DeleteObject " + id); }
  bool SetOverlayProperties(QTD::ARGUMENTS* args) override {
    return Called("SetOverlayProperties " + QTD::ToText(static_cast<const void*>(args)));
  }
  bool SetOverlayVariables(QTD::ARGUMENTS* args) override {
    return Called("SetOverlayVariables " + QTD::ToText(static_cast<const void*>(args)));
  }

  std::vector<std::string> calls, texts;
  QTD::ARGUMENTS given;
  bool answer = true;
  std::function<void()> inside;  // runs in the next call

 private:
  bool Called(std::string line) {
    calls.push_back(std::move(line));
    if (const std::function<void()> once = std::exchange(inside, nullptr)) once();
    return answer;
  }
};

}  // namespace

class CommandOperations : public PictureTest {
 protected:
  CommandOperations() {
    auto made = std::make_unique<Operations>(&parent, false);
    operations = made.get();
    display = std::move(made);
  }
  // The calls that the command makes, when the operation succeeds; its result then, and its result when not.
  std::string Calls(const char* name, QTD::ARGUMENTS args, uint32_t success, uint32_t failure) {
    operations->calls.clear();
    operations->answer = false;
    QTD::ARGUMENTS again = args;
    EXPECT_EQ(Run(name, &again), failure) << name;
    operations->calls.clear();
    operations->answer = true;
    EXPECT_EQ(Run(name, &args), success) << name;
    std::string all;
    for (const std::string& call : operations->calls) all += (all.empty() ? "" : "; ") + call;
    return all;
  }

  // Whether another thread can use the view while the operation runs.
  bool OthersGetIn(const char* name, QTD::ARGUMENTS args) {
    std::atomic<bool> entered{false}, began{false};
    std::thread other;
    bool during = false;
    operations->inside = [&] {
      other = std::thread([&] {
        began = true;
        display->CanZoom(true, 0);
        entered = true;
      });
      while (!began) std::this_thread::yield();
      for (int wait = 0; wait < 150 && !entered; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      during = entered;
    };
    Run(name, &args);
    EXPECT_TRUE(other.joinable()) << name;
    if (other.joinable()) other.join();
    EXPECT_TRUE(entered) << name;  // the lock is given up behind the command
    return during;
  }

  Operations* operations = nullptr;
};

TEST_F(CommandOperations, each_view_command_calls_its_operation_with_refresh) {
  Show();
  EXPECT_EQ(Calls("cmd.display.view.zoom.in", {}, 1, 0), "Zoom 1 -1.000000 1");
  EXPECT_EQ(Calls("cmd.display.view.zoom.out", {}, 1, 0), "Zoom 0 -1.000000 1");
  EXPECT_EQ(Calls("cmd.display.view.zoom.in", {{"zoom.coef", "1.5"}}, 1, 0), "Zoom 1 1.500000 1");
  EXPECT_EQ(Calls("cmd.display.view.zoom.out", {{"zoom.coef", "-3"}}, 1, 0), "Zoom 0 -3.000000 1");
  EXPECT_EQ(Calls("cmd.display.view.zoom.out", {{"zoom.coef", ""}}, 1, 0), "Zoom 0 0.000000 1");
  EXPECT_EQ(Calls("cmd.display.view.fit", {}, 1, 0), "SetFit 1 1");
  EXPECT_EQ(Calls("cmd.display.view.fit", {{"mode", "2"}}, 1, 0), "SetFit 2 1");
  EXPECT_EQ(Calls("cmd.display.view.fit", {{"mode", "-5"}}, 1, 0), "SetFit -5 1");
  EXPECT_EQ(Calls("cmd.display.view.fit", {{"mode", ""}}, 1, 0), "SetFit 0 1");
  EXPECT_EQ(Calls("cmd.display.view.scale", {}, 1, 0), "SetScale 1.000000 1");
  EXPECT_EQ(Calls("cmd.display.view.scale", {{"scale", "2.5"}}, 1, 0), "SetScale 2.500000 1");
  EXPECT_EQ(Calls("cmd.display.view.scale", {{"scale", ""}}, 1, 0), "SetScale 0.000000 1");
}

TEST_F(CommandOperations, a_fit_that_fails_stores_nothing) {
  Show();
  operations->answer = false;
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "2"}}), 0u);
  EXPECT_EQ(Parameter("display.view.fit"), "3");
  operations->answer = true;
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "2"}}), 1u);
  EXPECT_EQ(Parameter("display.view.fit"), "2");
}

TEST_F(CommandOperations, texts_and_rectangles_go_through_their_operations) {
  Show();
  EXPECT_EQ(
      Calls("cmd.display.overlay.text.add",
            {{"text.text", "hello"}, {"text.pos.x", "-3"}, {"text.pos.y", "4"}, {"other", "kept"}}, 1, 0),
      "AddText -3 4");
  EXPECT_EQ(operations->texts.back(), "hello");
  EXPECT_EQ(operations->given["other"], "kept");
  EXPECT_EQ(operations->given["text.font"], "default");
  EXPECT_EQ(operations->given["text.clr"], "0");
  EXPECT_EQ(
      Calls("cmd.display.overlay.rect.add",
            {{"rect.x", "1"}, {"rect.y", "2"}, {"rect.w", "3"}, {"rect.h", "4"}, {"other", "kept"}}, 1, 0),
      "AddRect 1 2 3 4");
  EXPECT_EQ(operations->given["other"], "kept");
  EXPECT_EQ(operations->given["line.width"], "1");
  EXPECT_EQ(operations->given["line.clr"], "0");
}

TEST_F(CommandOperations, the_identifier_that_came_back_stands_in_the_arguments) {
  Show();
  for (const char* name : {"cmd.display.overlay.text.add", "cmd.display.overlay.rect.add"}) {
    QTD::ARGUMENTS args{{"objectID", "asked"}, {"text.text", "a"}};
    operations->answer = true;
    EXPECT_EQ(Run(name, &args), 1u);
    EXPECT_EQ(args["objectID"], "new") << name;
    operations->answer = false;
    EXPECT_EQ(Run(name, &args), 0u);
    EXPECT_EQ(args["objectID"], "") << name;
  }
}

TEST_F(CommandOperations, each_deletion_deletes_the_object_named) {
  Show();
  for (const char* name :
       {"cmd.display.overlay.del", "cmd.display.overlay.text.del", "cmd.display.overlay.rect.del"}) {
    EXPECT_EQ(Calls(name, {{"objectID", "mine"}}, 1, 0), "DeleteObject mine") << name;
    EXPECT_EQ(Calls(name, {}, 1, 0), "DeleteObject ") << name;
  }
}

TEST_F(CommandOperations, the_general_addition_calls_none) {
  Show();
  for (const char* type : {"text", "rect", "line"}) {
    EXPECT_EQ(Calls("cmd.display.overlay.add", {{"type", type}, {"text.text", "a"}}, 0, 0), "") << type;
  }
}

TEST_F(CommandOperations, properties_and_variables_are_handed_on_as_pointers) {
  Show();
  QTD::ARGUMENTS props, vars;
  const std::string propsText = QTD::ToText(static_cast<const void*>(&props));
  const std::string varsText = QTD::ToText(static_cast<const void*>(&vars));
  const std::string none = QTD::ToText(nullptr);
  EXPECT_EQ(Calls("cmd.display.overlay.params", {{"props", propsText}, {"vars", varsText}}, 1, 1),
            "SetOverlayProperties " + propsText + "; SetOverlayVariables " + varsText);
  EXPECT_EQ(Calls("cmd.display.overlay.params", {}, 1, 1),
            "SetOverlayProperties " + none + "; SetOverlayVariables " + none);
}

TEST_F(CommandOperations, a_view_command_keeps_others_out_until_it_is_done) {
  Show();
  EXPECT_FALSE(OthersGetIn("cmd.display.view.zoom.in", {}));
  EXPECT_FALSE(OthersGetIn("cmd.display.view.fit", {}));
  EXPECT_FALSE(OthersGetIn("cmd.display.view.scale", {}));
  EXPECT_FALSE(OthersGetIn("cmd.display.view.status", {}));
  EXPECT_FALSE(OthersGetIn("cmd.display.view.info", {}));
}

TEST_F(CommandOperations, an_overlay_command_leaves_the_lock_to_its_operation) {
  Show();
  EXPECT_TRUE(OthersGetIn("cmd.display.overlay.text.add", {{"text.text", "a"}}));
  EXPECT_TRUE(OthersGetIn("cmd.display.overlay.rect.add", {}));
  EXPECT_TRUE(OthersGetIn("cmd.display.overlay.del", {{"objectID", "a"}}));
  EXPECT_TRUE(OthersGetIn("cmd.display.overlay.params", {}));
}

TEST_F(CommandOperations, a_command_that_raises_gives_the_lock_up) {
  Show();
  operations->inside = [] { throw std::runtime_error("inside"); };
  EXPECT_THROW(Run("cmd.display.view.fit"), std::runtime_error);
  std::atomic<bool> entered{false};
  std::thread other([&] {
    display->CanZoom(true, 0);
    entered = true;
  });
  other.join();
  EXPECT_TRUE(entered);
}

}  // namespace display_test
