// Commands of the overlay stage, and its careless callers.
#include <atomic>
#include <chrono>
#include <thread>

#include "QTD/frame/Text.h"
#include "tests/cpu/OverlayFixture.h"

namespace {

constexpr uint32_t kNotSupported = 0x80FF000A;

TEST_F(OverlayTest, is_a_component_of_its_class_made_by_its_factory) {
  EXPECT_EQ(Parameter("class"), "CPUIPImageOverlay");
  EXPECT_EQ(stage.GetComponent(), &stage);
  ZynImgProcessor* made = ZynDisplayCPU::ImageOverlay::CreateComponent(nullptr);
  ASSERT_TRUE(dynamic_cast<CPUIPImageOverlay*>(made));
  ZynDisplayCPU::ImageOverlay::DeleteComponent(made);
  ZynDisplayCPU::ImageOverlay::DeleteComponent(nullptr);
}

TEST_F(OverlayTest, cmd_text_add_takes_arguments_then_parameters_then_defaults) {
  QTD::ARGUMENTS args{{"text.text", "one"}, {"text.pos.x", "7"}, {"text.pos.y", "9"}};
  ASSERT_EQ(stage.RunCommand("cmd.text.add", &args), 1u);
  const std::string first = args["objectID"];
  EXPECT_NE(first, "");
  EXPECT_EQ(stage.ValueOf(first, "type"), "text");
  EXPECT_EQ(stage.ValueOf(first, "text"), "one");
  EXPECT_EQ(stage.ValueOf(first, "x"), "7");
  EXPECT_EQ(stage.ValueOf(first, "y"), "9");
  EXPECT_EQ(stage.ValueOf(first, "text.font"), "default");
  EXPECT_EQ(stage.ValueOf(first, "text.clr"), "0");

  stage.SetParameterString("text.font", "large");
  stage.SetParameterInt("text.clr", 255);
  stage.SetParameterString("text.text", "not this one");
  stage.SetParameterInt("text.pos.x", 99);
  args = {{"text.clr", "65280"}};
  ASSERT_EQ(stage.RunCommand("cmd.text.add", &args), 1u);
  const std::string second = args["objectID"];
  EXPECT_NE(second, first);
  EXPECT_EQ(stage.ValueOf(second, "text"), "");
  EXPECT_EQ(stage.ValueOf(second, "x"), "0");
  EXPECT_EQ(stage.ValueOf(second, "text.font"), "large");
  EXPECT_EQ(stage.ValueOf(second, "text.clr"), "65280");
}

TEST_F(OverlayTest, a_given_identifier_is_kept_and_replaces) {
  QTD::ARGUMENTS args{{"objectID", "mine"}, {"text.text", "one"}};
  ASSERT_EQ(stage.RunCommand("cmd.text.add", &args), 1u);
  EXPECT_EQ(args["objectID"], "mine");
  args["text.text"] = "two";
  ASSERT_EQ(stage.RunCommand("cmd.text.add", &args), 1u);
  EXPECT_EQ(stage.ValueOf("mine", "text"), "two");
  EXPECT_EQ(stage.store.count(), 1);
  QTD::PROPERTIES list;
  list.Set("objectID", "mine");
  EXPECT_EQ(stage.AddRect(1, 2, 3, 4, &list), "mine");
  EXPECT_EQ(stage.ValueOf("mine", "type"), "rect");
  EXPECT_EQ(stage.store.count(), 1);
}

TEST_F(OverlayTest, cmd_rect_add_takes_arguments_then_parameters_then_defaults) {
  QTD::ARGUMENTS args{{"rect.x", "1"}, {"rect.y", "2"}, {"rect.w", "30"}, {"rect.h", "40"}};
  ASSERT_EQ(stage.RunCommand("cmd.rect.add", &args), 1u);
  std::string id = args["objectID"];
  EXPECT_EQ(stage.ValueOf(id, "type"), "rect");
  EXPECT_EQ(stage.ValueOf(id, "x"), "1");
  EXPECT_EQ(stage.ValueOf(id, "y"), "2");
  EXPECT_EQ(stage.ValueOf(id, "w"), "30");
  EXPECT_EQ(stage.ValueOf(id, "h"), "40");
  EXPECT_EQ(stage.ValueOf(id, "line.width"), "1");
  EXPECT_EQ(stage.ValueOf(id, "line.clr"), "0");
  stage.SetParameterInt("line.width", 3);
  stage.SetParameterInt("line.clr", 5);
  args = {{"line.clr", "6"}};
  ASSERT_EQ(stage.RunCommand("cmd.rect.add", &args), 1u);
  id = args["objectID"];
  EXPECT_EQ(stage.ValueOf(id, "x"), "0");
  EXPECT_EQ(stage.ValueOf(id, "h"), "0");
  EXPECT_EQ(stage.ValueOf(id, "line.width"), "3");
  EXPECT_EQ(stage.ValueOf(id, "line.clr"), "6");
}

TEST_F(OverlayTest, the_delete_commands_do_not_look_at_the_kind) {
  for (const char* command : {"cmd.del", "cmd.text.del", "cmd.rect.del"}) {
    for (const bool text : {true, false}) {
      QTD::ARGUMENTS args{
          {"objectID", text ? stage.AddText("t", 1, 1, nullptr) : stage.AddRect(1, 1, 1, 1, nullptr)}};
      EXPECT_EQ(stage.RunCommand(command, &args), 1u) << command;
      EXPECT_EQ(stage.store.count(), 0);
      EXPECT_EQ(stage.RunCommand(command, &args), 0u) << command;
    }
  }
  for (const char* command : {"del", "text.del", "rect.del"}) {
    stage.SetParameterString("objectID", stage.AddText("t", 1, 1, nullptr).c_str());
    EXPECT_EQ(stage.ExecuteCommand(command), 0u) << command;
    EXPECT_EQ(stage.store.count(), 0);
    EXPECT_EQ(stage.ExecuteCommand(command), kFailed) << command;
  }
}

TEST_F(OverlayTest, missing_arguments_and_other_commands_answer_0) {
  for (const char* command : {"cmd.text.add", "cmd.rect.add", "cmd.del", "cmd.text.del", "cmd.rect.del"}) {
    EXPECT_EQ(stage.RunCommand(command, nullptr), 0u) << command;
  }
  QTD::ARGUMENTS args{{"text.text", "t"}};
  for (const char* command :
       {"text.add", "cmd.", "cmd", "cmd.text", "cmd.params.apply", "CMD.text.add", ""}) {
    EXPECT_EQ(stage.RunCommand(command, &args), 0u) << command;
  }
  EXPECT_EQ(stage.RunCommand(nullptr, &args), 0u);
  EXPECT_EQ(stage.RunCommand("cmd.del", &args), 0u);  // no identifier
  EXPECT_EQ(args.size(), 1u);
  EXPECT_EQ(stage.store.count(), 0);
}

TEST_F(OverlayTest, text_add_takes_the_stages_parameters) {
  stage.SetParameterString("text.text", "one");
  stage.SetParameterInt("text.pos.x", 7);
  stage.SetParameterInt("text.pos.y", 9);
  stage.SetParameterString("text.font", "bold");
  ASSERT_EQ(stage.ExecuteCommand("text.add"), 0u);
  const std::string id = Parameter("objectID");
  EXPECT_EQ(stage.ValueOf(id, "text"), "one");
  EXPECT_EQ(stage.ValueOf(id, "x"), "7");
  EXPECT_EQ(stage.ValueOf(id, "y"), "9");
  EXPECT_EQ(stage.ValueOf(id, "text.font"), "bold");
  EXPECT_EQ(stage.ValueOf(id, "text.clr"), "0");
  EXPECT_EQ(stage.ValueOf(id, "class"), "absent");
}

TEST_F(OverlayTest, rect_add_takes_the_stages_parameters) {
  stage.SetParameterInt("rect.x", 1);
  stage.SetParameterInt("rect.y", 2);
  stage.SetParameterInt("rect.w", 3);
  stage.SetParameterInt("rect.h", 4);
  stage.SetParameterInt("line.width", 5);
  stage.SetParameterString("objectID", "frame");
  ASSERT_EQ(stage.ExecuteCommand("rect.add"), 0u);
  EXPECT_EQ(Parameter("objectID"), "frame");
  EXPECT_EQ(stage.ValueOf("frame", "x") + stage.ValueOf("frame", "y"), "12");
  EXPECT_EQ(stage.ValueOf("frame", "w") + stage.ValueOf("frame", "h"), "34");
  EXPECT_EQ(stage.ValueOf("frame", "line.width"), "5");
  EXPECT_EQ(stage.ValueOf("frame", "line.clr"), "0");
}

TEST_F(OverlayTest, params_apply_sets_the_stores_defaults_and_the_count) {
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_FALSE(stage.IsEnabled());  // an absent "enabled" counts as 0
  QTD::PROPERTIES& defaults = stage.store.Defaults();
  EXPECT_EQ(defaults.GetString("text.pos.x"), "0");
  EXPECT_EQ(defaults.GetString("text.pos.y"), "0");
  EXPECT_EQ(defaults.GetString("text.clr"), "0");
  EXPECT_EQ(defaults.GetString("text.font"), "default");
  stage.SetParameterInt("enabled", 1);
  stage.SetParameterInt("text.clr", 77);
  stage.SetParameterInt("text.pos.x", 5);
  stage.SetParameterString("text.font", "large");
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(defaults.GetString("text.clr"), "77");
  EXPECT_EQ(defaults.GetString("text.pos.x"), "5");
  EXPECT_EQ(defaults.GetString("text.font"), "large");
}

TEST_F(OverlayTest, params_reset_asks_whether_it_is_ready_and_others_are_unknown) {
  EXPECT_EQ(stage.ExecuteCommand("params.reset"), kFailed);
  Prepare(StagePicture(ZYN_PIXEL_MONO8, 8, 8));
  EXPECT_EQ(stage.ExecuteCommand("params.reset"), 0u);
  for (const char* name : {"cmd.text.add", "text", "params", ""}) {
    EXPECT_EQ(stage.ExecuteCommand(name), kNotSupported) << name;
  }
  EXPECT_EQ(stage.ExecuteCommand(nullptr), kNotSupported);
}

TEST_F(OverlayTest, a_null_text_removes_the_object_and_names_none) {
  QTD::PROPERTIES list;
  list.Set("objectID", "mine");
  EXPECT_EQ(stage.AddText("t", 1, 1, &list), "mine");
  EXPECT_EQ(stage.AddText(nullptr, 1, 1, &list), "");
  EXPECT_EQ(stage.store.count(), 0);
  EXPECT_EQ(stage.AddText(nullptr, 1, -1, nullptr), "");
}

TEST_F(OverlayTest, identifiers_are_made_and_unknown_ones_refused) {
  const std::string one = stage.AddText("", 1, 1, nullptr), two = stage.AddRect(-1, -1, -1, -1, nullptr);
  EXPECT_NE(one, "");
  EXPECT_NE(two, "");
  EXPECT_NE(one, two);
  EXPECT_FALSE(stage.DeleteObject(""));
  EXPECT_FALSE(stage.DeleteObject("unknown"));
  EXPECT_TRUE(stage.DeleteObject(one));
}

TEST_F(OverlayTest, attributes_that_cannot_be_read_are_refused) {
  QTD::PROPERTIES list;
  list.Set("placement", "somewhere");
  EXPECT_EQ(stage.AddText("t", 1, 1, &list), "");
  QTD::ARGUMENTS args{{"objectID", "mine"}, {"text.pos.x", "left"}};
  EXPECT_EQ(stage.RunCommand("cmd.text.add", &args), 0u);
  EXPECT_EQ(args["objectID"], "");
  args = {{"rect.w", "99999999999"}};
  EXPECT_EQ(stage.RunCommand("cmd.rect.add", &args), 0u);
  stage.SetParameterString("rect.h", "high");
  EXPECT_EQ(stage.ExecuteCommand("rect.add"), kFailed);
  stage.SetParameterString("enabled", "yes");
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), kFailed);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.store.count(), 0);
  // Defaults are taken as they are; what cannot be drawn is passed over.
  StagePicture picture(ZYN_PIXEL_MONO8, 40, 20);
  Prepare(picture);
  list.Clear();
  list.Set("text.clr", "red");
  EXPECT_TRUE(stage.SetDefaults(&list));
  stage.AddText("t", 1, 1, nullptr);
  const auto before = picture.Copy();
  EXPECT_EQ(Run(picture.record), 0u);
  EXPECT_EQ(picture.Copy(), before);
}

