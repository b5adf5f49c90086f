// Converts a deep grey image into colour bytes without showing it: a single stage, no display, no window.
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <cstdint>
#include <cstdio>
#include <vector>

int main() {
  constexpr uint32_t kWidth = 4, kHeight = 2;
  std::vector<uint16_t> grey = {0, 16, 256, 512, 1024, 2048, 3072, 4095};
  ZynImage source{};
  source.pixelType = ZYN_PIXEL_MONO12;
  source.bitDepth = 12;
  source.width = kWidth;
  source.height = kHeight;
  source.linePitch = kWidth * 2;
  source.imageSize = source.linePitch * kHeight;
  source.imageData = reinterpret_cast<uint8_t*>(grey.data());

  ZynImage wanted{};
  wanted.pixelType = ZYN_PIXEL_RGB8;
  wanted.bitDepth = 8;

  ZynImgProcessor* stage = ZynDisplayCPU::Image::CreateComponent(nullptr);
  int result = 1;
  if (stage->Init(&source, &wanted) == 0 && stage->ProcessImage(&source, nullptr, nullptr) == 0) {
    const ZynImage* picture = stage->Out();
    for (uint32_t y = 0; y < picture->height; ++y) {
      const uint8_t* line = picture->imageData + y * picture->linePitch;
      for (uint32_t x = 0; x < picture->width; ++x, line += 3)
        std::printf("(%d %d %d) ", line[0], line[1], line[2]);
      std::printf("\n");
    }
    result = 0;
  }
  ZynDisplayCPU::Image::DeleteComponent(stage);
  return result;
}
