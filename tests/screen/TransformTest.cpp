// Coordinates between "win", "img" and "scr".
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "tests/screen/ScreenFixture.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Point {
  double x, y;
  bool inside;
};

Point Carry(QTDScreen& screen, double x, double y, const char* from, const char* to, bool position = true,
            bool clamp = false) {
  const bool inside = screen.transform(&x, &y, from, to, position, clamp);
  return {x, y, inside};
}

void ExpectPoint(const Point& point, double x, double y, bool inside) {
  EXPECT_NEAR(point.x, x, 1e-9);
  EXPECT_NEAR(point.y, y, 1e-9);
  EXPECT_EQ(point.inside, inside);
}

// 4000 x 2000 image pixels at two to a window pixel: 2000 x 1000 in a window of 1000 x 1200, at (-500, 100).
struct HalfView : View {
  HalfView() : View(1000, 1200, 4000, 2000, 0) { screen.setScale(2); }
};

}  // namespace

TEST(Transform, carries_a_point_between_all_systems) {
  HalfView view;
  ASSERT_EQ(view.screen.pictureX, -500.0);
  ASSERT_EQ(view.screen.pictureY, 100.0);
  ExpectPoint(Carry(view.screen, 250, 350, "win", "img"), 1500, 500, true);
  ExpectPoint(Carry(view.screen, 250, 350, "win", "scr"), 750, 250, true);
  ExpectPoint(Carry(view.screen, 1500, 500, "img", "win"), 250, 350, true);
  ExpectPoint(Carry(view.screen, 1500, 500, "img", "scr"), 750, 250, true);
  ExpectPoint(Carry(view.screen, 750, 250, "scr", "win"), 250, 350, true);
  ExpectPoint(Carry(view.screen, 750, 250, "scr", "img"), 1500, 500, true);
  ExpectPoint(Carry(view.screen, 750, 250, "scr", "scr"), 750, 250, true);
}

TEST(Transform, carries_a_length_without_the_pictures_position) {
  HalfView view;
  ExpectPoint(Carry(view.screen, 250, 350, "win", "img", false), 500, 700, true);
  ExpectPoint(Carry(view.screen, 500, 700, "img", "win", false), 250, 350, true);
}

TEST(Transform, compares_names_without_regard_to_case) {
  HalfView view;
  ExpectPoint(Carry(view.screen, 250, 350, "WiN", "IMG"), 1500, 500, true);
}

TEST(Transform, refuses_unknown_sources_and_leaves_the_point) {
  HalfView view;
  for (const char* name : {"", "base", "window", "wi", "image", static_cast<const char*>(nullptr)}) {
    ExpectPoint(Carry(view.screen, 250, 350, name, "img"), 250, 350, false);
  }
}

TEST(Transform, leaves_fractions_for_an_unknown_target) {
  HalfView view;
  for (const char* name : {"", "base", "window", static_cast<const char*>(nullptr)}) {
    ExpectPoint(Carry(view.screen, 1000, 500, "img", name), 0.25, 0.25, false);
  }
}

TEST(Transform, tells_whether_the_point_lay_on_the_picture) {
  HalfView view;
  EXPECT_TRUE(Carry(view.screen, 0, 0, "img", "win").inside);
  EXPECT_TRUE(Carry(view.screen, 4000, 2000, "img", "win").inside);
  EXPECT_FALSE(Carry(view.screen, 4000.001, 2000, "img", "win").inside);
  EXPECT_FALSE(Carry(view.screen, 0, -0.001, "img", "win").inside);
  EXPECT_FALSE(Carry(view.screen, 500, 99, "win", "img").inside);
}

TEST(Transform, carries_a_point_off_the_picture_and_clamps_it_on_request) {
  View view(1000, 1000, 500, 500, 3);
  ASSERT_EQ(view.screen.pictureX, 250.0);
  ExpectPoint(Carry(view.screen, 900, 500, "win", "img"), 650, 250, false);
  ExpectPoint(Carry(view.screen, 900, 500, "win", "img", true, true), 500, 250, false);
  ExpectPoint(Carry(view.screen, 100, 500, "win", "img", true, true), 0, 250, false);
  ExpectPoint(Carry(view.screen, 900, 500, "win", "scr", true, true), 500, 250, false);
  ExpectPoint(Carry(view.screen, 900, -900, "img", "win", true, true), 1000, 0, false);
}

TEST(Transform, clamps_a_length_in_the_window_only_while_the_picture_is_smaller) {
  View small(1000, 1000, 500, 500, 3);
  ExpectPoint(Carry(small.screen, 1200, -5, "img", "win", false, true), 1000, 0, false);
  View large(1000, 1000, 4000, 500, 3);
  ExpectPoint(Carry(large.screen, 5000, -5, "img", "win", false, true), 5000, -5, false);
}

