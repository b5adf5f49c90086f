// The colours of text, bands and rectangles in converted pictures, by plain arithmetic.
#include <algorithm>
#include <cmath>

#include "QTD/image/PixelFormats.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

struct Rgb {
  int red, green, blue;
  int64_t Number() const { return red | green << 8 | blue << 16; }
};

// On the card a component is a part of 256, which a texel of 8 bits takes as a part of 255; the last one is
// full.
int Texel(int component) {
  return component == 255 ? 255 : static_cast<int>(std::lround(component / 256.0 * 255));
}

class OverlayColours : public OpenGLDisplay {
 protected:
  static constexpr int kSide = 120;

  void StartOn(bool opengl, uint32_t code) {
    SetVariant(opengl);
    input = std::make_unique<HostImage>(code, kSide, kSide);
    ASSERT_EQ(display->Initialize(&input->record), 0u);
    overlay =
        dynamic_cast<ZynDisplayQT::ImageOverlay*>(display->GetProcessor()->FindProcessor("image.overlay"));
    ASSERT_NE(overlay, nullptr);
  }
  // All samples, as far as the format has plain bytes.
  void FillWith(uint8_t level) { std::fill(input->pixels.begin(), input->pixels.end(), level); }
  void AddText(const char* text, int x, int y, const Rgb& ink) {
    QTD::PROPERTIES list;
    list.Set("text.clr", QTD::ToText(ink.Number()));
    EXPECT_FALSE(overlay->AddText(text, x, y, &list).empty());
  }
  void Convert() {
    HostImage output(ZYN_PIXEL_RGB8, kSide, kSide);
    ASSERT_EQ(display->ConvertImage(&input->record, &output.record), 0u);
    pixels = output.pixels;
  }
  Rgb At(int x, int y) const {
    const size_t at = 3 * static_cast<size_t>(y * kSide + x);
    return {pixels[at], pixels[at + 1], pixels[at + 2]};
  }
  static bool Near(const Rgb& one, const Rgb& other, double bound) {
    return std::abs(one.red - other.red) <= bound && std::abs(one.green - other.green) <= bound &&
           std::abs(one.blue - other.blue) <= bound;
  }

  // Looks at each pixel that is not of the level: it lies between level and ink, by the same part in all
  // channels. The largest part that was found, -1 without such a pixel.
  double Coverage(int level, const Rgb& ink) {
    double most = -1;
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        const Rgb seen = At(x, y);
        if (Near(seen, {level, level, level}, 0)) continue;
        // From the channel that moves furthest.
        const int moves[] = {ink.red - level, ink.green - level, ink.blue - level};
        const int moved[] = {seen.red - level, seen.green - level, seen.blue - level};
        const auto far = std::max_element(std::begin(moves), std::end(moves),
                                          [](int a, int b) { return std::abs(a) < std::abs(b); });
        const double part = static_cast<double>(moved[far - moves]) / *far;
        EXPECT_GE(part, 0.0);
        EXPECT_LE(part, 1.01);
        for (size_t c = 0; c < 3; ++c) EXPECT_NEAR(moved[c], part * moves[c], 1.5) << x << "," << y;
        most = std::max(most, part);
        left = std::min(left, x);
        top = std::min(top, y);
        right = std::max(right, x);
        bottom = std::max(bottom, y);
      }
    }
    return most;
  }

  std::unique_ptr<HostImage> input;
  ZynDisplayQT::ImageOverlay* overlay = nullptr;
  std::vector<uint8_t> pixels;
  int left = kSide, top = kSide, right = -1, bottom = -1;  // where `Coverage` found something
};

TEST_F(OverlayColours, of_text_are_the_inks_in_both_variants_on_the_screen) {
  const Rgb inks[] = {{192, 96, 48}, {16, 200, 255}, {255, 255, 255}, {0, 0, 0}};
  for (const uint32_t code : {ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8}) {
    for (const Rgb& ink : inks) {
      for (const bool opengl : {false, true}) {
        // The processor's stage writes on monochrome and RGB pictures, red first.
        if (!opengl && code == ZYN_PIXEL_BGR8) continue;
        SCOPED_TRACE(std::string(QTD::FindPixelRow(code)->name) + (opengl ? ", card" : ", processor"));
        StartOn(opengl, code);
        FillWith(100);
        AddText("HLI", 20, 30, ink);
        Convert();
        left = top = kSide, right = bottom = -1;
        const Rgb drawn = opengl ? Rgb{Texel(ink.red), Texel(ink.green), Texel(ink.blue)} : ink;
        EXPECT_GT(Coverage(100, drawn), 0.8);
        // Upright, with its upper end at 30.
        EXPECT_GE(left, 19);
        EXPECT_LE(left, 25);
        EXPECT_GE(top, 29);
        EXPECT_LE(top, 45);
        EXPECT_LE(bottom, 65);
        EXPECT_LE(right, 80);
      }
    }
  }
}

