#include "cpu/stages/CPUIPYUV2RGB.h"

#include <cstring>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "QTD/frame/Logging.h"
#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"

namespace {

// The record with the pitch of lines without padding where it names none.
ZynImage WithPitch(ZynImage image) {
  if (image.linePitch == 0) image.linePitch = static_cast<uint32_t>(QTD::LineBytes(image));
  return image;
}

// Equal sizes, buffers, and lines that lie within them.
bool AreAlike(const ZynImage& source, const ZynImage& target) {
  return source.imageData && target.imageData && source.width != 0 && source.height != 0 &&
         source.width == target.width && source.height == target.height && QTD::LinesFit(source);
}

// False, with the target black or as it was, when there is no way.
bool ConvertPixels(const ZynImage& source, const ZynImage& target) {
  if (!AreAlike(source, target)) return false;
  // Two pixels share their colour. The image library would go beyond the buffers instead of refusing.
  if (source.width % 2 != 0) return false;
  try {
    const auto width = static_cast<int>(source.width), height = static_cast<int>(source.height);
    const size_t targetPitch = target.linePitch != 0 ? target.linePitch : size_t{target.width} * 3;
    const cv::Mat from(height, width, CV_8UC2, source.imageData, source.linePitch);
    cv::Mat to(height, width, CV_8UC3, target.imageData, targetPitch);
    cv::cvtColor(from, to, cv::COLOR_YUV2RGB_UYVY);
    return to.data == target.imageData;
  } catch (...) {
    return false;
  }
}

}  // namespace

ZynImgProcessor* ZynDisplayCPU::YUV2RGB::CreateComponent(ZynComponent* parent) {
  return new CPUIPYUV2RGB(parent);
}

void ZynDisplayCPU::YUV2RGB::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPYUV2RGB::CPUIPYUV2RGB(ZynComponent* parentComponent)
    : CPUStage(parentComponent, "yuv2rgb.cpu", "CPUIPYUV2RGB") {}

CPUIPYUV2RGB::~CPUIPYUV2RGB() {
  EndParameterCalls();
  CPUIPYUV2RGB::Release();
}

void CPUIPYUV2RGB::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  QTD::ImageDelete(outputImage);
}

uint32_t CPUIPYUV2RGB::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if (format.pixelType != ZYN_PIXEL_YUV422_8_UYVY) return Finish(QTD::kStageFormat);
  const uint32_t code = Prepare(format);
  if (code != 0) Release();
  ready = code == 0;
  return Finish(code);
}

uint32_t CPUIPYUV2RGB::Prepare(const ZynImage& source) {
  if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(source.height);
  const int32_t markedHeight = IsFlipped(source) ? -height : height;
  outputImage = QTD::ImageCreate(nullptr, source.width, markedHeight, ZYN_PIXEL_RGB8);
  if (!outputImage) return QTD::kStageNoMemory;
  sourceInfo = QTD::ImageCloneHeader(nullptr, &source);
  outputInfo = QTD::ImageCreateHeader(nullptr, source.width, markedHeight, ZYN_PIXEL_RGB8);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  out = outputImage;
  return 0;
}

uint32_t CPUIPYUV2RGB::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPYUV2RGB::ProcessImage()");
    return Finish(Run(source));
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t CPUIPYUV2RGB::Run(const ZynImage* source) {
  if (!source || !outputImage || source->pixelType != ZYN_PIXEL_YUV422_8_UYVY) return ZYN_ERR_FAILED;
  if (!ConvertPixels(WithPitch(*source), *outputImage))
    std::memset(outputImage->imageData, 0, outputImage->imageSize);
  outputImage->imageID = source->imageID;
  out = outputImage;
  return 0;
}
