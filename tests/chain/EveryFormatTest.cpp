// The chain for each of the 133 pixel formats: which stages it gets, and what becomes of a flat picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "support/FlatScene.h"

using chain_test::Picture;
using flat_scene::FlatResult;
using flat_scene::FlatScene;
using flat_scene::Kind;

namespace {

constexpr uint32_t kFailed = 0x80FF0001;
constexpr uint32_t kWidth = 8, kHeight = 4;

std::string StagesOf(const Kind& kind) {
  std::string names;
  if (kind.uyvy) names += "yuv2rgb ";
  if (kind.lsb || kind.packed) names += "unpack ";
  names += "image.unpacked ";
  if (kind.bayer) names += "bayer ";
  return names + "image.colorcorrection image.overlay image.output ";
}

std::string Names(QTDProcessor& chain) {
  std::string names;
  for (int index = 0; index < chain.GetProcessorCount(); ++index)
    names += std::string(chain.Stages().NameAt(index)) + " ";
  return names;
}

std::string FormatAfter(const std::string& name, const Kind& kind) {
  if (kind.uyvy) return "RGB8";
  if (kind.bayer) return "RGB" + std::to_string(kind.depth);
  if (kind.mono) return "Mono" + std::to_string(kind.depth);
  return name;
}

uint32_t SampleOf(const ZynImage& image, uint32_t index, uint32_t y) {
  const uint8_t* const line = image.imageData + y * image.linePitch;
  if (image.bitDepth == 8) return line[index];
  return line[2 * index] | line[2 * index + 1] << 8;
}

struct EveryFormat : testing::TestWithParam<uint32_t> {
  const QTD::PixelRow& Row() const { return *QTD::FindPixelRow(GetParam()); }
};

std::string NameOf(const testing::TestParamInfo<uint32_t>& format) {
  return QTD::FindPixelRow(format.param)->name;
}

}  // namespace

TEST_P(EveryFormat, gets_the_stages_that_its_pixels_need) {
  const Kind kind(Row().name);
  QTDProcessor chain(nullptr, false);
  const Picture format(kWidth, kHeight, Row().code);
  if (kind.trueSense) {
    EXPECT_EQ(chain.Init(format), kFailed);
    EXPECT_EQ(chain.GetProcessorCount(), 0);
    EXPECT_EQ(chain.ProcessImage(format, nullptr, nullptr), kFailed);
    return;
  }
  ASSERT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(Names(chain), StagesOf(kind));
  EXPECT_EQ(chain.GetImageInfo(true)->pixelType, Row().code);
  EXPECT_STREQ(QTD::FindPixelRow(chain.GetImageInfo(false)->pixelType)->name,
               FormatAfter(Row().name, kind).c_str());
  EXPECT_FALSE(chain.FindProcessor("image.unpacked")->IsEnabled());
}

TEST_P(EveryFormat, keeps_the_colour_of_a_flat_picture) {
  const std::string name = Row().name;
  const Kind kind(name);
  if (kind.trueSense) return;  // has no chain
  const Picture image(kWidth, kHeight, Row().code);
  const bool known = kind.mono || kind.bayer || kind.colour || kind.uyvy;
  std::vector<uint8_t> bytes = FlatScene(name, kind, kWidth, kHeight);
  if (!known) {
    bytes.resize(image->imageSize);
    for (size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<uint8_t>(index * 7 + 1);
  }
  // Packed lines follow each other without the padding that a record allows for.
  ASSERT_LE(bytes.size(), image->imageSize);
  std::copy(bytes.begin(), bytes.end(), image->imageData);

  QTDProcessor chain(nullptr, false);
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(out->width, kWidth);
  ASSERT_EQ(out->height, kHeight);
  if (!known) {  // pixels that no stage interprets pass as they are
    ASSERT_EQ(out->imageSize, image->imageSize);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), out->imageData));
    return;
  }
  const std::vector<uint32_t> pixel = FlatResult(name, kind);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t index = 0; index < kWidth * pixel.size(); ++index)
      ASSERT_EQ(SampleOf(*out, index, y), pixel[index % pixel.size()])
          << "sample " << index << " of line " << y;
  }
}

INSTANTIATE_TEST_SUITE_P(Chain, EveryFormat, testing::Range(1u, QTD::kPixelRows + 1), NameOf);
