// An image stage that is ready for images like a given one.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "cpu/stages/CPUIPImage.h"
#include "tests/cpu/StagePicture.h"

constexpr uint32_t kFailed = 0x80FF0001, kFormat = 0x80FF0003, kBadArgument = 0x80FF0007,
                   kNotReady = 0x80FF0008, kNoMemory = 0x80FF0009;

inline ZynImage Header(uint32_t pixelType, uint32_t width = 8, uint32_t height = 4) {
  return StagePicture(pixelType, width, height).record;
}

struct ReadyStage {
  ReadyStage(const ZynImage& source, uint32_t target, bool external = false) : stage(nullptr) {
    const ZynImage output = Header(target, source.width, source.height);
    stage.SetParameterBool("external", external);
    EXPECT_EQ(stage.Init(&source, &output), 0u);
  }
  uint32_t Run(const ZynImage& source, ZynImage* output = nullptr) {
    return stage.ProcessImage(&source, output, nullptr);
  }
  CPUIPImage stage;
};

inline uint16_t WordAt(const StagePicture& picture, size_t index) {
  uint16_t word;
  std::memcpy(&word, picture.record.imageData + 2 * index, 2);
  return word;
}
