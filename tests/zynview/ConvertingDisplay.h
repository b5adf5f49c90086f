// A display that makes pictures of frames.
#pragma once

#include <gtest/gtest.h>

#include "ZynPixelFormat.h"
#include "zynview/RecordingDisplay.h"

// Converts to RGB8: grey, from the first sample of each line.
struct ConvertingDisplay : RecordingDisplay {
  std::vector<uint32_t> codes;  // of the next conversions; none left: success
  int conversions = 0, releases = 0;
  uint32_t initCode = 0, origin = 0;
  std::vector<ZynImage> prepared;

  uint32_t Initialize(const ZynImage* format) override {
    if (initCode == 0) prepared.push_back(*format);
    return initCode;
  }

  void ReleaseConverter() override { ++releases; }
  uint32_t ConvertImage(const ZynImage* input, ZynImage* output) override {
    ++conversions;
    EXPECT_EQ(output->pixelType, ZYN_PIXEL_RGB8);
    EXPECT_GE(output->imageSize, output->linePitch * output->height);
    if (!codes.empty()) {
      const uint32_t code = codes.front();
      codes.erase(codes.begin());
      return code;
    }
    output->origin = origin;
    for (uint32_t y = 0; y < output->height; ++y) {
      for (uint32_t i = 0; i < output->width * 3; ++i)
        output->imageData[y * output->linePitch + i] = input->imageData[y * input->linePitch];
    }
    return 0;
  }
};
