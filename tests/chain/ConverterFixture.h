// A display with a chain for pictures of 4 by 3 pixels, and a converter on it.
#pragma once

#include <gtest/gtest.h>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"

namespace chain_test {

inline constexpr uint32_t kFailed = 0x80FF0001, kBadArgument = 0x80FF0007, kNotReady = 0x80FF0008,
                          kNoMemory = 0x80FF0009;

struct ConverterFixture : testing::Test {
  Journal journal;
  FakeDisplay display;
  QTDProcessor chain{&display, false};
  QTDConverter converter{&display, false};

  void Prepare(uint32_t from, uint32_t to) {
    const Picture source(4, 3, from), output(4, 3, to);
    ASSERT_EQ(chain.Init(source), 0u);
    Publish(&chain);
    ASSERT_EQ(converter.Init(source, output), 0u);
  }
  void Publish(ZynImgProcessingChain* published) { display.Publish("processor", published); }
  FakeStage* Insert(const char* before, const char* name) {
    auto* const stage = new FakeStage(name, &journal);
    EXPECT_EQ(chain.InsertProcessor(before, name, stage), 0u);
    return stage;
  }
};

inline void FillMono8(const Picture& picture) {
  for (uint32_t y = 0; y < picture->height; ++y) {
    for (uint32_t x = 0; x < picture->width; ++x) picture.Byte(x, y) = static_cast<uint8_t>(16 * y + x + 1);
  }
}

}  // namespace chain_test
