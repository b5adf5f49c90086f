// Text in the window's pixels against a model that paints each glyph with a painter and blends it by hand.
#include <GL/gl.h>

#include <QFont>
#include <QPainter>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "GLFixture.h"
#include "GLTextHelpers.h"

namespace {

// Blending rounds the product and the sum to 8 bits.
constexpr int kBlendBound = 1;
constexpr int kWidth = 400;

// One glyph: its cell, and how much of each pixel it covers.
QImage CellOf(const QFont& font, int code) {
  const QRect bounds = BoundsOf(font, QString(QChar(code == ' ' ? 'i' : code)));
  QImage cell(bounds.width(), bounds.height() + 1, QImage::Format_RGB888);
  cell.fill(Qt::black);
  QFont plain = font;
  plain.setStyleStrategy(QFont::NoSubpixelAntialias);
  QPainter painter(&cell);
  painter.setFont(plain);
  painter.setPen(Qt::white);
  painter.drawText(0, bounds.height() + 1 - QFontMetrics(font).descent(), QString(QChar(code)));
  return cell;
}

std::vector<int> CodesOf(const char* ascii) {
  return std::vector<int>(ascii, ascii + std::strlen(ascii));
}

// What the window should show. Pixels are kept as real numbers; y runs upward.
struct Model {
  Model(int wide, int high, double red, double green, double blue)
      : width(wide), height(high), pixels(static_cast<size_t>(wide * high), {red, green, blue}) {}

  void blend(int x, int y, const std::array<double, 3>& color, double alpha) {
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    std::array<double, 3>& pixel = pixels[static_cast<size_t>(y * width + x)];
    for (size_t c = 0; c < 3; ++c) pixel[c] = color[c] * alpha + pixel[c] * (1 - alpha);
  }
  // `y` is the top of the line; the position behind the text.
  int text(const QFont& font, const std::vector<int>& codes, int x, int y,
           const std::array<double, 3>& color) {
    for (const int code : codes) {
      const QImage cell = CellOf(font, code);
      for (int r = 0; r < cell.height(); ++r) {
        for (int c = 0; c < cell.width(); ++c) blend(x + c, y - r - 1, color, qRed(cell.pixel(c, r)) / 255.0);
      }
      x += cell.width();
    }
    return x;
  }

  int width, height;
  std::vector<std::array<double, 3>> pixels;
};

class QGLSurfaceTextTest : public GLFixture {
 protected:
  QGLSurfaceTextTest() { window->resize(kWidth, kGLWindowHeight); }

  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    clearWindow(0.2f, 0.4f, 0.6f);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
  }
  void TearDown() override {
    EXPECT_EQ(glError(), 0u);
    GLFixture::TearDown();
  }

  static Model blank() { return {kWidth, kGLWindowHeight, 51, 102, 153}; }

  testing::AssertionResult shows(const Model& model) {
    const QImage shot = screenshot();
    if (shot.width() != model.width || shot.height() != model.height)
      return testing::AssertionFailure() << "sizes differ";
    for (int y = 0; y < model.height; ++y) {
      for (int x = 0; x < model.width; ++x) {
        const QColor color = shot.pixelColor(x, model.height - 1 - y);
        const int actual[3] = {color.red(), color.green(), color.blue()};
        const auto& wanted = model.pixels[static_cast<size_t>(y * model.width + x)];
        for (size_t c = 0; c < 3; ++c) {
          // An exact half may go either way besides.
          if (std::fabs(actual[c] - wanted[c]) <= kBlendBound + 0.01) continue;
          return testing::AssertionFailure() << "at " << x << ", " << y << ": " << actual[c] << " instead of "
                                             << wanted[c] << " in channel " << c;
        }
      }
    }
    return testing::AssertionSuccess();
  }

  OpenText text;
  const ColorValue white{0xFFFFFF};
  const std::array<double, 3> whitePixel = {255, 255, 255};
  const QFont cambria = FontOf("Cambria", 11);
  const QFont courier = FontOf("Courier New", 12);
};

}  // namespace

