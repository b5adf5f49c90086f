// The unpack stage on 12 megapixels, through its interface: against a copy of as many bytes as it reads and
// writes, and against the loop that a user would write.
#include <cstring>
#include <random>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"
#include "cpu/stages/CPUIPUnpack.h"

// The plain loops are compiled as in an ordinary program.
#if defined(__GNUC__) && !defined(__clang__)
#define ZYN_PLAIN_LOOP [[gnu::noinline, gnu::optimize("O2")]]
#else
#define ZYN_PLAIN_LOOP [[gnu::noinline]]
#endif

namespace {

constexpr uint32_t kWidth = 4096, kHeight = 3000;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

// A frame of noise, a stage for it, and memory for the peers.
class Scene {
 public:
  explicit Scene(uint32_t pixelType) : words(kPixels) {
    QTD::ImageCreateHeader(&frame, kWidth, kHeight, pixelType);
    packed.resize(frame.imageSize);
    std::minstd_rand random(1);
    for (uint8_t& byte : packed) byte = static_cast<uint8_t>(random() >> 8);
    frame.imageData = packed.data();
    stage.Init(&frame, nullptr);
  }

  void Process(benchmark::State& state) {
    if (stage.ProcessImage(&frame, nullptr, nullptr) != 0) state.SkipWithError("the stage failed");
    benchmark::ClobberMemory();
  }

  std::vector<uint8_t> packed;
  std::vector<uint16_t> words;

 private:
  ZynImage frame{};
  CPUIPUnpack stage{nullptr};
};

ZYN_PLAIN_LOOP void Unpack10p(const uint8_t* from, uint16_t* to, size_t pixels) {
  for (size_t i = 0; i < pixels; i += 4, from += 5, to += 4) {
    to[0] = static_cast<uint16_t>((from[1] & 0x03) << 8 | from[0]);
    to[1] = static_cast<uint16_t>((from[2] & 0x0F) << 6 | from[1] >> 2);
    to[2] = static_cast<uint16_t>((from[3] & 0x3F) << 4 | from[2] >> 4);
    to[3] = static_cast<uint16_t>(from[4] << 2 | from[3] >> 6);
  }
}

ZYN_PLAIN_LOOP void Unpack12p(const uint8_t* from, uint16_t* to, size_t pixels) {
  for (size_t i = 0; i < pixels; i += 2, from += 3, to += 2) {
    to[0] = static_cast<uint16_t>((from[1] & 0x0F) << 8 | from[0]);
    to[1] = static_cast<uint16_t>(from[2] << 4 | from[1] >> 4);
  }
}

ZYN_PLAIN_LOOP void Unpack10Packed(const uint8_t* from, uint16_t* to, size_t pixels) {
  for (size_t i = 0; i < pixels; i += 2, from += 3, to += 2) {
    to[0] = static_cast<uint16_t>(from[0] << 2 | (from[1] & 0x03));
    to[1] = static_cast<uint16_t>(from[2] << 2 | (from[1] >> 4 & 0x03));
  }
}

ZYN_PLAIN_LOOP void Unpack12Packed(const uint8_t* from, uint16_t* to, size_t pixels) {
  for (size_t i = 0; i < pixels; i += 2, from += 3, to += 2) {
    to[0] = static_cast<uint16_t>(from[0] << 4 | (from[1] & 0x0F));
    to[1] = static_cast<uint16_t>(from[2] << 4 | from[1] >> 4);
  }
}

struct Row {
  const char* name;
  uint32_t pixelType;
  void (*plainLoop)(const uint8_t* from, uint16_t* to, size_t pixels);
};

constexpr Row kRows[] = {
    {"Mono10p", ZYN_PIXEL_MONO10P, Unpack10p},
    {"Mono12p", ZYN_PIXEL_MONO12P, Unpack12p},
    {"Mono10Packed", ZYN_PIXEL_MONO10PACKED, Unpack10Packed},
    {"Mono12Packed", ZYN_PIXEL_MONO12PACKED, Unpack12Packed},
};

// A copy reads and writes each of its bytes: half as many of them make the same traffic.
void AgainstCopy(benchmark::State& state, const Row& row) {
  Scene scene(row.pixelType);
  const size_t bytes = (scene.packed.size() + kPixels * sizeof(uint16_t)) / 2;
  const std::vector<uint8_t> source(bytes, 1);
  std::vector<uint8_t> target(bytes, 2);
  bench::Compare(
      state, 0.95, [&] { scene.Process(state); },
      [&] {
        std::memcpy(target.data(), source.data(), bytes);
        benchmark::ClobberMemory();
      });
}

void AgainstPlainLoop(benchmark::State& state, const Row& row) {
  Scene scene(row.pixelType);
  bench::Compare(
      state, 2, [&] { scene.Process(state); },
      [&] {
        row.plainLoop(scene.packed.data(), scene.words.data(), kPixels);
        benchmark::ClobberMemory();
      });
}

void Register(const char* suffix, void (*run)(benchmark::State&, const Row&)) {
  for (const Row& row : kRows) {
    const std::string name = std::string("Unpack/") + row.name + suffix;
    benchmark::RegisterBenchmark(name.c_str(), [run, &row](benchmark::State& state) { run(state, row); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

[[maybe_unused]] const bool registered = [] {
  Register("_memcpy", AgainstCopy);
  Register("_scalar", AgainstPlainLoop);
  return true;
}();

}  // namespace