TEST(Transform, takes_either_coordinate_alone) {
  HalfView view;
  double x = 250, y = 350;
  EXPECT_TRUE(view.screen.transform(&x, nullptr, "win", "img", true, true));
  EXPECT_NEAR(x, 1500, 1e-9);
  EXPECT_TRUE(view.screen.transform(nullptr, &y, "win", "img", true, true));
  EXPECT_NEAR(y, 500, 1e-9);
  EXPECT_TRUE(view.screen.transform(nullptr, nullptr, "win", "img", true, true));
}

TEST(Transform, answers_zero_without_a_picture_and_nothing_infinite) {
  View view;
  for (int ready = 0; ready < 2; ++ready) {
    for (const char* from : {"win", "img", "scr"}) {
      for (const char* to : {"win", "img", "scr", "base"}) {
        for (bool position : {false, true}) {
          for (bool clamp : {false, true}) {
            const Point point = Carry(view.screen, 250, 350, from, to, position, clamp);
            EXPECT_EQ(point.x, 0.0) << from << to;
            EXPECT_EQ(point.y, 0.0) << from << to;
          }
        }
      }
    }
    view.screen.setWindowSize(100, 100);
  }
}

TEST(Transform, makes_numbers_of_what_is_none) {
  HalfView view;
  for (double value : {std::nan(""), kInfinity, -kInfinity, 1.7e308, -1.7e308}) {
    for (const char* from : {"win", "img", "scr"}) {
      for (const char* to : {"win", "img", "scr"}) {
        const Point point = Carry(view.screen, value, 10, from, to);
        EXPECT_TRUE(std::isfinite(point.x)) << value << from << to;
        EXPECT_FALSE(point.inside) << value << from << to;
      }
    }
  }
  EXPECT_EQ(Carry(view.screen, kInfinity, 10, "win", "img", true, true).x, 4000.0);
  EXPECT_EQ(Carry(view.screen, std::nan(""), 10, "win", "img", true, true).x, 1000.0)
      << "that of 0 in the window";
}

TEST(ClampPoint, holds_a_point_on_the_picture) {
  View view(1000, 1000, 500, 400, 3);
  const QTD::RectD picture = view.screen.Picture();
  ASSERT_EQ(picture.x, 250.0);
  ASSERT_EQ(picture.y, 300.0);
  QTD::PairD point(300, 400);
  EXPECT_FALSE(view.screen.clampPoint(&point, nullptr));
  EXPECT_EQ(point, QTD::PairD(300, 400));
  point = {100, 400};
  EXPECT_TRUE(view.screen.clampPoint(&point, nullptr));
  EXPECT_EQ(point, QTD::PairD(250, 400));
  point = {900, 900};
  EXPECT_TRUE(view.screen.clampPoint(&point, nullptr));
  EXPECT_EQ(point, QTD::PairD(750, 700));
  point = {250 - 1e-8, 400};
  EXPECT_FALSE(view.screen.clampPoint(&point, nullptr)) << "a move below 1e-7 is none";
  EXPECT_FALSE(view.screen.clampPoint(nullptr, nullptr));
}

TEST(ClampPoint, holds_a_size_and_answers_by_the_size_alone) {
  View view(1000, 1000, 500, 400, 3);
  QTD::PairD point(100, 400), size(400, 100);
  EXPECT_FALSE(view.screen.clampPoint(&point, &size)) << "the point moved, the size did not";
  EXPECT_EQ(point.first, 250.0);
  point = {650, 400};
  size = {400, 1000};
  EXPECT_TRUE(view.screen.clampPoint(&point, &size));
  EXPECT_EQ(size, QTD::PairD(100, 300));
  size = {-5, 1000};
  EXPECT_TRUE(view.screen.clampPoint(nullptr, &size));
  EXPECT_EQ(size, QTD::PairD(0, 400));
  size = {std::nan(""), kInfinity};
  EXPECT_TRUE(view.screen.clampPoint(nullptr, &size));
  EXPECT_EQ(size, QTD::PairD(0, 400));
}

TEST(ClampPoint, leaves_no_room_at_the_far_edge_and_never_less) {
  View view(1000, 1000, 1237, 911, 0);
  for (int i = 1; i <= 2000; ++i) {
    view.screen.setScale(0.1 + i * 0.0037);
    QTD::PairD point(1e9, 1e9), size(10, 10);
    EXPECT_TRUE(view.screen.clampPoint(&point, &size));
    EXPECT_EQ(size, QTD::PairD(0, 0)) << "scale " << view.screen.Scale();
  }
}

namespace {

// Takes one step of any kind, with arguments that make sense and some that do not.
class RandomWalk {
 public:
  explicit RandomWalk(unsigned seed) : random(seed) {}

  int Int(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
  double Real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }

