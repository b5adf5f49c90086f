// Preparing the demosaicing stage: what it takes, and how it makes its component, whatever that one does.
#include "cpu/stages/CPUIPBayer.h"

#include <gtest/gtest.h>

#include <thread>

#include "ZynPixelFormat.h"
#include "tests/cpu/BayerPlan.h"

namespace {

TEST(CPUIPBayer, bears_its_names) {
  FakeBayerStage stage;
  EXPECT_EQ(stage.Name(), "bayer.cpu");
  char text[32] = "";
  uint32_t size = sizeof(text);
  EXPECT_EQ(stage.GetParameter("class", text, &size), 0u);
  EXPECT_STREQ(text, "CPUIPBayer");
  EXPECT_EQ(stage.GetComponent(), static_cast<ZynComponent*>(&stage));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, factories_make_and_delete_a_stage) {
  CPUIPBayer parent(nullptr);
  ZynImgProcessor* const stage = ZynDisplayCPU::Bayer::CreateComponent(&parent);
  ASSERT_NE(dynamic_cast<CPUIPBayer*>(stage), nullptr);
  EXPECT_EQ(dynamic_cast<CPUIPBayer*>(stage)->GetParent(), static_cast<ZynComponent*>(&parent));
  ZynDisplayCPU::Bayer::DeleteComponent(stage);
  ZynDisplayCPU::Bayer::DeleteComponent(nullptr);
}

TEST(CPUIPBayer, refuses_an_empty_source) {
  FakeBayerStage stage;
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.LastError(), 7u);
  for (const bool wide : {false, true}) {
    const ZynImage source = Header(ZYN_PIXEL_BAYERRG8, wide ? 8 : 0, wide ? 0 : 4);
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
    ExpectReleased(stage);
  }
}

TEST(CPUIPBayer, takes_the_twenty_unpacked_bayer_codes_alone) {
  int taken = 0;
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(number);
    const std::string rowName = row->name;
    const bool expected =
        rowName.find("Bayer") == 0 && rowName.back() != 'p' && rowName.find("Packed") == std::string::npos;
    FakeBayerStage stage;
    const ZynImage source = Header(row->code);
    EXPECT_EQ(stage.Init(&source, nullptr), expected ? 0u : kFormat) << rowName;
    EXPECT_EQ(stage.IsReady(), expected) << rowName;
    taken += expected;
  }
  EXPECT_EQ(taken, 20);
}

TEST(CPUIPBayer, refuses_BayerGR10p) {
  FakeBayerStage stage;
  const ZynImage source = Header(ZYN_PIXEL_BAYERGR10P);
  EXPECT_EQ(stage.Init(&source, nullptr), kFormat);
  EXPECT_EQ(stage.LastError(), 3u);
  EXPECT_TRUE(ThePlan().calls.empty());
  ExpectReleased(stage);
}

