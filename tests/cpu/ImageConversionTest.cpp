// Every pair of formats through the stage, against the steps in plain words.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cpu/stages/CPUIPImage.h"
#include "tests/cpu/StagePicture.h"

namespace {

// What the test knows of a format comes from its name alone.
struct Format {
  std::string name;
  uint32_t code;
  bool mono, bgr, colour;
  uint32_t depth, channels;

  explicit Format(const std::string& formatName)
      : name(formatName),
        code(QTD::FindPixelRowByName(formatName.c_str())->code),
        mono(name.rfind("Mono", 0) == 0),
        bgr(name.rfind("BGR", 0) == 0),
        colour(bgr || name.rfind("RGB", 0) == 0),
        depth(static_cast<uint32_t>(std::stoul(name.substr(name.find_first_of("0123456789"))))),
        channels(colour ? 3 : 1) {}
};

std::vector<Format> Formats() {
  std::vector<Format> formats;
  for (const char* family : {"Mono", "RGB", "BGR", "BayerGR", "BayerBG"}) {
    for (const char* depth : {"8", "10", "12", "14", "16"}) formats.emplace_back(std::string(family) + depth);
  }
  return formats;
}

// One line of samples through the three steps.
struct Model {
  bool reduce, toColour, swap;

  Model(const Format& source, const Format& target)
      : reduce(source.depth > 8 && target.depth == 8),
        toColour(source.mono && target.colour),
        swap(source.bgr != target.bgr) {}

  bool Converts() const { return reduce || toColour || swap; }
  bool Possible(const Format& source, const Format& target) const {
    if (target.channels < source.channels) return false;
    if (source.depth == 8 && target.depth > 8) return false;  // there is no scale for it
    return toColour || !swap || source.channels == 3;         // nothing to swap in a pixel of one sample
  }

