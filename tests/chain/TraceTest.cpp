// The lines that one image leaves in the trace on its way through a chain of real stages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "chain/TraceCapture.h"

using chain_test::Picture;
using chain_test::TraceCapture;

namespace {

struct Step {
  const char* stage;
  const char* className;
};

std::vector<std::string> Expected(const std::vector<Step>& steps) {
  std::vector<std::string> lines = {"QTDProcessor::ProcessImage() -> ENTER"};
  for (const Step& step : steps) {
    lines.push_back("QTDProcessor::ProcessImage(): proc: " + std::string(step.stage) + " ");
    lines.push_back(step.className + std::string("::ProcessImage()"));
    lines.push_back("QTDProcessor::ProcessImage(): proc->Out: imageID is 4711");
  }
  lines.push_back("QTDProcessor::ProcessImage() <- EXIT");
  return lines;
}

std::vector<std::string> Traced(uint32_t pixelType) {
  const Picture image(8, 4, pixelType);
  image->imageID = 4711;
  QTDProcessor chain(nullptr, false);
  EXPECT_EQ(chain.Init(image), 0u);
  TraceCapture trace;
  EXPECT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  return trace.lines;
}

}  // namespace

TEST(ChainTrace, tells_of_each_stage_of_a_plain_image_in_order) {
  EXPECT_EQ(Traced(ZYN_PIXEL_MONO8), Expected({{"image.unpacked", "CPUIPImage"},
                                               {"image.colorcorrection", "CPUIPColorCorrection"},
                                               {"image.overlay", "CPUIPImageOverlay"},
                                               {"image.output", "CPUIPImage"}}));
}

TEST(ChainTrace, tells_of_each_stage_of_a_packed_mosaic_in_order) {
  EXPECT_EQ(Traced(ZYN_PIXEL_BAYERRG12P), Expected({{"unpack", "CPUIPUnpack"},
                                                    {"image.unpacked", "CPUIPImage"},
                                                    {"bayer", "CPUIPBayer"},
                                                    {"image.colorcorrection", "CPUIPColorCorrection"},
                                                    {"image.overlay", "CPUIPImageOverlay"},
                                                    {"image.output", "CPUIPImage"}}));
}

TEST(ChainTrace, tells_of_each_stage_of_a_yuv_image_in_order) {
  EXPECT_EQ(Traced(ZYN_PIXEL_YUV422_8_UYVY), Expected({{"yuv2rgb", "CPUIPYUV2RGB"},
                                                       {"image.unpacked", "CPUIPImage"},
                                                       {"image.colorcorrection", "CPUIPColorCorrection"},
                                                       {"image.overlay", "CPUIPImageOverlay"},
                                                       {"image.output", "CPUIPImage"}}));
}
