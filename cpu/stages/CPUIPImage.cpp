#include "cpu/stages/CPUIPImage.h"

#include <limits>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"

namespace {

constexpr uint32_t kByteDepth = 8;

bool HasPicture(const ZynImage& image) {
  return image.width != 0 && image.height != 0 && image.imageData;
}

bool HaveEqualSizes(const ZynImage& one, const ZynImage& other) {
  return one.width == other.width && one.height == other.height;
}

}  // namespace

ZynImgProcessor* ZynDisplayCPU::Image::CreateComponent(ZynComponent* parent) {
  return new CPUIPImage(parent);
}

void ZynDisplayCPU::Image::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPImage::CPUIPImage(ZynComponent* parentComponent) : Stage(parentComponent, "image.cpu", "CPUIPImage") {}

CPUIPImage::~CPUIPImage() {
  EndParameterCalls();
  CPUIPImage::Release();
}

ZynImage* CPUIPImage::Out() {
  const QTD::RMutexLock guard(componentLock);
  return out;
}
ZynImage* CPUIPImage::GetImageInfo(bool source) {
  const QTD::RMutexLock guard(componentLock);
  return source || !outputInfo ? sourceInfo : outputInfo;
}

void CPUIPImage::KeepUntouched(bool on) {
  const QTD::RMutexLock guard(componentLock);
  untouched.SetWanted(on);
}
const ZynImage* CPUIPImage::Untouched(QTD::RecordHold& hold) {
  const QTD::RMutexLock guard(componentLock);
  QTD::RecordHold taken(untouched.Image());
  hold.Swap(taken);
  return untouched.Image();
}

void CPUIPImage::Release() {
  const QTD::RMutexLock stageGuard(lock);  // `Reset` takes it, and it comes before the component's lock
  const QTD::RMutexLock guard(componentLock);
  Reset();
  QTD::ImageDelete(outputImage);
  conversionFlags = 0;
  limits = {};
  aside.Release();
  untouched.SetWanted(false);
}

// Preparing.

uint32_t CPUIPImage::Init(const ZynImage* source, const ZynImage* output) {
  const QTD::RMutexLock stageGuard(lock);
  // Copies, since the caller may hand in records of this stage, which go now.
  const ZynImage format = source ? *source : ZynImage{};
  const ZynImage wanted = output ? *output : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);

  uint32_t targetType = wanted.pixelType;
  uint32_t targetDepth = wanted.bitDepth;
  if (!output) {
    // Only 8 makes a difference; any other depth leaves the samples as they are.
    const bool toBytes = parameters.GetInt64("depth", QTD::ToText(format.bitDepth)) == kByteDepth;
    targetDepth = toBytes ? kByteDepth : format.bitDepth;
    const bool reduced = toBytes && format.bitDepth > kByteDepth;
    targetType = reduced ? QTD::EightBitFormat(format.pixelType) : format.pixelType;
  }
  if (QTD::IsTransportFormat(format.pixelType)) return Finish(QTD::kStageFormat);
  const QTD::RMutexLock guard(componentLock);
  lastError =
      Prepare(format, targetType, StepsBetween(format.pixelType, format.bitDepth, targetType, targetDepth));
  if (lastError != 0) Release();
  ready = lastError == 0;
  return Compose(lastError);
}

uint32_t CPUIPImage::Prepare(const ZynImage& source, uint32_t targetType, const ConversionSteps& steps) {
  const bool flip = IsFlipped(source);
  const bool external = parameters.GetBool("external", "0");
  if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(source.height);
  const int32_t markedHeight = flip ? -height : height;

  if (steps.reduce) {
    ZynImage deep{};
    if (!QTD::ImageCreateHeader(&deep, source.width, markedHeight, source.pixelType))
      return QTD::kStageNoMemory;
    limits.deepBytes = deep.imageSize;
    conversionFlags |= kReduce;
  }
  limits.furtherSteps = steps.toColour || steps.swap;
  if (steps.toColour) conversionFlags |= kToColour;
  if (steps.swap) conversionFlags |= kSwap;
  const uint32_t resultType = conversionFlags != 0 ? targetType : source.pixelType;

  // The stage's own image always counts as top-down; only the information carries the mark.
  if (!external) {
    outputImage = QTD::ImageCreate(nullptr, source.width, height, resultType);
    if (!outputImage) return QTD::kStageNoMemory;
  }
  sourceInfo = QTD::ImageCloneHeader(nullptr, &source);
  outputInfo = QTD::ImageCreateHeader(nullptr, source.width, markedHeight, resultType);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  return 0;
}

// Running.

uint32_t CPUIPImage::ProcessImage(const ZynImage* source, ZynImage* output, void*) {
  try {
    ZYN_TRACE(log, "CPUIPImage::ProcessImage()");
    const QTD::RMutexLock guard(componentLock);
    out = nullptr;
    const uint32_t code = Run(source, output);
    // Whoever counts on the copy must not read changed values instead.
    if (!untouched.Take(code == 0 ? out : nullptr)) {
      out = nullptr;
      return Finish(ZYN_ERR_FAILED);
    }
    return Finish(code);
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

// The caller's image or the stage's own.
uint32_t CPUIPImage::SelectTarget(ZynImage* output, ZynImage** target) {
  *target = output ? output : outputImage;
  if (!*target || !outputInfo) return ZYN_ERR_NOT_READY;
  if (output && (output->imageSize != outputInfo->imageSize || !output->imageData))
    return ZYN_ERR_BAD_ARGUMENT;
  return 0;
}

uint32_t CPUIPImage::Run(const ZynImage* source, ZynImage* output) {
  if (!source || !source->imageData) return ZYN_ERR_BAD_ARGUMENT;
  ZynImage* target = nullptr;
  if (const uint32_t code = SelectTarget(output, &target)) return code;

  const bool alike = HasPicture(*source) && HasPicture(*target) && HaveEqualSizes(*source, *target) &&
                     source->imageSize == target->imageSize;
  if (!IsEnabled() && alike) {
    out = const_cast<ZynImage*>(source);  // handed on as it is
    return 0;
  }
  target->imageID = source->imageID;
  out = target;
  if (!HaveEqualSizes(*source, *sourceInfo)) return ZYN_ERR_FAILED;
  const bool done = conversionFlags != 0 ? ConvertPixels(*source, *target, limits, aside)
                                         : CopyPixels(*source, *target, aside);
  if (!done) return ZYN_ERR_FAILED;
  return 0;
}