  std::vector<uint32_t> Line(std::vector<uint32_t> samples, uint32_t depth) const {
    if (reduce) {
      for (uint32_t& sample : samples) sample = std::min(sample >> (depth - 8), 255u);
    }
    if (toColour) {
      std::vector<uint32_t> colour;
      for (const uint32_t sample : samples) colour.insert(colour.end(), 3, sample);
      return colour;
    }
    if (swap) {
      for (size_t i = 0; i < samples.size(); i += 3) std::swap(samples[i], samples[i + 2]);
    }
    return samples;
  }
};

// The bytes of the result as they lie in a picture that was zero before. Lines are full, but for one case:
// the reduction alone takes each line as a row of samples, whatever the channels of the target.
std::vector<uint8_t> Expected(const StagePicture& picture, const Format& source, const Format& target,
                              const Model& model) {
  const size_t width = picture.record.width, sampleBytes = source.depth > 8 ? 2 : 1;
  const bool words = source.depth > 8 && target.depth > 8;
  const size_t lineBytes = width * target.channels * (target.depth > 8 ? 2 : 1);
  std::vector<uint8_t> result;
  for (size_t line = 0; line < picture.record.height; ++line) {
    std::vector<uint32_t> samples;
    for (size_t i = 0; i < width * source.channels; ++i) {
      const uint8_t* const place =
          picture.record.imageData + line * picture.record.linePitch + i * sampleBytes;
      samples.push_back(sampleBytes == 1 ? place[0] : place[0] + 256u * place[1]);
    }
    std::vector<uint8_t> bytes;
    for (const uint32_t sample : model.Line(samples, source.depth)) {
      bytes.push_back(static_cast<uint8_t>(sample & 255));
      if (words) bytes.push_back(static_cast<uint8_t>(sample >> 8));
    }
    const bool reducedAlone = model.reduce && !model.toColour && !model.swap;
    EXPECT_TRUE(reducedAlone || bytes.size() == lineBytes);
    bytes.resize(lineBytes, 0);
    result.insert(result.end(), bytes.begin(), bytes.end());
  }
  return result;
}

class EveryFormatPair : public testing::TestWithParam<uint32_t> {};

TEST_P(EveryFormatPair, comes_out_as_the_steps_say) {
  const uint32_t width = GetParam();
  for (const Format& source : Formats()) {
    const StagePicture picture(source.code, width, 3, 0, width);
    for (const Format& target : Formats()) {
      SCOPED_TRACE(source.name + " to " + target.name);
      const Model model(source, target);
      const StagePicture header(target.code, width, 3);
      CPUIPImage stage(nullptr);
      ASSERT_EQ(stage.Init(&picture.record, &header.record), 0u);
      const uint32_t result = stage.ProcessImage(&picture.record, nullptr, nullptr);
      ASSERT_NE(stage.Out(), nullptr);
      if (!model.Converts()) {
        ASSERT_EQ(result, 0u);
        ASSERT_EQ(stage.Out()->pixelType, source.code);
        ASSERT_EQ(PixelsOf(*stage.Out()), PixelsOf(picture.record));
        continue;
      }
      ASSERT_EQ(stage.Out()->pixelType, target.code);
      if (model.Possible(source, target)) {
        ASSERT_EQ(result, 0u);
        ASSERT_EQ(PixelsOf(*stage.Out()), Expected(picture, source, target, model));
      } else {
        ASSERT_EQ(result, 0x80FF0001u);
        const auto pixels = PixelsOf(*stage.Out());
        ASSERT_EQ(std::count(pixels.begin(), pixels.end(), 0), static_cast<ptrdiff_t>(pixels.size()));
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Widths, EveryFormatPair, testing::Range(1u, 71u));

// Lines of any pitch, in memory that ends with the last one, into a caller's image of any pitch.
TEST(ImageConversion, every_width_stays_within_both_images) {
  struct Case {
    const char *source, *target;
  };
  for (const Case& pair : {Case{"Mono12", "RGB8"}, Case{"RGB12", "RGB8"}, Case{"RGB10", "BGR8"},
                           Case{"BGR8", "RGB8"}, Case{"BGR16", "RGB12"}, Case{"Mono8", "RGB8"},
                           Case{"Mono10", "RGB12"}, Case{"Mono16", "Mono8"}, Case{"Mono8", "Mono8"}}) {
    const Format source(pair.source), target(pair.target);
    const Model model(source, target);
    for (uint32_t width = 1; width <= 130; ++width) {
      SCOPED_TRACE(source.name + " to " + target.name + ", width " + std::to_string(width));
      for (const auto border : {GuardedBytes::kAtEnd, GuardedBytes::kAtStart}) {
        const StagePicture picture(source.code, width, 2, 0, width, border);
        StagePicture output(target.code, width, 2, 0, 1, border);
        std::fill_n(output.record.imageData, output.record.imageSize, uint8_t{0});
        CPUIPImage stage(nullptr);
        stage.SetParameterBool("external", 1);
        ASSERT_EQ(stage.Init(&picture.record, &output.record), 0u);
        ASSERT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), 0u);
        ASSERT_EQ(stage.Out(), &output.record);
        ASSERT_EQ(PixelsOf(output.record), Expected(picture, source, target, model));
      }
    }
  }
}

// A host's own pitches, odd ones among them.
TEST(ImageConversion, each_image_has_its_own_pitch) {
  const Format source("Mono8"), target("RGB8");
  for (const uint32_t gap : {0u, 1u, 2u, 3u, 61u}) {
    SCOPED_TRACE(gap);
    const StagePicture picture(source.code, 33, 4, 33 + gap);
    const StagePicture prepared(target.code, 33, 4);
    CPUIPImage stage(nullptr);
    ASSERT_EQ(stage.Init(&picture.record, &prepared.record), 0u);
    ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
    ASSERT_EQ(PixelsOf(*stage.Out()), Expected(picture, source, target, Model(source, target)));
  }
}

TEST(ImageConversion, a_deep_source_may_have_narrower_lines_than_prepared_but_not_wider_ones) {
  const Format source("Mono12"), target("RGB8");
  const StagePicture usual(source.code, 33, 4);  // 66 bytes of pixels, a pitch of 68
  const StagePicture narrow(source.code, 33, 4, 66), wide(source.code, 33, 4, 72);
  const StagePicture header(target.code, 33, 4);
  CPUIPImage stage(nullptr);
  ASSERT_EQ(stage.Init(&usual.record, &header.record), 0u);
  ASSERT_EQ(stage.ProcessImage(&narrow.record, nullptr, nullptr), 0u);
  EXPECT_EQ(PixelsOf(*stage.Out()), Expected(narrow, source, target, Model(source, target)));
  EXPECT_EQ(stage.ProcessImage(&wide.record, nullptr, nullptr), 0x80FF0001u);
}

}  // namespace
