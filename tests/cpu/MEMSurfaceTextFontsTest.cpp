// The fonts of stamped text, and how large their sheets may become.
#include <limits>

#include "tests/cpu/StampFixture.h"

namespace {

using namespace stamp_test;

using MEMSurfaceTextFonts = StampFixture;

}  // namespace

TEST_F(MEMSurfaceTextFonts, adds_and_replaces_fonts_with_their_sheets) {
  EXPECT_EQ(text.addFont("", "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", "", 11, false, false), -1);
  EXPECT_EQ(text.addFont(nullptr, nullptr, 11, false, false), -1);
  EXPECT_EQ(text.addFont("extra", "Courier New", 12, false, false), 6);
  EXPECT_EQ(text.addFont("extra", "Cambria", -11, false, false), 6);
  EXPECT_EQ(text.findFont("extra")->GetString("size"), "-11");
  Picture actual(ZYN_PIXEL_MONO8, 8, 1), expected = actual;
  draw(actual, "xyz", 4, 4, "extra", &white);
  StampModel(expected, cambria, CodesOf("xyz"), 4, 4, 0, {255});
  EXPECT_EQ(actual.bytes, expected.bytes);
  for (int i = 0; i < 20; ++i) {  // names come and go without a trace
    text.removeFont("extra");
    EXPECT_EQ(text.addFont("extra", "Cambria", 11, false, false), 6);
  }
  text.removeFont("never there");
  text.removeFont(nullptr);
}

TEST_F(MEMSurfaceTextFonts, draws_large_letters_from_the_far_end_of_a_long_sheet) {
  // At this size the sheet is longer than the coordinates of a painter reach.
  text.addFont("huge", "Cambria", 180, false, false);
  Picture picture(ZYN_PIXEL_MONO8, 8, 1);
  std::fill(picture.bytes.begin(), picture.bytes.end(), uint8_t{0});
  draw(picture, "\xC3\xBE", -40, -120, "huge", &white);  // code 254
  EXPECT_NE(picture.bytes, std::vector<uint8_t>(picture.bytes.size(), 0));
}

TEST_F(MEMSurfaceTextFonts, has_no_sheet_for_an_absurd_size_and_draws_nothing) {
  EXPECT_EQ(text.addFont("absurd", "Cambria", std::numeric_limits<int>::max(), false, false), 6);
  EXPECT_EQ(text.addFont("absurd", "Cambria", std::numeric_limits<int>::min(), false, false), 6);
  Picture picture(ZYN_PIXEL_MONO8, 8, 1);
  const std::vector<uint8_t> before = picture.bytes;
  draw(picture, "text", 4, 4, "absurd", &white);
  EXPECT_EQ(picture.bytes, before);
}

TEST_F(MEMSurfaceTextFonts, has_no_sheet_of_more_than_64_mebibytes) {
  // The cells of the codes 32 to 255 side by side, three bytes a pixel.
  const auto sheetBytes = [](int size) {
    const QFontMetrics metrics(FontOf("Cambria", size));
    int64_t width = 0, height = 0;
    for (int code = 32; code <= 255; ++code) {
      const QRect bounds = metrics.boundingRect(QString(QChar(code == ' ' ? 'i' : code)));
      width += std::max(0, bounds.width());
      height = std::max<int64_t>(height, bounds.height());
    }
    return 3 * width * height;
  };
  constexpr int64_t kLimit = 64 << 20;
  int fitting = 100;
  while (sheetBytes(fitting + 10) <= kLimit) fitting += 10;
  const int tooLarge = fitting + 20;
  ASSERT_GT(sheetBytes(tooLarge), kLimit + kLimit / 100);
  ASSERT_LT(sheetBytes(tooLarge), 2 * kLimit);

  const auto draws = [&](int size) {
    text.addFont("big", "Cambria", size, false, false);
    Picture picture(ZYN_PIXEL_MONO8, 8, 1);
    const std::vector<uint8_t> before = picture.bytes;
    const ColorValue inverting = [] {
      ColorValue color(0xFFFFFF);
      color.mode = 2;
      return color;
    }();
    for (int y = -3 * size; y < kHeight; y += kHeight) {
      draw(picture, "M", -size / 3, y, "big", &inverting);
    }
    return picture.bytes != before;
  };
  EXPECT_TRUE(draws(fitting - 10));
  EXPECT_FALSE(draws(tooLarge));
}