TEST_F(OverlayTest, defaults_and_variables_are_merged) {
  EXPECT_FALSE(stage.SetDefaults(nullptr));
  EXPECT_FALSE(stage.SetTextVariables(nullptr));
  QTD::PROPERTIES list;
  list.Set("text.font", "fixed").Set("who", "me");
  EXPECT_TRUE(stage.SetDefaults(&list));
  EXPECT_EQ(stage.store.Defaults().GetString("text.font"), "fixed");
  EXPECT_EQ(stage.store.Defaults().GetString("back.mode"), "0");
  EXPECT_TRUE(stage.SetTextVariables(&list));
  EXPECT_EQ(stage.store.Parser()->Parse("I am ${who}"), "I am me");
}

// Templates follow it as a pointer.
TEST_F(OverlayTest, the_variable_image_cannot_be_set) {
  StagePicture picture(ZYN_PIXEL_MONO8, 40, 20);
  Prepare(picture);
  QTD::PROPERTIES list;
  list.Set("image", "0x10").Set("who", "me");
  EXPECT_TRUE(stage.SetTextVariables(&list));
  EXPECT_EQ(stage.store.Parser()->variables.GetPointer("image"), nullptr);
  EXPECT_EQ(stage.store.Parser()->variables.GetString("who"), "me");
  stage.AddText("${image.id}", 1, -1, nullptr);
  EXPECT_EQ(Run(picture.record), 0u);
}

