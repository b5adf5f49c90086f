#include "cpu/stages/UnpackKernels.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "tests/cpu/GroupByGroup.h"
#include "tests/cpu/GuardedBytes.h"

namespace {

using namespace UnpackKernels;

constexpr Packing kPackings[] = {Packing::kMono10g, Packing::kMono12g, Packing::kMono10p, Packing::kMono12p};
constexpr uint16_t kUntouched = 0xA5A5;

// The bytes of a source, and zeros behind them.
class Source {
 public:
  Source(const uint8_t* data, size_t bytes) : first(data), count(bytes) {}
  uint32_t operator[](size_t offset) const { return offset < count ? first[offset] : 0; }

 private:
  const uint8_t* first;
  size_t count;
};

// Sample `x` of a run of groups that begins at byte `start`.
uint16_t SampleOf(Packing packing, const Source& b, size_t start, size_t x) {
  uint32_t value = 0;
  const bool second = x % 2 != 0;
  const size_t group = start + x / 2 * 3;
  switch (packing) {
    case Packing::kMono10g:
      value = second ? b[group + 2] << 2 | (b[group + 1] >> 4 & 0x03) : b[group] << 2 | (b[group + 1] & 0x03);
      break;
    case Packing::kMono12g:
      value = second ? b[group + 2] << 4 | b[group + 1] >> 4 : b[group] << 4 | (b[group + 1] & 0x0F);
      break;
    case Packing::kMono12p:
      value = second ? b[group + 2] << 4 | b[group + 1] >> 4 : (b[group + 1] & 0x0F) << 8 | b[group];
      break;
    case Packing::kMono10p: {
      const size_t at = start + x / 4 * 5;
      const uint32_t values[] = {(b[at + 1] & 0x03) << 8 | b[at], (b[at + 2] & 0x0F) << 6 | b[at + 1] >> 2,
                                 (b[at + 3] & 0x3F) << 4 | b[at + 2] >> 4, b[at + 4] << 2 | b[at + 3] >> 6};
      value = values[x % 4];
      break;
    }
  }
  return static_cast<uint16_t>(value);
}

size_t ExpectedLineBytes(Packing packing, size_t width) {
  switch (packing) {
    case Packing::kMono10g:
    case Packing::kMono12g:
      return (3 * width + 1) / 2;
    case Packing::kMono10p:
      return 5 * width / 4;
    case Packing::kMono12p:
      return 3 * width / 2;
  }
  return 0;
}

struct Size {
  size_t width, height, gap;  // `gap`: words between the lines of the target
  size_t Pitch() const { return width + gap; }
};

// The whole target, with what lies between its lines.
std::vector<uint16_t> Expected(Packing packing, const Source& source, const Size& size) {
  std::vector<uint16_t> words(size.Pitch() * (size.height - 1) + size.width, kUntouched);
  const bool oneStream = packing == Packing::kMono12p && size.width % 4 != 0;
  for (size_t line = 0; line < size.height; ++line) {
    for (size_t x = 0; x < size.width; ++x) {
      words[line * size.Pitch() + x] =
          oneStream ? SampleOf(packing, source, 0, line * size.width + x)
                    : SampleOf(packing, source, line * ExpectedLineBytes(packing, size.width), x);
    }
  }
  return words;
}

size_t WholeBytes(Packing packing, const Size& size) {
  // At least one group, without which a stream is left alone.
  if (packing == Packing::kMono12p) return std::max<size_t>(3, (size.width * size.height * 12 + 7) / 8);
  return ExpectedLineBytes(packing, size.width) * size.height;
}

using Form = void (*)(const Job&);

void RunGroupByGroup(const Job& job) {
  RunJobGroupByGroup(static_cast<int>(job.packing), job.source, job.sourceBytes, job.target, job.targetPitch,
                     job.width, job.height);
}

// The target ends, or begins, at forbidden memory.
void CheckAgainst(Form run, const std::vector<uint16_t>& expected, Packing packing, const Size& size,
                  GuardedBytes& source, GuardedBytes::Border border) {
  GuardedBytes target(expected.size() * 2, border);
  const auto words = static_cast<uint16_t*>(static_cast<void*>(target.data()));
  std::fill_n(words, expected.size(), kUntouched);
  run({packing, source.data(), source.size(), words, size.Pitch(), size.width, size.height});
  const auto unequal = std::mismatch(expected.begin(), expected.end(), words);
  ASSERT_EQ(unequal.first, expected.end())
      << "packing " << static_cast<int>(packing) << ", " << size.width << "x" << size.height << " of "
      << source.size() << " bytes, word " << unequal.first - expected.begin();
}

void Check(Form run, Packing packing, const Size& size, GuardedBytes& source, GuardedBytes::Border border) {
  CheckAgainst(run, Expected(packing, Source(source.data(), source.size()), size), packing, size, source,
               border);
}

void FillWithNoise(GuardedBytes& bytes, size_t seed) {
  std::minstd_rand random(static_cast<uint32_t>(seed + 1));
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(random() >> 8);
}

void CheckNoise(Form run, Packing packing, const Size& size, size_t sourceBytes,
                GuardedBytes::Border border = GuardedBytes::kAtEnd) {
  GuardedBytes source(sourceBytes, border);
  FillWithNoise(source, size.width);
  Check(run, packing, size, source, border);
}

// All instruction sets of this processor, one after the other, and last the form that needs none.
class UnpackKernelsOnEveryTarget : public testing::Test {
 protected:
  ~UnpackKernelsOnEveryTarget() override { hwy::GetChosenTarget().Update(hwy::SupportedTargets()); }

