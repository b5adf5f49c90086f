// Preparing, enabling and commanding the exposure coloration.
#include <limits>

#include "tests/cpu/ColorationFixture.h"

namespace {

constexpr uint32_t kNotSupported = 0x80FF000A;

std::string ParameterOf(CPUIPExposureColoration& stage, const char* name) {
  return stage.Parameters().GetString(name, "absent");
}

TEST_F(ColorationTest, is_a_component_of_its_class_made_by_its_factory) {
  EXPECT_EQ(ParameterOf(stage, "class"), "CPUIPExposureColoration");
  EXPECT_EQ(stage.GetComponent(), &stage);
  ZynImgProcessor* made = ZynDisplayCPU::ExposureColoration::CreateComponent(&chain);
  ASSERT_TRUE(dynamic_cast<CPUIPExposureColoration*>(made));
  ZynDisplayCPU::ExposureColoration::DeleteComponent(made);
  ZynDisplayCPU::ExposureColoration::DeleteComponent(nullptr);
}

TEST_F(ColorationTest, refuses_empty_headers_and_formats_that_it_cannot_mark) {
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  ZynImage header = Header(ZYN_PIXEL_RGB8);
  header.width = 0;
  EXPECT_EQ(stage.Init(&header, nullptr), kBadArgument);
  header = Header(ZYN_PIXEL_RGB8);
  header.height = 0;
  EXPECT_EQ(stage.Init(&header, nullptr), kBadArgument);
  for (const uint32_t code : {ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_BAYERRG8,
                              ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_YUV422_8_UYVY, 0x04080131u}) {
    header = Header(code);
    EXPECT_EQ(stage.Init(&header, nullptr), kFormat) << std::hex << code;
    EXPECT_EQ(stage.GetImageInfo(true), nullptr);
    EXPECT_FALSE(stage.IsReady());
  }
  header = Header(ZYN_PIXEL_RGB8);
  header.pixelType = 0x021801FF;
  EXPECT_EQ(stage.Init(&header, nullptr), kNoMemory);
  header = Header(ZYN_PIXEL_RGB8);
  header.height = 0xFFFFFFFF;
  EXPECT_EQ(stage.Init(&header, nullptr), kNoMemory);
}

TEST_F(ColorationTest, one_header_describes_source_and_result) {
  ZynImage header = Header(ZYN_PIXEL_BGR8, 7, 3);
  stage.SetParameterBool("image.flip.vert", 1);  // means nothing in place
  ASSERT_EQ(stage.Init(&header, nullptr), 0u);
  ASSERT_TRUE(stage.GetImageInfo(true));
  EXPECT_EQ(stage.GetImageInfo(true), stage.GetImageInfo(false));
  EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_BGR8);
  EXPECT_EQ(stage.GetImageInfo(true)->width, 7u);
  EXPECT_EQ(stage.GetImageInfo(true)->height, 3u);
  EXPECT_EQ(stage.GetImageInfo(true)->origin, 0u);
  header.origin = 1;
  ASSERT_EQ(stage.Init(&header, nullptr), 0u);
  EXPECT_EQ(stage.GetImageInfo(true)->origin, 1u);
  // Its own record, which goes meanwhile.
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), nullptr), 0u);
  EXPECT_EQ(stage.GetImageInfo(true)->width, 7u);
}

TEST_F(ColorationTest, init_reads_the_parameters_against_the_values) {
  Values(ZYN_PIXEL_MONO8, {0});
  EXPECT_TRUE(stage.IsReady());
  stage.SetParameterString("thres.lo", "low");
  EXPECT_EQ(stage.Init(&picture->record, nullptr), kFailed);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_FALSE(stage.IsReady());
  stage.SetParameterString("thres.lo", "99999999999");
  EXPECT_EQ(stage.Init(&picture->record, nullptr), kFailed);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
}

