// The commands of the colour correction stage, from one thread and beside running images.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "ZynPixelFormat.h"
#include "tests/cpu/CorrectionStage.h"

namespace {

constexpr uint32_t kNotSupported = 0x80FF000A;
constexpr const char* kKeys[] = {"gain.r", "gain.g", "gain.b", "offs.r", "offs.g", "offs.b", "gamma"};

// A stage for one line of three RGB12 samples that are all 100.
struct Small {
  Small() : picture(ZYN_PIXEL_RGB12, 1, 1) { EXPECT_EQ(stage.Init(&picture.record, nullptr), 0u); }

  // The samples after a run, or zeros when it failed.
  std::array<uint16_t, 3> Run() {
    const std::array<uint16_t, 3> samples{100, 100, 100};
    std::memcpy(picture.record.imageData, samples.data(), 6);
    if (stage.ProcessImage(&picture.record, nullptr, nullptr) != 0) return {};
    return {WordAt(picture, 0), WordAt(picture, 1), WordAt(picture, 2)};
  }

  StagePicture picture;
  CorrectionStage stage;
};

using Samples = std::array<uint16_t, 3>;

TEST(CPUIPColorCorrectionCommands, a_parameter_takes_effect_with_params_apply) {
  Small small;
  small.stage.SetParameterDouble("gain.g", 2);
  EXPECT_EQ(small.Run(), Samples({100, 100, 100}));
  EXPECT_EQ(small.stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_EQ(small.stage.LastError(), 0u);
  EXPECT_EQ(small.Run(), Samples({100, 200, 100}));
}

TEST(CPUIPColorCorrectionCommands, params_apply_takes_all_seven) {
  const std::pair<const char*, Samples> effects[] = {
      {"gain.r", {300, 100, 100}},   {"gain.g", {100, 300, 100}},  {"gain.b", {100, 100, 300}},
      {"offs.r", {4095, 100, 100}},  {"offs.g", {100, 4095, 100}}, {"offs.b", {100, 100, 4095}},
      {"gamma", {4095, 4095, 4095}},
  };
  for (const auto& [key, samples] : effects) {
    Small direct, mapped;
    direct.stage.SetParameterDouble(key, 3);
    EXPECT_EQ(direct.stage.ExecuteCommand("params.apply"), 0u);
    EXPECT_EQ(direct.Run(), samples) << key;
    QTD::ARGUMENTS args{{key, "3"}};
    EXPECT_EQ(mapped.stage.RunCommand("cmd.params.apply", &args), 1u);
    EXPECT_EQ(mapped.Run(), samples) << key;
  }
}

TEST(CPUIPColorCorrectionCommands, without_tables_params_apply_fails) {
  CorrectionStage stage;
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), kFailed);
  EXPECT_EQ(stage.LastError(), 1u);
  EXPECT_EQ(stage.ExecuteCommand("params.reset"), 0u);
  EXPECT_EQ(stage.LastError(), 0u);
}

TEST(CPUIPColorCorrectionCommands, params_reset_sets_the_parameters_back) {
  for (const bool mapped : {false, true}) {
    Small small;
    for (const char* key : kKeys) small.stage.SetParameterDouble(key, 0.5);
    ASSERT_EQ(small.stage.ExecuteCommand("params.apply"), 0u);
    EXPECT_NE(small.Run(), Samples({100, 100, 100}));
    if (mapped) {
      EXPECT_EQ(small.stage.RunCommand("cmd.params.reset", nullptr), 1u);
    } else {
      EXPECT_EQ(small.stage.ExecuteCommand("params.reset"), 0u);
    }
    for (const char* key : kKeys)
      EXPECT_EQ(small.stage.Text(key), std::string(key).find("offs") == 0 ? "0.000000" : "1.000000") << key;
    EXPECT_FALSE(small.stage.IsReady());
    EXPECT_EQ(small.Run(), Samples({100, 100, 100}));  // the next image makes the stage ready again
    EXPECT_TRUE(small.stage.IsReady());
  }
}

TEST(CPUIPColorCorrectionCommands, after_a_reset_the_next_image_reads_the_parameters) {
  Small small;
  QTD::ARGUMENTS args;
  EXPECT_EQ(small.stage.RunCommand("cmd.params.reset", &args), 1u);
  small.stage.SetParameterDouble("offs.b", 1);
  EXPECT_EQ(small.Run(), Samples({100, 100, 4095}));
  small.stage.SetParameterDouble("offs.b", 0);
  EXPECT_EQ(small.Run(), Samples({100, 100, 4095}));  // that one image only
}

