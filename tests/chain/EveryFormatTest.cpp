// The chain for each of the 133 pixel formats: which stages it gets, and what becomes of a flat picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "cpu/stages/CPUIPColorCorrection.h"
#include "cpu/stages/CPUIPImage.h"
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
  return line[2 * index] | static_cast<uint32_t>(line[2 * index + 1]) << 8;
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
    // The image stage takes them, the colour correction does not.
    EXPECT_EQ(CPUIPImage(nullptr).Init(format, nullptr), 0u);
    EXPECT_EQ(CPUIPColorCorrection(nullptr).Init(format, nullptr), 0x80FF0003u);
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

// A flat picture of a known format through the chain.
void ExpectFlat(const char* name, uint32_t code, uint32_t width, uint32_t height, bool downscale) {
  const Kind kind(name);
  const Picture image(width, static_cast<int32_t>(height), code);
  const std::vector<uint8_t> bytes = FlatScene(name, kind, width, height);
  // Packed lines follow each other without the padding that a record allows for; others have none here.
  ASSERT_LE(bytes.size(), image->imageSize);
  const size_t line = kind.packed || kind.lsb ? bytes.size() : bytes.size() / height;
  for (size_t from = 0, to = 0; from < bytes.size(); from += line, to += image->linePitch)
    std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(from), line, image->imageData + to);

  QTDProcessor chain(nullptr, false);
  if (downscale) chain.Parameters().Set("image.downscale", "1");
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(out->width, width);
  ASSERT_EQ(out->height, height);
  // Colours of RGB and BGR stay deep: they have no format of 8 bits to be reduced to on the way.
  const bool reduced = downscale && !kind.colour;
  ASSERT_EQ(out->bitDepth, reduced ? 8 : kind.depth);
  const uint32_t shift = reduced ? kind.depth - 8 : 0;
  const std::vector<uint32_t> pixel = FlatResult(name, kind);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t index = 0; index < width * pixel.size(); ++index)
      ASSERT_EQ(SampleOf(*out, index, y), pixel[index % pixel.size()] >> shift)
          << "sample " << index << " of line " << y;
  }
}

TEST_P(EveryFormat, keeps_the_colour_of_a_flat_picture) {
  const Kind kind(Row().name);
  if (kind.trueSense) return;  // has no chain
  if (kind.mono || kind.bayer || kind.colour || kind.uyvy) {
    ExpectFlat(Row().name, Row().code, kWidth, kHeight, false);
    ExpectFlat(Row().name, Row().code, kWidth, kHeight, true);
    // Lines that end within a byte: 10-bit streams are cut off there, so that their last samples are not
    // whole.
    if (kind.lsb && kind.depth == 10) return;
    if (!kind.uyvy) ExpectFlat(Row().name, Row().code, 7, 3, false);
    ExpectFlat(Row().name, Row().code, 6, 5, false);
    return;
  }
  // Pixels that no stage interprets pass as they are.
  const Picture image(kWidth, kHeight, Row().code);
  std::vector<uint8_t> bytes(image->imageSize);
  for (size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<uint8_t>(index * 7 + 1);
  std::copy(bytes.begin(), bytes.end(), image->imageData);
  QTDProcessor chain(nullptr, false);
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(out->imageSize, image->imageSize);
  EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), out->imageData));
}

INSTANTIATE_TEST_SUITE_P(Chain, EveryFormat, testing::Range(1u, QTD::kPixelRows + 1), NameOf);

// The columns of the composition that a picture does not show.
TEST(ChainOfStages, has_the_chain_as_parent_of_the_first_stages_only) {
  for (const uint32_t code : {ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_YUV422_8_UYVY}) {
    QTDProcessor chain(nullptr, false);
    const Picture format(kWidth, kHeight, code);
    ASSERT_EQ(chain.Init(format), 0u);
    for (int index = 0; index < chain.GetProcessorCount(); ++index) {
      const std::string name = chain.Stages().NameAt(index);
      auto* const stage = dynamic_cast<QTD::ImageProcessorData*>(chain.GetProcessorAt(index));
      ASSERT_NE(stage, nullptr);
      const bool first = name == "unpack" || name == "yuv2rgb";
      EXPECT_EQ(stage->GetParent(), first ? chain.GetComponent() : nullptr) << name;
    }
  }
}

TEST(ChainOfStages, hands_a_wanted_output_to_the_demosaicing) {
  QTDProcessor chain(nullptr, false);
  const Picture format(kWidth, kHeight, ZYN_PIXEL_BAYERRG8), wanted(kWidth, kHeight, ZYN_PIXEL_BGR8);
  ASSERT_EQ(chain.initCPU(format, wanted), 0u);
  EXPECT_EQ(chain.GetImageInfo(false)->pixelType, ZYN_PIXEL_BGR8);
  // The image stages in front and behind do not get it.
  EXPECT_EQ(chain.FindProcessor("image.unpacked")->GetImageInfo(false)->pixelType, ZYN_PIXEL_BAYERRG8);
}
