#include "QTD/screen/SurfaceText.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QFontMetrics>
#include <QString>
#include <climits>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Line {
  std::string text;
  int x, y;
  std::string font;
  int red;
};

class Text : public QTD::SurfaceText {
 public:
  explicit Text(bool standard = false) {
    if (standard) addStandardFonts();
  }
  ~Text() override { clearFonts(); }

  int addFont(const char* name, const char* face, int size, bool bold, bool italic) override {
    order.push_back(name ? name : "");
    return enterFont(name, face, size, bold, italic);
  }
  void drawLine(const char* text, int x, int y, const char* font, const ColorValue* color) override {
    lines.push_back({text, x, y, font ? font : "", color ? color->red : -1});
  }
  void removeFont(const char* name) override {
    removed.push_back(name ? name : "");
    if (!stubborn) SurfaceText::removeFont(name);
  }
  bool isValid() override { return valid; }

  std::string value(const char* font, const char* key) {
    QTD::PROPERTIES* list = findFont(font);
    return list ? list->GetString(key) : "no font";
  }
  int height(const char* font) { return findFont(font)->GetInt("height"); }
  QFont* qfont(const char* font) { return static_cast<QFont*>(findFont(font)->GetPointer("font")); }
  using SurfaceText::defaultColor;
  using SurfaceText::findFont;
  using SurfaceText::fonts;

  std::vector<std::string> order, removed;
  std::vector<Line> lines;
  bool valid = true;
  bool stubborn = false;
};

QRect Bounds(const QFont& font, const char* text) {
  return QFontMetrics(font).boundingRect(QString::fromUtf8(text));
}

}  // namespace

TEST(SurfaceText, offers_nothing_in_the_base) {
  QTD::SurfaceText text;
  EXPECT_EQ(text.getStatus(), 0);
  EXPECT_FALSE(text.isValid());
  EXPECT_EQ(text.addFont("name", "face", 11, false, false), 0);
  EXPECT_EQ(text.addFont("", "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", "", 11, false, false), -1);
  EXPECT_EQ(text.addFont(nullptr, "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", nullptr, 11, false, false), -1);
  text.draw("a\nb", 0, 0, "", nullptr);
  text.drawLine(nullptr, 0, 0, nullptr, nullptr);
  int width = 5, height = 5;
  text.measure("none", "a", &width, &height);
  EXPECT_EQ(width, 0);
  EXPECT_EQ(height, 0);
}

TEST(SurfaceText, refuses_a_font_without_a_name_or_a_face) {
  Text text;
  EXPECT_EQ(text.addFont("", "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", "", 11, false, false), -1);
  EXPECT_EQ(text.addFont(nullptr, "Cambria", 11, false, false), -1);
  EXPECT_EQ(text.addFont("name", nullptr, 11, false, false), -1);
  EXPECT_TRUE(text.fonts.empty());
}

TEST(SurfaceText, adds_the_five_standard_fonts_in_their_order) {
  Text text(true);
  EXPECT_EQ(text.order, (std::vector<std::string>{"default", "fixed", "bold", "medium", "large"}));
  const char* rows[][4] = {{"default", "Cambria", "11", "0"},
                           {"fixed", "Courier New", "12", "0"},
                           {"bold", "Cambria", "12", "1"},
                           {"medium", "Calibri", "13", "0"},
                           {"large", "Cambria", "15", "0"}};
  for (const auto& row : rows) {
    EXPECT_EQ(text.value(row[0], "name"), row[0]);
    EXPECT_EQ(text.value(row[0], "face"), row[1]);
    EXPECT_EQ(text.value(row[0], "size"), row[2]);
    EXPECT_EQ(text.value(row[0], "bold"), row[3]);
    EXPECT_EQ(text.value(row[0], "italic"), "0");
    EXPECT_EQ(text.qfont(row[0])->family(), QString::fromUtf8(row[1]));
    EXPECT_EQ(text.qfont(row[0])->pointSize(), std::stoi(row[2]));
    EXPECT_EQ(text.qfont(row[0])->weight(), row[3][0] == '1' ? QFont::Bold : QFont::Normal);
  }
}

TEST(SurfaceText, keeps_the_metrics_of_a_font) {
  Text text;
  EXPECT_EQ(text.addFont("one", "Cambria", 11, false, true), 1);
  EXPECT_EQ(text.addFont("two", "Cambria", 20, true, false), 2);
  for (const char* name : {"one", "two"}) {
    const QFontMetrics metrics(*text.qfont(name));
    EXPECT_EQ(text.value(name, "ascent"), std::to_string(metrics.ascent()));
    EXPECT_EQ(text.value(name, "descent"), std::to_string(metrics.descent()));
    const int measured = Bounds(*text.qfont(name), "A").height();
    EXPECT_EQ(text.value(name, "height"), std::to_string(measured - metrics.descent() / 2));
  }
  EXPECT_EQ(text.value("one", "italic"), "1");
  EXPECT_TRUE(text.qfont("one")->italic());
}

