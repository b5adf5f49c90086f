// An exposure coloration in a chain whose "image.unpacked" holds given values, and the picture that it marks.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPExposureColoration.h"
#include "tests/cpu/FakeChain.h"
#include "tests/cpu/ReadyStage.h"
#include "tests/cpu/StagePicture.h"

constexpr std::array<uint8_t, 3> kGrey{128, 128, 128};

class ColorationTest : public testing::Test {
 protected:
  ColorationTest() { chain.AddProcessor("image.unpacked", &unpacked); }

  // The values of "image.unpacked", sample by sample; one line unless a size is given.
  void Values(uint32_t code, const std::vector<uint32_t>& samples, uint32_t width = 0, uint32_t height = 1) {
    const bool rgb = QTD::IsRgbFormat(code);
    if (width == 0) width = static_cast<uint32_t>(samples.size()) / (rgb ? 3 : 1);
    source = std::make_unique<StagePicture>(code, width, height);
    const size_t lineSamples = width * (rgb ? 3 : 1);
    for (size_t n = 0; n < samples.size(); ++n) {
      uint8_t* line = source->record.imageData + n / lineSamples * source->record.linePitch;
      const auto word = static_cast<uint16_t>(samples[n]);
      if (source->record.bitDepth == 8) {
        line[n % lineSamples] = static_cast<uint8_t>(word);
      } else {
        std::memcpy(line + 2 * (n % lineSamples), &word, 2);
      }
    }
    unpacked.out = &source->record;
    unpacked.outputInfo = &source->record;
    chain.AddProcessor("image.unpacked", &unpacked);
    MakePicture(width, height);
  }

  void MakePicture(uint32_t width, uint32_t height) {
    pictureWidth = width;
    pictureHeight = height;
    Ready();
  }

  // A grey picture, and the stage prepared for it.
  void Ready() {
    picture = std::make_unique<StagePicture>(pictureCode, pictureWidth, pictureHeight);
    EXPECT_EQ(stage.Init(&picture->record, nullptr), 0u);
  }

  uint32_t Run(bool wipe = true) {
    if (wipe) std::memset(picture->record.imageData, 128, picture->record.imageSize);
    return stage.ProcessImage(&picture->record, nullptr, nullptr);
  }

  std::array<uint8_t, 3> Pixel(size_t x) const {
    const uint8_t* pixel = picture->record.imageData + 3 * x;
    return {pixel[0], pixel[1], pixel[2]};
  }

  // The first line: g green, r red, . as it was, ? anything else.
  std::string Marks() const {
    std::string marks;
    for (size_t x = 0; x < picture->record.width; ++x) {
      const auto pixel = Pixel(x);
      const bool green = pixel == std::array<uint8_t, 3>{0, 255, 0};
      const bool red = pixel == std::array<uint8_t, 3>{255, 0, 0};
      marks += green ? 'g' : red ? 'r' : pixel == kGrey ? '.' : '?';
    }
    return marks;
  }

  FakeChain chain;
  FakeStage unpacked;
  CPUIPExposureColoration stage{&chain};
  std::unique_ptr<StagePicture> source, picture;
  uint32_t pictureCode = ZYN_PIXEL_RGB8;
  uint32_t pictureWidth = 1, pictureHeight = 1;
};
