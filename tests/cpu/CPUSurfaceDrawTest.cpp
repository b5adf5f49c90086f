// What CPUSurface draws, against a painter that is told in Qt's own words what the operation must mean.
#include <cmath>
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
  EXPECT_EQ(at(5, 6), 0xff000000);
}

TEST_F(CPUSurfaceDraw, polyline_without_a_colour_is_black) {
  beginBlank(0xffffffff);
  surface.polyline({{0, 0}, {50, 0}}, nullptr, 1, 0);
  EXPECT_EQ(at(25, 0), 0xff000000);
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
  EXPECT_EQ(at(35, 20), 0xffffffff);
}

TEST_F(CPUSurfaceDraw, rect_sets_black_too_and_takes_black_without_a_colour) {
  const ColorValue black;
  for (const ColorValue* color : {&black, static_cast<const ColorValue*>(nullptr)}) {
    beginBlank(0xffffffff);
    surface.rect(10, 10, 30, 30, color, 1, 0);
    EXPECT_EQ(at(20, 10), 0xff000000);
    EXPECT_EQ(at(20, 20), 0xffffffff);  // no brush
  }
}

TEST_F(CPUSurfaceDraw, colours_come_from_the_double_components_rounded) {
  beginBlank();
  const ColorValue half(128, 64, 255, 256);  // 0.5, 0.25 and 1.0
  surface.fill(0, 0, 10, 10, &half);
  EXPECT_EQ(at(5, 5), qRgb(128, 64, 255));  // 127.5, 63.75, 255
  const ColorValue deep(32768, 65535, 0, 65536);
  surface.fill(0, 0, 10, 10, &deep);
  EXPECT_EQ(at(5, 5), qRgb(128, 255, 0));
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

TEST_F(CPUSurfaceDraw, fill_reaches_from_far_outside_to_its_own_edges) {
  const ColorValue white(0xFFFFFF);
  struct Row {
    int x, y, w, h;
    QRect expected;
  };
  const Row kRows[] = {{-3000000, 0, 6000000, 90, {0, 0, 120, 90}},
                       {-3000000, 20, 3000050, 30, {0, 20, 50, 30}},
                       {20, -3000000, 30, 3000050, {20, 0, 30, 50}},
                       {50, 60, kMost, kMost, {50, 60, 70, 30}},
                       {-kMost, -kMost, kMost, kMost, {}},
                       {kLeast, 0, kMost, 90, {}},
                       {kMost, 0, kMost, 90, {}},
                       {-5000000, 0, 3000000, 90, {}}};
  for (const Row& row : kRows) {
    beginBlank();
    surface.fill(row.x, row.y, row.w, row.h, &white);
    EXPECT_TRUE(
        SamePixels(canvas(), Painted(blank(), [&](QPainter& p) { p.fillRect(row.expected, Qt::white); })))
        << row.x << ", " << row.y << " " << row.w << "x" << row.h;
  }
}

TEST_F(CPUSurfaceDraw, rect_reaches_from_far_outside_to_its_own_edges) {
  const ColorValue white(0xFFFFFF);
  struct Row {
    int x, y, w, h;
    QRect seen;  // the same in the window, from just outside of it
  };
  const Row kRows[] = {{-3000000, 20, 3000050, 30, {-300, 20, 350, 30}},
                       {20, -3000000, 30, 3000050, {20, -300, 30, 350}},
                       {-3000000, -3000000, 3000050, 3000060, {-300, -300, 350, 360}},
                       {50, 60, kMost, kMost, {50, 60, 300, 300}},
                       {-3000000, -3000000, 6000000, 6000000, {}}};
  for (const Row& row : kRows) {
    for (const int width : {1, 3}) {
      beginBlank();
      surface.rect(row.x, row.y, row.w, row.h, &white, width, 0);
      EXPECT_TRUE(SamePixels(canvas(), Painted(blank(),
                                               [&](QPainter& p) {
                                                 if (row.seen.isNull()) return;
                                                 p.setPen(PenOf(Qt::SolidLine, Qt::white, width));
                                                 p.drawRect(row.seen);
                                               })))
          << row.x << ", " << row.y << " " << row.w << "x" << row.h << " by " << width;
    }
  }
}

TEST_F(CPUSurfaceDraw, lines_keep_their_slope_however_far_they_lead) {
  const ColorValue white(0xFFFFFF);
  struct Row {
    int x1, y1, x2, y2;
    double slope, atZero;  // y = atZero + slope * x
  };
  const Row kRows[] = {{0, 0, 4000000, 1000000, 0.25, 0},
                       {-4000000, -1000000, 4000000, 1000000, 0.25, 0},
                       {4000000, 1000000, -4000000, -1000000, 0.25, 0},
                       {-1000000, -250000, 1000000, 250000, 0.25, 0},
                       {0, 80, 2000000000, -1000000000 + 80, -0.5, 80},
                       {kLeast, kLeast, kMost, kMost, 1, 0},
                       {kLeast, 40, kMost, 40, 0, 40},
                       {-3000000, 10, 119, 10, 0, 10},
                       {-3000000, 30, 3000000, 60, 1e-5 * 0.5, 45}};
  for (const Row& row : kRows) {
    for (const int width : {1, 3}) {
      beginBlank();
      const double ratio = canvas().devicePixelRatioF();
      surface.line(row.x1, row.y1, row.x2, row.y2, &white, width, 0);
      for (int x = 3; x < 117; ++x) {
        const double centre = row.atZero + row.slope * x;
        // Where a line begins or ends, or leaves the window, its width is cut off.
        if (centre < 4 || centre > 85 || std::hypot(x - static_cast<double>(row.x1), centre - row.y1) < 4)
          continue;
        double sum = 0;
        int count = 0;
        for (int y = 0; y < canvas().height(); ++y) {
          if (canvas().pixel(static_cast<int>(x * ratio), y) == kBlank) continue;
          sum += y / ratio;
          ++count;
        }
        ASSERT_GT(count, 0) << row.x1 << ", " << row.y1 << " by " << width << " at " << x;
        ASSERT_NEAR(sum / count, centre, 1.01) << row.x1 << ", " << row.y1 << " by " << width << " at " << x;
      }
    }
  }
}

TEST_F(CPUSurfaceDraw, dashed_lines_from_far_outside_are_those_of_qt) {
  const ColorValue white(0xFFFFFF);
  for (const int width : {1, 3}) {
    for (const int far : {4000001, kMost}) {
      beginBlank();
      surface.line(-far, 40, far, 50, &white, width, 3);
      EXPECT_FALSE(SamePixels(canvas(), blank()));
      EXPECT_TRUE(SamePixels(canvas(), Painted(blank(),
                                               [&](QPainter& p) {
                                                 p.setPen(PenOf(Qt::DashLine, Qt::white, width));
                                                 p.drawLine(-far, 40, far, 50);
                                               })))
          << far << " by " << width;
    }
  }
}

TEST_F(CPUSurfaceDraw, lines_that_pass_far_outside_draw_nothing) {
  const ColorValue white(0xFFFFFF);
  beginBlank();
  surface.line(-4000000, 0, 0, 4000000, &white, 1, 0);
  surface.line(-4000000, -5000000, 4000000, -5000000, &white, 1, 0);
  surface.line(3000000, kLeast, 3000000, kMost, &white, 1, 0);
  surface.line(kMost, kMost, kMost, kMost, &white, 1, 0);
  EXPECT_TRUE(SamePixels(canvas(), blank()));
}

TEST_F(CPUSurfaceDraw, absurd_numbers_leave_what_follows_as_it_is) {
  const ColorValue white(0xFFFFFF);
  const int kNumbers[] = {kLeast, -1, 0, 50, kMost};
  for (const int a : kNumbers) {
    for (const int b : kNumbers) {
      beginBlank();
      for (const int style : {0, 3}) {
        surface.line(a, b, b, a, &white, 1, style);
        surface.polyline({{a, a}, {b, b}, {a, b}}, &white, a, style);
        surface.rect(a, b, b, a, &white, b, style);
      }
      surface.fill(a, b, b, a, &white);
      surface.text("text", a, b, "", &white);
      for (int y = 0; y < canvas().height(); ++y) {
        for (int x = 0; x < canvas().width(); ++x) {
          const QRgb pixel = canvas().pixel(x, y);  // text is smoothed between the two colours
          ASSERT_TRUE(qRed(pixel) >= 0x12 && qGreen(pixel) >= 0x34 && qBlue(pixel) >= 0x56) << x << ", " << y;
        }
      }
      surface.fill(-1, -1, -1, -1, nullptr);
      surface.rect(10, 10, 30, 30, &white, 1, 0);
      ASSERT_TRUE(SamePixels(canvas(), Painted(blank(0xff000000),
                                               [](QPainter& p) {
                                                 p.setPen(Qt::white);
                                                 p.drawRect(10, 10, 30, 30);
                                               })))
          << a << ", " << b;
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