TEST_F(ColorationTest, enabling_counts_for_the_values_too) {
  EXPECT_FALSE(stage.Enable(false));
  EXPECT_EQ(unpacked.count, -1);
  EXPECT_FALSE(stage.IsEnabled());
  EXPECT_FALSE(stage.Enable(false));
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_EQ(unpacked.count, 0);
  EXPECT_TRUE(stage.Enable(false));
  EXPECT_FALSE(stage.Enable(false));
  chain.RemoveProcessor("image.unpacked");
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_EQ(unpacked.count, -2);
}

TEST_F(ColorationTest, the_values_are_kept_aside_while_it_is_enabled_only) {
  StagePicture mono(ZYN_PIXEL_MONO8, 4, 2), mosaic(ZYN_PIXEL_BAYERRG8, 4, 2);
  CPUIPImage image(nullptr);
  QTD::RecordHold hold;
  const auto kept = [&](const StagePicture& from) {
    EXPECT_EQ(image.ProcessImage(&from.record, nullptr, nullptr), 0u);
    return image.Untouched(hold) != nullptr;
  };
  ASSERT_EQ(image.Init(&mono.record, nullptr), 0u);
  chain.AddProcessor("image.unpacked", &image);
  EXPECT_FALSE(kept(mono));
  stage.Enable(true);
  ASSERT_TRUE(kept(mono));
  EXPECT_NE(image.Untouched(hold)->imageData, image.Out()->imageData);
  EXPECT_EQ(PixelsOf(*image.Untouched(hold)), PixelsOf(mono.record));
  stage.Enable(false);
  EXPECT_TRUE(kept(mono));
  stage.Enable(false);
  EXPECT_EQ(image.Untouched(hold), nullptr);
  EXPECT_FALSE(kept(mono));
  stage.Enable(true);
  EXPECT_TRUE(kept(mono));
  EXPECT_NE(image.ProcessImage(nullptr, nullptr, nullptr), 0u);
  EXPECT_EQ(image.Untouched(hold), nullptr);  // not that of an earlier image
  ASSERT_EQ(image.Init(&mosaic.record, nullptr), 0u);
  stage.Enable(true);
  EXPECT_FALSE(kept(mosaic));
}

TEST_F(ColorationTest, params_apply_takes_the_stages_parameters) {
  Values(ZYN_PIXEL_MONO8, {0, 9, 10, 20, 21});
  stage.SetParameterInt("thres.lo", 10);
  stage.SetParameterInt("thres.hi", 20);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g....");  // not yet
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "gg..r");
  unpacked.outputInfo = nullptr;
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), kFailed);
}

TEST_F(ColorationTest, a_text_without_a_number_changes_nothing) {
  Values(ZYN_PIXEL_MONO8, {0, 9, 255});
  stage.SetParameterInt("thres.lo", 10);
  stage.SetParameterString("color.hi", "red");
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), kFailed);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g.r");
  for (const char* bad : {"many", "99999999999"}) {
    QTD::ARGUMENTS args{{"color.hi", "255"}, {"thres.hi", bad}};
    EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 0u) << bad;
    ASSERT_EQ(Run(), 0u);
    EXPECT_EQ(Marks(), "g.r");
  }
  EXPECT_EQ(ParameterOf(stage, "color.hi"), "red");
}

TEST_F(ColorationTest, params_reset_goes_back_to_the_defaults) {
  Values(ZYN_PIXEL_MONO8, {0, 9, 255});
  for (const bool byArguments : {false, true}) {
    for (const char* name : {"thres.lo", "thres.hi", "color.lo", "color.hi"}) stage.SetParameterInt(name, 10);
    ASSERT_EQ(stage.ExecuteCommand("params.apply"), 0u);
    if (byArguments) {
      EXPECT_EQ(stage.RunCommand("cmd.params.reset", nullptr), 1u);
    } else {
      EXPECT_EQ(stage.ExecuteCommand("params.reset"), 0u);
    }
    EXPECT_FALSE(stage.IsReady());
    EXPECT_EQ(ParameterOf(stage, "thres.lo"), "-1");
    EXPECT_EQ(ParameterOf(stage, "thres.hi"), "-1");
    EXPECT_EQ(ParameterOf(stage, "color.lo"), "65280");
    EXPECT_EQ(ParameterOf(stage, "color.hi"), "255");
    ASSERT_EQ(Run(), 0u);
    EXPECT_EQ(Marks(), "g.r");
  }
}

