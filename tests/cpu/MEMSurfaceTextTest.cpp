// Stamped text against a scalar model, in every format and at every edge.
#include <functional>

#include "tests/cpu/StampFixture.h"

namespace {

using namespace stamp_test;

using MEMSurfaceTextTest = StampFixture;

struct FormatRow {
  const char* name;
  uint32_t code;
  uint32_t depth;
  uint32_t bytesPerPixel;
  std::vector<int> channels;  // of the colour red 255, green 128, blue 0 of 256, in the order of the samples
};

// Luminance of that colour: 0.3086 + 0.6094 * 0.5 = 0.6133 of the range.
const FormatRow kFormats[] = {
    {"Mono8", ZYN_PIXEL_MONO8, 8, 1, {157}},
    {"Mono10", ZYN_PIXEL_MONO10, 10, 2, {628}},
    {"Mono12", ZYN_PIXEL_MONO12, 12, 2, {2512}},
    {"Mono16", ZYN_PIXEL_MONO16, 16, 2, {40193}},
    {"RGB8", ZYN_PIXEL_RGB8, 8, 3, {255, 128, 0}},
    {"BGR8", ZYN_PIXEL_BGR8, 8, 3, {0, 128, 255}},
    {"RGBa8", ZYN_PIXEL_RGBA8, 8, 4, {255, 128, 0}},
    {"BGRa8", ZYN_PIXEL_BGRA8, 8, 4, {0, 128, 255}},
    {"RGB12", ZYN_PIXEL_RGB12, 12, 6, {4095, 2048, 0}},
    {"BGR14", ZYN_PIXEL_BGR14, 14, 6, {0, 8192, 16383}},
    {"RGB16", ZYN_PIXEL_RGB16, 16, 6, {65535, 32768, 0}},
};

}  // namespace

TEST_F(MEMSurfaceTextTest, stamps_every_format_and_mode_upright_in_both_origins) {
  for (const FormatRow& row : kFormats) {
    for (const bool bottomUp : {false, true}) {
      for (int mode = 0; mode <= 4; ++mode) {
        ColorValue color(255, 128, 0, 256);
        color.mode = mode;
        Picture actual(row.code, row.depth, row.bytesPerPixel, bottomUp), expected = actual;
        draw(actual, "Wg 1", 7, 9, "default", &color);
        StampModel(expected, cambria, CodesOf("Wg 1"), 7, 9, mode, row.channels);
        EXPECT_EQ(actual.bytes, expected.bytes)
            << row.name << " mode " << mode << (bottomUp ? " bottom-up" : "");
      }
    }
  }
}

TEST_F(MEMSurfaceTextTest, is_cut_at_all_four_sides) {
  const ColorValue color(255, 128, 0, 256);
  for (const bool bottomUp : {false, true}) {
    for (const int x : {-1000, -50, -9, -1, 0, kWidth - 60, kWidth - 3, kWidth - 1, kWidth, 5000}) {
      for (const int y : {-1000, -17, -16, -9, -1, 0, kHeight - 10, kHeight - 1, kHeight, 5000}) {
        Picture actual(ZYN_PIXEL_RGB8, 8, 3, bottomUp), expected = actual;
        draw(actual, "Wgabcdef", x, y, "fixed", &color);
        StampModel(expected, courier, CodesOf("Wgabcdef"), x, y, 0, {255, 128, 0});
        ASSERT_EQ(actual.bytes, expected.bytes) << x << ", " << y;
      }
    }
  }
}

TEST_F(MEMSurfaceTextTest, above_the_image_loses_its_upper_rows_only) {
  Picture inside(ZYN_PIXEL_MONO8, 8, 1), above = inside;
  std::fill(inside.bytes.begin(), inside.bytes.end(), uint8_t{0});
  above.bytes = inside.bytes;
  inside.record.imageData = inside.bytes.data();
  above.record.imageData = above.bytes.data();
  draw(inside, "Wg", 5, 0, "large", &white);
  draw(above, "Wg", 5, -6, "large", &white);
  const size_t pitch = inside.record.linePitch;
  EXPECT_TRUE(std::equal(inside.bytes.begin() + static_cast<ptrdiff_t>(6 * pitch), inside.bytes.end(),
                         above.bytes.begin()));
  EXPECT_NE(inside.bytes, std::vector<uint8_t>(inside.bytes.size(), 0));
}

