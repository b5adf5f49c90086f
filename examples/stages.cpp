// Single stages, one after the other: no display, no window, no application object, any thread.
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <cstdint>
#include <cstdio>
#include <vector>

// Prepares a stage for what the one before it delivers, runs it, and answers its picture; null when it fails.
static const ZynImage* Run(ZynImgProcessor* stage, const ZynImage* source, const ZynImage* wanted = nullptr) {
  if (!source || stage->Init(source, wanted) != 0) return nullptr;  // once for all images of a kind
  return stage->ProcessImage(source, nullptr, nullptr) == 0 ? stage->Out() : nullptr;
}

// The depth of a sample stands in the record too, for stages work on records as they are.
static void PrintPixel(const char* what, const ZynImage* image) {
  if (!image) return;
  const uint8_t* line = image->imageData + image->height / 2 * image->linePitch;
  std::printf("%s, %u bits:", what, image->bitDepth);
  for (uint32_t channel = 0; channel < image->channels; ++channel) {
    const uint32_t at = image->width / 2 * image->channels + channel;
    std::printf(" %d", image->bitDepth > 8 ? reinterpret_cast<const uint16_t*>(line)[at] : line[at]);
  }
  std::printf("\n");
}

int main() {
  // A packed Bayer image: two samples of 12 bits in three bytes, a red and a green line, a green and a blue
  // line.
  constexpr uint32_t kWidth = 32, kHeight = 24, kPitch = kWidth * 12 / 8;
  std::vector<uint8_t> packed(kPitch * kHeight);
  for (uint32_t y = 0; y < kHeight; ++y) {
    const uint32_t first = y % 2 == 0 ? 3200 : 1600, second = y % 2 == 0 ? 1600 : 800;
    for (uint32_t at = y * kPitch; at < (y + 1) * kPitch; at += 3) {
      packed[at] = static_cast<uint8_t>(first);
      packed[at + 1] = static_cast<uint8_t>(first >> 8 | second << 4);
      packed[at + 2] = static_cast<uint8_t>(second >> 4);
    }
  }
  ZynImage raw{};
  raw.pixelType = ZYN_PIXEL_BAYERRG12P;
  raw.bitDepth = 12;
  raw.channels = 1;
  raw.width = kWidth;
  raw.height = kHeight;
  raw.linePitch = kPitch;
  raw.imageSize = kPitch * kHeight;
  raw.imageData = packed.data();
  ZynImage bytes{};
  bytes.pixelType = ZYN_PIXEL_RGB8;
  bytes.bitDepth = 8;

  ZynImgProcessor* unpack = ZynDisplayCPU::Unpack::CreateComponent(nullptr);
  ZynImgProcessor* bayer = ZynDisplayCPU::Bayer::CreateComponent(nullptr);
  ZynImgProcessor* correction = ZynDisplayCPU::ColorCorrection::CreateComponent(nullptr);
  ZynImgProcessor* image = ZynDisplayCPU::Image::CreateComponent(nullptr);
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 3);      // the best picture; read by Init
  correction->GetComponent()->SetParameterDouble("gain.r", 0.5);  // white balance
  correction->GetComponent()->SetParameterDouble("gain.b", 2.0);

  const ZynImage* words = Run(unpack, &raw);
  PrintPixel("unpacked", words);
  const ZynImage* colour = Run(bayer, words);
  PrintPixel("demosaiced", colour);
  const ZynImage* corrected = Run(correction, colour);  // in place: the pixels of `colour` change
  PrintPixel("corrected", corrected);
  const ZynImage* picture = Run(image, corrected, &bytes);
  PrintPixel("to show", picture);

  ZynDisplayCPU::Image::DeleteComponent(image);
  ZynDisplayCPU::ColorCorrection::DeleteComponent(correction);
  ZynDisplayCPU::Bayer::DeleteComponent(bayer);
  ZynDisplayCPU::Unpack::DeleteComponent(unpack);
  return picture ? 0 : 1;
}