TEST(SurfaceText, makes_the_same_font_of_a_negative_size_and_keeps_the_sign) {
  Text text;
  text.addFont("plus", "Cambria", 14, false, false);
  text.addFont("minus", "Cambria", -14, false, false);
  EXPECT_EQ(*text.qfont("plus"), *text.qfont("minus"));
  EXPECT_EQ(text.value("minus", "size"), "-14");
  EXPECT_EQ(text.value("minus", "height"), text.value("plus", "height"));
  EXPECT_GT(text.addFont("absurd", "Cambria", INT_MIN, false, false), 0);
  EXPECT_GT(text.addFont("none", "Cambria", 0, false, false), 0);
}

TEST(SurfaceText, replaces_a_font_of_a_known_name) {
  Text text;
  EXPECT_EQ(text.addFont("one", "Cambria", 11, false, false), 1);
  text.removed.clear();
  EXPECT_EQ(text.addFont("one", "Calibri", 30, true, false), 1);
  EXPECT_EQ(text.removed, std::vector<std::string>{"one"}) << "the old font is freed";
  EXPECT_EQ(text.value("one", "face"), "Calibri");
  EXPECT_EQ(text.qfont("one")->pointSize(), 30);
}

TEST(SurfaceText, removes_fonts_one_by_one_from_the_first) {
  Text text(true);
  text.removed.clear();
  text.clearFonts();
  EXPECT_EQ(text.removed, (std::vector<std::string>{"bold", "default", "fixed", "large", "medium"}));
  EXPECT_TRUE(text.fonts.empty());
  text.removeFont("bold");
  text.removeFont("");
  text.removeFont(nullptr);
}

TEST(SurfaceText, removes_only_the_font_of_the_name) {
  Text text(true);
  text.removeFont("fixed");
  EXPECT_EQ(text.fonts.size(), 4u);
  EXPECT_EQ(text.findFont("fixed"), nullptr);
  text.removeFont("");
  EXPECT_EQ(text.fonts.size(), 4u);
}

TEST(SurfaceText, does_not_hang_on_a_font_that_stays) {
  Text text(true);
  text.stubborn = true;
  text.clearFonts();
  EXPECT_EQ(text.fonts.size(), 5u);
  text.stubborn = false;
}

TEST(SurfaceText, takes_an_empty_font_name_as_the_first_in_order) {
  Text text(true);
  EXPECT_EQ(text.findFont(""), text.findFont("bold"));
  EXPECT_EQ(text.findFont(nullptr), text.findFont("bold"));
  EXPECT_EQ(text.findFont("unknown"), nullptr);
  text.clearFonts();
  EXPECT_EQ(text.findFont(""), nullptr);
}

TEST(SurfaceText, draws_one_line_where_it_is_asked_to) {
  Text text(true);
  const ColorValue color(7, 0, 0);
  text.draw("one", 3, 4, "fixed", &color);
  ASSERT_EQ(text.lines.size(), 1u);
  EXPECT_EQ(text.lines[0].text, "one");
  EXPECT_EQ(text.lines[0].x, 3);
  EXPECT_EQ(text.lines[0].y, 4);
  EXPECT_EQ(text.lines[0].font, "fixed");
  EXPECT_EQ(text.lines[0].red, 7);
}

TEST(SurfaceText, draws_each_line_one_height_lower) {
  Text text(true);
  const int height = text.height("large");
  ASSERT_GT(height, 0);
  text.draw("one\n\nthree", 3, 4, "large", nullptr);
  ASSERT_EQ(text.lines.size(), 3u);
  EXPECT_EQ(text.lines[0].text, "one");
  EXPECT_EQ(text.lines[1].text, "");
  EXPECT_EQ(text.lines[1].y, 4 + height);
  EXPECT_EQ(text.lines[2].text, "three");
  EXPECT_EQ(text.lines[2].x, 3);
  EXPECT_EQ(text.lines[2].y, 4 + 2 * height);
}

TEST(SurfaceText, draws_in_the_default_colour_when_none_is_given) {
  Text text(true);
  text.defaultColor = ColorValue(99, 0, 0);
  text.draw("one", 0, 0, "", nullptr);
  ASSERT_EQ(text.lines.size(), 1u);
  EXPECT_EQ(text.lines[0].red, 99);
}