TEST_F(MEMSurfaceTextTest, runs_to_65535_in_a_16_bit_mono_image) {
  Picture picture(ZYN_PIXEL_MONO16, 16, 2);
  std::fill(picture.bytes.begin(), picture.bytes.end(), uint8_t{0});
  draw(picture, "M", 5, 5, "default", &white);
  int highest = 0;
  for (size_t y = 0; y < kHeight; ++y) {
    for (size_t x = 0; x < kWidth; ++x) {
      highest = std::max(highest, Sample(picture).get(&picture.bytes[y * picture.record.linePitch + 2 * x]));
    }
  }
  EXPECT_EQ(highest, 65535);
}

TEST_F(MEMSurfaceTextTest, draws_latin_1_from_utf_8_and_a_question_mark_for_the_rest) {
  struct Row {
    const char* utf8;
    std::vector<int> codes;
  };
  const Row kRows[] = {{"\xC2\xB5m", {0xB5, 'm'}},          // micro sign
                       {"\xC3\xBF\xC3\x84", {0xFF, 0xC4}},  // the last code, and a capital with dots
                       {"\xE2\x82\xACx", {'?', 'x'}},       // the euro sign
                       {"\xF0\x9F\x98\x80x", {'?', 'x'}},   // outside the first plane: still one character
                       {"a\x01z", {'a', ' ', 'z'}},         // a control character
                       {"\xFFx", {'?', 'x'}}};              // not UTF-8
  for (const Row& row : kRows) {
    Picture actual(ZYN_PIXEL_MONO8, 8, 1), expected = actual;
    draw(actual, row.utf8, 4, 4, "default", &white);
    StampModel(expected, cambria, row.codes, 4, 4, 0, {255});
    EXPECT_EQ(actual.bytes, expected.bytes) << row.utf8;
  }
}

TEST_F(MEMSurfaceTextTest, leaves_the_gap_of_the_font_behind_all_but_spaces) {
  text.findFont("default")->Set("intv", "5;9");
  Picture actual(ZYN_PIXEL_MONO8, 8, 1), expected = actual;
  draw(actual, "a b", 4, 4, "default", &white);
  StampModel(expected, cambria, CodesOf("a b"), 4, 4, 0, {255}, 5);
  EXPECT_EQ(actual.bytes, expected.bytes);
}

TEST_F(MEMSurfaceTextTest, draws_the_second_line_one_height_lower) {
  int height = 0;
  text.measureLine("default", "", nullptr, &height);
  ASSERT_GT(height, 0);
  Picture actual(ZYN_PIXEL_MONO8, 8, 1), expected = actual;
  draw(actual, "up\ndn", 4, 2, "default", &white);
  StampModel(expected, cambria, CodesOf("up"), 4, 2, 0, {255});
  StampModel(expected, cambria, CodesOf("dn"), 4, 2 + height, 0, {255});
  EXPECT_EQ(actual.bytes, expected.bytes);
}

TEST_F(MEMSurfaceTextTest, treats_a_tab_as_text_through_a_painter_does) {
  Picture unseen(ZYN_PIXEL_MONO8, 8, 1), ending = unseen, seen = unseen, expected = unseen;
  for (Picture* picture : {&ending, &seen, &unseen, &expected})
    picture->record.imageData = picture->bytes.data();
  draw(unseen, "A\tB", 2, 3, "fixed", &white);
  draw(ending, "A\t", 2, 3, "fixed", &white);
  StampModel(expected, courier, CodesOf("A"), 2, 3, 0, {255});
  EXPECT_EQ(unseen.bytes, expected.bytes);
  EXPECT_EQ(ending.bytes, expected.bytes);

  // The name of the font stands at the tab stop, in the font that the rest names.
  draw(seen, "A\tdefault", 2, 3, "fixed", &white);
  int height = 0;
  text.measureLine("fixed", "", nullptr, &height);
  StampModel(expected, cambria, CodesOf("fixed"), 2 + 4 * height, 3, 0, {255});
  EXPECT_EQ(seen.bytes, expected.bytes);
}