TEST_F(QGLSurfaceTextTest, draws_upward_with_the_top_of_the_line_at_y) {
  const ColorValue orange(0x1080FF);  // red 255, green 128, blue 16
  text.drawLine("Quartz 10", 12, 100, "default", &orange);
  Model model = blank();
  model.text(cambria, CodesOf("Quartz 10"), 12, 100, {255, 127.5, 15.94});
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, a_colour_of_another_depth_looks_the_same) {
  const ColorValue deep = ColorValue(0x1080FF).AtDepth(12);
  text.draw("Quartz 10", 12, 100, "default", &deep);
  Model model = blank();
  model.text(cambria, CodesOf("Quartz 10"), 12, 100, {255, 127.5, 15.94});
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, every_font_of_the_table_has_its_face_size_and_weight) {
  const struct {
    const char* name;
    QFont font;
  } kFonts[] = {{"default", cambria},
                {"fixed", courier},
                {"bold", FontOf("Cambria", 12, true)},
                {"medium", FontOf("Calibri", 13)},
                {"large", FontOf("Cambria", 15)}};
  Model model = blank();
  int y = 145;
  for (const auto& row : kFonts) {
    text.draw("Wolf 7g", 5, y, row.name, &white);
    model.text(row.font, CodesOf("Wolf 7g"), 5, y, whitePixel);
    y -= 28;
  }
  EXPECT_TRUE(shows(model));
  EXPECT_EQ(text.glyphRects.size(), std::size(kFonts));
}

TEST_F(QGLSurfaceTextTest, the_alpha_of_a_pixel_is_its_value_of_255) {
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(text.alphaTable[i], static_cast<float>(i) / 255.0f);
  EXPECT_FLOAT_EQ(text.alphaTable[128], 0.50196078f);

  // A strip of our own: each glyph is one pixel of the value of its code, below one of 128.
  QImage* const strip = static_cast<QImage*>(text.glyphStrip.GetPointer("default"));
  auto& rects = text.glyphRects["default"];
  *strip = QImage(224, 2, QImage::Format_RGB888);
  strip->fill(Qt::black);
  for (int i = 0; i < 224; ++i) {
    rects[static_cast<size_t>(i)] = {i, 0, 1, 2};
    strip->setPixel(i, 0, qRgb(128, 7, 9));
    strip->setPixel(i, 1, qRgb(32 + i, 0, 255));
  }
  clearWindow(0, 0, 0);
  text.drawLine("a\xC3\x88\xC3\xBF !", 20, 60, "default", &white);
  const QImage shot = screenshot();
  const int kCodes[] = {'a', 200, 255, ' ', '!'};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(shot.pixelColor(20 + i, kGLWindowHeight - 60), QColor(128, 128, 128)) << i;
    EXPECT_EQ(shot.pixelColor(20 + i, kGLWindowHeight - 59), QColor(kCodes[i], kCodes[i], kCodes[i])) << i;
    EXPECT_EQ(shot.pixelColor(20 + i, kGLWindowHeight - 61), QColor(Qt::black)) << i;
    EXPECT_EQ(shot.pixelColor(20 + i, kGLWindowHeight - 58), QColor(Qt::black)) << i;
  }
  EXPECT_EQ(shot.pixelColor(25, kGLWindowHeight - 60), QColor(Qt::black));
}

TEST_F(QGLSurfaceTextTest, draws_latin_1_from_utf_8_and_a_question_mark_for_the_rest) {
  struct Row {
    const char* utf8;
    std::vector<int> codes;
  };
  const Row kRows[] = {{"\xC2\xB5m \xC3\x88", {0xB5, 'm', ' ', 200}},
                       {"\xC3\xBF\xC3\x84", {0xFF, 0xC4}},
                       {"\xE2\x82\xACx", {'?', 'x'}},
                       {"\xF0\x9F\x98\x80x", {'?', 'x'}},
                       {"\xFFx\x80", {'?', 'x', '?'}}};  // not UTF-8
  for (const Row& row : kRows) {
    clearWindow(0.2f, 0.4f, 0.6f);
    text.draw(row.utf8, 10, 80, "large", &white);
    Model model = blank();
    model.text(FontOf("Cambria", 15), row.codes, 10, 80, whitePixel);
    EXPECT_TRUE(shows(model)) << row.utf8;
  }
}

