// An overlay stage whose store can be looked into, and pictures to draw on.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPImageOverlay.h"
#include "tests/cpu/ReadyStage.h"
#include "tests/cpu/StagePicture.h"

class OpenOverlay : public CPUIPImageOverlay {
 public:
  using CPUIPImageOverlay::CPUIPImageOverlay;
  using CPUIPImageOverlay::store;
  using CPUIPImageOverlay::surface;

  std::string ValueOf(const std::string& id, const char* key) {
    QTD::PROPERTIES object;
    return store.get(id, &object) ? object.GetString(key, "absent") : "no object";
  }
};

class OverlayTest : public testing::Test {
 protected:
  void Prepare(const StagePicture& picture) { ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u); }
  uint32_t Run(const ZynImage& image) { return stage.ProcessImage(&image, nullptr, nullptr); }
  std::string Parameter(const char* name) { return stage.Parameters().GetString(name, "absent"); }

  // Text in white, which shows on every picture but a white one.
  QTD::PROPERTIES White() {
    QTD::PROPERTIES list;
    list.Set("text.clr", "16777215");
    return list;
  }
  std::string AddWhite(const char* text, int x, int y) {
    QTD::PROPERTIES white = White();
    return stage.AddText(text, x, y, &white);
  }

  OpenOverlay stage{nullptr};
};

constexpr double kWhite[3] = {1.0, 1.0, 1.0};
