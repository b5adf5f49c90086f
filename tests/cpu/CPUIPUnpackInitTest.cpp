// Preparing the unpack stage: what it takes, what it makes, and its way back to the constructed state.
#include <gtest/gtest.h>

#include <stdexcept>

#include "ZynPixelFormat.h"
#include "tests/cpu/UnpackHelpers.h"

namespace {

TEST(CPUIPUnpackInit, bears_its_names) {
  OpenUnpack stage;
  EXPECT_EQ(stage.Name(), "unpack.cpu");
  char text[32] = "";
  uint32_t size = sizeof(text);
  EXPECT_EQ(stage.GetParameter("class", text, &size), 0u);
  EXPECT_STREQ(text, "CPUIPUnpack");
  EXPECT_EQ(stage.GetParameterCount(), 1u);
  EXPECT_EQ(stage.GetComponent(), static_cast<ZynComponent*>(&stage));
}

TEST(CPUIPUnpackInit, factories_make_and_delete_a_stage) {
  CPUIPUnpack parent(nullptr);
  ZynImgProcessor* const stage = ZynDisplayCPU::Unpack::CreateComponent(&parent);
  ASSERT_NE(dynamic_cast<CPUIPUnpack*>(stage), nullptr);
  EXPECT_EQ(dynamic_cast<CPUIPUnpack*>(stage)->GetParent(), static_cast<ZynComponent*>(&parent));
  ZynDisplayCPU::Unpack::DeleteComponent(stage);
  ZynDisplayCPU::Unpack::DeleteComponent(nullptr);
}

TEST(CPUIPUnpackInit, takes_the_packed_formats_alone) {
  size_t taken = 0;
  const auto packed = PackedCodes();
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const ZynImage source = Header(QTD::FindPixelRow(number)->code);
    OpenUnpack stage;
    const bool expected = std::count(packed.begin(), packed.end(), source.pixelType) != 0;
    EXPECT_EQ(stage.Init(&source, nullptr), expected ? 0u : kFormat) << number;
    EXPECT_EQ(stage.LastError(), expected ? 0u : 3u) << number;
    EXPECT_EQ(stage.IsReady(), expected) << number;
    taken += expected;
  }
  EXPECT_EQ(taken, 20u);
}

TEST(CPUIPUnpackInit, refuses_an_empty_source_before_its_format) {
  OpenUnpack stage;
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.LastError(), 7u);
  for (const uint32_t code : {ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO8}) {
    ZynImage source = Header(code);
    source.width = 0;
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
    source = Header(code);
    source.height = 0;
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
  }
  EXPECT_FALSE(stage.IsReady());
}

TEST(CPUIPUnpackInit, a_source_that_gets_no_image_is_short_of_memory) {
  const uint32_t sizes[][2] = {
      {1u << 20, 1u << 20}, {1, 0x80000001}, {1, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}, {50000, 50000}};
  for (const auto& size : sizes) {
    ZynImage source = Header(ZYN_PIXEL_MONO12P);
    source.width = size[0];
    source.height = size[1];
    OpenUnpack stage;
    EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory) << size[0] << "x" << size[1];
    EXPECT_EQ(stage.LastError(), 9u);
    EXPECT_FALSE(stage.IsReady());
    EXPECT_EQ(stage.Out(), nullptr);
    EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  }
}

TEST(CPUIPUnpackInit, the_output_is_the_unpacked_counterpart) {
  for (const uint32_t code : PackedCodes()) {
    OpenUnpack stage;
    ZynImage source = Header(code, 33, 5);
    source.timestamp = 77;
    const ZynImage ignored = Header(ZYN_PIXEL_RGB8, 1, 1);
    ASSERT_EQ(stage.Init(&source, &ignored), 0u);
    const std::string packedName = QTD::FindPixelRow(code)->name;
    const std::string digits = packedName.find("12") != std::string::npos ? "12" : "10";
    const std::string expected = packedName.substr(0, packedName.find(digits)) + digits;
    for (const ZynImage* const image : {stage.Out(), stage.GetImageInfo(false)}) {
      ASSERT_NE(image, nullptr);
      EXPECT_EQ(QTD::FindPixelRow(image->pixelType)->name, expected);
      EXPECT_EQ(image->width, 33u);
      EXPECT_EQ(image->height, 5u);
      EXPECT_EQ(image->linePitch, 68u);
      EXPECT_EQ(image->imageSize, 340u);
      EXPECT_EQ(image->bitDepth, digits == "12" ? 12u : 10u);
    }
    EXPECT_EQ(stage.GetImageInfo(true)->pixelType, code);
    EXPECT_EQ(stage.GetImageInfo(true)->timestamp, 77u);
    EXPECT_EQ(stage.GetImageInfo(true)->imageData, nullptr);
    EXPECT_EQ(stage.GetImageInfo(false)->imageData, nullptr);
  }
}

