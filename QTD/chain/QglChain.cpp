// The composition of a chain whose stages run on the card.
#include <iterator>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/chain/StageRow.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/screen/DisplaySurface.h"
#include "QTD/screen/QTDSurface.h"
#include "QTD/screen/SurfacePass.h"
#include "cpu/stages/CPUIPUnpack.h"
#include "cpu/stages/CPUIPYUV2RGB.h"
#include "gl/stages/QGLIPBayer.h"
#include "gl/stages/QGLIPColorCorrection.h"
#include "gl/stages/QGLIPImage.h"
#include "gl/stages/QGLIPImageOverlay.h"
#include "gl/stages/QGLIPUnpack.h"
#include "gl/surface/QGLSurface.h"

namespace {

// Samples stay at their stored values up to the stage that shows them.
void KeepSamples(QTDProcessor&, ZynImgProcessor& stage) {
  stage.GetComponent()->SetParameterDouble("image.color.coef", 1.0);
}

void TurnAndKeepSamples(QTDProcessor& chain, ZynImgProcessor& stage) {
  stage.GetComponent()->SetParameterInt("image.flip.vert", 1);
  KeepSamples(chain, stage);
}

// Text is drawn upright: the picture is turned here where no stage before has done so.
void TurnWithoutBayer(QTDProcessor& chain, ZynImgProcessor& stage) {
  if (!chain.FindProcessor("bayer")) stage.GetComponent()->SetParameterInt("image.flip.vert", 1);
}

void StayOnTheCard(QTDProcessor&, ZynImgProcessor& stage) {
  stage.GetComponent()->SetParameterInt("readGPU", 0);
}

// clang-format off
// name, condition, processor's class, parent, output, before `Init`, once in the chain, card's class

// Formats that the card does not unpack take the processor's stage.
const StageRow kHead[] = {
    {"yuv2rgb",               QTD::IsUyvyFormat,   MakeStage<CPUIPYUV2RGB>, kChainIsParent, kGetsOutput},
    {"unpack",                QTD::IsPackedFormat, MakeStage<CPUIPUnpack>,  kChainIsParent, kGetsOutput, nullptr, nullptr, MakeOnCard<QGLIPUnpack>},
};
const StageRow kFull[] = {
    {"image.unpacked",        AnyFormat,           nullptr,                 kNoParent,      kNoOutput,   KeepSamples,        nullptr, MakeOnCard<QGLIPImage>},
    {"bayer",                 QTD::IsBayerFormat,  nullptr,                 kNoParent,      kGetsOutput, TurnAndKeepSamples, nullptr, MakeOnCard<QGLIPBayer>},
    {"image.colorcorrection", AnyFormat,           nullptr,                 kNoParent,      kNoOutput,   nullptr,            nullptr, MakeOnCard<QGLIPColorCorrection>},
    {"image.overlay",         AnyFormat,           nullptr,                 kNoParent,      kNoOutput,   TurnWithoutBayer,   nullptr, MakeOnCard<QGLIPImageOverlay>},
};
// Very large pictures.
const StageRow kStrict[] = {
    {"bayer",                 QTD::IsBayerFormat,  nullptr,                 kNoParent,      kGetsOutput, TurnAndKeepSamples, nullptr, MakeOnCard<QGLIPBayer>},
};
const StageRow kTail[] = {
    {"image.output",          AnyFormat,           nullptr,                 kNoParent,      kNoOutput,   StayOnTheCard,      nullptr, MakeOnCard<QGLIPImage>},
};
// clang-format on

// A display of the processor's variant has a surface, too.
bool IsOnCard(QTDSurface* surface) {
  bool onCard = false;
  QTD::LivePointers<QTDSurface>::Instance().Visit(
      surface, [&onCard](QTDSurface& found) { onCard = dynamic_cast<QGLSurface*>(&found) != nullptr; });
  return onCard;
}

}  // namespace

uint32_t QTDProcessor::initQGL(const ZynImage* source, const ZynImage* output) {
  const QTD::RMutexLock guard(ChainLock());
  QTDSurface* const surface = GetSurface();
  if (!IsOnCard(surface)) return ZYN_ERR_FAILED;
  const SurfacePass pass(surface);
  if (!pass) return ZYN_ERR_FAILED;
  const auto append = [&](const auto& rows) {
    return AppendStages(*this, rows, std::size(rows), source, output);
  };
  bool built = append(kHead);
  if (built && DisplayNumber(display, "strict") != 0) {
    built = append(kStrict);
    // The viewer turns what no stage has turned.
    if (built) Parameters().Set("flip", QTD::ToText(FindProcessor("bayer") ? 0 : 1));
  } else if (built) {
    built = append(kFull);
    // All is turned already; a strict list before this one may have said otherwise.
    if (Parameters().Has("flip")) Parameters().Set("flip", "0");
  }
  if (built) built = append(kTail);
  surface->checkError("QTDProcessor::initQGL()", 1, 0);
  return built ? 0u : uint32_t{ZYN_ERR_FAILED};
}