TEST(CPUIPColorCorrectionCommands, arguments_come_first_and_parameters_fill_the_gaps) {
  Small small;
  small.stage.SetParameterDouble("gain.r", 2);
  small.stage.SetParameterDouble("gain.g", 2);
  QTD::ARGUMENTS args{{"gain.r", "4"}, {"offs.b", "0.5"}, {"gain.x", "9"}};
  EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &args), 1u);
  EXPECT_EQ(small.Run(), Samples({400, 200, 2148}));  // 100 + 2047.5
  EXPECT_EQ(small.stage.Text("gain.r"), "4.000000");
  EXPECT_EQ(small.stage.Text("gain.g"), "2.000000");
  EXPECT_EQ(small.stage.Text("gain.b"), "1.000000");
  EXPECT_EQ(small.stage.Text("offs.b"), "0.500000");
  EXPECT_EQ(small.stage.Text("offs.r"), "0.000000");
  EXPECT_EQ(small.stage.Text("gamma"), "1.000000");
  EXPECT_EQ(small.stage.Text("gain.x"), "absent");
  EXPECT_EQ(args.size(), 3u);
}

TEST(CPUIPColorCorrectionCommands, an_empty_argument_is_zero_and_trailing_text_is_ignored) {
  Small small;
  QTD::ARGUMENTS args{{"gain.r", ""}, {"gain.g", " 3.5x"}};
  EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &args), 1u);
  EXPECT_EQ(small.Run(), Samples({0, 350, 100}));
}

TEST(CPUIPColorCorrectionCommands, missing_parameters_are_neutral) {
  Small small;
  small.stage.Parameters().Clear();
  QTD::ARGUMENTS args;
  EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &args), 1u);
  EXPECT_EQ(small.Run(), Samples({100, 100, 100}));
  for (const char* key : kKeys)
    EXPECT_EQ(small.stage.Text(key), std::string(key).find("gain") == 0 ? "1.000000" : "0.000000") << key;
  small.stage.Parameters().Clear();
  EXPECT_EQ(small.stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_EQ(small.Run(), Samples({100, 100, 100}));
  // Then gamma is 1, as at the start, and not an inactive 0: nothing is done, even to bytes.
  CorrectionStage bytes;
  StagePicture picture(ZYN_PIXEL_MONO8, 4, 2);
  bytes.Parameters().Clear();
  ASSERT_EQ(bytes.Init(&picture.record, nullptr), 0u);
  EXPECT_EQ(bytes.ProcessImage(&picture.record, nullptr, nullptr), 0u);
}

TEST(CPUIPColorCorrectionCommands, what_is_no_number_changes_nothing) {
  for (const char* key : kKeys) {
    for (const char* text : {"much", ".", "1e999", "-1e999", "x1"}) {
      Small small;
      QTD::ARGUMENTS usual{{"gain.r", "2"}};
      ASSERT_EQ(small.stage.RunCommand("cmd.params.apply", &usual), 1u);
      QTD::ARGUMENTS wrong{{"gain.r", "5"}, {"gain.b", "5"}, {"gamma", "1"}};
      wrong[key] = text;
      EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &wrong), 0u) << key << text;
      EXPECT_EQ(small.Run(), Samples({200, 100, 100}));
      EXPECT_EQ(small.stage.Text("gain.r"), "2.000000");
      EXPECT_EQ(small.stage.Text("gain.b"), "1.000000");

      // The same as a parameter.
      small.stage.SetParameterString("gain.b", "7");
      small.stage.SetParameterString(key, text);
      EXPECT_EQ(small.stage.ExecuteCommand("params.apply"), kFailed);
      EXPECT_EQ(small.stage.LastError(), 1u);
      EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &usual), std::string(key) == "gain.r" ? 1u : 0u);
      EXPECT_EQ(small.stage.RunCommand("cmd.params.reset", nullptr), 1u);  // and no lock is held
    }
  }
}

TEST(CPUIPColorCorrectionCommands, unreadable_parameters_fail_an_image_and_an_init_without_an_exception) {
  Small small;
  ASSERT_EQ(small.stage.ExecuteCommand("params.reset"), 0u);
  small.stage.SetParameterString("gamma", "dark");
  EXPECT_EQ(small.stage.ProcessImage(&small.picture.record, nullptr, nullptr), kFailed);
  EXPECT_EQ(small.stage.Out(), nullptr);
  EXPECT_EQ(small.stage.Init(&small.picture.record, nullptr), kFailed);
  EXPECT_EQ(small.stage.GetImageInfo(true), nullptr);
  small.stage.SetParameterString("gamma", "1");
  EXPECT_EQ(small.stage.Init(&small.picture.record, nullptr), 0u);
}