TEST(CPUIPUnpackInit, the_output_can_be_had_at_once_and_is_black) {
  const ZynImage source = Header(ZYN_PIXEL_MONO10P);
  ReadyUnpack ready(source);
  ASSERT_NE(ready.stage.Out(), nullptr);
  ASSERT_NE(ready.stage.Out()->imageData, nullptr);
  EXPECT_TRUE(IsBlack(*ready.stage.Out()));
}

TEST(CPUIPUnpackInit, the_mark_of_the_line_order_turns_with_the_property) {
  for (const bool bottomUp : {false, true}) {
    for (const bool property : {false, true}) {
      StagePicture picture(ZYN_PIXEL_MONO12P, 8, 4);
      picture.record.origin = bottomUp ? 1 : 0;
      OpenUnpack stage;
      stage.SetParameterBool("image.flip.vert", property);
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
      const uint32_t expected = bottomUp != property ? 1 : 0;
      EXPECT_EQ(stage.GetImageInfo(false)->origin, expected);
      EXPECT_EQ(stage.Out()->origin, expected);
      EXPECT_EQ(stage.Out()->height, 4u);
      EXPECT_EQ(stage.GetImageInfo(true)->origin, picture.record.origin);
      EXPECT_EQ(SamplesOf(*stage.Out()), ExpectedSamples(picture.record));  // no line is moved
    }
  }
}

TEST(CPUIPUnpackInit, starts_with_a_release) {
  OpenUnpack stage;
  const ZynImage source = Header(ZYN_PIXEL_MONO12P), other = Header(ZYN_PIXEL_BAYERRG10P, 3, 3);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  stage.Enable(false);
  ASSERT_EQ(stage.Init(&other, nullptr), 0u);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.GetImageInfo(true)->width, 3u);
  // Its own information may be the next source.
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), stage.GetImageInfo(false)), 0u);
  EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_BAYERRG10);
  // A failed one leaves nothing behind.
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_FALSE(stage.IsReady());
}

TEST(CPUIPUnpackInit, release_leads_back_to_the_constructed_state) {
  const ZynImage source = Header(ZYN_PIXEL_MONO12P);
  ReadyUnpack ready(source);
  ready.stage.Enable(true);
  ready.stage.Release();
  EXPECT_FALSE(ready.stage.IsReady());
  EXPECT_EQ(ready.stage.Out(), nullptr);
  EXPECT_EQ(ready.stage.GetImageInfo(false), nullptr);
  EXPECT_FALSE(ready.stage.Enable(false));  // the count was 1
  ready.stage.Release();
}

TEST(CPUIPUnpackInit, an_unreadable_parameter_leaves_a_released_stage) {
  const ZynImage source = Header(ZYN_PIXEL_MONO12P);
  ReadyUnpack ready(source);
  ready.stage.SetParameterString("image.flip.vert", "eight");
  EXPECT_THROW(ready.stage.Init(&source, nullptr), std::invalid_argument);
  EXPECT_FALSE(ready.stage.IsReady());
  EXPECT_EQ(ready.stage.Out(), nullptr);
  EXPECT_EQ(ready.stage.GetImageInfo(true), nullptr);
  ready.stage.SetParameterString("image.flip.vert", "0");
  EXPECT_EQ(ready.stage.Init(&source, nullptr), 0u);  // and no lock is held
}

}  // namespace