TEST_F(OverlayTest, any_thread_may_call_anything) {
  StagePicture picture(ZYN_PIXEL_MONO12, 64, 48), other(ZYN_PIXEL_BGR8, 31, 7);
  picture.record.imageID = 5;
  Prepare(picture);
  std::atomic<bool> stop{false};
  std::atomic<int> runs{0}, failures{0};
  const auto repeat = [&](auto work) {
    return std::thread([&stop, work] {
      while (!stop) work();
    });
  };
  std::thread threads[] = {
      repeat([&] {
        const uint32_t code = stage.ProcessImage(&picture.record, nullptr, nullptr);
        failures += code != 0 && code != kNotReady;
        ++runs;
      }),
      repeat([&] {
        QTD::ARGUMENTS args{
            {"text.text", "${image.id} ${image.dims}"}, {"text.pos.x", "3"}, {"text.pos.y", "-1"}};
        failures += stage.RunCommand("cmd.text.add", &args) != 1;
        stage.RunCommand("cmd.text.del", &args);
        stage.RunCommand("cmd.rect.add", &args);
        stage.RunCommand("cmd.rect.del", &args);
      }),
      repeat([&] {
        QTD::PROPERTIES list;
        list.Set("text.clr", "255").Set("who", "me");
        stage.SetDefaults(&list);
        stage.SetTextVariables(&list);
        stage.SetParameterString("text.text", "${who}");
        stage.ExecuteCommand("text.add");
        stage.ExecuteCommand("del");
        stage.ExecuteCommand("params.apply");
      }),
      repeat([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        stage.Release();
        failures += stage.Init(&other.record, nullptr) != 0;
        failures += stage.Init(&picture.record, nullptr) != 0;
        stage.Out();
        stage.GetImageInfo(false);
        stage.IsReady();
      }),
  };
  for (int wait = 0; wait < 200 && (wait < 10 || runs < 20); ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  EXPECT_GE(runs, 20);
}

}  // namespace
