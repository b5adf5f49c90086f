#include "cpu/stages/ImageKernels.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "tests/cpu/GuardedBytes.h"
#include "tests/cpu/PixelByPixel.h"

namespace {

using namespace ImageKernels;

constexpr Step kSteps[] = {Step::kReduce, Step::kReduceSwap, Step::kReduceSpread, Step::kSwap8,
                           Step::kSwap16, Step::kSpread8,    Step::kSpread16,     Step::kCopy};

// The steps in words: how a pixel is made up before and after, and whether its samples change places.
struct Rule {
  size_t sourceSample;   // bytes of a sample
  size_t sourceSamples;  // of a pixel
  size_t targetSample;
  size_t targetSamples;
  bool turned;
};

Rule RuleOf(Step step) {
  switch (step) {
    case Step::kReduce:
      return {2, 1, 1, 1, false};
    case Step::kReduceSwap:
      return {2, 3, 1, 3, true};
    case Step::kReduceSpread:
      return {2, 1, 1, 3, false};
    case Step::kSwap8:
      return {1, 3, 1, 3, true};
    case Step::kSwap16:
      return {2, 3, 2, 3, true};
    case Step::kSpread8:
      return {1, 1, 1, 3, false};
    case Step::kSpread16:
      return {2, 1, 2, 3, false};
    case Step::kCopy:
      return {1, 1, 1, 1, false};
  }
  return {};
}

std::vector<uint8_t> ExpectedLine(Step step, const uint8_t* line, size_t width, uint32_t shift) {
  const Rule rule = RuleOf(step);
  std::vector<uint8_t> result(width * rule.targetSamples * rule.targetSample);
  uint8_t* to = result.data();
  for (size_t pixel = 0; pixel < width; ++pixel) {
    const uint8_t* const from = line + pixel * rule.sourceSamples * rule.sourceSample;
    for (size_t sample = 0; sample < rule.targetSamples; ++sample) {
      const uint8_t* const place = from + (rule.turned ? 2 - sample : 0) * rule.sourceSample;
      uint32_t value = place[0];
      if (rule.sourceSample == 2) value += place[1] * 256u;
      if (rule.sourceSample > rule.targetSample) value = std::min(value >> shift, 255u);
      *to++ = static_cast<uint8_t>(value & 255);
      if (rule.targetSample == 2) *to++ = static_cast<uint8_t>(value >> 8);
    }
  }
  return result;
}

template <typename Bytes>
void FillWithNoise(Bytes& bytes, uint32_t seed) {
  std::minstd_rand random(seed);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(random() >> 8);
}

using Form = void (*)(const Job&);

void RunPixelByPixel(const Job& job) {
  RunJobPixelByPixel(static_cast<int>(job.step), job.source, job.sourcePitch, job.target, job.targetPitch,
                     job.width, job.height, job.shift);
}

// All instruction sets of this processor, one after the other, and last the form that needs none.
class ImageKernelsOnEveryTarget : public testing::Test {
 protected:
  ~ImageKernelsOnEveryTarget() override { hwy::GetChosenTarget().Update(hwy::SupportedTargets()); }

