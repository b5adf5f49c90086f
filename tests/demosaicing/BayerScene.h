// A source, an output and a component for them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "ZynDemosaicing.h"
#include "ZynPixelFormat.h"
#include "tests/cpu/GuardedBytes.h"

// One format of sources, with the formats of its results.
struct SceneFormat {
  uint32_t bayer;
  uint32_t depth;
  size_t redX, redY;  // the place of red in the cell
  uint32_t rgb, bgr;
};

constexpr SceneFormat kSceneFormats[] = {
    {ZYN_PIXEL_BAYERRG8, 8, 0, 0, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
    {ZYN_PIXEL_BAYERGR8, 8, 1, 0, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
    {ZYN_PIXEL_BAYERGB8, 8, 0, 1, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
    {ZYN_PIXEL_BAYERBG8, 8, 1, 1, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
    {ZYN_PIXEL_BAYERRG10, 10, 0, 0, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
    {ZYN_PIXEL_BAYERGR10, 10, 1, 0, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
    {ZYN_PIXEL_BAYERGB10, 10, 0, 1, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
    {ZYN_PIXEL_BAYERBG10, 10, 1, 1, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
    {ZYN_PIXEL_BAYERRG12, 12, 0, 0, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
    {ZYN_PIXEL_BAYERGR12, 12, 1, 0, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
    {ZYN_PIXEL_BAYERGB12, 12, 0, 1, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
    {ZYN_PIXEL_BAYERBG12, 12, 1, 1, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
    {ZYN_PIXEL_BAYERRG14, 14, 0, 0, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
    {ZYN_PIXEL_BAYERGR14, 14, 1, 0, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
    {ZYN_PIXEL_BAYERGB14, 14, 0, 1, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
    {ZYN_PIXEL_BAYERBG14, 14, 1, 1, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
    {ZYN_PIXEL_BAYERRG16, 16, 0, 0, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16},
    {ZYN_PIXEL_BAYERGR16, 16, 1, 0, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16},
    {ZYN_PIXEL_BAYERGB16, 16, 0, 1, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16},
    {ZYN_PIXEL_BAYERBG16, 16, 1, 1, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16},
};

inline const SceneFormat& FormatOf(uint32_t bayer) {
  for (const SceneFormat& format : kSceneFormats) {
    if (format.bayer == bayer) return format;
  }
  throw std::invalid_argument("not a Bayer format of the table");
}

struct DeleteBayer {
  void operator()(ZynBayer* bayer) const { ZynBayer::DeleteComponent(bayer); }
};
using BayerPointer = std::unique_ptr<ZynBayer, DeleteBayer>;

inline BayerPointer MakeBayer(int64_t method = 0) {
  BayerPointer bayer(ZynBayer::CreateComponent());
  bayer->GetComponent()->SetParameterInt("BayerAlgType", method);
  return bayer;
}

// Both images lie between pages that nobody may touch, and end with the last pixel of their last line:
// nothing but pixels and the bytes between two lines may be touched.
class BayerScene {
 public:
  BayerScene(const SceneFormat& sceneFormat, bool blueFirst, uint32_t width, uint32_t height,
             uint32_t extra = 0, GuardedBytes::Border border = GuardedBytes::kAtEnd)
      : format(sceneFormat),
        blueIsFirst(blueFirst),
        sampleBytes(format.depth > 8 ? 2 : 1),
        sourceLine(width * sampleBytes),
        sourceBytes(size_t{sourceLine + extra} * (height - 1) + sourceLine, border),
        outputBytes(size_t{3 * sourceLine + extra} * (height - 1) + 3 * sourceLine, border) {
    Describe(&source, format.bayer, width, height, sourceLine + extra, sourceBytes);
    Describe(&output, blueFirst ? format.bgr : format.rgb, width, height, 3 * sourceLine + extra,
             outputBytes);
    std::memset(outputBytes.data(), kUntouched, outputBytes.size());
  }

  // All bytes at random: words above the depth are among them.
  void FillAtRandom(uint32_t seed) {
    std::minstd_rand random(seed + 1);
    for (size_t i = 0; i < sourceBytes.size(); ++i) sourceBytes[i] = static_cast<uint8_t>(random() >> 8);
  }
  void FillWith(uint32_t sample) {
    for (uint32_t y = 0; y < source.height; ++y) {
      for (uint32_t x = 0; x < source.width; ++x) Put(x, y, sample);
    }
  }
  void Put(uint32_t x, uint32_t y, uint32_t sample) {
    std::memcpy(source.imageData + size_t{y} * source.linePitch + size_t{x} * sampleBytes, &sample,
                sampleBytes);
  }
  uint32_t Sample(size_t x, size_t y) const {
    uint32_t sample = 0;
    std::memcpy(&sample, source.imageData + y * source.linePitch + x * sampleBytes, sampleBytes);
    return sample;
  }
  // Channel 0 is red, whatever the order of the output.
  uint32_t Result(size_t x, size_t y, size_t channel) const {
    return Stored(x, y, blueIsFirst ? 2 - channel : channel);
  }
  // The sample as it lies in memory.
  uint32_t Stored(size_t x, size_t y, size_t place) const {
    uint32_t sample = 0;
    std::memcpy(&sample, output.imageData + y * output.linePitch + (3 * x + place) * sampleBytes,
                sampleBytes);
    return sample;
  }
  bool GapsAreUntouched() const {
    for (uint32_t y = 0; y + 1 < output.height; ++y) {
      const uint8_t* const line = output.imageData + size_t{y} * output.linePitch;
      for (uint32_t byte = 3 * sourceLine; byte < output.linePitch; ++byte) {
        if (line[byte] != kUntouched) return false;
      }
    }
    return true;
  }
  // Both operations of a component, as a code in the low 16 bits.
  uint32_t Run(ZynBayer& bayer) {
    const uint32_t code = bayer.Init(&source, &output);
    return (code != 0 ? code : bayer.ProcessImage(&source, &output)) & 0xFFFF;
  }

  const SceneFormat& format;
  const bool blueIsFirst;
  const uint32_t sampleBytes;
  ZynImage source{}, output{};

 private:
  static constexpr uint8_t kUntouched = 0xA5;

  static void Describe(ZynImage* image, uint32_t pixelType, uint32_t width, uint32_t height, uint32_t pitch,
                       GuardedBytes& bytes) {
    image->structSize = sizeof *image;
    image->pixelType = pixelType;
    image->width = width;
    image->height = height;
    image->linePitch = pitch;
    image->imageSize = static_cast<uint32_t>(bytes.size());
    image->imageData = bytes.data();
  }

  const uint32_t sourceLine;
  GuardedBytes sourceBytes, outputBytes;
};