TEST(SurfaceText, draws_nothing_without_a_target_a_font_or_a_text) {
  Text text(true);
  text.draw("one", 0, 0, "unknown", nullptr);
  text.draw("", 0, 0, "fixed", nullptr);
  text.draw(nullptr, 0, 0, "fixed", nullptr);
  text.valid = false;
  text.draw("one", 0, 0, "fixed", nullptr);
  EXPECT_TRUE(text.lines.empty());
}

TEST(SurfaceText, holds_lines_below_the_end_of_the_number_range) {
  Text text(true);
  text.draw("a\nb", 0, INT_MAX, "fixed", nullptr);
  ASSERT_EQ(text.lines.size(), 2u);
  EXPECT_EQ(text.lines[1].y, INT_MAX);
}

TEST(SurfaceText, measures_one_line_as_the_bounds_of_its_glyphs) {
  Text text(true);
  int width = 0, height = 0;
  text.measure("medium", "Agj", &width, &height);
  const QRect bounds = Bounds(*text.qfont("medium"), "Agj");
  EXPECT_EQ(width, bounds.right() - bounds.left() + 1);
  EXPECT_EQ(height, bounds.bottom() - bounds.top() + 1);
  EXPECT_GT(width, 0);
}

TEST(SurfaceText, measures_an_empty_line_as_the_height_of_the_font) {
  Text text(true);
  for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
    int width = 9, height = 9;
    text.measureLine("medium", empty, &width, &height);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, text.height("medium"));
  }
  text.measureLine("medium", "a", nullptr, nullptr);
  text.measure("medium", "a\nb", nullptr, nullptr);
}

TEST(SurfaceText, measures_several_lines_as_the_widest_and_one_height_more_than_their_sum) {
  Text text(true);
  int width = 0, height = 0;
  text.measure("large", "wide line\ni\n", &width, &height);
  const QRect first = Bounds(*text.qfont("large"), "wide line");
  const QRect second = Bounds(*text.qfont("large"), "i");
  const int fontHeight = text.height("large");
  EXPECT_EQ(width, first.width());
  EXPECT_EQ(height, first.height() + second.height() + fontHeight + fontHeight);
}

TEST(SurfaceText, measures_text_behind_a_tab_from_the_next_stop) {
  Text text(true);
  const QFont& font = *text.qfont("fixed");
  const int stop = 4 * text.height("fixed");
  ASSERT_GT(stop, Bounds(font, "ab").width());
  int width = 0, height = 0;
  text.measure("fixed", "ab\tc", &width, &height);
  EXPECT_EQ(width, stop + Bounds(font, "c").width());
  EXPECT_EQ(height, Bounds(font, "ab").height());
  text.measure("fixed", "ab\tc\td", &width, &height);
  EXPECT_EQ(width, 2 * stop + Bounds(font, "d").width());
  text.measure("fixed", "ab\t", &width, &height);
  EXPECT_EQ(width, stop);
  text.measure("fixed", "\tc", &width, &height);
  EXPECT_EQ(width, stop + Bounds(font, "c").width());
}

TEST(SurfaceText, reads_text_as_utf8) {
  Text text(true);
  int one = 0, two = 0;
  text.measureLine("fixed", "\xC3\xA4", &one, nullptr);  // one letter
  text.measureLine("fixed", "\xC3\xA4x", &two, nullptr);
  EXPECT_EQ(one, Bounds(*text.qfont("fixed"), "\xC3\xA4").width());
  EXPECT_GT(two, one);
  text.measureLine("fixed", "\xFF\xFE\xC3", &one, nullptr);  // no UTF-8: any size will do, but no crash
  int height = 0;
  EXPECT_EQ(text.textSize(*text.qfont("fixed"), nullptr, &height), 0);
}

TEST(SurfaceText, measures_from_many_threads_while_fonts_come_and_go) {
  Text text(true);
  int expected = 0;
  text.measure("large", "Measure\tme", &expected, nullptr);
  std::vector<std::thread> threads;
  std::vector<int> wrong(3, 0);
  for (int& count : wrong) {
    threads.emplace_back([&text, &count, expected] {
      for (int i = 0; i < 100; ++i) {
        int width = 0;
        text.measure("large", "Measure\tme", &width, nullptr);
        if (width != expected) ++count;
      }
    });
  }
  for (int i = 0; i < 50; ++i) text.addFont("fixed", "Courier New", 10 + i % 5, false, false);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(3, 0));
}
