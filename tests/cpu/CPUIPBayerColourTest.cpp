// The demosaicing stage with the component that it ships with.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPBayer.h"
#include "tests/cpu/ReadyStage.h"

namespace {

// The letters of a cell, line by line.
struct Order {
  const char* cell;
  std::array<uint32_t, 5> codes;  // by depth 8, 10, 12, 14, 16
};
constexpr uint32_t kDepths[] = {8, 10, 12, 14, 16};
constexpr Order kOrders[] = {
    {"GRBG",
     {ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERGR14,
      ZYN_PIXEL_BAYERGR16}},
    {"RGGB",
     {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BAYERRG14,
      ZYN_PIXEL_BAYERRG16}},
    {"GBRG",
     {ZYN_PIXEL_BAYERGB8, ZYN_PIXEL_BAYERGB10, ZYN_PIXEL_BAYERGB12, ZYN_PIXEL_BAYERGB14,
      ZYN_PIXEL_BAYERGB16}},
    {"BGGR",
     {ZYN_PIXEL_BAYERBG8, ZYN_PIXEL_BAYERBG10, ZYN_PIXEL_BAYERBG12, ZYN_PIXEL_BAYERBG14,
      ZYN_PIXEL_BAYERBG16}},
};
constexpr uint32_t kWidth = 24, kHeight = 12;
constexpr uint32_t kField = 8;  // a third of the width is one colour
constexpr uint32_t kReach = 2;  // how far a place looks to its sides

using Colour = std::array<uint32_t, 3>;

// Three plain fields, red, green and blue.
Colour FieldAt(uint32_t x, uint32_t depth) {
  const uint32_t high = (7u << (depth - 3)) + 5, low = 1u << (depth - 4);
  Colour colour{low, low, low};
  colour[x / kField] = high;
  return colour;
}

void Put(uint8_t* at, uint32_t value, uint32_t depth) {
  const auto word = static_cast<uint16_t>(value);
  std::memcpy(at, &word, depth > 8 ? 2 : 1);
}

uint32_t Get(const uint8_t* at, uint32_t depth) {
  uint16_t word = 0;
  std::memcpy(&word, at, depth > 8 ? 2 : 1);
  return word;
}

// What a sensor of that order sees of the scene.
StagePicture SensorPicture(const Order& order, size_t depthIndex) {
  StagePicture picture(order.codes[depthIndex], kWidth, kHeight);
  const uint32_t depth = kDepths[depthIndex], bytes = depth > 8 ? 2 : 1;
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      const char letter = order.cell[y % 2 * 2 + x % 2];
      const Colour colour = FieldAt(x, depth);
      Put(picture.record.imageData + y * picture.record.linePitch + x * bytes,
          letter == 'R'   ? colour[0]
          : letter == 'G' ? colour[1]
                          : colour[2],
          depth);
    }
  }
  return picture;
}

TEST(CPUIPBayerColour, plain_fields_keep_their_colours_in_every_order_depth_and_channel_order) {
  for (const Order& order : kOrders) {
    for (size_t depthIndex = 0; depthIndex < std::size(kDepths); ++depthIndex) {
      for (const bool blueFirst : {false, true}) {
        const StagePicture picture = SensorPicture(order, depthIndex);
        const uint32_t depth = kDepths[depthIndex], bytes = depth > 8 ? 2 : 1;
        CPUIPBayer stage(nullptr);
        const ZynImage wanted = Header(blueFirst ? ZYN_PIXEL_BGR8 : ZYN_PIXEL_RGB8);
        ASSERT_EQ(stage.Init(&picture.record, &wanted), 0u) << order.cell << depth;
        ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
        const ZynImage& result = *stage.Out();
        EXPECT_EQ(result.bitDepth, depth);
        for (uint32_t y = 0; y < kHeight; ++y) {
          for (uint32_t x = 0; x < kWidth; ++x) {
            const uint32_t place = x % kField;
            const bool atLeftEdge = place < kReach && x >= kField;
            const bool atRightEdge = place >= kField - kReach && x < kWidth - kField;
            if (atLeftEdge || atRightEdge) continue;  // another field lies within reach
            const uint8_t* const pixel = result.imageData + y * result.linePitch + 3 * x * bytes;
            const Colour colour = FieldAt(x, depth);
            for (uint32_t channel = 0; channel < 3; ++channel) {
              const uint32_t sample = blueFirst ? 2 - channel : channel;
              ASSERT_EQ(Get(pixel + sample * bytes, depth), colour[channel])
                  << order.cell << depth << " at " << x << "," << y << " channel " << channel;
            }
          }
        }
      }
    }
  }
}

