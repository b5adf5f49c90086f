#include "cpu/stages/CPUIPYUV2RGB.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "tests/chain/TraceCapture.h"
#include "tests/cpu/ReadyStage.h"
#include "tests/cpu/StagePicture.h"
#include "tests/support/TestData.h"

namespace {

class OpenYuv : public CPUIPYUV2RGB {
 public:
  explicit OpenYuv(ZynComponent* parentComponent = nullptr) : CPUIPYUV2RGB(parentComponent) {}
  const std::string& Name() const { return name; }
  uint32_t LastError() const { return lastError; }
};

struct ReadyYuv {
  explicit ReadyYuv(const ZynImage& source) { EXPECT_EQ(stage.Init(&source, nullptr), 0u); }
  uint32_t Run(const ZynImage& source) { return stage.ProcessImage(&source, nullptr, nullptr); }
  OpenYuv stage;
};

bool IsBlack(const ZynImage& image) {
  return std::all_of(image.imageData, image.imageData + image.imageSize,
                     [](uint8_t byte) { return byte == 0; });
}

// ITU-R BT.601 of limited range, in integers with 20 bits behind the point:
//   R = 1.164 (Y - 16)                    + 1.596 (V - 128)
//   G = 1.164 (Y - 16) - 0.391 (U - 128)  - 0.813 (V - 128)
//   B = 1.164 (Y - 16) + 2.018 (U - 128)
// where a Y below 16 counts as 16, and halves are rounded up.
std::vector<uint8_t> ExpectedPixel(int y, int u, int v) {
  constexpr int64_t kOne = 1 << 20;
  const auto factor = [](int64_t thousandths) { return (thousandths * kOne + 500) / 1000; };
  const int64_t light = std::max(0, y - 16) * factor(1164) + kOne / 2;
  const auto sample = [](int64_t sum) {
    return static_cast<uint8_t>(std::clamp<int64_t>(sum < 0 ? -1 : sum / kOne, 0, 255));
  };
  return {sample(light + factor(1596) * (v - 128)),
          sample(light - factor(391) * (u - 128) - factor(813) * (v - 128)),
          sample(light + factor(2018) * (u - 128))};
}

std::vector<uint8_t> ExpectedPixels(const ZynImage& source) {
  std::vector<uint8_t> pixels;
  for (size_t line = 0; line < source.height; ++line) {
    const uint8_t* const from = source.imageData + line * source.linePitch;
    for (size_t x = 0; x < source.width; ++x) {
      const uint8_t* const pair = from + x / 2 * 4;
      const auto pixel = ExpectedPixel(pair[x % 2 == 0 ? 1 : 3], pair[0], pair[2]);
      pixels.insert(pixels.end(), pixel.begin(), pixel.end());
    }
  }
  return pixels;
}

TEST(CPUIPYUV2RGBInit, bears_its_names) {
  OpenYuv stage;
  EXPECT_EQ(stage.Name(), "yuv2rgb.cpu");
  char text[32] = "";
  uint32_t size = sizeof(text);
  EXPECT_EQ(stage.GetParameter("class", text, &size), 0u);
  EXPECT_STREQ(text, "CPUIPYUV2RGB");
  EXPECT_EQ(stage.GetParameterCount(), 1u);
}

TEST(CPUIPYUV2RGBInit, factories_make_and_delete_a_stage) {
  CPUIPYUV2RGB parent(nullptr);
  ZynImgProcessor* const stage = ZynDisplayCPU::YUV2RGB::CreateComponent(&parent);
  ASSERT_NE(dynamic_cast<CPUIPYUV2RGB*>(stage), nullptr);
  EXPECT_EQ(dynamic_cast<CPUIPYUV2RGB*>(stage)->GetParent(), static_cast<ZynComponent*>(&parent));
  ZynDisplayCPU::YUV2RGB::DeleteComponent(stage);
  ZynDisplayCPU::YUV2RGB::DeleteComponent(nullptr);
}

TEST(CPUIPYUV2RGBInit, takes_uyvy_alone) {
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(number);
    const ZynImage source = Header(row->code);
    OpenYuv stage;
    const bool expected = std::string(row->name) == "YUV422_8_UYVY";
    EXPECT_EQ(stage.Init(&source, nullptr), expected ? 0u : kFormat) << row->name;
    EXPECT_EQ(stage.LastError(), expected ? 0u : 3u);
    EXPECT_EQ(stage.IsReady(), expected);
  }
  const ZynImage otherOrder = Header(0x05100181);  // YUV422_8
  OpenYuv stage;
  EXPECT_EQ(stage.Init(&otherOrder, nullptr), kFormat);
}

