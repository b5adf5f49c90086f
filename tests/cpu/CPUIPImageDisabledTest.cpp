// The image stage while it is disabled: it hands on what needs no change of size, and works on all else.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ZynPixelFormat.h"
#include "tests/cpu/ReadyStage.h"

namespace {

TEST(CPUIPImageDisabled, a_disabled_stage_hands_an_equal_source_on) {
  const StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO12);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out(), &picture.record);
  ready.stage.Enable(true);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_NE(ready.stage.Out(), &picture.record);
}

// All of the bytes that Mono12 words become, whatever a line's pitch.
std::vector<uint8_t> Reduced12(const StagePicture& picture) {
  std::vector<uint8_t> bytes;
  for (size_t line = 0; line < picture.record.height; ++line) {
    for (size_t x = 0; x < picture.record.width; ++x) {
      const int word = WordAt(picture, line * picture.record.linePitch / 2 + x);
      bytes.push_back(static_cast<uint8_t>(std::min(word >> 4, 255)));
    }
  }
  return bytes;
}

TEST(CPUIPImageDisabled, a_disabled_stage_still_reduces_to_the_depth_of_its_parameter) {
  const StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  CPUIPImage stage(nullptr);
  stage.SetParameterInt("depth", 8);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  stage.Enable(false);
  ASSERT_FALSE(stage.IsEnabled());
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  ASSERT_NE(stage.Out(), &picture.record);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(PixelsOf(*stage.Out()), Reduced12(picture));
}

TEST(CPUIPImageDisabled, a_disabled_stage_still_reduces_to_the_depth_of_its_output_header) {
  const StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out()->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(PixelsOf(*ready.stage.Out()), Reduced12(picture));
}

// A source of the output's size is handed on even then, and the caller's image stays as it was.
TEST(CPUIPImageDisabled, a_disabled_stage_leaves_a_callers_output_of_the_sources_size_alone) {
  StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  picture.record.imageID = 5;
  StagePicture output(ZYN_PIXEL_MONO12, 8, 4, 0, 2);
  const auto before = output.Copy();
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO12);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.Run(picture.record, &output.record), 0u);
  EXPECT_EQ(ready.stage.Out(), &picture.record);
  EXPECT_EQ(output.Copy(), before);
  EXPECT_EQ(output.record.imageID, 0u);
}

TEST(CPUIPImageDisabled, a_disabled_stage_converts_into_a_callers_output_of_another_size) {
  StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  picture.record.imageID = 5;
  StagePicture output(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8, true);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.Run(picture.record, &output.record), 0u);
  EXPECT_EQ(ready.stage.Out(), &output.record);
  EXPECT_EQ(output.record.imageID, 5u);
  EXPECT_EQ(PixelsOf(output.record), Reduced12(picture));
  // What an enabled stage refuses, this one refuses as well.
  StagePicture higher(ZYN_PIXEL_MONO8, 8, 5);
  EXPECT_EQ(ready.Run(picture.record, &higher.record), kBadArgument);
  EXPECT_EQ(ready.Run(picture.record), kNotReady);
}

// Sizes alone decide: the swap is left out.
TEST(CPUIPImageDisabled, a_disabled_stage_of_equal_sizes_does_not_convert) {
  const StagePicture picture(ZYN_PIXEL_BGR8, 8, 4);
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out(), &picture.record);
}

}  // namespace
