// Preparing the image stage: what it takes, what it makes, and its way back to the constructed state.
#include <gtest/gtest.h>

#include <stdexcept>

#include "ZynPixelFormat.h"
#include "tests/cpu/ReadyStage.h"

namespace {

class OpenStage : public CPUIPImage {
 public:
  OpenStage() : CPUIPImage(nullptr) {}
  const std::string& Name() const { return name; }
  uint32_t LastError() const { return lastError; }
};

uint32_t TypeAfterInit(uint32_t sourceType, const char* depth) {
  CPUIPImage stage(nullptr);
  if (depth) stage.SetParameterString("depth", depth);
  const ZynImage source = Header(sourceType);
  return stage.Init(&source, nullptr) == 0 ? stage.GetImageInfo(false)->pixelType : 0;
}

TEST(CPUIPImageInit, bears_its_names) {
  OpenStage stage;
  EXPECT_EQ(stage.Name(), "image.cpu");
  char text[32] = "";
  uint32_t size = sizeof(text);
  EXPECT_EQ(stage.GetParameter("class", text, &size), 0u);
  EXPECT_STREQ(text, "CPUIPImage");
  EXPECT_EQ(stage.GetParameterCount(), 1u);
  EXPECT_EQ(stage.GetComponent(), static_cast<ZynComponent*>(&stage));
}

TEST(CPUIPImageInit, factories_make_and_delete_a_stage) {
  CPUIPImage parent(nullptr);
  ZynImgProcessor* const stage = ZynDisplayCPU::Image::CreateComponent(&parent);
  ASSERT_NE(dynamic_cast<CPUIPImage*>(stage), nullptr);
  EXPECT_EQ(dynamic_cast<CPUIPImage*>(stage)->GetParent(), static_cast<ZynComponent*>(&parent));
  ZynDisplayCPU::Image::DeleteComponent(stage);
  ZynDisplayCPU::Image::DeleteComponent(nullptr);
}

TEST(CPUIPImageInit, knows_nothing_before_it) {
  CPUIPImage stage(nullptr);
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
}

TEST(CPUIPImageInit, refuses_an_empty_source) {
  OpenStage stage;
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.LastError(), 7u);
  ZynImage source = Header(ZYN_PIXEL_MONO8);
  source.width = 0;
  EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
  source = Header(ZYN_PIXEL_MONO8);
  source.height = 0;
  EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
  EXPECT_FALSE(stage.IsReady());
}

TEST(CPUIPImageInit, refuses_packed_formats_and_uyvy) {
  int refused = 0;
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(number);
    const std::string name = row->name;
    const bool brio = name.find("Brio") != std::string::npos || name.find("BRIO") != std::string::npos;
    const bool packed = (name.find("Mono") == 0 || name.find("Bayer") == 0) && !brio &&
                        (name.back() == 'p' || name.find("Packed") != std::string::npos);
    const bool expected = packed || name == "YUV422_8_UYVY";
    const ZynImage source = Header(row->code);
    CPUIPImage stage(nullptr);
    EXPECT_EQ(stage.Init(&source, nullptr), expected ? kFormat : 0u) << name;
    refused += expected;
  }
  EXPECT_EQ(refused, 21);
}

TEST(CPUIPImageInit, a_source_that_gets_no_image_is_short_of_memory) {
  CPUIPImage stage(nullptr);
  ZynImage source = Header(ZYN_PIXEL_MONO8);
  source.pixelType = 0;
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  source = Header(ZYN_PIXEL_MONO8);
  source.width = 1u << 20;
  source.height = 1u << 20;  // 2^40 bytes
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  source.width = 1;
  source.height = 0x80000001;
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  source.height = 0xFFFFFFFF;  // -1 as a signed number
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  source.width = source.height = 0xFFFFFFFF;
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  // The deep source alone passes 32 bits, its 8-bit result does not.
  stage.SetParameterString("depth", "8");
  source = Header(ZYN_PIXEL_MONO12);
  source.width = source.height = 50000;
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
}

TEST(CPUIPImageInit, an_output_header_of_no_format_leaves_a_released_stage) {
  for (const bool external : {false, true}) {
    CPUIPImage stage(nullptr);
    stage.SetParameterBool("external", external);
    const ZynImage source = Header(ZYN_PIXEL_BGR8);
    ZynImage output = Header(ZYN_PIXEL_RGB8);
    output.pixelType = 0;
    EXPECT_EQ(stage.Init(&source, &output), kNoMemory);
    EXPECT_EQ(stage.GetImageInfo(true), nullptr);
    EXPECT_FALSE(stage.IsReady());
  }
}

TEST(CPUIPImageInit, keeps_the_format_without_parameters) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BGR16,
                              ZYN_PIXEL_RGBA8, ZYN_PIXEL_YUV422_8, ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_12}) {
    EXPECT_EQ(TypeAfterInit(code, nullptr), code);
    EXPECT_EQ(TypeAfterInit(code, "12"), code);  // only 8 is a depth to reduce to
  }
}

TEST(CPUIPImageInit, depth_8_leads_to_the_8_bit_counterpart) {
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_MONO8, "8"), ZYN_PIXEL_MONO8);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_MONO10, "8"), ZYN_PIXEL_MONO8);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_MONO16, "8"), ZYN_PIXEL_MONO8);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_BAYERBG12, "8"), ZYN_PIXEL_BAYERBG8);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_10, "8"), ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_8);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_RGB16, "8"), ZYN_PIXEL_RGB16);
  EXPECT_EQ(TypeAfterInit(ZYN_PIXEL_YUV422_8, "8"), ZYN_PIXEL_YUV422_8);
  // No 8-bit counterpart, so no image can be made.
  CPUIPImage stage(nullptr);
  stage.SetParameterString("depth", "8");
  const ZynImage source = Header(ZYN_PIXEL_YUV422_10);
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
}

