#include "cpu/stages/CPUIPBayer.h"

#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "QTD/frame/Logging.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"

namespace {

constexpr const char* kMethodKey = "BayerAlgType";

// What a component may rely on: an image like the prepared one, whose lines lie within its buffer.
bool IsLike(const ZynImage& image, const ZynImage& prepared) {
  return image.imageData && image.pixelType == prepared.pixelType && image.width == prepared.width &&
         image.height == prepared.height && QTD::LinesFit(image);
}

}  // namespace

// The parameter as `Init` found it.
struct CPUIPBayer::Method {
  bool readable;
  int64_t value;
};

ZynImgProcessor* ZynDisplayCPU::Bayer::CreateComponent(ZynComponent* parent) {
  return new CPUIPBayer(parent);
}

void ZynDisplayCPU::Bayer::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPBayer::CPUIPBayer(ZynComponent* parentComponent)
    : CPUIPBayer(parentComponent, {ZynBayer::CreateComponent, ZynBayer::DeleteComponent}) {}

CPUIPBayer::CPUIPBayer(ZynComponent* parentComponent, const Interpolations& origin)
    : Stage(parentComponent, "bayer.cpu", "CPUIPBayer"), interpolations(origin) {}

CPUIPBayer::~CPUIPBayer() {
  EndParameterCalls();
  CPUIPBayer::Release();
}

void CPUIPBayer::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  QTD::ImageDelete(outputImage);
  ZynBayer* const leaving = std::exchange(interpolation, nullptr);
  if (!leaving) return;
  try {
    leaving->Release();
  } catch (...) {
    // It is deleted all the same.
  }
  interpolations.destroy(leaving);
}

// Preparing.

uint32_t CPUIPBayer::Init(const ZynImage* source, const ZynImage* output) {
  const Method method = ReadMethod();  // a parameter handler may call the stage: no lock is held yet
  const QTD::RMutexLock guard(lock);
  // Copies, since the caller may hand in records of this stage, which go now.
  const ZynImage format = source ? *source : ZynImage{};
  const bool blueFirst = output && QTD::IsBgrFormat(output->pixelType);
  Release();
  try {
    lastError = Prepare(format, blueFirst, method);
  } catch (const std::bad_alloc&) {
    lastError = QTD::kStageNoMemory;
  } catch (...) {
    lastError = ZYN_ERR_FAILED;
  }
  if (lastError != 0) Release();
  ready = lastError == 0;
  return Compose(lastError);
}

CPUIPBayer::Method CPUIPBayer::ReadMethod() {
  try {
    Method method{true, 0};
    GetParameterInt(kMethodKey, &method.value);
    return method;
  } catch (...) {
    return {false, 0};
  }
}

uint32_t CPUIPBayer::Prepare(const ZynImage& source, bool blueFirst, const Method& method) {
  if (source.width == 0 || source.height == 0) return ZYN_ERR_BAD_ARGUMENT;
  if (!QTD::IsBayerFormat(source.pixelType)) return QTD::kStageFormat;
  const uint32_t targetType = QTD::DemosaicedFormat(source.pixelType, blueFirst);
  if (targetType == 0) return QTD::kStageFormat;

  if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(source.height);
  const int32_t markedHeight = IsFlipped(source) ? -height : height;
  outputImage = QTD::ImageCreate(nullptr, source.width, markedHeight, targetType);
  if (!outputImage) return QTD::kStageNoMemory;

  const uint32_t failure = PrepareInterpolation(source, method);
  if (failure != 0) return failure;
  out = outputImage;

  sourceInfo = QTD::ImageCloneHeader(nullptr, &source);
  outputInfo = QTD::ImageCreateHeader(nullptr, source.width, markedHeight, targetType);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  return 0;
}

uint32_t CPUIPBayer::PrepareInterpolation(const ZynImage& source, const Method& method) {
  interpolation = interpolations.create();
  if (!interpolation) return ZYN_ERR_FAILED;
  ZynComponent* const component = interpolation->GetComponent();
  if (!component || !method.readable) return ZYN_ERR_FAILED;
  component->SetParameterInt(kMethodKey, method.value);
  try {
    if (QTD::BareCode(interpolation->Init(&source, outputImage)) != 0) return QTD::kStageNoMemory;
  } catch (...) {  // a failure of the component, like any other
    return QTD::kStageNoMemory;
  }
  return 0;
}

// Running.

uint32_t CPUIPBayer::ProcessImage(const ZynImage* source, ZynImage* output, void*) {
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPBayer::ProcessImage()");
    return Finish(Run(source, output));
  } catch (...) {  // the component's failure, too
    return Finish(QTD::kStageNoMemory);
  }
}

uint32_t CPUIPBayer::Run(const ZynImage* source, ZynImage* output) {
  if (!outputImage) return ZYN_ERR_NOT_READY;
  ZynImage* const target = output ? output : outputImage;
  if (target->imageSize != outputImage->imageSize || !target->imageData) return ZYN_ERR_BAD_ARGUMENT;
  // What a component would have to refuse is not handed to it.
  if (!source || !IsLike(*source, *sourceInfo) || !IsLike(*target, *outputImage)) return QTD::kStageNoMemory;
  if (QTD::BareCode(interpolation->ProcessImage(source, target)) != 0) return QTD::kStageNoMemory;
  target->imageID = source->imageID;
  out = target;
  return 0;
}

uint32_t CPUIPBayer::ExecuteCommand(const char* commandName) {
  const QTD::RMutexLock guard(lock);
  const std::string_view command = commandName ? commandName : "";
  if (command != "params.apply" && command != "params.reset") return Finish(ZYN_ERR_NOT_SUPPORTED);
  if (!ready) return Finish(ZYN_ERR_FAILED);
  return Finish(0);
}
