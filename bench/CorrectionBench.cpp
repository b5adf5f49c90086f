// The correction stage with active tables on 12 megapixels, in place and through its interface, against a
// plain loop over tables of 32 bits: two threads each.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"
#include "cpu/stages/CPUIPColorCorrection.h"

namespace {

constexpr size_t kWidth = 4096, kHeight = 3000;
constexpr size_t kTileWidth = 768, kTileHeight = 512;
constexpr uint32_t kTileDepth = 14;

// Samples of a sensor, red at the first place: its own values where the data lies beside the tree, else
// blocks of noisy colour.
std::vector<uint16_t> MakeTile() {
  std::vector<uint16_t> tile(kTileWidth * kTileHeight);
  const std::string name = "shared/data/sensor/d750_rose_768x512_rggb14.raw";
  for (std::string up = "../"; up.size() < 20; up += "../") {
    std::ifstream file(up + name, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.size() != tile.size() * 2) continue;
    std::memcpy(tile.data(), bytes.data(), bytes.size());
    return tile;
  }
  std::minstd_rand random(1);
  for (size_t i = 0; i < tile.size(); ++i) {
    const size_t x = i % kTileWidth, y = i / kTileWidth;
    tile[i] = static_cast<uint16_t>((x / 40 * 700 + y / 30 * 500 + (x % 2 + y % 2) * 1500) % 15000 +
                                    random() % 300);
  }
  return tile;
}

// A frame whose pixels are cells of the sensor, and a stage that corrects it.
class Scene {
 public:
  explicit Scene(uint32_t pixelType) {
    QTD::ImageCreateHeader(&frame, kWidth, kHeight, pixelType);
    samples = frame.channels;
    words.resize(frame.imageSize / 2);
    const std::vector<uint16_t> tile = MakeTile();
    for (size_t i = 0; i < words.size(); ++i) {
      const size_t sample = i % samples, x = i / samples % kWidth, y = i / samples / kWidth;
      const size_t cellX = x % (kTileWidth / 2) * 2 + (sample > 0),
                   cellY = y % (kTileHeight / 2) * 2 + sample / 2;
      const uint16_t word = tile[cellY * kTileWidth + cellX];
      words[i] = static_cast<uint16_t>(frame.bitDepth < kTileDepth ? word >> (kTileDepth - frame.bitDepth)
                                                                   : word << (frame.bitDepth - kTileDepth));
    }
    frame.imageData = static_cast<uint8_t*>(static_cast<void*>(words.data()));

    // Table of the inverse picture: a frame that is corrected in place over and over keeps its values.
    const uint32_t top = (1u << frame.bitDepth) - 1;
    for (std::vector<uint32_t>& table : tables) {
      for (uint32_t value = 0; value <= top; ++value) table.push_back(top - value);
      table.push_back(0);
    }
    for (const char* key : {"gain.r", "gain.g", "gain.b"}) stage.SetParameterDouble(key, -1);
    for (const char* key : {"offs.r", "offs.g", "offs.b"}) stage.SetParameterDouble(key, 1);
    stage.Init(&frame, nullptr);
  }

  void Process(benchmark::State& state) {
    if (stage.ProcessImage(&frame, nullptr, nullptr) != 0) state.SkipWithError("the stage failed");
  }

  void PlainLoop() {
#pragma omp parallel for num_threads(2)
    for (size_t y = 0; y < kHeight; ++y) {
      uint16_t* const line = words.data() + y * kWidth * samples;
      if (samples == 1) {
        for (size_t x = 0; x < kWidth; ++x) line[x] = static_cast<uint16_t>(tables[0][line[x]]);
      } else {
        for (size_t x = 0; x < kWidth; ++x) {
          uint16_t* const pixel = line + 3 * x;
          pixel[0] = static_cast<uint16_t>(tables[0][pixel[0]]);
          pixel[1] = static_cast<uint16_t>(tables[1][pixel[1]]);
          pixel[2] = static_cast<uint16_t>(tables[2][pixel[2]]);
        }
      }
    }
  }

 private:
  size_t samples = 1;
  std::vector<uint16_t> words;
  std::vector<uint32_t> tables[3];
  ZynImage frame{};
  CPUIPColorCorrection stage{nullptr};
};

void Correction(benchmark::State& state, uint32_t pixelType, double target) {
  Scene scene(pixelType);
  bench::Compare(
      state, target, [&] { scene.Process(state); }, [&] { scene.PlainLoop(); });
}

BENCHMARK_CAPTURE(Correction, RGB12, ZYN_PIXEL_RGB12, 1.3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Correction, RGB16, ZYN_PIXEL_RGB16, 1.3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Correction, Mono12, ZYN_PIXEL_MONO12, 1.0)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