TEST_F(QGLSurfaceTextTest, codes_below_32_are_blanks_as_wide_as_an_i) {
  text.drawLine("a\x1F\x01z q", 10, 80, "default", &white);
  Model model = blank();
  const int behind = model.text(cambria, CodesOf("a  z q"), 10, 80, whitePixel);
  EXPECT_TRUE(shows(model));
  EXPECT_EQ(behind, 10 + BoundsOf(cambria, QStringLiteral("a")).width() +
                        3 * BoundsOf(cambria, QStringLiteral("i")).width() +
                        BoundsOf(cambria, QStringLiteral("z")).width() +
                        BoundsOf(cambria, QStringLiteral("q")).width());
}

TEST_F(QGLSurfaceTextTest, draws_what_stands_behind_a_tab_behind_a_blank) {
  char given[] = "ab\tcd";
  text.drawLine(given, 10, 80, "default", &white);
  Model model = blank();
  model.text(cambria, CodesOf("ab cd"), 10, 80, whitePixel);
  EXPECT_TRUE(shows(model));
  EXPECT_STREQ(given, "ab\tcd");
  text.draw(given, 10, 40, "default", &white);
  model.text(cambria, CodesOf("ab cd"), 10, 40, whitePixel);
  EXPECT_TRUE(shows(model));
  EXPECT_STREQ(given, "ab\tcd");
}

TEST_F(QGLSurfaceTextTest, draws_the_fonts_name_in_the_font_named_behind_a_tab) {
  text.drawLine("AbcdefgABCDEFG\tfixed", 10, 80, "default", &white);
  Model model = blank();
  const int behind = model.text(cambria, CodesOf("AbcdefgABCDEFG fixed"), 10, 80, whitePixel);
  const int stop = 4 * HeightOf(cambria);
  const int width = BoundsOf(cambria, QStringLiteral("AbcdefgABCDEFG")).width();
  ASSERT_GT(width, stop) << "beyond the first tab stop";
  // The stop counts from where the drawing ended.
  model.text(courier, CodesOf("default"), behind + (width / stop + 1) * stop, 80, whitePixel);
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, draws_what_stands_before_a_tab_at_the_end) {
  text.drawLine("end\t", 10, 80, "default", &white);
  text.drawLine("\t", 10, 40, "default", &white);
  text.drawLine("a\tb\t", 200, 80, "default", &white);
  Model model = blank();
  model.text(cambria, CodesOf("end"), 10, 80, whitePixel);
  model.text(cambria, CodesOf("a b"), 200, 80, whitePixel);
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, lines_of_a_text_stack_upward) {
  const char given[] = "one\ntwo\n\nfour";
  text.draw(given, 8, 40, "fixed", &white);
  Model model = blank();
  const int height = HeightOf(courier);
  model.text(courier, CodesOf("one"), 8, 40, whitePixel);
  model.text(courier, CodesOf("two"), 8, 40 + height, whitePixel);
  model.text(courier, CodesOf("four"), 8, 40 + 3 * height, whitePixel);
  EXPECT_TRUE(shows(model));
  EXPECT_STREQ(given, "one\ntwo\n\nfour");
}

TEST_F(QGLSurfaceTextTest, is_cut_at_all_four_sides) {
  Model model = blank();
  const int kPlaces[][2] = {{-15, 100}, {kWidth - 20, 100}, {100, 8}, {200, kGLWindowHeight + 6}};
  for (const auto& place : kPlaces) {
    text.drawLine("Wgabcd", place[0], place[1], "large", &white);
    model.text(FontOf("Cambria", 15), CodesOf("Wgabcd"), place[0], place[1], whitePixel);
  }
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, bears_the_ends_of_the_range) {
  for (const int x : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    for (const int y : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      text.draw("far\tfixed\naway", x, y, "default", &white);
    }
  }
  EXPECT_TRUE(shows(blank()));
}

