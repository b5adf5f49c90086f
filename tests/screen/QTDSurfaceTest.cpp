#include "QTD/screen/QTDSurface.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "QTD/screen/SurfaceText.h"

namespace {

struct Stroke {
  int x1, y1, x2, y2, width, style;
  bool operator==(const Stroke& o) const {
    return x1 == o.x1 && y1 == o.y1 && x2 == o.x2 && y2 == o.y2 && width == o.width && style == o.style;
  }
};

void PrintTo(const Stroke& s, std::ostream* out) {
  *out << s.x1 << "," << s.y1 << " " << s.x2 << "," << s.y2 << " w" << s.width << " s" << s.style;
}

class TextOfStatus : public QTD::SurfaceText {
 public:
  explicit TextOfStatus(int64_t value) { status = value; }
  void draw(const char* text, int x, int y, const char* font, const ColorValue*) override {
    seen = std::string(text) + "@" + std::to_string(x) + "," + std::to_string(y) + font;
  }
  std::string seen;
};

class Surface : public QTDSurface {
 public:
  void polyline(const Points& points, const ColorValue* color, int width, int style) override {
    ASSERT_EQ(points.size(), 2u);
    strokes.push_back({points[0].first, points[0].second, points[1].first, points[1].second, width, style});
    colors.push_back(color);
  }
  void setText(QTD::SurfaceText* text) { surfaceText.reset(text); }
  using QTDSurface::defaults;
  using QTDSurface::drawn;

  std::vector<Stroke> strokes;
  std::vector<const ColorValue*> colors;
};

}  // namespace

TEST(QTDSurface, begins_empty_with_black_defaults) {
  Surface surface;
  EXPECT_EQ(surface.size.width, 0);
  EXPECT_EQ(surface.Area().height, 0.0);
  ASSERT_EQ(surface.defaults.size(), 2u);
  EXPECT_TRUE(surface.defaults.at("line").IsBlack());
  EXPECT_TRUE(surface.defaults.at("fill").IsBlack());
  EXPECT_EQ(surface.Text(), nullptr);
}

TEST(QTDSurface, answers_false_and_draws_nothing_of_itself) {
  QTDSurface surface;
  QTD::PROPERTIES list;
  const ColorValue color;
  EXPECT_FALSE(surface.init(&list));
  EXPECT_FALSE(surface.done());
  EXPECT_FALSE(surface.begin(&list));
  EXPECT_FALSE(surface.isValid());
  EXPECT_EQ(surface.checkError("here %d", 1), 0);
  surface.polyline({{0, 0}, {1, 1}}, &color, 1, 0);
  surface.fill(0, 0, 5, 5, nullptr);
  surface.image(nullptr, nullptr, nullptr);
  surface.text(nullptr, 0, 0, nullptr, nullptr);
  surface.flush(nullptr);
  surface.end(nullptr, true);
  EXPECT_EQ(list.Count(), 0);
}

TEST(QTDSurface, describes_size_and_area) {
  QTDSurface surface;
  surface.resize(640, 480);
  surface.setArea({0, 0, 640, 480});
  const std::string plain = "(size=640;480; area=0.000000;0.000000-640.000000;480.000000)";
  EXPECT_EQ(surface.describe(""), plain);
  EXPECT_EQ(surface.describe(nullptr), plain);
  EXPECT_EQ(surface.describe("CPU"), "CPU " + plain);
}

TEST(QTDSurface, stores_the_size_it_is_given) {
  QTDSurface surface;
  surface.resize(-3, 7);
  EXPECT_EQ(surface.size.width, -3);
  EXPECT_EQ(surface.size.height, 7);
}

TEST(QTDSurface, draws_a_line_as_a_polyline_of_two_points) {
  Surface surface;
  surface.drawn = true;
  const ColorValue color(1, 2, 3);
  surface.line(1, 2, 3, 4, &color, 5, 6);
  EXPECT_EQ(surface.strokes, (std::vector<Stroke>{{1, 2, 3, 4, 5, 6}}));
  EXPECT_EQ(surface.colors.at(0), &color);
  EXPECT_FALSE(surface.drawn);
}

TEST(QTDSurface, draws_a_rectangle_with_a_thin_pen_as_four_lines) {
  Surface surface;
  surface.drawn = true;
  surface.rect(10, 20, 30, 40, nullptr, 1, 2);
  EXPECT_EQ(
      surface.strokes,
      (std::vector<Stroke>{
          {10, 20, 40, 20, 1, 2}, {10, 20, 10, 60, 1, 2}, {10, 60, 40, 60, 1, 2}, {40, 60, 40, 19, 1, 2}}));
  EXPECT_FALSE(surface.drawn);
}

TEST(QTDSurface, moves_the_left_edge_of_a_rectangle_by_half_a_wide_pen) {
  const int rows[][2] = {{-4, 0}, {-1, 0}, {0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}};
  for (const auto& row : rows) {
    Surface surface;
    surface.rect(10, 20, 30, 40, nullptr, row[0], 0);
    const int half = row[1];
    EXPECT_EQ(surface.strokes.at(1), (Stroke{10 + half, 20 - half, 10 + half, 60, row[0], 0}));
  }
}

TEST(QTDSurface, holds_a_rectangle_at_the_end_of_the_number_range) {
  Surface surface;
  surface.rect(INT_MAX, INT_MIN, INT_MAX, -5, nullptr, INT_MAX, 0);
  ASSERT_EQ(surface.strokes.size(), 4u);
  EXPECT_EQ(surface.strokes[0], (Stroke{INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, 0}));
}

TEST(QTDSurface, maps_to_and_from_the_area) {
  QTDSurface surface;
  surface.setArea({2.5, -12.5, 100, 100});
  EXPECT_EQ(surface.toAreaX(10), 7.5);
  EXPECT_EQ(surface.toAreaY(10), 22.5);
  EXPECT_EQ(surface.fromAreaX(10), 13);
  EXPECT_EQ(surface.fromAreaY(10), -3);
  EXPECT_EQ(surface.fromAreaX(1e12), INT_MAX);
}

TEST(QTDSurface, marks_text_as_drawn_unless_the_text_object_drew_nothing) {
  Surface surface;
  surface.text("a", 1, 2, "font", nullptr);
  EXPECT_TRUE(surface.drawn) << "no text object to ask";

  auto* silent = new TextOfStatus(0);
  surface.setText(silent);
  surface.text("a", 1, 2, "font", nullptr);
  EXPECT_EQ(silent->seen, "a@1,2font");
  EXPECT_FALSE(surface.drawn);

  surface.setText(new TextOfStatus(1));
  surface.text("a", 1, 2, "font", nullptr);
  EXPECT_TRUE(surface.drawn);
}
