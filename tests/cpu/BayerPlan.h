// A demosaicing stage whose component does as a test plans: what the tests of the stage share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "tests/cpu/FakeBayer.h"
#include "tests/cpu/ReadyStage.h"

using Calls = std::vector<std::string>;
constexpr uint32_t kNotSupported = 0x80FF000A;

inline FakeBayer::Plan& ThePlan() {
  return FakeBayer::ThePlan();
}

inline void ExpectReleased(FakeBayerStage& stage) {
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  const StagePicture picture(ZYN_PIXEL_BAYERRG8, 8, 4);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kNotReady);
}
