#include "cpu/screen/RgbLine.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

// Bytes whose last one lies right before memory that cannot be read.
class FencedBytes {
 public:
  explicit FencedBytes(size_t count) : page(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    mapped = (count + page - 1) / page * page + page;
    void* memory = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    block = static_cast<uint8_t*>(memory);
    mprotect(block + mapped - page, page, PROT_NONE);
    data = block + mapped - page - count;
    std::minstd_rand random(7);
    for (size_t i = 0; i < count; ++i) data[i] = static_cast<uint8_t>(random() >> 8);
  }
  ~FencedBytes() { munmap(block, mapped); }
  FencedBytes(const FencedBytes&) = delete;
  FencedBytes& operator=(const FencedBytes&) = delete;

  uint8_t* data;

 private:
  size_t page;
  size_t mapped;
  uint8_t* block;
};

uint32_t PixelOf(const uint8_t* rgb) {
  return 0xff000000u + rgb[0] * 0x10000u + rgb[1] * 0x100u + rgb[2];
}

constexpr uint32_t kGuard = 0x5a5a5a5a;

}  // namespace

TEST(RgbLine, converts_every_length_for_every_processor_and_reads_no_further) {
  std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
  ASSERT_FALSE(targets.empty());
  for (const int64_t target : targets) {
    hwy::SetSupportedTargetsForTest(target);
    for (size_t count = 0; count < 300; ++count) {
      const FencedBytes line(3 * count);
      std::vector<uint32_t> pixels(count + 1, kGuard);
      ConvertRgbLine(line.data, pixels.data(), count);
      for (size_t i = 0; i < count; ++i)
        ASSERT_EQ(pixels[i], PixelOf(line.data + 3 * i)) << count << " at " << i;
      ASSERT_EQ(pixels[count], kGuard);
    }
  }
  hwy::SetSupportedTargetsForTest(0);
}

TEST(RgbLine, gathers_the_pixels_at_the_offsets_and_reads_no_further) {
  const size_t width = 50;
  const FencedBytes line(3 * width);
  std::vector<uint32_t> offsets;
  for (uint32_t x = 0; x < width; x += 3) offsets.insert(offsets.end(), 2, 3 * x);
  offsets.insert(offsets.end(), 3, 3 * (width - 1));
  const size_t roomy = offsets.size() - 3;
  std::vector<uint32_t> pixels(offsets.size() + 1, kGuard);
  GatherRgbLine(line.data, line.data, offsets.data(), pixels.data(), roomy, offsets.size());
  for (size_t i = 0; i < offsets.size(); ++i) ASSERT_EQ(pixels[i], PixelOf(line.data + offsets[i])) << i;
  EXPECT_EQ(pixels.back(), kGuard);
}
