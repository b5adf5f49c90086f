// What a host sees for each of the 133 pixel formats: the picture in the window's colours, or a code.
#include <algorithm>
#include <array>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "tests/display/DisplayFixture.h"
#include "tests/support/FlatScene.h"

namespace display_test {

using flat_scene::FlatResult;
using flat_scene::FlatScene;
using flat_scene::Kind;

class EveryFormatShown : public DisplayTest, public testing::WithParamInterface<uint32_t> {
 protected:
  static constexpr uint32_t kWidth = 16, kHeight = 8;

  void Run(const char* name, uint32_t code) {
    const Kind kind(name);
    HostImage image(code, kWidth, kHeight);
    if (kind.trueSense) {  // refused by the colour correction, which ends the build of the chain
      display->Parameters().Set("system.silent", "0");
      EXPECT_EQ(display->Initialize(&image.record), Composed(1));
      return;
    }
    const bool known = kind.mono || kind.bayer || kind.colour || kind.uyvy;
    for (size_t n = 0; n < image.pixels.size(); ++n) image.pixels[n] = static_cast<uint8_t>(n * 37 + 11);
    if (known) {
      image.pixels = FlatScene(name, kind, kWidth, kHeight);
      ASSERT_EQ(image.pixels.size(), image.record.imageSize);
      image.record.imageData = image.pixels.data();
    }
    Start(image);
    ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
    ASSERT_TRUE(WaitForImages(1));
    EXPECT_EQ(receiver.LastResult(), "0");
    const ZynImage* const shown = display->GetProcessor()->FindProcessor("image.display")->Out();
    ASSERT_NE(shown, nullptr);
    if (!known) return ExpectUnread(code, image, *shown);
    ASSERT_EQ(shown->pixelType, ZYN_PIXEL_RGB8);
    ExpectColour(*shown, Expected(name, kind));
  }

  // Pixels that no stage reads. Bytes stay what they are, under their own code, which the window does not
  // draw; of deeper formats each line is taken for a row of words, which lose their lower bits.
  static void ExpectUnread(uint32_t code, const HostImage& image, const ZynImage& shown) {
    const uint32_t depth = QTD::FindPixelRow(code)->bitDepth;
    const uint32_t lineBytes = image.record.linePitch;
    EXPECT_EQ(shown.pixelType, depth == 8 ? code : ZYN_PIXEL_RGB8);
    for (uint32_t y = 0; y < kHeight; ++y) {
      const uint8_t* const from = image.pixels.data() + y * lineBytes;
      const uint8_t* const to = shown.imageData + y * shown.linePitch;
      for (uint32_t n = 0; n < (depth == 8 ? lineBytes : lineBytes / 2); ++n) {
        const uint32_t word =
            depth == 8 ? from[n] : (from[2 * n] | uint32_t{from[2 * n + 1]} << 8) >> (depth - 8);
        ASSERT_EQ(to[n], std::min(word, 255u)) << "byte " << n << " of line " << y;
      }
    }
  }

  // The upper eight bits in red, green and blue.
  static std::array<uint32_t, 3> Expected(const std::string& name, const Kind& kind) {
    const std::vector<uint32_t> pixel = FlatResult(name, kind);
    const uint32_t shift = kind.depth - 8;
    if (pixel.size() == 1) return {pixel[0] >> shift, pixel[0] >> shift, pixel[0] >> shift};
    const bool blueFirst = kind.colour && name[0] == 'B';
    return {pixel[blueFirst ? 2 : 0] >> shift, pixel[1] >> shift, pixel[blueFirst ? 0 : 2] >> shift};
  }

  static void ExpectColour(const ZynImage& shown, const std::array<uint32_t, 3>& colour) {
    for (uint32_t y = 0; y < kHeight; ++y) {
      const uint8_t* const line = shown.imageData + y * shown.linePitch;
      for (uint32_t byte = 0; byte < 3 * kWidth; ++byte)
        ASSERT_EQ(line[byte], colour[byte % 3]) << "byte " << byte << " of line " << y;
    }
  }
};

TEST_P(EveryFormatShown, in_its_colours_or_refused_with_a_code) {
  const QTD::PixelRow& row = *QTD::FindPixelRow(GetParam());
  Run(row.name, row.code);
}

INSTANTIATE_TEST_SUITE_P(Display, EveryFormatShown, testing::Range(1u, QTD::kPixelRows + 1),
                         [](const testing::TestParamInfo<uint32_t>& format) {
                           return std::string(QTD::FindPixelRow(format.param)->name);
                         });

}  // namespace display_test
