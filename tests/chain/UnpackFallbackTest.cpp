// The processor's unpacking in place of the card's, where the chain does not take that one. Needs a window.
#include <gtest/gtest.h>

#include "ChainFakes.h"
#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPUnpack.h"
#include "gl/GLFixture.h"
#include "gl/stages/QGLIPUnpack.h"

namespace {

using chain_test::FakeDisplay;
using chain_test::Picture;

class RefusingChain : public QTDProcessor {
 public:
  using QTDProcessor::QTDProcessor;
  uint32_t AddProcessor(const char* stageName, ZynImgProcessor* stage) override {
    const bool onCard = dynamic_cast<QGLIPUnpack*>(stage) != nullptr;
    const bool onProcessor = dynamic_cast<CPUIPUnpack*>(stage) != nullptr;
    refused += onCard;
    if (onCard || (onProcessor && refusesBoth)) return QTD::kStageExists;
    return QTDProcessor::AddProcessor(stageName, stage);
  }

  int refused = 0;
  bool refusesBoth = false;
};

class UnpackFallback : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    if (!HasFatalFailure()) display.Publish(surface.get());
  }
  FakeDisplay display;
};

TEST_F(UnpackFallback, takes_the_place_of_a_stage_that_the_chain_refuses_on_the_screen) {
  const GLNames before = names();
  {
    RefusingChain chain(&display, true);
    const Picture image(12, 4, ZYN_PIXEL_MONO12P);
    ASSERT_EQ(chain.Init(image), 0u);
    EXPECT_EQ(chain.refused, 1);
    EXPECT_NE(dynamic_cast<CPUIPUnpack*>(chain.FindProcessor("unpack")), nullptr);
    EXPECT_EQ(chain.FindProcessor("unpack"), chain.GetProcessorAt(0));
    EXPECT_EQ(chain.GetProcessorCount(), 5);
    EXPECT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  }
  EXPECT_EQ(names(), before);  // the refused one has gone too
}

TEST_F(UnpackFallback, that_is_refused_as_well_fails_the_build_on_the_screen) {
  const GLNames before = names();
  RefusingChain chain(&display, true);
  chain.refusesBoth = true;
  const Picture image(12, 4, ZYN_PIXEL_MONO12P);
  EXPECT_EQ(chain.Init(image), 0x80FF0001u);
  EXPECT_EQ(chain.refused, 1);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(names(), before);
}

}  // namespace