TEST_F(MEMSurfaceTextTest, takes_the_default_colour_and_the_first_font) {
  Picture actual(ZYN_PIXEL_MONO8, 8, 1), expected = actual;
  draw(actual, "ab", 4, 4, "", nullptr);
  StampModel(expected, QFont(QStringLiteral("Cambria"), 12, QFont::Bold, false), CodesOf("ab"), 4, 4, 0, {0});
  EXPECT_EQ(actual.bytes, expected.bytes);
}

TEST_F(MEMSurfaceTextTest, draws_nothing_without_target_font_or_text) {
  Picture picture(ZYN_PIXEL_MONO8, 8, 1);
  const std::vector<uint8_t> before = picture.bytes;
  text.draw("text", 4, 4, "", &white);
  text.drawLine("text", 4, 4, "", &white);
  draw(picture, "text", 4, 4, "unknown", &white);
  draw(picture, "", 4, 4, "default", &white);
  draw(picture, nullptr, 4, 4, "default", &white);
  text.removeFont("default");
  draw(picture, "text", 4, 4, "default", &white);
  text.clearFonts();
  draw(picture, "text", 4, 4, "", &white);
  EXPECT_EQ(picture.bytes, before);
}

TEST_F(MEMSurfaceTextTest, never_writes_for_a_record_that_lies_or_has_no_whole_samples) {
  struct Row {
    const char* what;
    std::function<void(ZynImage&)> change;
  };
  const Row kRows[] = {
      {"no pixels", [](ZynImage& r) { r.imageData = nullptr; }},
      {"no width", [](ZynImage& r) { r.width = 0; }},
      {"no height", [](ZynImage& r) { r.height = 0; }},
      {"pitch too long", [](ZynImage& r) { r.linePitch += 1; }},
      {"pitch of all bits", [](ZynImage& r) { r.linePitch = 0xffffffff; }},
      {"pitch shorter than a line", [](ZynImage& r) { r.linePitch = kWidth * 3 - 1; }},
      {"pitch zero", [](ZynImage& r) { r.linePitch = 0; }},
      {"size too small", [](ZynImage& r) { r.imageSize = r.linePitch * (kHeight - 1) + kWidth * 3 - 1; }},
      {"size zero", [](ZynImage& r) { r.imageSize = 0; }},
      {"too wide", [](ZynImage& r) { r.width = 0xffffffff; }},
      {"too high", [](ZynImage& r) { r.height = 0xffffffff; }},
      {"unknown code", [](ZynImage& r) { r.pixelType = 0; }},
      {"deep samples in 8-bit pixels", [](ZynImage& r) { r.bitDepth = 12; }},
      {"packed mono", [](ZynImage& r) { r.pixelType = ZYN_PIXEL_MONO12PACKED; }},
      {"mosaic", [](ZynImage& r) { r.pixelType = ZYN_PIXEL_BAYERGR8; }},
      {"two bytes a pixel", [](ZynImage& r) { r.pixelType = ZYN_PIXEL_YUV422_8; }},
  };
  for (const Row& row : kRows) {
    Picture picture(ZYN_PIXEL_RGB8, 8, 3);
    row.change(picture.record);
    const std::vector<uint8_t> before = picture.bytes;
    draw(picture, "text", 4, 4, "default", &white);
    draw(picture, "text", 4, kHeight - 5, "default", &white);
    EXPECT_EQ(picture.bytes, before) << row.what;
  }
}

TEST_F(MEMSurfaceTextTest, takes_the_depth_of_the_format_when_the_record_has_none) {
  Picture actual(ZYN_PIXEL_RGB8, 8, 3), expected = actual;
  actual.record.imageData = actual.bytes.data();
  for (const uint32_t depth : {0u, 17u, 0xffffffffu}) {
    actual.bytes = Picture(ZYN_PIXEL_RGB8, 8, 3).bytes;
    expected.bytes = actual.bytes;
    actual.record.imageData = actual.bytes.data();
    actual.record.bitDepth = depth;
    draw(actual, "text", 4, 4, "default", &white);
    StampModel(expected, cambria, CodesOf("text"), 4, 4, 0, {255, 255, 255});
    EXPECT_EQ(actual.bytes, expected.bytes) << depth;
  }
}