TEST(CPUIPBayerColour, BayerGR12_becomes_RGB12_of_48_bits_a_pixel) {
  const StagePicture picture(ZYN_PIXEL_BAYERGR12, 9, 5);
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_RGB12);
  EXPECT_EQ(stage.Out()->bitsPerPixel, 48u);
  EXPECT_EQ(stage.Out()->linePitch, 56u);  // 54 bytes of pixels
  EXPECT_EQ(stage.Out()->imageSize, 280u);
}

TEST(CPUIPBayerColour, BayerRG8_with_a_BGR8_header_becomes_BGR8) {
  const StagePicture picture = SensorPicture(kOrders[1], 0);
  const ZynImage wanted = Header(ZYN_PIXEL_BGR8);
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&picture.record, &wanted), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out()->pixelType, ZYN_PIXEL_BGR8);
  const std::vector<uint8_t> redField(stage.Out()->imageData, stage.Out()->imageData + 3);
  EXPECT_EQ(redField, std::vector<uint8_t>({16, 16, 7 * 32 + 5}));
}

TEST(CPUIPBayerColour, writes_into_the_callers_image_and_nowhere_else) {
  const StagePicture picture = SensorPicture(kOrders[2], 2);
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  const auto expected = PixelsOf(*stage.Out());
  const auto before = picture.Copy();
  StagePicture output(ZYN_PIXEL_RGB12, kWidth, kHeight);
  ASSERT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &output.record);
  EXPECT_EQ(PixelsOf(output.record), expected);
  EXPECT_EQ(picture.Copy(), before);
}

TEST(CPUIPBayerColour, lines_may_be_padded) {
  const StagePicture usual(ZYN_PIXEL_BAYERBG16, 11, 7);
  StagePicture padded(ZYN_PIXEL_BAYERBG16, 11, 7, 61, 9);
  for (uint32_t y = 0; y < 7; ++y)
    std::memcpy(padded.record.imageData + 61 * y, usual.record.imageData + usual.record.linePitch * y, 22);
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&usual.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&usual.record, nullptr, nullptr), 0u);
  const auto expected = PixelsOf(*stage.Out());
  ASSERT_EQ(stage.ProcessImage(&padded.record, nullptr, nullptr), 0u);
  EXPECT_EQ(PixelsOf(*stage.Out()), expected);
}

TEST(CPUIPBayerColour, the_parameter_selects_the_method) {
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 32,
                             32);  // noise, of which every method makes something else
  std::vector<std::vector<uint8_t>> results;
  for (const int64_t method : {0, 1, 2, 3}) {
    CPUIPBayer stage(nullptr);
    stage.SetParameterInt("BayerAlgType", method);
    ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u) << method;
    ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u) << method;
    results.push_back(PixelsOf(*stage.Out()));
    for (size_t other = 0; other + 1 < results.size(); ++other)
      EXPECT_NE(results[other], results.back()) << other << " " << method;
  }
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(PixelsOf(*stage.Out()), results[0]);
}

TEST(CPUIPBayerColour, an_unknown_method_leaves_a_released_stage) {
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  for (const int64_t method : {int64_t{-1}, int64_t{4}, int64_t{1} << 32, INT64_MIN, INT64_MAX}) {
    CPUIPBayer stage(nullptr);
    stage.SetParameterInt("BayerAlgType", method);
    EXPECT_EQ(stage.Init(&picture.record, nullptr), kNoMemory) << method;
    EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNotReady);
    EXPECT_EQ(stage.Out(), nullptr);
  }
}

TEST(CPUIPBayerColour, an_output_that_shares_memory_with_the_source_is_refused) {
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  ZynImage source = Header(ZYN_PIXEL_BAYERRG8);
  source.imageData = output.record.imageData + 20;
  CPUIPBayer stage(nullptr);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(&source, &output.record, nullptr), kNoMemory);
}

TEST(CPUIPBayerColour, small_and_odd_pictures_come_out) {
  for (uint32_t width = 1; width <= 6; ++width) {
    for (uint32_t height = 1; height <= 6; ++height) {
      for (const auto border : {GuardedBytes::kAtEnd, GuardedBytes::kAtStart}) {
        const StagePicture picture(ZYN_PIXEL_BAYERGR16, width, height, 2 * width, 1, border);
        CPUIPBayer stage(nullptr);
        ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
        EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
      }
    }
  }
}

}  // namespace
