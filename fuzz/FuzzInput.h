// Images out of a fuzzer's bytes: records that may say anything about buffers whose size alone is true.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "ZynImage.h"

namespace fuzz {

// Mostly one of the table's codes.
inline uint32_t PixelType(FuzzedDataProvider& input) {
  const auto row = input.ConsumeIntegral<uint8_t>();
  const QTD::PixelRow* const known = row < 200 ? QTD::FindPixelRow(row % QTD::kPixelRows + 1) : nullptr;
  return known ? known->code : input.ConsumeIntegral<uint32_t>();
}

// Mostly small: a fuzzer shall not spend its time on filling memory.
inline uint32_t Extent(FuzzedDataProvider& input) {
  const auto size = input.ConsumeIntegral<uint8_t>();
  return size < 250 ? size % 70 : input.ConsumeIntegral<uint32_t>();
}

// A header as a careful host would write it.
inline ZynImage TrueHeader(FuzzedDataProvider& input) {
  ZynImage header{};
  const auto width = input.ConsumeIntegralInRange<uint32_t>(0, 70);
  const auto height = input.ConsumeIntegralInRange<int32_t>(-40, 40);
  QTD::ImageCreateHeader(&header, width, height, PixelType(input));
  return header;
}

// An image of such a header, some of whose fields then lie. `imageSize` is the size of the buffer or less.
class Image {
 public:
  Image(FuzzedDataProvider& input, const ZynImage& header) : record(header) {
    if (input.ConsumeBool()) record.pixelType = PixelType(input);
    if (input.ConsumeBool()) record.bitDepth = input.ConsumeIntegral<uint32_t>();
    if (input.ConsumeBool()) record.channels = input.ConsumeIntegral<uint32_t>();
    if (input.ConsumeBool()) record.bitsPerPixel = input.ConsumeIntegral<uint32_t>();
    if (input.ConsumeBool()) record.origin = input.ConsumeIntegral<uint32_t>();
    if (input.ConsumeBool()) record.width = Extent(input);
    if (input.ConsumeBool()) record.height = Extent(input);
    if (input.ConsumeBool()) record.linePitch = Extent(input);
    if (input.ConsumeBool()) record.imageSize = Extent(input);
    constexpr uint32_t kMostBytes = 1 << 16;
    if (record.imageSize > kMostBytes) record.imageSize = kMostBytes;
    if (input.ConsumeIntegral<uint8_t>() == 0) return;  // no buffer
    // Exactly as long as it says, so that the sanitizer sees the first byte that is touched behind it.
    bytes.reset(new uint8_t[record.imageSize]);
    const std::vector<uint8_t> pixels = input.ConsumeBytes<uint8_t>(record.imageSize);
    if (record.imageSize != 0) std::memset(bytes.get(), 0x5A, record.imageSize);
    if (!pixels.empty()) std::memcpy(bytes.get(), pixels.data(), pixels.size());
    record.imageData = bytes.get();
  }

  ZynImage record;

 private:
  std::unique_ptr<uint8_t[]> bytes;
};

// Init, some images, Release: what the stage answers does not matter, only that it ends well.
template <typename Stage>
void RunStage(Stage& stage, FuzzedDataProvider& input) {
  while (input.remaining_bytes() > 8) {
    const ZynImage source = TrueHeader(input), wanted = TrueHeader(input);
    stage.Init(&source, input.ConsumeBool() ? &wanted : nullptr);
    const ZynImage* const prepared = stage.GetImageInfo(false);
    const ZynImage result = prepared ? *prepared : wanted;
    for (int image = 0; image < 2; ++image) {
      Image given(input, source), target(input, result);
      stage.ProcessImage(&given.record, input.ConsumeBool() ? &target.record : nullptr, nullptr);
      // What the stage shows must be there in full.
      const ZynImage* const out = stage.Out();
      if (out && out->imageData && out != &given.record && out != &target.record && out->imageSize != 0) {
        const volatile uint8_t last = out->imageData[out->imageSize - 1];
        static_cast<void>(last);
      }
    }
    if (input.ConsumeBool()) stage.Release();
  }
}

}  // namespace fuzz