  static void ForEachTarget(const std::function<void(Form)>& check) {
    int64_t left = hwy::SupportedTargets();
    int count = 0;
    for (; left != 0; left &= left - 1, ++count) {
      const int64_t target = left & -left;
      hwy::GetChosenTarget().Update(target);
      SCOPED_TRACE(hwy::TargetName(target));
      check(RunJob);
    }
    EXPECT_GE(count, 1);
    SCOPED_TRACE("pixel by pixel");
    check(RunPixelByPixel);
  }
};

// Both images end, or begin, at forbidden memory; what lies between the lines must stay.
void CheckLines(Form run, Step step, size_t width, size_t height, size_t sourceGap, size_t targetGap,
                uint32_t shift, GuardedBytes::Border border) {
  const PixelBytes size = BytesOf(step);
  const size_t sourcePitch = width * size.source + sourceGap;
  const size_t targetPitch = width * size.target + targetGap;
  GuardedBytes source(sourcePitch * (height - 1) + width * size.source, border);
  GuardedBytes target(targetPitch * (height - 1) + width * size.target, border);
  FillWithNoise(source, static_cast<uint32_t>(width + 7));
  std::memset(target.data(), 0xA5, target.size());

  run({step, source.data(), sourcePitch, target.data(), targetPitch, width, height, shift});
  for (size_t line = 0; line < height; ++line) {
    const auto expected = ExpectedLine(step, source.data() + line * sourcePitch, width, shift);
    const uint8_t* const actual = target.data() + line * targetPitch;
    ASSERT_EQ(0, std::memcmp(actual, expected.data(), expected.size()))
        << "step " << static_cast<int>(step) << " width " << width << " line " << line;
    if (line + 1 == height) break;
    for (size_t i = 0; i < targetGap; ++i) ASSERT_EQ(actual[expected.size() + i], 0xA5);
  }
}

TEST_F(ImageKernelsOnEveryTarget, every_width_touches_its_pixels_alone) {
  ForEachTarget([](Form run) {
    for (const Step step : kSteps) {
      for (size_t width = 1; width <= 130; ++width) {
        CheckLines(run, step, width, 2, width % 5, width % 7, 1 + width % 8, GuardedBytes::kAtEnd);
        CheckLines(run, step, width, 2, 0, 0, 4, GuardedBytes::kAtStart);
        if (HasFatalFailure()) return;
      }
    }
  });
}

TEST_F(ImageKernelsOnEveryTarget, large_images_come_out_alike) {
  ForEachTarget([](Form run) {
    for (const Step step : kSteps) {
      const PixelBytes size = BytesOf(step);
      // Some 18 MiB, several slices, lines at every address.
      const size_t width = 4099, height = (size_t{18} << 20) / (width * (size.source + size.target));
      CheckLines(run, step, width, height, 3, 5, 4, GuardedBytes::kAtEnd);
      if (HasFatalFailure()) return;
    }
  });
}

TEST_F(ImageKernelsOnEveryTarget, reduction_saturates_at_every_shift) {
  ForEachTarget([](Form run) {
    std::vector<uint16_t> words(65536);
    for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<uint16_t>(i);
    std::vector<uint8_t> bytes(words.size());
    for (uint32_t shift = 0; shift <= 15; ++shift) {
      run({Step::kReduce, reinterpret_cast<const uint8_t*>(words.data()), words.size() * 2, bytes.data(),
           bytes.size(), words.size(), 1, shift});
      for (uint32_t value = 0; value < words.size(); ++value) {
        ASSERT_EQ(bytes[value], std::min(value >> shift, 255u)) << value << " >> " << shift;
      }
    }
  });
}

TEST(ImageKernels, blocks_of_every_size_are_copied) {
  std::vector<uint8_t> source((size_t{17} << 20) + 13), target(source.size() + 1);
  FillWithNoise(source, 3);
  for (const size_t bytes : {size_t{0}, size_t{1}, size_t{4095}, size_t{1} << 19, (size_t{1} << 19) + 1,
                             (size_t{3} << 19) - 1, source.size()}) {
    std::fill(target.begin(), target.end(), 0xA5);
    CopyBlock(source.data(), target.data(), bytes);
    ASSERT_EQ(0, std::memcmp(source.data(), target.data(), bytes)) << bytes;
    ASSERT_EQ(target[bytes], 0xA5) << bytes;
  }
}

TEST(ImageKernels, an_image_without_lines_or_pixels_is_left_alone) {
  uint8_t byte = 7;
  RunJob({Step::kReduce, &byte, 0, &byte, 0, 0, 3, 4});
  RunJob({Step::kReduce, &byte, 0, &byte, 0, 3, 0, 4});
  EXPECT_EQ(byte, 7);
}

// The steps as calls of the image library: shift, convertTo, cvtColor, mixChannels.
TEST(ImageKernels, agree_with_the_image_library) {
  constexpr int kWidth = 141, kHeight = 5;
  cv::Mat deep(kHeight, 3 * kWidth, CV_16UC1);
  std::minstd_rand random(5);
  for (auto word = deep.begin<uint16_t>(); word != deep.end<uint16_t>(); ++word) {
    *word = static_cast<uint16_t>(random() >> 5);
  }
  cv::Mat shifted = deep.clone(), bytes, grey, colour, swapped(kHeight, kWidth, CV_8UC3);
  for (auto word = shifted.begin<uint16_t>(); word != shifted.end<uint16_t>(); ++word) *word >>= 4;
  shifted.convertTo(bytes, CV_8U, 1.0, 0.0);
  grey = bytes.colRange(0, kWidth).clone();
  cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
  const cv::Mat pixels(kHeight, kWidth, CV_8UC3, bytes.data, bytes.step);
  const int pairs[] = {0, 2, 1, 1, 2, 0};
  cv::mixChannels(&pixels, 1, &swapped, 1, pairs, 3);

  const auto check = [&](Step step, const cv::Mat& source, const cv::Mat& expected, size_t width) {
    cv::Mat actual(expected.size(), expected.type());
    RunJob({step, source.data, source.step, actual.data, actual.step, width, kHeight, 4});
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0) << static_cast<int>(step);
  };
  check(Step::kReduce, deep, bytes, 3 * kWidth);
  check(Step::kReduceSpread, deep, colour, kWidth);
  check(Step::kSpread8, grey, colour, kWidth);
  check(Step::kReduceSwap, deep, swapped, kWidth);
  check(Step::kSwap8, bytes, swapped, kWidth);
}

}  // namespace