TEST(CPUIPImageInit, the_output_header_comes_before_depth) {
  CPUIPImage stage(nullptr);
  stage.SetParameterString("depth", "8");
  const ZynImage source = Header(ZYN_PIXEL_BGR12), output = Header(ZYN_PIXEL_RGB16);
  ASSERT_EQ(stage.Init(&source, &output), 0u);
  EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB16);
}

TEST(CPUIPImageInit, an_output_header_that_asks_for_no_step_is_not_followed) {
  CPUIPImage stage(nullptr);
  const ZynImage source = Header(ZYN_PIXEL_RGB12), output = Header(ZYN_PIXEL_RGB16);
  ASSERT_EQ(stage.Init(&source, &output), 0u);
  EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB12);
}

TEST(CPUIPImageInit, informs_about_source_and_output) {
  CPUIPImage stage(nullptr);
  ZynImage source = Header(ZYN_PIXEL_MONO12, 33, 5), output = Header(ZYN_PIXEL_RGB8, 1, 1);
  source.timestamp = 77;
  int block = 0;
  source.attachments = &block;
  ASSERT_EQ(stage.Init(&source, &output), 0u);
  EXPECT_TRUE(stage.IsReady());
  const ZynImage* const sourceInfo = stage.GetImageInfo(true);
  const ZynImage* const outputInfo = stage.GetImageInfo(false);
  EXPECT_EQ(sourceInfo->pixelType, ZYN_PIXEL_MONO12);
  EXPECT_EQ(sourceInfo->timestamp, 77u);
  EXPECT_EQ(sourceInfo->imageData, nullptr);
  EXPECT_EQ(sourceInfo->attachments, nullptr);
  EXPECT_EQ(outputInfo->width, 33u);
  EXPECT_EQ(outputInfo->height, 5u);
  EXPECT_EQ(outputInfo->linePitch, 100u);
  EXPECT_EQ(outputInfo->imageSize, 500u);
  EXPECT_EQ(outputInfo->bitDepth, 8u);
  EXPECT_EQ(stage.Out(), nullptr);
}

// The information carries the mark, the output image never does, and no line moves.
TEST(CPUIPImageInit, the_mark_of_the_line_order_turns_with_the_property) {
  for (const bool bottomUp : {false, true}) {
    for (const bool property : {false, true}) {
      for (const uint32_t target : {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8}) {
        StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
        picture.record.origin = bottomUp ? 1 : 0;
        const ZynImage output = Header(target);
        CPUIPImage stage(nullptr);
        stage.SetParameterBool("image.flip.vert", property);
        ASSERT_EQ(stage.Init(&picture.record, &output), 0u);
        EXPECT_EQ(stage.GetImageInfo(false)->origin, bottomUp != property ? 1u : 0u);
        EXPECT_EQ(stage.GetImageInfo(false)->height, 4u);
        EXPECT_EQ(stage.GetImageInfo(true)->origin, picture.record.origin);
        ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
        EXPECT_EQ(stage.Out()->origin, 0u);
        EXPECT_EQ(stage.Out()->imageData[0], picture.record.imageData[0]);
      }
    }
  }
}

TEST(CPUIPImageInit, starts_with_a_release) {
  CPUIPImage stage(nullptr);
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  stage.Enable(false);
  EXPECT_FALSE(stage.IsEnabled());
  const ZynImage other = Header(ZYN_PIXEL_RGB8, 3, 3);
  ASSERT_EQ(stage.Init(&other, nullptr), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(true)->width, 3u);
  // Its own information may be the next source.
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), stage.GetImageInfo(false)), 0u);
  EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
  // A failed one leaves nothing behind.
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNotReady);
}

TEST(CPUIPImageInit, release_leads_back_to_the_constructed_state) {
  CPUIPImage stage(nullptr);
  const StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  const ZynImage output = Header(ZYN_PIXEL_RGB8);
  ASSERT_EQ(stage.Init(&picture.record, &output), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  stage.Enable(true);
  stage.Release();
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  EXPECT_FALSE(stage.Enable(false));  // the count was 1
  stage.Release();
  // The steps of the earlier format are forgotten: there is nothing to convert any more.
  const ZynImage rgb12 = Header(ZYN_PIXEL_RGB12), rgb16 = Header(ZYN_PIXEL_RGB16);
  ASSERT_EQ(stage.Init(&rgb12, &rgb16), 0u);
  EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB12);
}

TEST(CPUIPImageInit, an_unreadable_parameter_leaves_a_released_stage) {
  const ZynImage source = Header(ZYN_PIXEL_MONO12);
  for (const char* name : {"depth", "image.flip.vert", "external"}) {
    CPUIPImage stage(nullptr);
    ASSERT_EQ(stage.Init(&source, nullptr), 0u);
    stage.SetParameterString(name, "eight");
    EXPECT_THROW(stage.Init(&source, nullptr), std::invalid_argument) << name;
    EXPECT_FALSE(stage.IsReady());
    EXPECT_EQ(stage.GetImageInfo(true), nullptr);
    stage.SetParameterString(name, "0");
    EXPECT_EQ(stage.Init(&source, nullptr), 0u);  // and no lock is held
  }
}

TEST(CPUIPImageInit, an_absurd_depth_in_the_record_does_no_harm) {
  ZynImage source = Header(ZYN_PIXEL_MONO12);
  source.bitDepth = 0xFFFFFFFF;
  CPUIPImage stage(nullptr);
  EXPECT_EQ(stage.Init(&source, nullptr), 0u);
}

}  // namespace
