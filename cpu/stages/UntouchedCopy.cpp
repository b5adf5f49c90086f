#include "cpu/stages/UntouchedCopy.h"

#include <limits>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/ImageConversion.h"

UntouchedCopy::~UntouchedCopy() {
  SetWanted(false);
}

void UntouchedCopy::SetWanted(bool on) {
  wanted = on;
  if (on) return;
  taken = false;
  QTD::ImageDelete(image);
}

bool UntouchedCopy::Take(const ZynImage* result) {
  const bool needed = wanted && result && !QTD::IsCfaFormat(result->pixelType);
  taken = needed && Copy(*result);
  return taken == needed;
}

bool UntouchedCopy::Copy(const ZynImage& result) {
  const bool fits = image && image->width == result.width && image->height == result.height &&
                    image->pixelType == result.pixelType;
  if (!fits) {
    QTD::ImageDelete(image);
    if (result.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return false;
    image = QTD::ImageCreate(nullptr, result.width, static_cast<int32_t>(result.height), result.pixelType);
  }
  return image && CopyPixels(result, *image, aside);
}
