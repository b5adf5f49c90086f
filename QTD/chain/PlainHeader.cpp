#include "QTD/chain/PlainHeader.h"

#include <limits>

#include "QTD/image/ImageRecord.h"

ZynImage* PlainHeader(const ZynImage& image) {
  // Beyond this the height would be read as one that asks for a bottom-up picture.
  if (image.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return nullptr;
  return QTD::ImageCreateHeader(nullptr, image.width, static_cast<int32_t>(image.height), image.pixelType);
}
