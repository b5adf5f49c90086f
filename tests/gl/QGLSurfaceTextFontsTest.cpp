#include <gtest/gtest.h>

#include <algorithm>

#include "GLTextHelpers.h"

TEST(QGLSurfaceTextFonts, refuse_an_empty_name_and_an_empty_or_absent_face) {
  OpenText text;
  EXPECT_EQ(text.addFont("x", "", 10, false, false), -1);
  EXPECT_EQ(text.addFont("x", nullptr, 10, false, false), -1);
  EXPECT_EQ(text.addFont("", "Cambria", 10, false, false), -1);
  EXPECT_EQ(text.addFont(nullptr, "Cambria", 10, false, false), -1);
  EXPECT_EQ(text.glyphRects.size(), 5u);
  EXPECT_EQ(text.glyphStrip.Count(), 5);
}

TEST(QGLSurfaceTextFonts, take_a_negative_size_without_its_sign_and_keep_its_text) {
  OpenText text;
  EXPECT_EQ(text.addFont("extra", "Cambria", -12, true, true), 6);
  QTD::PROPERTIES& list = *text.findFont("extra");
  const QFont font(QStringLiteral("Cambria"), 12, QFont::Bold, true);
  EXPECT_EQ(list.GetString("size"), "-12");
  EXPECT_EQ(list.GetString("name"), "extra");
  EXPECT_EQ(list.GetString("face"), "Cambria");
  EXPECT_EQ(list.GetString("bold"), "1");
  EXPECT_EQ(list.GetString("italic"), "1");
  EXPECT_EQ(list.GetInt("height"), HeightOf(font));
  EXPECT_EQ(list.GetInt("ascent"), QFontMetrics(font).ascent());
  EXPECT_EQ(list.GetInt("descent"), QFontMetrics(font).descent());
  EXPECT_EQ(list.GetString("intv"), "0;0");
  const auto* const own = static_cast<const QFont*>(list.GetPointer("font"));
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->pointSize(), 12);
  EXPECT_EQ(own->weight(), QFont::Bold);
  EXPECT_TRUE(own->italic());
}

TEST(QGLSurfaceTextFonts, have_224_rectangles_side_by_side_and_a_strip_around_them) {
  OpenText text;
  for (const auto& [name, rects] : text.glyphRects) {
    const auto* const own = static_cast<const QFont*>(text.findFont(name.c_str())->GetPointer("font"));
    ASSERT_EQ(rects.size(), 224u);
    int x = 0, highest = 0;
    for (int code = 32; code < 256; ++code) {
      const QRect bounds = BoundsOf(*own, QString(QChar(code == 32 ? 'i' : code)));
      const QTD::RectI& rect = rects[static_cast<size_t>(code - 32)];
      EXPECT_EQ(rect.x, x);
      EXPECT_EQ(rect.y, 0);
      EXPECT_EQ(rect.width, bounds.width());
      EXPECT_EQ(rect.height, bounds.height() + 1);
      x += bounds.width();
      highest = std::max(highest, bounds.height() + 1);
    }
    const QImage* const strip = text.strip(name.c_str());
    ASSERT_NE(strip, nullptr);
    EXPECT_EQ(strip->width(), (x + 3) / 4 * 4);
    EXPECT_EQ(strip->height(), highest);
    EXPECT_EQ(strip->format(), QImage::Format_RGB888);
  }
}

TEST(QGLSurfaceTextFonts, are_replaced_together_with_strip_and_rectangles) {
  OpenText text;
  EXPECT_TRUE(text.isValid());
  EXPECT_EQ(text.addFont("extra", "Courier New", 12, false, false), 6);
  const int wide = text.strip("extra")->width();
  EXPECT_EQ(text.addFont("extra", "Courier New", 24, false, false), 6);
  EXPECT_GT(text.strip("extra")->width(), wide);
  EXPECT_GT(text.glyphRects["extra"][223].x, wide);
  EXPECT_EQ(text.findFont("extra")->GetString("size"), "24");
  for (int i = 0; i < 20; ++i) {  // names come and go without a trace
    text.removeFont("extra");
    EXPECT_EQ(text.glyphStrip.Count(), 5);
    EXPECT_FALSE(text.glyphStrip.Has("extra"));
    EXPECT_EQ(text.glyphRects.size(), 5u);
    EXPECT_EQ(text.addFont("extra", "Cambria", 11, false, false), 6);
  }
  text.removeFont("never there");
  text.removeFont(nullptr);
  text.removeFont("");
  EXPECT_EQ(text.glyphStrip.Count(), 6);
  text.clearFonts();
  EXPECT_FALSE(text.isValid());
  EXPECT_EQ(text.glyphStrip.Count(), 0);
  EXPECT_TRUE(text.glyphRects.empty());
  EXPECT_EQ(text.alphaTable[255], 1.0f) << "stays";
}
