// What CPUSurface draws, against a painter that is told in Qt's own words what the operation must mean.
#include <functional>
#include <limits>

#include "cpu/screen/CPUSurface.h"
#include "tests/cpu/CPUSurfaceFixture.h"
#include "tests/cpu/DrawingHelpers.h"

namespace {

using CPUSurfaceDraw = CPUSurfaceFixture;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

QImage Painted(QImage canvas, const std::function<void(QPainter&)>& paint) {
  QPainter painter(&canvas);
  paint(painter);
  return canvas;
}

QPen PenOf(Qt::PenStyle style, const QColor& color = Qt::black, int width = 1) {
  QPen pen;
  pen.setStyle(style);
  pen.setColor(color);
  if (width != 1) pen.setWidth(width);
  return pen;
}

const CPUSurface::Points kZigzag = {{3, 5}, {60, 71}, {110, 20}, {8, 44}};

void DrawZigzag(QPainter& painter, const QPen& pen) {
  painter.setPen(pen);
  for (size_t i = 1; i < kZigzag.size(); ++i) {
    painter.drawLine(kZigzag[i - 1].first, kZigzag[i - 1].second, kZigzag[i].first, kZigzag[i].second);
  }
}

}  // namespace

TEST_F(CPUSurfaceDraw, polyline_takes_the_position_of_the_style_in_the_table) {
  struct Row {
    int style;
    Qt::PenStyle pen;
  };
  // 6 stands twice in the table, and the first one counts; a style that is not in it is no pen.
  constexpr Row kRows[] = {{0, Qt::SolidLine},      {1, Qt::NoPen},   {2, Qt::SolidLine},
                           {3, Qt::DashLine},       {4, Qt::DotLine}, {5, Qt::DashDotLine},
                           {6, Qt::DashDotDotLine}, {7, Qt::NoPen},   {-1, Qt::NoPen},
                           {kMost, Qt::NoPen}};
  const ColorValue red(0x0000FF);
  for (const Row& row : kRows) {
    beginBlank();
    surface.polyline(kZigzag, &red, 3, row.style);
    EXPECT_TRUE(SamePixels(
        canvas(),
        Painted(blank(), [&](QPainter& p) { DrawZigzag(p, PenOf(row.pen, QColor(255, 0, 0), 3)); })))
        << row.style;
  }
}

TEST_F(CPUSurfaceDraw, rect_takes_the_entry_of_the_table_at_the_style) {
  struct Row {
    int style;
    Qt::PenStyle pen;
  };
  constexpr Row kRows[] = {{0, Qt::SolidLine},         {1, Qt::DashLine},       {2, Qt::DotLine},
                           {3, Qt::DashDotLine},       {4, Qt::DashDotDotLine}, {5, Qt::CustomDashLine},
                           {6, Qt::CustomDashLine},    {7, Qt::CustomDashLine}, {-5, Qt::SolidLine},
                           {kMost, Qt::CustomDashLine}};
  const ColorValue green(0x00FF00);
  for (const Row& row : kRows) {
    beginBlank();
    surface.rect(10, 8, 70, 60, &green, 2, row.style);
    EXPECT_TRUE(SamePixels(canvas(), Painted(blank(),
                                             [&](QPainter& p) {
                                               p.setPen(PenOf(row.pen, QColor(0, 255, 0), 2));
                                               p.drawRect(10, 8, 70, 60);
                                             })))
        << row.style;
  }
}

TEST_F(CPUSurfaceDraw, line_with_style_0_width_1_and_black_uses_the_default_pen) {
  const ColorValue black;
  beginBlank(0xffffffff);
  surface.line(5, 6, 100, 70, &black, 1, 0);
  EXPECT_TRUE(SamePixels(canvas(), Painted(blank(0xffffffff), [](QPainter& p) {
                           p.setPen(QPen());
                           p.drawLine(5, 6, 100, 70);
                         })));
  EXPECT_EQ(canvas().pixel(5, 6), 0xff000000);
}

TEST_F(CPUSurfaceDraw, polyline_without_a_colour_is_black) {
  beginBlank(0xffffffff);
  surface.polyline({{0, 0}, {50, 0}}, nullptr, 1, 0);
  EXPECT_EQ(canvas().pixel(25, 0), 0xff000000);
}

TEST_F(CPUSurfaceDraw, polyline_of_fewer_than_two_points_draws_nothing) {
  const ColorValue white(0xFFFFFF);
  beginBlank();
  surface.polyline({}, &white, 5, 0);
  surface.polyline({{20, 20}}, &white, 5, 0);
  EXPECT_TRUE(SamePixels(canvas(), blank()));
}