  std::string Step(TestScreen& screen) {
    switch (Int(0, 13)) {
      case 0:
        screen.zoom(Int(0, 1) == 0, Real(-0.5, 3), Int(0, 4) == 0);
        return "zoom";
      case 1:
        screen.properties.Set("zoom.align", std::to_string(Int(0, 1)));
        return "zoom.align";
      case 2:
        screen.setFit(Int(-1, 4), Int(0, 1) == 0);
        return "setFit";
      case 3:
        screen.setWindowSize(Int(-5, 2500), Int(-5, 2500));
        return "setWindowSize";
      case 4:
        screen.setImageSize(Int(-5, 9000), Int(-5, 9000));
        return "setImageSize";
      case 5:
        screen.setCenter(Real(-0.5, 1.5), Real(-0.5, 1.5));
        return "setCenter";
      case 6:
        screen.setCenter(Int(0, 1) ? std::nan("") : kInfinity, -1);
        return "setCenter of no number";
      case 7:
        screen.moveBy(Int(0, 1) == 0, Int(-9, 9));
        return "moveBy";
      case 8:
        screen.moveTo(Int(-3000, 3000), Int(-3000, 3000), Int(0, 1) ? "win" : "scr");
        return "moveTo";
      case 9:
        screen.setScrollPos(Int(-5, 40000), Int(-5, 40000));
        return "setScrollPos";
      case 10:
        screen.zoomToRect({Int(-500, 3000), Int(-500, 3000), Int(-5, 2000), Int(-5, 2000)}, Int(0, 1) == 0);
        return "zoomToRect";
      case 11:
        screen.dragStart(Int(0, 2000), Int(0, 2000));
        return "dragStart";
      case 12:
        screen.dragMove(Int(-500, 2500), Int(-500, 2500));
        return "dragMove";
      default:
        if (Int(0, 1)) {
          screen.dragEnd();
          return "dragEnd";
        }
        screen.dragCancel();
        return "dragCancel";
    }
  }

 private:
  std::mt19937 random;
};

// The rules of a view, without reference to how it was computed.
void ExpectWholeView(TestScreen& screen, RandomWalk& walk) {
  ASSERT_TRUE(screen.centerFractionX >= 0 && screen.centerFractionX <= 1) << screen.centerFractionX;
  ASSERT_TRUE(screen.centerFractionY >= 0 && screen.centerFractionY <= 1) << screen.centerFractionY;
  ASSERT_TRUE(std::isfinite(screen.scale) && screen.scale > 0) << screen.scale;
  const struct {
    double start, length, window, image;
  } axes[] = {
      {screen.pictureX, screen.pictureWidth, screen.windowWidth, static_cast<double>(screen.imageWidth)},
      {screen.pictureY, screen.pictureHeight, screen.windowHeight, static_cast<double>(screen.imageHeight)}};
  for (const auto& axis : axes) {
    ASSERT_NEAR(axis.length * screen.scale, axis.image, 1e-6);
    if (screen.windowWidth == 0) continue;
    if (axis.length > axis.window) {
      ASSERT_LE(axis.start, 1e-6) << "gap at the near edge";
      ASSERT_GE(axis.start + axis.length, axis.window - 1e-6) << "gap at the far edge";
    } else {
      ASSERT_NEAR(axis.start + axis.length / 2, axis.window / 2, 1e-6)
          << "a small picture stands in the middle";
    }
  }
  if (screen.imageWidth == 0) return;

  const double x = walk.Real(-2000, 4000);
  const double y = walk.Real(-2000, 4000);
  const Point image = Carry(screen, x, y, "win", "img");
  ASSERT_NEAR(image.x, (x - screen.pictureX) * screen.scale, 1e-6 * (1 + std::fabs(image.x)));
  ASSERT_NEAR(image.y, (y - screen.pictureY) * screen.scale, 1e-6 * (1 + std::fabs(image.y)));
  const Point back = Carry(screen, image.x, image.y, "img", "win");
  ASSERT_NEAR(back.x, x, 1e-6);
  ASSERT_NEAR(back.y, y, 1e-6);
  const Point over = Carry(screen, image.x, image.y, "img", "scr");
  ASSERT_NEAR(over.x, x - screen.pictureX, 1e-6);
  const Point length = Carry(screen, x, y, "win", "img", false);
  ASSERT_NEAR(length.x, x * screen.scale, 1e-6 * (1 + std::fabs(length.x)));
}

}  // namespace

TEST(Transform, holds_its_rules_over_thousands_of_random_steps) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    View view;
    RandomWalk walk(seed);
    for (int i = 0; i < 2000; ++i) {
      const std::string step = walk.Step(view.screen);
      ExpectWholeView(view.screen, walk);
      if (testing::Test::HasFatalFailure()) {
        FAIL() << "seed " << seed << ", step " << i << ": " << step;
      }
    }
  }
}