  static void ForEachTarget(const std::function<void(Form)>& check) {
    int64_t left = hwy::SupportedTargets();
    ASSERT_NE(left, 0);
    for (; left != 0; left &= left - 1) {
      const int64_t target = left & -left;
      hwy::GetChosenTarget().Update(target);
      SCOPED_TRACE(hwy::TargetName(target));
      check(RunJob);
    }
    SCOPED_TRACE("group by group");
    check(RunGroupByGroup);
  }
};

TEST_F(UnpackKernelsOnEveryTarget, every_width_touches_its_samples_alone) {
  ForEachTarget([](Form run) {
    for (const Packing packing : kPackings) {
      for (size_t width = 1; width <= 130; ++width) {
        for (size_t height = 1; height <= 3; ++height) {
          const Size tight{width, height, 0}, wide{width, height, 1 + width % 9};
          CheckNoise(run, packing, tight, WholeBytes(packing, tight));
          CheckNoise(run, packing, tight, WholeBytes(packing, tight), GuardedBytes::kAtStart);
          CheckNoise(run, packing, wide, WholeBytes(packing, wide) + width % 20);
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST_F(UnpackKernelsOnEveryTarget, bytes_behind_the_source_count_as_zero) {
  ForEachTarget([](Form run) {
    for (const Packing packing : kPackings) {
      for (const size_t width : {1u, 2u, 3u, 4u, 5u, 15u, 16u, 17u, 40u, 43u, 64u}) {
        const Size size{width, 3, 2};
        const size_t least = IsOneStream(packing, width) ? 3 : 0;
        for (size_t bytes = least; bytes <= WholeBytes(packing, size); ++bytes) {
          CheckNoise(run, packing, size, bytes);
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST_F(UnpackKernelsOnEveryTarget, extremes_come_out_whole) {
  ForEachTarget([](Form run) {
    for (const Packing packing : kPackings) {
      for (const size_t width : {64u, 67u}) {
        const Size size{width, 2, 0};
        for (const int fill : {0x00, 0xFF, 0x55, 0xAA, 0x0F, 0xF0}) {
          GuardedBytes source(WholeBytes(packing, size) + 1);
          std::fill_n(source.data(), source.size(), static_cast<uint8_t>(fill));
          Check(run, packing, size, source, GuardedBytes::kAtEnd);
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

// Each bit alone lands in one bit of one sample, or, of the middle bytes, in none.
TEST_F(UnpackKernelsOnEveryTarget, every_bit_has_its_place) {
  ForEachTarget([](Form run) {
    for (const Packing packing : kPackings) {
      const Size size{16, 1, 0};
      const size_t bytes = WholeBytes(packing, size);
      for (size_t bit = 0; bit < bytes * 8; ++bit) {
        GuardedBytes source(bytes);
        std::fill_n(source.data(), bytes, uint8_t{0});
        source[bit / 8] = static_cast<uint8_t>(1 << bit % 8);
        Check(run, packing, size, source, GuardedBytes::kAtEnd);
        if (HasFatalFailure()) return;
      }
    }
  });
}

// Several slices; beyond 16 MiB the result is stored past the caches, from words at every address on.
TEST_F(UnpackKernelsOnEveryTarget, large_images_come_out_alike) {
  for (const Packing packing : kPackings) {
    for (const Size size :
         {Size{4096, 1300, 0}, Size{4099, 1300, 3}, Size{4094, 1300, 2}, Size{6, 950000, 0}}) {
      GuardedBytes source(WholeBytes(packing, size));
      FillWithNoise(source, size.width);
      const auto expected = Expected(packing, Source(source.data(), source.size()), size);
      ForEachTarget(
          [&](Form run) { CheckAgainst(run, expected, packing, size, source, GuardedBytes::kAtEnd); });
      if (HasFatalFailure()) return;
    }
  }
}

TEST(UnpackKernels, lines_have_the_bytes_of_their_layout) {
  EXPECT_EQ(LineBytes(Packing::kMono10g, 100), 150u);
  EXPECT_EQ(LineBytes(Packing::kMono12g, 101), 152u);  // rounded up
  EXPECT_EQ(LineBytes(Packing::kMono10p, 100), 125u);
  EXPECT_EQ(LineBytes(Packing::kMono10p, 103), 128u);  // cut off
  EXPECT_EQ(LineBytes(Packing::kMono12p, 100), 150u);
  for (const Packing packing : kPackings) {
    EXPECT_EQ(IsOneStream(packing, 102), packing == Packing::kMono12p);
    EXPECT_FALSE(IsOneStream(packing, 104));
  }
}

// What a cut-off line lacks lies in the next line.
TEST(UnpackKernels, the_last_samples_of_a_cut_off_line_reach_into_the_next) {
  const uint8_t bytes[] = {0x01, 0x02, 0x03};  // width 1: one byte a line
  uint16_t words[3] = {};
  RunJob({Packing::kMono10p, bytes, 3, words, 1, 1, 3});
  EXPECT_EQ(words[0], 0x201);
  EXPECT_EQ(words[1], 0x302);
  EXPECT_EQ(words[2], 0x003);
}

TEST(UnpackKernels, missing_bytes_of_a_stream_are_zero) {
  const uint8_t bytes[] = {0xFF, 0xFF, 0xFF};
  const uint16_t expected[] = {0, 0x0FF, 0xFFF, 0xFFF};
  for (size_t count = 0; count <= 3; ++count) {
    uint16_t word = kUntouched;
    RunJob({Packing::kMono12p, bytes, count, &word, 1, 1, 1});
    EXPECT_EQ(word, expected[count]);
  }
}

TEST(UnpackKernels, an_image_without_lines_or_samples_is_left_alone) {
  const uint8_t bytes[8] = {};
  for (const Packing packing : kPackings) {
    uint16_t word = kUntouched;
    RunJob({packing, bytes, 8, &word, 0, 0, 3});
    RunJob({packing, bytes, 8, &word, 5, 5, 0});
    EXPECT_EQ(word, kUntouched);
  }
}

}  // namespace