TEST_F(CPUSurfaceDraw, pen_widths_are_those_of_qt) {
  const ColorValue blue(0xFF0000);
  for (const int width : {0, 2, 5, 40}) {
    beginBlank();
    surface.polyline(kZigzag, &blue, width, 0);
    EXPECT_TRUE(SamePixels(canvas(), Painted(blank(),
                                             [&](QPainter& p) {
                                               DrawZigzag(p, PenOf(Qt::SolidLine, QColor(0, 0, 255), width));
                                             })))
        << width;
  }
  beginBlank();
  surface.rect(20, 20, 30, 30, &blue, 0, 0);  // 0 leaves the default width
  EXPECT_TRUE(SamePixels(canvas(), Painted(blank(), [](QPainter& p) {
                           p.setPen(PenOf(Qt::SolidLine, QColor(0, 0, 255)));
                           p.drawRect(20, 20, 30, 30);
                         })));
}

TEST_F(CPUSurfaceDraw, rect_without_extent_draws_nothing_but_a_flat_one_does) {
  const ColorValue white(0xFFFFFF);
  beginBlank();
  surface.rect(20, 20, 0, 0, &white, 3, 0);
  EXPECT_TRUE(SamePixels(canvas(), blank()));
  surface.rect(20, 20, 30, 0, &white, 1, 0);
  EXPECT_EQ(canvas().pixel(35, 20), 0xffffffff);
}

TEST_F(CPUSurfaceDraw, rect_sets_black_too_and_takes_black_without_a_colour) {
  const ColorValue black;
  for (const ColorValue* color : {&black, static_cast<const ColorValue*>(nullptr)}) {
    beginBlank(0xffffffff);
    surface.rect(10, 10, 30, 30, color, 1, 0);
    EXPECT_EQ(canvas().pixel(20, 10), 0xff000000);
    EXPECT_EQ(canvas().pixel(20, 20), 0xffffffff);  // no brush
  }
}

TEST_F(CPUSurfaceDraw, colours_come_from_the_double_components_rounded) {
  beginBlank();
  const ColorValue half(128, 64, 255, 256);  // 0.5, 0.25 and 1.0
  surface.fill(0, 0, 10, 10, &half);
  EXPECT_EQ(canvas().pixel(5, 5), qRgb(128, 64, 255));  // 127.5, 63.75, 255
  const ColorValue deep(32768, 65535, 0, 65536);
  surface.fill(0, 0, 10, 10, &deep);
  EXPECT_EQ(canvas().pixel(5, 5), qRgb(128, 255, 0));
}

TEST_F(CPUSurfaceDraw, fill_of_minus_ones_without_a_colour_covers_all_in_black) {
  beginBlank();
  surface.fill(-1, -1, -1, -1, nullptr);
  EXPECT_TRUE(SamePixels(canvas(), blank(0xff000000)));
}

TEST_F(CPUSurfaceDraw, fill_reads_minus_one_as_the_surfaces_edge) {
  const ColorValue white(0xFFFFFF);
  struct Row {
    int x, y, w, h;
    QRect expected;
  };
  const Row kRows[] = {{-1, 10, 20, 30, {0, 10, 20, 30}},   {10, -1, 20, 30, {10, 0, 20, 30}},
                       {10, 20, -1, 30, {10, 20, 120, 30}}, {10, 20, 30, -1, {10, 20, 30, 90}},
                       {-2, -2, 10, 10, {-2, -2, 10, 10}},  {7, 8, 9, 10, {7, 8, 9, 10}}};
  for (const Row& row : kRows) {
    beginBlank();
    surface.fill(row.x, row.y, row.w, row.h, &white);
    EXPECT_TRUE(
        SamePixels(canvas(), Painted(blank(), [&](QPainter& p) { p.fillRect(row.expected, Qt::white); })));
  }
}

TEST_F(CPUSurfaceDraw, absurd_numbers_neither_crash_nor_take_long) {
  const ColorValue white(0xFFFFFF);
  const int kNumbers[] = {kLeast, -1, 0, 50, kMost};
  beginBlank();
  for (const int a : kNumbers) {
    for (const int b : kNumbers) {
      for (const int style : {0, 3}) {
        surface.line(a, b, b, a, &white, 1, style);
        surface.polyline({{a, a}, {b, b}, {a, b}}, &white, a, style);
        surface.rect(a, b, b, a, &white, b, style);
      }
      surface.fill(a, b, b, a, &white);
      surface.text("text", a, b, "", &white);
    }
  }
}

TEST_F(CPUSurfaceDraw, text_goes_to_the_painter_within_a_pass_only) {
  const ColorValue white(0xFFFFFF);
  surface.text("text", 10, 10, "", &white);
  beginBlank();
  EXPECT_TRUE(SamePixels(canvas(), blank()));
  surface.text("text", 10, 10, "", &white);
  EXPECT_FALSE(SamePixels(canvas(), blank()));
}
