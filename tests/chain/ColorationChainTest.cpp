// Exposure colorations of both variants that outlive the chain they were made for.
#include <gtest/gtest.h>

#include <memory>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/stages/UnpackedStage.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "cpu/stages/CPUIPExposureColoration.h"
#include "cpu/stages/CPUIPImage.h"
#include "gl/stages/QGLIPExposureColoration.h"

using chain_test::Picture;

TEST(ColorationChain, has_the_values_as_long_as_the_chain_has_the_stage) {
  const Picture source(8, 6, ZYN_PIXEL_MONO8);
  auto chain = std::make_unique<QTDProcessor>(nullptr, false);
  ASSERT_EQ(chain->Init(source), 0u);
  QTD::ChainLink link(chain.get());
  EXPECT_EQ(QTD::UnpackedStage(link).Stage(), chain->FindProcessor("image.unpacked"));
  EXPECT_TRUE(QTD::UnpackedStage(link).Info(true));
  ASSERT_EQ(chain->RemoveProcessor("image.unpacked"), 0u);
  EXPECT_EQ(QTD::UnpackedStage(link).Stage(), nullptr);
  QTD::RecordHold hold;
  EXPECT_EQ(QTD::UnpackedStage(link).Out(hold), nullptr);
  EXPECT_FALSE(QTD::UnpackedStage(link).Info(true));
}

TEST(ColorationChain, a_chain_that_has_gone_is_not_followed) {
  const Picture picture(8, 6, ZYN_PIXEL_RGB8);
  auto chain = std::make_unique<QTDProcessor>(nullptr, false);
  QTD::ChainLink link(chain.get());
  CPUIPExposureColoration onProcessor(chain.get());
  QGLIPExposureColoration onCard(nullptr, chain.get());
  chain.reset();
  EXPECT_EQ(QTD::UnpackedStage(link).Stage(), nullptr);
  EXPECT_EQ(onProcessor.Init(picture, nullptr), 0u);
  EXPECT_EQ(onProcessor.ProcessImage(picture, nullptr, nullptr), 0x80FF0007u);
  EXPECT_FALSE(onProcessor.Enable(false));
  EXPECT_EQ(onCard.ProcessImage(picture, nullptr, nullptr), 0x80FF0008u);
}