TEST(CPUIPYUV2RGBInit, refuses_an_empty_source_before_its_format) {
  OpenYuv stage;
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  for (const uint32_t code : {ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_MONO8}) {
    ZynImage source = Header(code);
    source.width = 0;
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
    source = Header(code);
    source.height = 0;
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
  }
  EXPECT_EQ(stage.LastError(), 7u);
}

TEST(CPUIPYUV2RGBInit, a_source_that_gets_no_image_is_short_of_memory) {
  const uint32_t sizes[][2] = {
      {1u << 20, 1u << 20}, {2, 0x80000001}, {0xFFFFFFFE, 0xFFFFFFFF}, {40000, 40000}};
  for (const auto& size : sizes) {
    ZynImage source = Header(ZYN_PIXEL_YUV422_8_UYVY);
    source.width = size[0];
    source.height = size[1];
    OpenYuv stage;
    EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
    EXPECT_FALSE(stage.IsReady());
    EXPECT_EQ(stage.Out(), nullptr);
    EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  }
}

TEST(CPUIPYUV2RGBInit, the_output_is_rgb8_and_can_be_had_at_once) {
  const ZynImage source = Header(ZYN_PIXEL_YUV422_8_UYVY, 34, 5), ignored = Header(ZYN_PIXEL_BGR8, 1, 1);
  OpenYuv stage;
  ASSERT_EQ(stage.Init(&source, &ignored), 0u);
  for (const ZynImage* const image : {stage.Out(), stage.GetImageInfo(false)}) {
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixelType, ZYN_PIXEL_RGB8);
    EXPECT_EQ(image->width, 34u);
    EXPECT_EQ(image->height, 5u);
    EXPECT_EQ(image->linePitch, 104u);
    EXPECT_EQ(image->imageSize, 520u);
  }
  EXPECT_TRUE(IsBlack(*stage.Out()));
  EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_YUV422_8_UYVY);
  EXPECT_EQ(stage.GetImageInfo(true)->imageData, nullptr);
}

TEST(CPUIPYUV2RGBInit, the_mark_of_the_line_order_turns_with_the_property) {
  for (const bool bottomUp : {false, true}) {
    for (const bool property : {false, true}) {
      StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 8, 4);
      picture.record.origin = bottomUp ? 1 : 0;
      OpenYuv stage;
      stage.SetParameterBool("image.flip.vert", property);
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
      EXPECT_EQ(stage.GetImageInfo(false)->origin, bottomUp != property ? 1u : 0u);
      EXPECT_EQ(stage.Out()->origin, bottomUp != property ? 1u : 0u);
      EXPECT_EQ(PixelsOf(*stage.Out()), ExpectedPixels(picture.record));  // no line is moved
    }
  }
}

TEST(CPUIPYUV2RGBInit, starts_with_a_release_and_leaves_nothing_when_it_fails) {
  const ZynImage source = Header(ZYN_PIXEL_YUV422_8_UYVY);
  ReadyYuv ready(source);
  ready.stage.Enable(false);
  ASSERT_EQ(ready.stage.Init(ready.stage.GetImageInfo(true), nullptr), 0u);
  EXPECT_TRUE(ready.stage.IsEnabled());
  ready.stage.SetParameterString("image.flip.vert", "eight");
  EXPECT_THROW(ready.stage.Init(&source, nullptr), std::invalid_argument);
  EXPECT_FALSE(ready.stage.IsReady());
  EXPECT_EQ(ready.stage.Out(), nullptr);
  EXPECT_EQ(ready.stage.GetImageInfo(true), nullptr);
  ready.stage.SetParameterString("image.flip.vert", "0");
  ASSERT_EQ(ready.stage.Init(&source, nullptr), 0u);
  ready.stage.Release();
  EXPECT_FALSE(ready.stage.IsReady());
  EXPECT_EQ(ready.stage.Out(), nullptr);
  EXPECT_EQ(ready.stage.GetImageInfo(false), nullptr);
}

