#include "cpu/stages/CPUIPYUV2RGB.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
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
    : OwnImageStage(parentComponent, "yuv2rgb.cpu", "CPUIPYUV2RGB") {}

bool CPUIPYUV2RGB::Takes(uint32_t pixelType) const {
  return QTD::IsUyvyFormat(pixelType);
}
uint32_t CPUIPYUV2RGB::ResultType(uint32_t) const {
  return ZYN_PIXEL_RGB8;
}
bool CPUIPYUV2RGB::Fill(const ZynImage& source, const ZynImage& output) const {
  return ConvertPixels(WithPitch(source), output);
}
