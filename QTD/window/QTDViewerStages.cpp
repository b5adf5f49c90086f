// The stages that every picture passes last, on its way from the chain to the window.
#include <memory>
#include <utility>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/screen/DisplaySurface.h"
#include "QTD/screen/SurfacePass.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPExposureColoration.h"
#include "cpu/stages/CPUIPImage.h"
#include "gl/stages/QGLIPExposureColoration.h"
#include "gl/stages/QGLIPImage.h"

namespace {

constexpr uint32_t kByteDepth = 8;

bool HasSize(const ZynImage* record) {
  return record && record->width > 0 && record->height > 0;
}

ZynImage* MakeRecord(const ZynImage& size, uint32_t pixelType) {
  if (size.height > static_cast<uint32_t>(INT32_MAX)) return nullptr;
  return QTD::ImageCreateHeader(nullptr, size.width, static_cast<int32_t>(size.height), pixelType);
}

// Prepares a stage and gives it to the chain, which releases and deletes it from then on; null when either
// fails.
ZynImgProcessor* Append(ZynImgProcessingChain& chain, const char* name,
                        std::unique_ptr<ZynImgProcessor> stage, const ZynImage* source,
                        const ZynImage* output) {
  if (QTD::BareCode(stage->Init(source, output)) == 0 &&
      QTD::BareCode(chain.AddProcessor(name, stage.get())) == 0) {
    return stage.release();
  }
  stage->Release();
  return nullptr;
}

}  // namespace

uint32_t QTDViewer::attachProcessor(const ZynImage* format, ZynImgProcessingChain* processor) {
  lastError = kSuccess;
  if (!HasSize(format) || !processor) return finish(kBadArgument);
  std::lock_guard<std::recursive_mutex> hold(lock);
  const uint32_t code = IsOpenGL() ? attachGL(format, processor) : attachCPU(format, processor);
  if (code != kSuccess) releaseImages();
  return finish(code);
}

uint32_t QTDViewer::finish(uint32_t code) {
  lastError = code;
  return code;
}

uint32_t QTDViewer::releaseImages() {
  std::lock_guard<std::recursive_mutex> hold(lock);
  QTD::ImageDelete(stageSource);
  QTD::ImageDelete(stageOutput);
  return kSuccess;
}

uint32_t QTDViewer::attachGL(const ZynImage* format, ZynImgProcessingChain* processor) {
  if (!processor) return finish(kBadArgument);
  std::lock_guard<std::recursive_mutex> hold(lock);
  if (!window || !window->Surface()) return finish(kNotReady);
  const ZynImage* last = processor->GetImageInfo(false);
  const ZynImage* source = last ? last : format;
  if (!HasSize(source)) return finish(kNotReady);
  ZynComponent* const chain = processor->GetComponent();
  int64_t flip = 0;
  if (!chain || chain->GetParameterInt("flip", &flip) != 0) flip = 0;

  const SurfacePass pass(window->Surface());
  if (!pass) return finish(kNotReady);
  releaseImages();
  stageSource = MakeRecord(*source, source->pixelType);
  stageOutput = MakeRecord(*source, source->bitDepth == kByteDepth ? ZYN_PIXEL_RGB8 : ZYN_PIXEL_RGB16);
  if (!stageSource || !stageOutput) return finish(kNoMemory);
  auto shown = std::make_unique<QGLIPImage>(display);
  if (QTD::IsMonoFormat(source->pixelType)) shown->SetParameterInt("image.color.mono", 1);
  if (flip == 1) shown->SetParameterInt("image.flip.vert", 1);
  if (!Append(*processor, "image.display", std::move(shown), stageSource, stageOutput))
    return finish(kStageFailed);

  if (DisplayNumber(display, "strict") != 0) return finish(kSuccess);
  auto marked = std::make_unique<QGLIPExposureColoration>(display, chain);
  marked->SetParameterInt("image.color.mono", QTD::IsMonoFormat(source->pixelType) ? 1 : 0);
  ZynImgProcessor* const coloration =
      Append(*processor, "image.coloration", std::move(marked), stageOutput, nullptr);
  if (!coloration) return finish(kStageFailed);
  coloration->Enable(false);  // marks are shown when somebody asks for them
  return finish(kSuccess);
}

uint32_t QTDViewer::attachCPU(const ZynImage* format, ZynImgProcessingChain* processor) {
  if (!processor) return finish(kBadArgument);
  std::lock_guard<std::recursive_mutex> hold(lock);
  if (!window) return finish(kNotReady);
  const ZynImage* last = processor->GetImageInfo(false);
  const ZynImage* source = last ? last : format;
  if (!HasSize(source)) return finish(kNotReady);

  releaseImages();
  stageSource = MakeRecord(*source, source->pixelType);
  stageOutput = MakeRecord(*source, ZYN_PIXEL_RGB8);
  if (!stageSource || !stageOutput) return finish(kNoMemory);
  ZynComponent* const parent = processor->GetComponent();
  if (!Append(*processor, "image.display", std::make_unique<CPUIPImage>(parent), stageSource, stageOutput)) {
    return finish(kStageFailed);
  }
  ZynImgProcessor* const coloration =
      Append(*processor, "image.coloration", std::make_unique<CPUIPExposureColoration>(parent), stageOutput,
             nullptr);
  if (!coloration) return finish(kStageFailed);
  coloration->Enable(false);  // marks are shown when somebody asks for them
  return finish(kSuccess);
}