// Every Y with a grid of U and V that has both ends.
TEST(CPUIPYUV2RGB, converts_by_bt601_of_limited_range) {
  std::vector<uint8_t> steps;
  for (int value = 0; value < 256; value += 15) steps.push_back(static_cast<uint8_t>(value));
  for (const int value : {1, 16, 127, 128, 129, 239, 240, 241, 254})
    steps.push_back(static_cast<uint8_t>(value));
  const auto count = static_cast<uint32_t>(steps.size() * steps.size());
  StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 256, count);
  for (size_t line = 0; line < count; ++line) {
    uint8_t* to = picture.record.imageData + line * picture.record.linePitch;
    for (int y = 0; y < 256; y += 2, to += 4) {
      to[0] = steps[line / steps.size()];
      to[1] = static_cast<uint8_t>(y);
      to[2] = steps[line % steps.size()];
      to[3] = static_cast<uint8_t>(y + 1);
    }
  }
  ReadyYuv ready(picture.record);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_TRUE(PixelsOf(*ready.stage.Out()) == ExpectedPixels(picture.record));
}

TEST(CPUIPYUV2RGB, every_width_and_pitch_comes_out_within_its_buffers) {
  for (uint32_t width = 2; width <= 130; width += 2) {
    for (const uint32_t gap : {0u, 1u, 6u}) {
      for (const auto border : {GuardedBytes::kAtEnd, GuardedBytes::kAtStart}) {
        StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, width, 3, 2 * width + gap, width, border);
        ReadyYuv ready(picture.record);
        ASSERT_EQ(ready.Run(picture.record), 0u);
        ASSERT_EQ(PixelsOf(*ready.stage.Out()), ExpectedPixels(picture.record)) << width;
      }
    }
  }
  // A buffer that ends with the last pixel.
  StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 6, 3, 20);
  GuardedBytes cut(20 * 2 + 12);
  std::copy_n(picture.record.imageData, cut.size(), cut.data());
  picture.record.imageData = cut.data();
  picture.record.imageSize = static_cast<uint32_t>(cut.size());
  ReadyYuv ready(picture.record);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(PixelsOf(*ready.stage.Out()), ExpectedPixels(picture.record));
}

TEST(CPUIPYUV2RGB, the_padding_of_lines_stays_zero_and_the_buffer_stays) {
  StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 6, 3);
  picture.record.imageID = 0x123456789A;
  ReadyYuv ready(picture.record);
  const uint8_t* const buffer = ready.stage.Out()->imageData;
  for (int round = 0; round < 2; ++round) ASSERT_EQ(ready.Run(picture.record), 0u);
  const ZynImage& out = *ready.stage.Out();
  EXPECT_EQ(out.imageID, 0x123456789Au);
  EXPECT_EQ(out.imageData, buffer);
  ASSERT_EQ(out.linePitch, 20u);
  for (size_t line = 0; line < 3; ++line) {
    EXPECT_EQ(out.imageData[line * 20 + 18], 0);
    EXPECT_EQ(out.imageData[line * 20 + 19], 0);
  }
}

// A failed conversion is no failure of the stage.

class CPUIPYUV2RGBBlack : public testing::Test {
 protected:
  void ExpectBlack(const ZynImage& source) {
    ASSERT_EQ(ready.Run(picture.record), 0u);
    ASSERT_FALSE(IsBlack(*ready.stage.Out()));
    EXPECT_EQ(ready.Run(source), 0u);
    EXPECT_EQ(ready.stage.LastError(), 0u);
    ASSERT_NE(ready.stage.Out(), nullptr);
    EXPECT_TRUE(IsBlack(*ready.stage.Out()));
    EXPECT_EQ(ready.stage.Out()->imageID, source.imageID);
    EXPECT_EQ(ready.stage.Out()->imageSize, 96u);
  }
  StagePicture picture{ZYN_PIXEL_YUV422_8_UYVY, 8, 4};
  ReadyYuv ready{picture.record};
};

TEST_F(CPUIPYUV2RGBBlack, no_lines_columns_or_pixels) {
  ZynImage source = picture.record;
  source.imageID = 5;
  source.width = 0;
  ExpectBlack(source);
  source = picture.record;
  source.height = 0;
  ExpectBlack(source);
  source = picture.record;
  source.imageData = nullptr;
  ExpectBlack(source);
}

TEST_F(CPUIPYUV2RGBBlack, another_size_than_prepared) {
  const uint32_t sizes[][2] = {{8, 3}, {8, 5}, {6, 4}, {10, 4}, {7, 4}, {4, 8}, {16, 2}, {200, 200}};
  for (const auto& size : sizes) {
    const StagePicture other(ZYN_PIXEL_YUV422_8_UYVY, size[0], size[1]);
    ExpectBlack(other.record);
  }
  ZynImage huge = picture.record;
  huge.width = huge.height = 0xFFFFFFFF;
  ExpectBlack(huge);
}