TEST(CPUIPColorCorrectionCommands, absurd_numbers_are_taken_and_do_no_harm) {
  for (const char* text : {"1e300", "-1e300", "inf", "-inf", "nan", "-nan"}) {
    for (const char* key : kKeys) {
      Small small;
      QTD::ARGUMENTS args{{key, text}};
      EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", &args), 1u) << key << text;
      for (const uint16_t sample : small.Run()) EXPECT_LE(sample, 4095) << key << text;
      // What was written back can be read again.
      EXPECT_EQ(small.stage.ExecuteCommand("params.apply"), 0u) << key << text;
    }
  }
}

TEST(CPUIPColorCorrectionCommands, applying_to_a_released_stage_keeps_the_parameters) {
  CorrectionStage stage;
  QTD::ARGUMENTS args{{"gain.r", "2"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 0u);
  EXPECT_EQ(stage.Text("gain.r"), "2.000000");
  EXPECT_FALSE(stage.IsReady());
  StagePicture picture(ZYN_PIXEL_MONO12, 1, 1);
  picture.record.imageData[0] = 100;
  picture.record.imageData[1] = 0;
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(WordAt(picture, 0), 200);
}

TEST(CPUIPColorCorrectionCommands, unknown_names_are_answered) {
  Small small;
  QTD::ARGUMENTS args{{"gain.r", "2"}};
  for (const char* command : {"", "params.apply", "params.reset", "cmd.params", "cmd.params.applyy"})
    EXPECT_EQ(small.stage.RunCommand(command, &args), 0u) << command;
  EXPECT_EQ(small.stage.RunCommand(nullptr, &args), 0u);
  EXPECT_EQ(small.stage.RunCommand("cmd.params.apply", nullptr), 0u);
  for (const char* command : {"", "cmd.params.apply", "cmd.params.reset", "params", "params.resett"})
    EXPECT_EQ(small.stage.ExecuteCommand(command), kNotSupported) << command;
  EXPECT_EQ(small.stage.ExecuteCommand(nullptr), kNotSupported);
  EXPECT_EQ(small.stage.LastError(), 10u);
  EXPECT_TRUE(small.stage.IsReady());
  EXPECT_EQ(small.Run(), Samples({100, 100, 100}));
}

// The stage takes commands through the interface that hosts see, behind those of the processor.
TEST(CPUIPColorCorrectionCommands, run_command_is_part_of_the_interface) {
  Small small;
  ZynDisplayQT::ColorCorrection& face = small.stage;
  QTD::ARGUMENTS args{{"gain.b", "2"}};
  EXPECT_EQ(face.RunCommand("cmd.params.apply", &args), 1u);
  EXPECT_EQ(small.Run(), Samples({100, 100, 200}));
}

// Each image is corrected with one setting as a whole: a change falls between two images.
TEST(CPUIPColorCorrectionCommands, commands_may_come_while_images_run) {
  CorrectionStage stage;
  StagePicture picture(ZYN_PIXEL_RGB12, 64, 64);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  std::atomic<bool> stop{false};
  std::thread host([&] {
    for (int round = 0; round < 60; ++round) {
      const std::string gain = std::to_string(round % 3 + 2);
      QTD::ARGUMENTS args{{"gain.r", gain}, {"gain.g", gain}, {"gain.b", gain}};
      stage.RunCommand("cmd.params.apply", &args);
      stage.SetParameterDouble("offs.r", 0);
      stage.ExecuteCommand(round % 7 == 0 ? "params.reset" : "params.apply");
      stage.Out();
      stage.GetImageInfo(true);
    }
    stop = true;
  });
  int mixed = 0, failed = 0;
  do {
    std::vector<uint16_t> words(64 * 64 * 3, 100);
    std::memcpy(picture.record.imageData, words.data(), 2 * words.size());
    if (stage.ProcessImage(&picture.record, nullptr, nullptr) != 0) ++failed;
    for (size_t n = 1; n < words.size(); ++n) mixed += WordAt(picture, n) != WordAt(picture, 0);
  } while (!stop);
  host.join();
  EXPECT_EQ(mixed, 0);
  EXPECT_EQ(failed, 0);
}

}  // namespace
