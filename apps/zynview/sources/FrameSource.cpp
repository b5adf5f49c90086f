#include "sources/FrameSource.h"

namespace zynview {

uint32_t LineBytes(uint32_t pixelType, uint32_t width) {
  const uint64_t bits = uint64_t{(pixelType >> 16) & 0xFF} * width;
  return static_cast<uint32_t>((bits + 7) / 8);
}

ZynImage MakeRecord(uint32_t pixelType, uint32_t width, uint32_t height, uint32_t linePitch, uint8_t* data) {
  ZynImage record{};
  record.structSize = sizeof(ZynImage);
  record.pixelType = pixelType;
  record.pixelGroup = pixelType & 0xFF00;
  record.bitsPerPixel = (pixelType >> 16) & 0xFF;
  record.width = width;
  record.height = height;
  record.linePitch = linePitch ? linePitch : LineBytes(pixelType, width);
  record.imageSize = record.linePitch * height;
  record.imageData = data;
  return record;
}

}  // namespace zynview