TEST_F(QGLSurfaceTextTest, takes_black_for_no_colour) {
  text.drawLine("black", 8, 80, "default", nullptr);
  text.draw("black", 8, 40, "default", nullptr);
  Model model = blank();
  model.text(cambria, CodesOf("black"), 8, 80, {0, 0, 0});
  model.text(cambria, CodesOf("black"), 8, 40, {0, 0, 0});
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, leaves_the_state_of_the_card_as_it_was) {
  surface->glLineWidth(3);
  glColor4f(0.25f, 0.5f, 0.75f, 1);
  GLint depthBefore = 0, depth = -1;
  glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depthBefore);
  text.draw("state\tfixed\nof", 8, 80, "default", &white);
  glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depth);
  EXPECT_EQ(depth, depthBefore);
  EXPECT_FALSE(surface->glIsEnabled(GL_BLEND));
  std::array<float, 4> color{};
  glGetFloatv(GL_CURRENT_COLOR, color.data());
  EXPECT_EQ(color, (std::array<float, 4>{0.25f, 0.5f, 0.75f, 1}));
  EXPECT_EQ(glError(), 0u) << "every begin has its end";
}

TEST_F(QGLSurfaceTextTest, draws_nothing_without_font_or_text) {
  text.draw("text", 8, 80, "unknown", &white);
  text.drawLine("text", 8, 80, "unknown", &white);
  text.drawLine("", 8, 80, "default", &white);
  text.drawLine(nullptr, 8, 80, "default", &white);
  text.draw(nullptr, 8, 80, "default", &white);
  text.removeFont("default");
  text.drawLine("text", 8, 80, "default", &white);
  text.clearFonts();
  text.drawLine("text", 8, 80, "", &white);
  EXPECT_TRUE(shows(blank()));
}

TEST_F(QGLSurfaceTextTest, finds_no_strip_for_an_empty_font_name) {
  EXPECT_NO_THROW(text.draw("text", 8, 80, "", &white));
  EXPECT_NO_THROW(text.draw("text", 8, 80, nullptr, &white));
  EXPECT_NO_THROW(text.drawLine("text", 8, 80, "", &white));
  EXPECT_TRUE(shows(blank()));
}

TEST_F(QGLSurfaceTextTest, a_font_without_rectangles_draws_nothing_and_throws_nothing) {
  text.glyphRects.erase("default");
  EXPECT_NO_THROW(text.draw("text", 8, 80, "default", &white));
  text.glyphRects["fixed"].clear();
  EXPECT_NO_THROW(text.draw("text", 8, 80, "fixed", &white));
  EXPECT_TRUE(shows(blank()));
  text.glyphRects["large"].resize('b' - 32 + 1);
  EXPECT_NO_THROW(text.draw("abc\xC3\xBF", 8, 80, "large", &white));
  Model model = blank();
  model.text(FontOf("Cambria", 15), CodesOf("ab"), 8, 80, whitePixel);
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, draws_large_letters_from_the_far_end_of_a_long_strip) {
  // At this size the strip is longer than the coordinates of a painter reach.
  text.addFont("huge", "Cambria", 260, false, false);
  ASSERT_GT(text.strip("huge")->width(), 32767);
  text.drawLine("\xC3\xBE", -40, 300, "huge", &white);  // code 254
  Model model = blank();
  model.text(FontOf("Cambria", 260), {254}, -40, 300, whitePixel);
  EXPECT_NE(model.pixels, blank().pixels);
  EXPECT_TRUE(shows(model));
}

TEST_F(QGLSurfaceTextTest, has_no_strip_for_an_absurd_size_and_draws_nothing) {
  EXPECT_EQ(text.addFont("absurd", "Cambria", std::numeric_limits<int>::max(), false, false), 6);
  EXPECT_EQ(text.addFont("absurd", "Cambria", std::numeric_limits<int>::min(), false, false), 6);
  EXPECT_NO_THROW(text.draw("text", 8, 80, "absurd", &white));
  EXPECT_TRUE(shows(blank()));
}

TEST_F(QGLSurfaceTextTest, draws_nothing_while_no_context_is_current) {
  surface->end(nullptr, false);
  text.draw("text", 8, 80, "default", &white);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_TRUE(shows(blank()));
}