TEST(CPUIPBayer, the_result_has_the_depth_of_the_source_in_the_order_of_the_wanted_header) {
  const uint32_t results[][3] = {{ZYN_PIXEL_BAYERGB8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
                                 {ZYN_PIXEL_BAYERBG10, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
                                 {ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
                                 {ZYN_PIXEL_BAYERRG14, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
                                 {ZYN_PIXEL_BAYERGB16, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16}};
  for (const auto& [bayer, rgb, bgr] : results) {
    FakeBayerStage stage;
    const ZynImage source = Header(bayer);
    for (const uint32_t wanted : {0u, ZYN_PIXEL_RGB8, ZYN_PIXEL_MONO8, ZYN_PIXEL_BGRA8, 0xFFFFFFFFu}) {
      ZynImage output{};
      output.pixelType = wanted;
      ASSERT_EQ(stage.Init(&source, wanted ? &output : nullptr), 0u);
      EXPECT_EQ(stage.GetImageInfo(false)->pixelType, rgb) << wanted;
    }
    // Any BGR code chooses the order, and nothing else.
    for (const uint32_t wanted : {ZYN_PIXEL_BGR8, ZYN_PIXEL_BGR16}) {
      ZynImage output{};
      output.pixelType = wanted;
      ASSERT_EQ(stage.Init(&source, &output), 0u);
      EXPECT_EQ(stage.GetImageInfo(false)->pixelType, bgr);
      EXPECT_EQ(stage.Out()->pixelType, bgr);
    }
  }
}

TEST(CPUIPBayer, the_information_tells_source_and_result) {
  FakeBayerStage stage;
  StagePicture picture(ZYN_PIXEL_BAYERGR12, 7, 5, 20);
  picture.record.imageID = 77;
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  const ZynImage source = *stage.GetImageInfo(true), output = *stage.GetImageInfo(false);
  EXPECT_EQ(source.pixelType, ZYN_PIXEL_BAYERGR12);
  EXPECT_EQ(source.linePitch, 20u);
  EXPECT_EQ(source.imageID, 77u);
  EXPECT_EQ(source.imageData, nullptr);
  EXPECT_EQ(output.width, 7u);
  EXPECT_EQ(output.height, 5u);
  EXPECT_EQ(output.linePitch, 44u);  // 42 bytes of pixels
  EXPECT_EQ(output.imageSize, 220u);
  EXPECT_EQ(output.imageData, nullptr);
  EXPECT_EQ(ThePlan().initSource.pixelType, ZYN_PIXEL_BAYERGR12);
  EXPECT_EQ(ThePlan().initOutput.pixelType, ZYN_PIXEL_RGB12);
  EXPECT_EQ(ThePlan().initOutput.imageData, stage.Out()->imageData);
}

TEST(CPUIPBayer, after_init_out_is_the_empty_result) {
  FakeBayerStage stage;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  ASSERT_NE(stage.Out(), nullptr);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(stage.Out()->imageData[0], 0);
}

TEST(CPUIPBayer, the_mark_of_the_line_order_is_carried_and_turned) {
  for (const uint32_t origin : {0u, 1u, 2u}) {
    for (const bool turned : {false, true}) {
      FakeBayerStage stage;
      stage.SetParameterBool("image.flip.vert", turned);
      ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
      source.origin = origin;
      ASSERT_EQ(stage.Init(&source, nullptr), 0u);
      const uint32_t expected = (origin == 1) != turned;
      EXPECT_EQ(stage.GetImageInfo(false)->origin, expected);
      EXPECT_EQ(stage.GetImageInfo(false)->height, 4u);
      EXPECT_EQ(stage.Out()->origin, expected);
      EXPECT_EQ(stage.GetImageInfo(true)->origin, origin);
    }
  }
}

TEST(CPUIPBayer, a_picture_that_gets_no_memory_is_refused) {
  FakeBayerStage stage;
  for (const uint32_t height : {1u << 20, 0x80000000u, 0xFFFFFFFFu}) {
    ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
    source.width = 1u << 20;
    source.height = height;
    EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
    ExpectReleased(stage);
  }
  EXPECT_TRUE(ThePlan().calls.empty());
}

TEST(CPUIPBayer, hands_the_method_to_the_component) {
  FakeBayerStage stage;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_EQ(ThePlan().method, "0");
  stage.SetParameterInt("BayerAlgType", -12345678901);
  EXPECT_EQ(ThePlan().method, "0");  // until the next Init
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_EQ(ThePlan().method, "-12345678901");
  stage.SetParameterString("BayerAlgType", "");
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_EQ(ThePlan().method, "0");
}

TEST(CPUIPBayer, an_unreadable_parameter_leaves_a_released_stage) {
  for (const char* key : {"BayerAlgType", "image.flip.vert"}) {
    for (const char* text : {"best", "99999999999999999999"}) {
      FakeBayerStage stage;
      const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
      ASSERT_EQ(stage.Init(&source, nullptr), 0u);
      stage.SetParameterString(key, text);
      EXPECT_EQ(stage.Init(&source, nullptr), kFailed) << key;
      ExpectReleased(stage);
      EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);  // an empty source comes first
      stage.SetParameterString(key, "1");
      EXPECT_EQ(stage.Init(&source, nullptr), 0u);
    }
  }
}

// A handler may bring the method up to date, and may itself call the stage.
TEST(CPUIPBayer, the_method_is_read_through_the_handler) {
  struct Handler : ZynDisplayCommand {
    uint32_t RunCommand(const char* command, QTD::ARGUMENTS* args) override {
      if (std::string(command) == "cmd.parameter.get" && args->at("name") == "BayerAlgType") {
        std::thread([this] { target->Release(); }).join();
        target->SetParameter("BayerAlgType", "3");
      }
      return 0;
    }
    FakeBayerStage* target = nullptr;
  } handler;
  FakeBayerStage stage;
  handler.target = &stage;
  stage.SetParameterHandlers(nullptr, &handler);
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_EQ(ThePlan().method, "3");
  stage.SetParameterHandlers(nullptr, nullptr);
}

TEST(CPUIPBayer, no_component_is_a_failure) {
  FakeBayerStage stage;
  ThePlan().exists = false;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  EXPECT_EQ(stage.Init(&source, nullptr), kFailed);
  EXPECT_EQ(stage.LastError(), 1u);
  EXPECT_EQ(ThePlan().calls, Calls({"create"}));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, a_component_without_parameters_is_a_failure) {
  FakeBayerStage stage;
  ThePlan().hasParameters = false;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  EXPECT_EQ(stage.Init(&source, nullptr), kFailed);
  EXPECT_EQ(ThePlan().calls, Calls({"create", "release", "delete"}));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, a_component_that_fails_at_its_init_leaves_a_released_stage) {
  FakeBayerStage stage;
  ThePlan().initCode = 0x80FF0007;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  EXPECT_EQ(stage.LastError(), 9u);
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete"}));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, a_component_that_throws_at_its_init_leaves_a_released_stage) {
  FakeBayerStage stage;
  ThePlan().throwsAtInit = true;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete"}));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, a_component_that_throws_at_its_release_is_deleted_all_the_same) {
  FakeBayerStage stage;
  ThePlan().throwsAtRelease = true;
  const ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_NO_THROW(stage.Release());
  EXPECT_EQ(ThePlan().calls, Calls({"create", "init", "release", "delete"}));
  ExpectReleased(stage);
}

TEST(CPUIPBayer, the_high_half_of_the_components_codes_is_no_failure) {
  FakeBayerStage stage;
  ThePlan().initCode = ThePlan().processCode = 0x80FF0000;
  StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
}

}  // namespace