TEST_F(ColorationTest, cmd_params_apply_takes_arguments_before_parameters) {
  Values(ZYN_PIXEL_MONO8, {0, 9, 10, 20, 21});
  stage.SetParameterInt("thres.lo", 10);
  stage.SetParameterInt("color.lo", 0x0000FF);
  QTD::ARGUMENTS args{{"thres.hi", "20"}, {"color.lo", "65280"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 1u);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "gg..r");
  EXPECT_EQ(ParameterOf(stage, "thres.lo"), "10");
  EXPECT_EQ(ParameterOf(stage, "thres.hi"), "20");
  EXPECT_EQ(ParameterOf(stage, "color.lo"), "65280");
  EXPECT_EQ(ParameterOf(stage, "color.hi"), "255");
  EXPECT_EQ(args.size(), 2u);

  args = {{"thres.lo", "-7"}, {"thres.hi", "-8 more"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 1u);
  EXPECT_EQ(ParameterOf(stage, "thres.lo"), "-7");
  EXPECT_EQ(ParameterOf(stage, "thres.hi"), "-8");
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g....");
}

TEST_F(ColorationTest, parameters_are_written_thresholds_first) {
  Values(ZYN_PIXEL_MONO8, {0});
  QTD::ARGUMENTS args;
  ASSERT_EQ(stage.RunCommand("cmd.params.apply", &args), 1u);
  std::vector<std::string> names;
  for (int n = 0; n < stage.Parameters().Count(); ++n) names.push_back(stage.Parameters().NameAt(n));
  EXPECT_EQ(names, (std::vector<std::string>{"class", "thres.lo", "thres.hi", "color.lo", "color.hi"}));
}

TEST_F(ColorationTest, other_commands_and_missing_arguments_do_nothing) {
  Values(ZYN_PIXEL_MONO8, {0});
  QTD::ARGUMENTS args{{"thres.lo", "20"}};
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", nullptr), 0u);
  EXPECT_EQ(stage.RunCommand("params.apply", &args), 0u);
  EXPECT_EQ(stage.RunCommand("cmd.params", &args), 0u);
  EXPECT_EQ(stage.RunCommand("", &args), 0u);
  EXPECT_EQ(stage.RunCommand(nullptr, &args), 0u);
  EXPECT_EQ(ParameterOf(stage, "thres.lo"), "absent");
  for (const char* name : {"cmd.params.apply", "params", ""}) {
    EXPECT_EQ(stage.ExecuteCommand(name), kNotSupported);
  }
  EXPECT_EQ(stage.ExecuteCommand(nullptr), kNotSupported);
  chain.RemoveProcessor("image.unpacked");
  EXPECT_EQ(stage.RunCommand("cmd.params.apply", &args), 0u);
}

TEST_F(ColorationTest, release_brings_it_back_to_the_start) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  stage.Enable(true);
  ASSERT_EQ(Run(), 0u);
  stage.Enable(false);
  stage.Enable(false);
  stage.Release();
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_FALSE(stage.IsReady());
  EXPECT_TRUE(stage.IsEnabled());
}

TEST_F(ColorationTest, a_depth_beyond_16_bits_counts_as_16) {
  Values(ZYN_PIXEL_MONO16, {0, 65534, 65535});
  ZynImage info = source->record;
  info.bitDepth = 0xFFFFFFFF;
  unpacked.outputInfo = &info;
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g.r");
}

}  // namespace