// The band of a text whose size is told lies above it, begins two pixels before it and is four wider.
TEST_F(OverlayColours, of_a_band_fill_a_rectangle_on_the_screen) {
  const std::pair<int, int> modes[] = {{1, 255}, {2, 0}, {3, 128}};
  for (const auto& [mode, level] : modes) {
    SCOPED_TRACE(mode);
    StartOn(true, ZYN_PIXEL_RGB8);
    FillWith(60);
    QTD::PROPERTIES list;
    list.Set("back.mode", QTD::ToText(mode)).Set("w", "40").Set("h", "20");
    ASSERT_FALSE(overlay->AddText(" ", 30, 50, &list).empty());
    Convert();
    const int seen = Texel(level);
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        const bool in = x >= 28 && x < 72 && y >= 30 && y < 50;
        const int expected = in ? seen : 60;
        ASSERT_TRUE(Near(At(x, y), {expected, expected, expected}, in ? 1 : 0)) << x << "," << y;
      }
    }
  }
}

// The processor's stage draws no lines.
TEST_F(OverlayColours, of_a_rectangle_stand_on_its_edges_on_the_screen) {
  const Rgb ink{192, 96, 48};
  for (const bool opengl : {false, true}) {
    SCOPED_TRACE(opengl ? "card" : "processor");
    StartOn(opengl, ZYN_PIXEL_RGB8);
    FillWith(100);
    QTD::PROPERTIES list;
    list.Set("line.clr", QTD::ToText(ink.Number())).Set("line.width", "4");
    ASSERT_FALSE(overlay->AddRect(20, 30, 60, 40, &list).empty());
    Convert();
    const Rgb line = opengl ? Rgb{Texel(ink.red), Texel(ink.green), Texel(ink.blue)} : Rgb{100, 100, 100};
    for (const auto& [x, y] : {std::pair<int, int>{50, 30}, {50, 69}, {20, 50}, {79, 50}})
      EXPECT_TRUE(Near(At(x, y), line, 1)) << x << "," << y;
    for (const auto& [x, y] : {std::pair<int, int>{50, 50}, {50, 24}, {50, 76}, {14, 50}, {86, 50}, {50, 36}})
      EXPECT_TRUE(Near(At(x, y), {100, 100, 100}, 0)) << x << "," << y;
  }
}

// What differs on purpose.

// A texture of one channel takes the red part; the processor writes the grey of the colour.
TEST_F(OverlayColours, in_monochrome_pictures_are_red_parts_on_the_card_on_the_screen) {
  struct Row {
    Rgb ink;
    int processor, card;
  };
  // The grey of full blue is 0.082 of the range; -1: not looked at.
  const Row rows[] = {{{0, 0, 255}, 21, 0}, {{255, 0, 0}, -1, 255}, {{255, 255, 255}, 255, 255}};
  for (const Row& row : rows) {
    for (const bool opengl : {false, true}) {
      SCOPED_TRACE(std::string(opengl ? "card " : "processor ") + QTD::ToText(row.ink.Number()));
      const int expected = opengl ? row.card : row.processor;
      if (expected < 0) continue;
      StartOn(opengl, ZYN_PIXEL_MONO8);
      AddText("HLI", 20, 30, row.ink);
      Convert();
      const int most = *std::max_element(pixels.begin(), pixels.end());
      EXPECT_NEAR(most, expected, expected > 100 ? 0.2 * expected : 1);
    }
  }
}

// On the card colours are parts of the texel's range, of which samples of 12 bits have the lowest sixteenth.
TEST_F(OverlayColours, in_pictures_of_12_bits_are_brighter_on_the_card_on_the_screen) {
  for (const bool opengl : {false, true}) {
    SCOPED_TRACE(opengl ? "card" : "processor");
    StartOn(opengl, ZYN_PIXEL_MONO12);
    AddText("HLI", 20, 30, {0x40, 0x40, 0x40});
    Convert();
    const int most = *std::max_element(pixels.begin(), pixels.end());
    EXPECT_NEAR(most, opengl ? 255 : 64, opengl ? 0 : 13);
  }
}

}  // namespace
}  // namespace display_test
