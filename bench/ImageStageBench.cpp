// The image stage on 12 megapixels, through its interface, against the calls of the image library that a user
// would write: two threads each, results in images that are kept.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"
#include "cpu/stages/CPUIPImage.h"

namespace {

constexpr uint32_t kWidth = 4096, kHeight = 3000;

// A frame of samples that use the whole of 12 bits, and a stage that brings it to RGB8.
class Scene {
 public:
  explicit Scene(uint32_t pixelType) {
    cv::setNumThreads(2);
    QTD::ImageCreateHeader(&frame, kWidth, kHeight, pixelType);
    words.resize(frame.imageSize / 2);
    std::minstd_rand random(1);
    for (uint16_t& word : words) word = static_cast<uint16_t>(random() >> 8 & 0xFFF);
    frame.imageData = static_cast<uint8_t*>(static_cast<void*>(words.data()));
    ZynImage output{};
    QTD::ImageCreateHeader(&output, kWidth, kHeight, ZYN_PIXEL_RGB8);
    stage.Init(&frame, &output);
  }

  void Process(benchmark::State& state) {
    if (stage.ProcessImage(&frame, nullptr, nullptr) != 0) state.SkipWithError("the stage failed");
  }
  cv::Mat Matrix(int type) { return cv::Mat(kHeight, kWidth, type, words.data(), frame.linePitch); }

 private:
  std::vector<uint16_t> words;
  ZynImage frame{};
  CPUIPImage stage{nullptr};
};

void Rgb12ToRgb8(benchmark::State& state) {
  Scene scene(ZYN_PIXEL_RGB12);
  const cv::Mat source = scene.Matrix(CV_16UC3);
  cv::Mat result;
  bench::Compare(
      state, 2.2, [&] { scene.Process(state); }, [&] { source.convertTo(result, CV_8UC3, 1 / 16.0); });
}

void Mono12ToRgb8(benchmark::State& state) {
  Scene scene(ZYN_PIXEL_MONO12);
  const cv::Mat source = scene.Matrix(CV_16UC1);
  cv::Mat grey, result;
  bench::Compare(
      state, 2.6, [&] { scene.Process(state); },
      [&] {
        source.convertTo(grey, CV_8U, 1 / 16.0);
        cv::cvtColor(grey, result, cv::COLOR_GRAY2RGB);
      });
}

BENCHMARK(Rgb12ToRgb8)->Name("ImageStage/RGB12_to_RGB8")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Mono12ToRgb8)->Name("ImageStage/Mono12_to_RGB8")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
