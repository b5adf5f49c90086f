#include "cpu/screen/CPUSurfaceText.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <cstring>

#include "tests/cpu/DrawingHelpers.h"

namespace {

class CPUSurfaceTextTest : public testing::Test {
 protected:
  CPUSurfaceTextTest() : canvas(BlankCanvas(300, 120)), painter(&canvas) { text.setTarget(&painter); }

  static QFont fontOf(const char* face, int size, bool bold = false) {
    return QFont(QString::fromUtf8(face), size, bold ? QFont::Bold : QFont::Normal, false);
  }
  // As each Part of the text says: the height of "A" less half the descent.
  static int heightOf(const QFont& font) {
    const QFontMetrics metrics(font);
    return metrics.boundingRect(QStringLiteral("A")).height() - metrics.descent() / 2;
  }
  static void drawExpected(QImage& image, const QFont& font, const QColor& color, int x, int y,
                           const char* piece) {
    QPainter reference(&image);
    reference.setFont(font);
    reference.setPen(color);
    reference.drawText(x, y + heightOf(font), QString::fromUtf8(piece));
  }

  QImage canvas;
  QPainter painter;
  CPUSurfaceText text;
  const ColorValue white{0xFFFFFF};
  const QFont cambria = fontOf("Cambria", 11);
  const QFont courier = fontOf("Courier New", 12);
};

}  // namespace

TEST_F(CPUSurfaceTextTest, is_valid_while_it_has_a_painter) {
  EXPECT_TRUE(text.isValid());
  text.setTarget(nullptr);
  EXPECT_FALSE(text.isValid());
  text.draw("text", 10, 10, "default", &white);
  text.drawLine("text", 10, 10, "default", &white);
  EXPECT_TRUE(SamePixels(canvas, BlankCanvas(300, 120)));
}

TEST_F(CPUSurfaceTextTest, draws_with_the_top_of_the_line_at_y) {
  const ColorValue orange(0x1080FF);
  text.drawLine("Quartz 10 \xC2\xB5m", 12, 20, "default", &orange);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, cambria, QColor(255, 128, 16), 12, 20, "Quartz 10 \xC2\xB5m");
  EXPECT_TRUE(SamePixels(canvas, expected));
}

TEST_F(CPUSurfaceTextTest, takes_the_default_colour_and_the_first_font) {
  text.drawLine("first", 5, 5, "", nullptr);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, fontOf("Cambria", 12, true), Qt::black, 5, 5, "first");  // "bold" is first by name
  EXPECT_TRUE(SamePixels(canvas, expected));
}

TEST_F(CPUSurfaceTextTest, draws_nothing_without_font_or_text) {
  text.drawLine("text", 5, 5, "unknown", &white);
  text.drawLine("", 5, 5, "default", &white);
  text.drawLine(nullptr, 5, 5, "default", &white);
  text.draw(nullptr, 5, 5, "default", &white);
  text.clearFonts();
  text.drawLine("text", 5, 5, "", &white);
  EXPECT_TRUE(SamePixels(canvas, BlankCanvas(300, 120)));
}

TEST_F(CPUSurfaceTextTest, draws_the_second_line_one_height_lower) {
  text.draw("one\ntwo", 8, 6, "fixed", &white);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, courier, Qt::white, 8, 6, "one");
  drawExpected(expected, courier, Qt::white, 8, 6 + heightOf(courier), "two");
  EXPECT_TRUE(SamePixels(canvas, expected));
}

TEST_F(CPUSurfaceTextTest, leaves_text_behind_a_tab_unseen) {
  const char given[] = "A\tB";
  text.drawLine(given, 8, 6, "default", &white);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, cambria, Qt::white, 8, 6, "A");
  EXPECT_TRUE(SamePixels(canvas, expected));
  EXPECT_EQ(std::strcmp(given, "A\tB"), 0);
}

TEST_F(CPUSurfaceTextTest, draws_the_fonts_name_in_the_font_named_behind_a_tab) {
  text.drawLine("A\tfixed", 8, 6, "default", &white);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, cambria, Qt::white, 8, 6, "A");
  const int tab = 4 * heightOf(cambria);
  const int width = QFontMetrics(cambria).boundingRect(QStringLiteral("A")).width();
  drawExpected(expected, courier, Qt::white, 8 + (width / tab + 1) * tab, 6, "default");
  EXPECT_TRUE(SamePixels(canvas, expected));
}

TEST_F(CPUSurfaceTextTest, draws_what_stands_before_a_tab_at_the_end) {
  text.drawLine("end\t", 8, 6, "default", &white);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, cambria, Qt::white, 8, 6, "end");
  EXPECT_TRUE(SamePixels(canvas, expected));
}

TEST_F(CPUSurfaceTextTest, adds_and_replaces_fonts) {
  EXPECT_EQ(text.addFont("", "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", "", 11, false, false), -1);
  EXPECT_EQ(text.addFont(nullptr, "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", nullptr, 11, false, false), -1);
  EXPECT_EQ(text.addFont("extra", "Courier New", 12, false, false), 6);
  EXPECT_EQ(text.addFont("extra", "Cambria", -11, false, false), 6);
  text.drawLine("extra", 8, 6, "extra", &white);
  QImage expected = BlankCanvas(300, 120);
  drawExpected(expected, cambria, Qt::white, 8, 6, "extra");  // a negative size makes the same font
  EXPECT_TRUE(SamePixels(canvas, expected));
  text.removeFont("extra");
  text.drawLine("extra", 8, 60, "extra", &white);
  EXPECT_TRUE(SamePixels(canvas, expected));
}
