// The coloration's loop against a plain model.
#include "cpu/stages/ColorationKernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/cpu/GuardedBytes.h"

namespace {

using ColorationKernels::Job;
using ColorationKernels::Values;

struct Kind {
  Values values;
  const char* name;
  size_t sampleBytes;
  size_t samples;
};

constexpr Kind kKinds[] = {{Values::kByte, "byte", 1, 1},
                           {Values::kWord, "word", 2, 1},
                           {Values::kByteSum, "byte sum", 1, 3},
                           {Values::kWordSum, "word sum", 2, 3}};

constexpr uint8_t kGreen[3] = {1, 200, 3};
constexpr uint8_t kRed[3] = {210, 5, 6};

// Source and picture between forbidden pages, and the picture that the model makes.
struct Case {
  Case(const Kind& usedKind, size_t width, size_t height, size_t padding, uint32_t seed)
      : kind(usedKind),
        sourceLine(width * kind.sampleBytes * kind.samples),
        source((sourceLine + padding) * (height - 1) + sourceLine),
        picture((3 * width + padding) * (height - 1) + 3 * width) {
    std::minstd_rand random(seed);
    for (size_t n = 0; n < source.size(); ++n) {
      // Extremes are frequent.
      const uint32_t draw = static_cast<uint32_t>(random()) >> 8;
      source[n] = static_cast<uint8_t>(draw % 5 == 0 ? 0 : draw % 5 == 1 ? 255 : draw >> 4);
    }
    for (size_t n = 0; n < picture.size(); ++n) picture[n] = static_cast<uint8_t>(random() >> 8);
    job = {kind.values,
           source.data(),
           sourceLine + padding,
           picture.data(),
           3 * width + padding,
           width,
           height,
           0,
           0,
           {},
           {}};
    std::memcpy(job.lowColor, kGreen, 3);
    std::memcpy(job.highColor, kRed, 3);
  }

  int Value(size_t x, size_t y) {
    int sum = 0;
    for (size_t n = 0; n < kind.samples; ++n) {
      const uint8_t* sample = source.data() + y * job.sourcePitch + (x * kind.samples + n) * kind.sampleBytes;
      sum += kind.sampleBytes == 1 ? sample[0] : sample[0] + 256 * sample[1];
    }
    return sum;
  }

  std::vector<uint8_t> Model() {
    std::vector<uint8_t> expected(picture.data(), picture.data() + picture.size());
    for (size_t y = 0; y < job.height; ++y) {
      for (size_t x = 0; x < job.width; ++x) {
        uint8_t* pixel = &expected[y * job.picturePitch + 3 * x];
        const int value = Value(x, y);
        if (value < job.low) {
          std::memcpy(pixel, kGreen, 3);
        } else if (value > job.high) {
          std::memcpy(pixel, kRed, 3);
        }
      }
    }
    return expected;
  }

  std::vector<uint8_t> Run() {
    ColorationKernels::RunJob(job);
    return {picture.data(), picture.data() + picture.size()};
  }

  Kind kind;
  size_t sourceLine;
  GuardedBytes source, picture;
  Job job{};
};

TEST(ColorationKernels, agree_with_the_model_for_every_width_and_padded_lines) {
  for (const Kind& kind : kKinds) {
    const int most = (kind.sampleBytes == 1 ? 255 : 65535) * static_cast<int>(kind.samples);
    for (size_t width = 1; width <= 300; width += width < 130 ? 1 : 37) {
      for (const size_t padding : {size_t{0}, size_t{5}}) {
        Case one(kind, width, 3, padding, static_cast<uint32_t>(width));
        one.job.low = most / 4;
        one.job.high = most / 4 * 3;
        const std::vector<uint8_t> expected = one.Model();
        ASSERT_EQ(one.Run(), expected) << kind.name << " " << width << " " << padding;
      }
    }
  }
}

TEST(ColorationKernels, thresholds_themselves_are_not_marked) {
  for (const Kind& kind : kKinds) {
    const int most = (kind.sampleBytes == 1 ? 255 : 65535) * static_cast<int>(kind.samples);
    const int rows[][2] = {{0, most},        {1, most - 1}, {most, most},          {0, 0},
                           {most + 1, most}, {0, -1},       {INT32_MAX, INT32_MAX}};
    for (const auto& row : rows) {
      Case one(kind, 257, 4, 0, 7);
      one.job.low = row[0];
      one.job.high = row[1];
      const std::vector<uint8_t> expected = one.Model();
      ASSERT_EQ(one.Run(), expected) << kind.name << " " << row[0] << " " << row[1];
    }
  }
}

TEST(ColorationKernels, a_value_outside_both_thresholds_takes_the_low_colour) {
  Case one(kKinds[0], 5, 1, 0, 1);
  std::memset(one.source.data(), 100, 5);
  one.job.low = 101;
  one.job.high = 99;
  EXPECT_EQ(one.Run()[0], kGreen[0]);
}

TEST(ColorationKernels, may_read_from_the_picture_itself) {
  Case one(kKinds[2], 500, 3, 0, 9);
  std::memcpy(one.picture.data(), one.source.data(), one.picture.size());
  one.job.low = 200;
  one.job.high = 500;
  const std::vector<uint8_t> expected = one.Model();
  one.job.source = one.picture.data();
  EXPECT_EQ(one.Run(), expected);
}

TEST(ColorationKernels, large_images_are_marked_whole) {
  Case one(kKinds[1], 1500, 900, 2, 3);  // several slices
  one.job.low = 9000;
  one.job.high = 50000;
  const std::vector<uint8_t> expected = one.Model();
  EXPECT_EQ(one.Run(), expected);
}

}  // namespace
