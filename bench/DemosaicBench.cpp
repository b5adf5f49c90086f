// The interpolation methods on 12 megapixels, through the component, against the image library's bilinear
// conversion of the same samples: two threads each, results in images that are kept.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <vector>

#include "ZynDemosaicing.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"

namespace {

constexpr uint32_t kWidth = 4096, kHeight = 3000;

// Samples of a sensor: 14 bits in 16, red at the first place.
struct Tile {
  uint32_t width, height;
  std::vector<uint16_t> words;
};

// The sensor's own values where the data lies beside the tree, else blocks of noisy colour.
Tile MakeTile() {
  Tile tile{768, 512, std::vector<uint16_t>(768 * 512)};
  const std::string name = "shared/data/sensor/d750_rose_768x512_rggb14.raw";
  for (std::string up = "../"; up.size() < 20; up += "../") {
    std::ifstream file(up + name, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.size() != tile.words.size() * 2) continue;
    std::memcpy(tile.words.data(), bytes.data(), bytes.size());
    return tile;
  }
  std::minstd_rand random(1);
  for (uint32_t i = 0; i < tile.words.size(); ++i) {
    const uint32_t x = i % tile.width, y = i / tile.width;
    tile.words[i] = static_cast<uint16_t>((x / 40 * 700 + y / 30 * 500 + (x % 2 + y % 2) * 1500) % 15000 +
                                          random() % 300);
  }
  return tile;
}

struct Row {
  int64_t method;
  uint32_t depth, bayer, rgb;  // of at most 14 bits
  double target;
};

// A frame of BayerRG and the component that brings it to RGB of the same depth.
class Scene {
 public:
  explicit Scene(const Row& row)
      : sampleBytes(row.depth > 8 ? 2 : 1),
        pixels(size_t{kWidth} * kHeight * sampleBytes),
        picture(3 * pixels.size()),
        component(ZynBayer::CreateComponent()) {
    cv::setNumThreads(2);
    const Tile tile = MakeTile();
    for (size_t y = 0; y < kHeight; ++y) {
      for (size_t x = 0; x < kWidth; ++x) {
        const uint16_t word = tile.words[y % tile.height * tile.width + x % tile.width];
        const auto sample = static_cast<uint16_t>(word >> (14 - row.depth));
        std::memcpy(&pixels[(y * kWidth + x) * sampleBytes], &sample, sampleBytes);
      }
    }
    Fill(source, row.bayer, pixels, sampleBytes);
    Fill(output, row.rgb, picture, 3 * sampleBytes);
    component->GetComponent()->SetParameterInt("BayerAlgType", row.method);
    isReady = component->Init(&source, &output) == 0;
  }
  ~Scene() { ZynBayer::DeleteComponent(component); }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  bool IsReady() const { return isReady; }
  void Process(benchmark::State& state) {
    if (component->ProcessImage(&source, &output) != 0) state.SkipWithError("the component failed");
  }
  cv::Mat Matrix() {
    return cv::Mat(kHeight, kWidth, sampleBytes == 1 ? CV_8UC1 : CV_16UC1, pixels.data(),
                   kWidth * sampleBytes);
  }

 private:
  static void Fill(ZynImage& image, uint32_t pixelType, std::vector<uint8_t>& bytes, size_t pixelBytes) {
    image.structSize = sizeof image;
    image.pixelType = pixelType;
    image.width = kWidth;
    image.height = kHeight;
    image.linePitch = static_cast<uint32_t>(kWidth * pixelBytes);
    image.imageSize = static_cast<uint32_t>(bytes.size());
    image.imageData = bytes.data();
  }

  const size_t sampleBytes;
  std::vector<uint8_t> pixels, picture;
  ZynImage source{}, output{};
  ZynBayer* const component;
  bool isReady = false;
};

void Demosaic(benchmark::State& state, const Row& row) {
  Scene scene(row);
  if (!scene.IsReady()) return state.SkipWithError("this method does not exist");
  const cv::Mat source = scene.Matrix();
  cv::Mat result;
  bench::Compare(
      state, row.target, [&] { scene.Process(state); },
      // The image library names the cell by its second line, right to left: its BG is our RG.
      [&] { cv::cvtColor(source, result, cv::COLOR_BayerBG2RGB); });
}

constexpr Row Bytes(int64_t method, double target) {
  return {method, 8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_RGB8, target};
}
constexpr Row kTwelveBits = {0, 12, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_RGB12, 1.5};

}  // namespace

BENCHMARK_CAPTURE(Demosaic, method0_8bit, Bytes(0, 0.95))->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Demosaic, method0_12bit, kTwelveBits)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Demosaic, method1_8bit, Bytes(1, 1.15))->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Demosaic, method2_8bit, Bytes(2, 0.2))->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Demosaic, method3_8bit, Bytes(3, 0.06))->UseManualTime()->Unit(benchmark::kMillisecond);
