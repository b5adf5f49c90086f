// "image.display" with a turn, from a picture in memory: what the upload mirrors, the copy turns.
#include <algorithm>
#include <cstring>

#include "StageFixture.h"
#include "gl/stages/QGLIPImageOverlay.h"

namespace {

constexpr uint32_t kWidth = 7, kHeight = 5;

struct Sort {
  const char* name;
  uint32_t code;
};

class ImageStageTurn : public StageFixture, public testing::WithParamInterface<Sort> {
 protected:
  // The upload mirrors the first samples of each line, one for each column, whatever a pixel has of them.
  static Samples Mirrored(Samples samples) {
    const size_t line = samples.size() / kHeight;
    for (size_t y = 0; y < kHeight; ++y) {
      const auto start = samples.begin() + static_cast<std::ptrdiff_t>(y * line);
      std::reverse(start, start + kWidth);
    }
    return samples;
  }
};

TEST_P(ImageStageTurn, shows_the_mirrored_lines_in_the_reverse_order) {
  const uint32_t code = GetParam().code;
  const uint32_t depth = QTD::FindPixelRow(code)->bitDepth;
  const bool mono = !QTD::IsRgbFormat(code);
  const Samples samples = Scattered(kWidth * kHeight * (mono ? 1 : 3), (1u << depth) - 1);
  const Record picture = MakeRecord(kWidth, kHeight, code, samples);
  const Record wanted = MakeRecord(kWidth, kHeight, depth == 8 ? ZYN_PIXEL_RGB8 : ZYN_PIXEL_RGB16);
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, picture, wanted.get()), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);

  Samples held = Mirrored(samples);
  EXPECT_EQ(SamplesOf(*picture), held);  // the host's own buffer
  if (QTD::IsBgrFormat(code))
    for (size_t i = 0; i + 2 < held.size(); i += 3) std::swap(held[i], held[i + 2]);
  Samples shown;
  const uint32_t scale = depth == 8 ? 1 : 1u << (16 - depth);
  for (const uint32_t sample : held) shown.insert(shown.end(), mono ? 3 : 1, sample * scale);
  EXPECT_EQ(Texels(stage), Turned(shown, kHeight));
  EXPECT_EQ(stage.Out()->origin, 1u);
}

INSTANTIATE_TEST_SUITE_P(Formats, ImageStageTurn,
                         testing::Values(Sort{"Mono8", ZYN_PIXEL_MONO8}, Sort{"Mono12", ZYN_PIXEL_MONO12},
                                         Sort{"Mono16", ZYN_PIXEL_MONO16}, Sort{"RGB8", ZYN_PIXEL_RGB8},
                                         Sort{"BGR8", ZYN_PIXEL_BGR8}, Sort{"RGB10", ZYN_PIXEL_RGB10},
                                         Sort{"BGR16", ZYN_PIXEL_BGR16}),
                         [](const testing::TestParamInfo<Sort>& sort) { return sort.param.name; });

// No pitch keeps a picture from the card: lines of words may begin at odd bytes.
TEST_F(StageFixture, a_turn_takes_words_of_an_odd_pitch) {
  constexpr uint32_t kPitch = 2 * kWidth + 1;
  const Samples samples = Scattered(kWidth * kHeight, 4095);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO12, samples);
  std::vector<uint8_t> bytes(kPitch * kHeight, 0xA5);
  for (uint32_t y = 0; y < kHeight; ++y)
    std::memcpy(bytes.data() + y * kPitch, picture->imageData + y * picture->linePitch, 2 * kWidth);
  ZynImage odd = *picture;
  odd.imageData = bytes.data();
  odd.linePitch = kPitch;
  odd.imageSize = static_cast<uint32_t>(bytes.size());

  Samples mirrored = samples;
  for (auto line = mirrored.begin(); line != mirrored.end(); line += kWidth)
    std::reverse(line, line + kWidth);
  QGLIPImageOverlay overlay(&display);
  overlay.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(overlay, picture), 0u);
  ASSERT_EQ(Run(overlay, &odd), 0u);
  EXPECT_EQ(Texels(overlay), mirrored);
  for (uint32_t y = 0; y < kHeight; ++y) EXPECT_EQ(bytes[y * kPitch + kPitch - 1], 0xA5) << y;
}

}  // namespace
