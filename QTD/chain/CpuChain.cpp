// The composition of a chain whose stages run on the processor.
#include <iterator>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/chain/StageRow.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/CPUIPBayer.h"
#include "cpu/stages/CPUIPColorCorrection.h"
#include "cpu/stages/CPUIPImage.h"
#include "cpu/stages/CPUIPImageOverlay.h"
#include "cpu/stages/CPUIPUnpack.h"
#include "cpu/stages/CPUIPYUV2RGB.h"

namespace {

// With "image.downscale" 1 the reduction to 8 bits is done at the head of the chain instead of at its end.
void DownscaleAtTheHead(QTDProcessor& chain, ZynImgProcessor& stage) {
  if (chain.Parameters().GetInt("image.downscale") == 1) stage.GetComponent()->SetParameterInt("depth", 8);
}

// A disabled image stage hands its source on where it has nothing to convert.
void Disable(ZynImgProcessor& stage) {
  stage.Enable(false);
}

// clang-format off
const StageRow kRows[] = {
    // name, condition, class, parent, output, before `Init`, once in the chain
    {"yuv2rgb",               QTD::IsUyvyFormat,   MakeStage<CPUIPYUV2RGB>,         kChainIsParent, kGetsOutput},
    {"unpack",                QTD::IsPackedFormat, MakeStage<CPUIPUnpack>,          kChainIsParent, kGetsOutput},
    {"image.unpacked",        AnyFormat,           MakeStage<CPUIPImage>,           kNoParent,      kNoOutput, DownscaleAtTheHead, Disable},
    {"bayer",                 QTD::IsBayerFormat,  MakeStage<CPUIPBayer>,           kNoParent,      kGetsOutput},
    {"image.colorcorrection", AnyFormat,           MakeStage<CPUIPColorCorrection>, kNoParent,      kNoOutput},
    {"image.overlay",         AnyFormat,           MakeStage<CPUIPImageOverlay>,    kNoParent,      kNoOutput},
    {"image.output",          AnyFormat,           MakeStage<CPUIPImage>,           kNoParent,      kNoOutput},
};
// clang-format on

}  // namespace

uint32_t QTDProcessor::initCPU(const ZynImage* source, const ZynImage* output) {
  const QTD::RMutexLock guard(ChainLock());
  return AppendStages(*this, kRows, std::size(kRows), source, output) ? 0u : uint32_t{ZYN_ERR_FAILED};
}
