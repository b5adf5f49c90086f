// Converts a raw Bayer image into a colour picture without a window: convert [OUT.ppm]
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <QApplication>
#include <QWidget>
#include <cstdint>
#include <cstdio>
#include <vector>

// An image over the caller's pixels, whose lines follow each other without a gap.
static ZynImage Record(uint32_t pixelType, uint32_t width, uint32_t height, void* pixels) {
  ZynImage image{};  // depth and channels follow from the pixel code
  image.pixelType = pixelType;
  image.width = width;
  image.height = height;
  image.linePitch = width * (pixelType >> 16 & 0xFF) / 8;
  image.imageSize = image.linePitch * height;
  image.imageData = static_cast<uint8_t*>(pixels);
  return image;
}

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");  // needs no screen
  QApplication application(argc, argv);
  QWidget neverShown;

  // What a sensor delivers: 12 bits, red and green in one line, green and blue in the next.
  constexpr uint32_t kWidth = 64, kHeight = 48;
  std::vector<uint16_t> sensor(kWidth * kHeight);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      const bool red = x % 2 == 0 && y % 2 == 0, blue = x % 2 == 1 && y % 2 == 1;
      sensor[y * kWidth + x] = red ? 3200 : blue ? 800 : 1600;
    }
  }
  const ZynImage source = Record(ZYN_PIXEL_BAYERRG12, kWidth, kHeight, sensor.data());

  std::vector<uint8_t> pixels(kWidth * kHeight * 3);
  ZynImage picture = Record(ZYN_PIXEL_RGB8, kWidth, kHeight, pixels.data());

  ZynDisplay* display = ZynDisplay_CreateComponent();
  uint32_t code = ZynDisplay_Initialize(display, &neverShown, nullptr, &source);
  if (code == 0) code = ZynDisplay_ConvertImage(display, &source, &picture);  // again for each image like it
  ZynDisplay_DeleteComponent(display);
  if (code != 0) {
    std::fprintf(stderr, "not converted: code 0x%08X\n", code);
    return 1;
  }

  const uint8_t* middle = pixels.data() + (kHeight / 2 * kWidth + kWidth / 2) * 3;
  std::printf("in the middle: red %d, green %d, blue %d\n", middle[0], middle[1], middle[2]);
  if (argc > 1) {
    std::FILE* file = std::fopen(argv[1], "wb");
    if (!file) return 1;
    std::fprintf(file, "P6 %u %u 255\n", kWidth, kHeight);
    std::fwrite(pixels.data(), 1, pixels.size(), file);
    std::fclose(file);
  }
  return 0;
}