TEST_F(CPUIPYUV2RGBBlack, a_pitch_or_size_that_cannot_be_true) {
  for (const uint32_t pitch : {1u, 15u, 17u, 32u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    ZynImage source = picture.record;
    source.linePitch = pitch;
    if (pitch == 17) source.imageSize = 17 * 3 + 15;
    ExpectBlack(source);
  }
  for (const uint32_t size : {0u, 1u, 48u, 63u}) {
    ZynImage source = picture.record;
    source.imageSize = size;
    ExpectBlack(source);
  }
}

TEST(CPUIPYUV2RGB, a_pitch_of_0_means_lines_without_padding) {
  const StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 8, 3);
  ReadyYuv tight(picture.record), unsaid(picture.record);
  ASSERT_EQ(tight.Run(picture.record), 0u);
  ZynImage source = picture.record;
  source.linePitch = 0;
  ASSERT_EQ(unsaid.Run(source), 0u);
  EXPECT_EQ(PixelsOf(*unsaid.stage.Out()), PixelsOf(*tight.stage.Out()));
  EXPECT_NE(PixelsOf(*unsaid.stage.Out()), std::vector<uint8_t>(8 * 3 * 3));
}

TEST(CPUIPYUV2RGB, each_image_leaves_a_line_in_the_trace) {
  const StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 8, 4);
  ReadyYuv ready(picture.record);
  chain_test::TraceCapture trace;
  ready.Run(picture.record);
  EXPECT_EQ(trace.lines, std::vector<std::string>{"CPUIPYUV2RGB::ProcessImage()"});
}

TEST(CPUIPYUV2RGB, an_odd_width_is_black) {
  for (const uint32_t width : {1u, 3u, 9u, 101u}) {
    const StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, width, 3);
    ReadyYuv ready(picture.record);
    EXPECT_EQ(ready.Run(picture.record), 0u);
    ASSERT_NE(ready.stage.Out(), nullptr);
    EXPECT_EQ(ready.stage.Out()->width, width);
    EXPECT_TRUE(IsBlack(*ready.stage.Out()));
  }
}

TEST(CPUIPYUV2RGB, another_format_no_source_and_no_preparation_fail) {
  const StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 8, 4);
  ReadyYuv ready(picture.record);
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const StagePicture other(QTD::FindPixelRow(number)->code, 8, 4);
    if (other.record.pixelType == ZYN_PIXEL_YUV422_8_UYVY) continue;
    ASSERT_EQ(ready.Run(picture.record), 0u);
    EXPECT_EQ(ready.Run(other.record), kFailed) << number;
    EXPECT_EQ(ready.stage.LastError(), 1u);
    EXPECT_EQ(ready.stage.Out(), nullptr);
  }
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.ProcessImage(nullptr, nullptr, nullptr), kFailed);
  EXPECT_EQ(ready.stage.Out(), nullptr);
  ready.stage.Release();
  EXPECT_EQ(ready.Run(picture.record), kFailed);
  EXPECT_EQ(ready.stage.Out(), nullptr);
}

TEST(CPUIPYUV2RGB, further_arguments_of_a_run_are_ignored) {
  const StagePicture picture(ZYN_PIXEL_YUV422_8_UYVY, 8, 4);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  const auto before = output.Copy();
  ReadyYuv ready(picture.record);
  int data = 0;
  EXPECT_EQ(ready.stage.ProcessImage(&picture.record, &output.record, &data), 0u);
  EXPECT_NE(ready.stage.Out(), &output.record);
  EXPECT_EQ(output.Copy(), before);
}

// Colour bars that were made from RGB, not by this library: back within the rounding of 8-bit samples.
TEST(CPUIPYUV2RGBData, colour_bars_come_back) {
  ZYN_DATA_OR_SKIP(packed, "formats/bars_256x4_bt601_limited.uyvy");
  ZYN_DATA_OR_SKIP(colours, "formats/bars_256x4.rgb24");
  std::vector<uint8_t> bytes = packed;
  ZynImage source{};
  QTD::ImageCreateHeader(&source, 256, 4, ZYN_PIXEL_YUV422_8_UYVY);
  ASSERT_EQ(bytes.size(), source.imageSize);
  source.imageData = bytes.data();
  ReadyYuv ready(source);
  ASSERT_EQ(ready.Run(source), 0u);
  const std::vector<uint8_t> actual = PixelsOf(*ready.stage.Out());
  ASSERT_EQ(actual.size(), colours.size());
  for (size_t i = 0; i < actual.size(); ++i) {
    ASSERT_LE(std::abs(actual[i] - colours[i]), 2) << "pixel " << i / 3 << ", sample " << i % 3;
  }
}

}  // namespace
