// Images for tests of stages: a record over guarded memory, filled with noise that uses all bits of every
// byte.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "QTD/image/PixelFormats.h"
#include "ZynImage.h"
#include "tests/cpu/GuardedBytes.h"

struct StagePicture {
  // A pitch of 0 is the line's bytes rounded up to 4.
  StagePicture(uint32_t pixelType, uint32_t width, uint32_t height, uint32_t pitch = 0, uint32_t seed = 1,
               GuardedBytes::Border border = GuardedBytes::kAtEnd) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(pixelType);
    record.structSize = 96;
    record.pixelType = pixelType;
    record.bitDepth = row->bitDepth;
    record.pixelGroup = pixelType & 0xFF00;
    record.channels = row->channels;
    record.bitsPerPixel = (pixelType >> 16) & 0xFF;
    record.width = width;
    record.height = height;
    record.linePitch = pitch != 0 ? pitch : (record.bitsPerPixel * width + 31) / 32 * 4;
    record.imageSize = record.linePitch * height;
    bytes = std::make_unique<GuardedBytes>(record.imageSize, border);
    record.imageData = bytes->data();
    std::minstd_rand random(seed);
    for (size_t i = 0; i < bytes->size(); ++i) (*bytes)[i] = static_cast<uint8_t>(random() >> 8);
  }

  std::vector<uint8_t> Copy() const { return {record.imageData, record.imageData + bytes->size()}; }

  ZynImage record{};
  std::unique_ptr<GuardedBytes> bytes;
};

// The pixels of all lines without their padding.
inline std::vector<uint8_t> PixelsOf(const ZynImage& image) {
  const size_t lineBytes = (size_t{image.width} * image.bitsPerPixel + 7) / 8;
  std::vector<uint8_t> pixels;
  for (size_t line = 0; line < image.height; ++line) {
    const uint8_t* const first = image.imageData + line * image.linePitch;
    pixels.insert(pixels.end(), first, first + lineBytes);
  }
  return pixels;
}
