// What a frame costs the host, and what a running display holds in memory.
#include <malloc.h>

#include <QApplication>
#include <QWidget>
#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>
#include <vector>

#include "QTD/display/QTDDisplay.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"

namespace {

constexpr uint32_t kWidth = 4096, kHeight = 3000;  // 12 megapixels

ZynImage Record(uint32_t pixelType, std::vector<uint8_t>& pixels) {
  ZynImage record{};
  record.structSize = 96;
  record.pixelType = pixelType;
  record.width = kWidth;
  record.height = kHeight;
  record.linePitch = kWidth * ((pixelType >> 16) & 0xFF) / 8;
  record.imageSize = record.linePitch * kHeight;
  pixels.resize(record.imageSize, 0x11);
  record.imageData = pixels.data();
  return record;
}

// Runs the event loop until nothing is left to do.
void Idle() {
  for (int i = 0; i < 3; ++i) QApplication::processEvents();
}

// "speedup" is memcpy's time over ours: 1 / 1.15 at least.
void DisplayVideo(benchmark::State& state, uint32_t pixelType) {
  QWidget parent;
  parent.resize(1000, 750);
  parent.show();
  QTDDisplay display(&parent, false);
  std::vector<uint8_t> pixels;
  const ZynImage record = Record(pixelType, pixels);
  display.Initialize(&record);
  std::vector<uint8_t> copy[2] = {pixels, pixels};
  int turn = 0;

  std::vector<double> ours, peer;
  for (int i = 0; i < 3; ++i) {
    display.DisplayVideo(&record);
    Idle();
  }
  for (auto _ : state) {
    ours.push_back(bench::TimeOf([&] { display.DisplayVideo(&record); }));
    state.SetIterationTime(ours.back());
    // The GUI thread processes and draws the frame, and is idle again when the next one comes. A plain copy
    // that takes turns between two buffers, as ours does, runs after the same work.
    Idle();
    display.DisplayVideo(&record);
    Idle();
    turn = 1 - turn;
    peer.push_back(bench::TimeOf([&] { std::memcpy(copy[turn].data(), pixels.data(), pixels.size()); }));
    benchmark::ClobberMemory();
  }
  state.counters["ours_ms"] = bench::Median(ours) * 1e3;
  state.counters["peer_ms"] = bench::Median(peer) * 1e3;
  state.counters["speedup"] = bench::Median(peer) / bench::Median(ours);
  state.counters["target"] = 1 / 1.15;
}

double ResidentMegabytes() {
  std::ifstream status("/proc/self/statm");
  double total = 0, resident = 0;
  status >> total >> resident;
  return resident * 4096 / 1e6;
}

// What a running 12-megapixel Mono12 display adds to the process. The two frame buffers (49 MB), the stage's
// 16-bit picture (25 MB) and the window's colour picture (37 MB) cannot be less than 111 MB.
void ResidentMemory(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<uint8_t> pixels;
    const ZynImage record = Record(ZYN_PIXEL_MONO12, pixels);
    malloc_trim(0);
    const double before = ResidentMegabytes();
    QWidget parent;
    parent.resize(1000, 750);
    parent.show();
    QTDDisplay display(&parent, false);
    display.Initialize(&record);
    for (int i = 0; i < 10; ++i) {
      display.DisplayVideo(&record);
      Idle();
    }
    state.counters["resident_MB"] = ResidentMegabytes() - before;
    state.counters["frame_MB"] = record.imageSize / 1e6;
  }
}

}  // namespace

BENCHMARK_CAPTURE(DisplayVideo, Mono8_against_memcpy, ZYN_PIXEL_MONO8)
    ->UseManualTime()
    ->Iterations(60)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DisplayVideo, Mono16_against_memcpy, ZYN_PIXEL_MONO16)
    ->UseManualTime()
    ->Iterations(60)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ResidentMemory)->Name("ResidentMemory/Mono12")->Iterations(1)->Unit(benchmark::kMillisecond);
