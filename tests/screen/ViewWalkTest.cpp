// The view under thousands of random steps: it never drifts, and every step goes where its rule says.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "tests/screen/ScreenFixture.h"
#include "tests/screen/ViewChecks.h"

using namespace view_walk;

namespace {

constexpr size_t kSteps = 4000;

struct Failure {
  size_t step;
  std::string problem;
};

// A view that is shown in a window, with its first picture, and the model of it.
struct Walker {
  explicit Walker(double ratio = 1, int windowWidth = 801, int windowHeight = 600, int imageWidth = 1999,
                  int imageHeight = 1025) {
    view.screen.setPixelRatio(ratio);
    model.ratio = ratio;
    view.screen.setWindowSize(windowWidth, windowHeight);
    model.x.window = windowWidth;
    model.y.window = windowHeight;
    model.scale = ratio;
    view.screen.setImageSize(imageWidth, imageHeight);
    model.SetImage(imageWidth, imageHeight);
  }
  void Take(const Step& step) {
    Apply(view.screen, model, step);
    Apply(model, step);
  }

  View view;
  Model model;
};

// The first step after which something does not hold.
std::optional<Failure> Walk(const Steps& steps, double ratio) {
  Walker walker(ratio);
  Dice points(1);
  for (size_t i = 0; i < steps.size(); ++i) {
    walker.Take(steps[i]);
    const std::string problem = Problem(walker.view.screen, walker.model, points);
    if (!problem.empty()) return Failure{i, problem};
  }
  return std::nullopt;
}

class ViewWalk : public testing::TestWithParam<uint32_t> {};

}  // namespace

TEST_P(ViewWalk, never_drifts_and_follows_its_rules) {
  const double ratios[] = {1, 1, 2, 1.5};
  const double ratio = ratios[GetParam() % 4];
  Steps steps = RollSteps(GetParam(), kSteps, {});
  const std::optional<Failure> failure = Walk(steps, ratio);
  if (!failure) return;
  steps.resize(failure->step + 1);
  const Steps fewer =
      Shrunk(steps, [ratio](const Steps& candidate) { return Walk(candidate, ratio).has_value(); });
  ADD_FAILURE() << "seed " << GetParam() << ", ratio " << ratio << ", step " << failure->step << ": "
                << failure->problem << "\nthe steps that it takes:\n"
                << Told(fewer, fewer.size()) << "which end with: " << Walk(fewer, ratio)->problem;
}

INSTANTIATE_TEST_SUITE_P(seeds, ViewWalk, testing::Range(1u, 9u));

// The walks see all there is: steps that are held and steps that are not, ladder and free ones, folded bars.
TEST(ViewWalkSteps, reach_all_that_they_are_to_check) {
  int folded = 0, centred = 0, crossed = 0, limited = 0, large = 0;
  Walker walker;
  for (const Step& step : RollSteps(1, kSteps, {})) {
    walker.Take(step);
    const Model& model = walker.model;
    double unit = 1;
    model.x.Range(model.scale, &unit);
    folded += unit > 1;
    centred += model.x.Length(model.scale) < model.x.window;
    crossed += model.Lower() > model.Upper();
    limited += model.scale == model.Lower() || model.scale == model.Upper();
    large += model.x.Length(model.scale) > model.x.window;
  }
  EXPECT_GT(folded, 20);
  EXPECT_GT(centred, 200);
  EXPECT_GT(crossed, 100);
  EXPECT_GT(limited, 100);
  EXPECT_GT(large, 200);
}

TEST(ViewLadder, every_rung_leads_up_and_down_as_the_table_says) {
  for (const double ratio : {1.0, 2.0}) {
    for (const Rung& rung : kRungs) {
      Walker walker(ratio, 640, 480, 4000, 3000);
      QTDScreen& screen = walker.view.screen;
      screen.setScale(ratio * 100 / static_cast<double>(rung.percent));
      ASSERT_EQ(screen.zoomPercent(), rung.percent);
      screen.zoom(true, -1, false);
      EXPECT_EQ(screen.zoomPercent(), rung.in) << "in from " << rung.percent;
      EXPECT_DOUBLE_EQ(screen.Scale(), ratio / (static_cast<double>(rung.in) / 100));
      screen.zoom(false, -1, false);
      EXPECT_EQ(screen.zoomPercent(), rung.percent) << "in and out from " << rung.percent;
      screen.zoom(false, -1, false);
      EXPECT_EQ(screen.zoomPercent(), rung.out) << "out from " << rung.percent;
      screen.zoom(true, -1, false);
      EXPECT_EQ(screen.zoomPercent(), rung.percent == 5 ? 10 : rung.percent)
          << "out and in from " << rung.percent;
    }
  }
}

namespace {

// A step that can be undone, and the one that undoes it.
struct Pair {
  Step there, back;
};

// Ladder steps from rung to rung, pans and arrow keys.
Pair RollPair(Dice& dice) {
  Step step{Kind::Drag};
  switch (dice.Whole(0, 4)) {
    case 0:
      return {Step{Kind::ZoomIn}, Step{Kind::ZoomOut}};
    case 1:
      return {Step{Kind::ZoomOut}, Step{Kind::ZoomIn}};
    case 2: {
      step.kind = Kind::MoveBy;
      step.a = dice.Whole(0, 1);
      step.b = dice.Whole(-2, 2);
      Step back = step;
      back.b = -step.b;
      return {step, back};
    }
    default: {
      step.a = step.b = 50;
      step.c = dice.Whole(-60, 60);
      step.d = dice.Whole(-60, 60);
      Step back = step;
      back.c = -step.c;
      back.d = -step.d;
      return {step, back};
    }
  }
}

struct Corners {
  explicit Corners(QTDScreen& screen, const Model& model)
      : first(Carried(screen, {0, 0}, "win", "img")),
        last(Carried(screen, {model.x.window, model.y.window}, "win", "img")) {}
  QTD::PairD first, last;
};

void ExpectSame(const Corners& is, const Corners& was, const std::string& where) {
  EXPECT_NEAR(is.first.first, was.first.first, kBound) << where;
  EXPECT_NEAR(is.first.second, was.first.second, kBound) << where;
  EXPECT_NEAR(is.last.first, was.last.first, kBound) << where;
  EXPECT_NEAR(is.last.second, was.last.second, kBound) << where;
}

}  // namespace

// Wherever no edge and no limit came in between.
TEST(ViewLoops, steps_that_are_undone_one_by_one_lead_back) {
  constexpr int kLoops = 1500;
  int closed = 0, longest = 0;
  for (int loop = 0; loop < kLoops; ++loop) {
    Dice dice(static_cast<uint32_t>(loop));
    Walker walker(1, dice.Whole(100, 1500), dice.Whole(100, 1500), dice.Whole(3000, 20000),
                  dice.Whole(3000, 20000));
    walker.Take(Step{Kind::Scale, 0, 0, 0, 0, 100.0 / static_cast<double>(dice.Of({40, 50, 75, 100, 200}))});
    walker.Take(Step{Kind::Center, 0, 0, 0, 0, dice.Real(0.3, 0.7), dice.Real(0.3, 0.7)});
    walker.model.moved = false;
    const Corners before(walker.view.screen, walker.model);
    const double scale = walker.view.screen.Scale();

    Steps back;
    std::string told = "loop " + std::to_string(loop) + ":\n";
    const int count = dice.Whole(1, 30);
    for (int i = 0; i < count; ++i) {
      const Pair pair = RollPair(dice);
      // No step leads out of the last rung, and one in would leave it.
      if (pair.there.kind == Kind::ZoomOut && walker.model.Percent() == 5) continue;
      walker.Take(pair.there);
      told += "  " + pair.there.Told() + "\n";
      back.push_back(pair.back);
    }
    for (; !back.empty(); back.pop_back()) walker.Take(back.back());
    if (walker.model.moved) continue;
    ++closed;
    longest = std::max(longest, count);
    EXPECT_NEAR(walker.view.screen.Scale(), scale, 1e-12) << told;
    ExpectSame(Corners(walker.view.screen, walker.model), before, told);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(closed, kLoops / 5) << "most loops met an edge or a limit: nothing was seen";
  EXPECT_GE(longest, 15);
}

TEST(ViewLoops, a_thousand_pans_to_and_fro_lead_back) {
  Walker walker(1, 640, 480, 4000, 3000);
  QTDScreen& screen = walker.view.screen;
  screen.setScale(1 / 1.5);
  screen.setCenter(0.4837261, 0.5128437);
  const Corners before(screen, walker.model);
  Dice dice(3);
  for (int i = 0; i < 1000; ++i) {
    const int byX = dice.Whole(-300, 300), byY = dice.Whole(-300, 300);
    for (const int sign : {1, -1}) {
      screen.dragStart(320, 240);
      screen.dragMove(320 + sign * byX, 240 + sign * byY);
      screen.dragEnd();
    }
  }
  ExpectSame(Corners(screen, walker.model), before, "");
}

TEST(ViewLoops, all_rungs_in_and_out_lead_back_to_the_same_point) {
  Walker walker(1, 640, 480, 20000, 15000);
  QTDScreen& screen = walker.view.screen;
  screen.setScale(20);
  screen.setCenter(0.4837261, 0.5128437);
  const Corners before(screen, walker.model);
  for (int round = 0; round < 100; ++round) {
    for (int i = 0; i < 10; ++i) screen.zoom(true, -1, false);
    for (int i = 0; i < 10; ++i) screen.zoom(false, -1, false);
    ASSERT_EQ(screen.zoomPercent(), 5);
  }
  ExpectSame(Corners(screen, walker.model), before, "");
}

// A bar that is set to its own value leaves the view where it is: it does not creep.
TEST(ViewLoops, a_scroll_bar_keeps_the_value_that_it_is_set_to) {
  int folded = 0;
  for (int round = 0; round < 400; ++round) {
    Dice dice(static_cast<uint32_t>(round));
    Walker walker(1, dice.Whole(100, 1500), dice.Whole(100, 1500), dice.Whole(2000, 20000),
                  dice.Whole(2000, 20000));
    QTDScreen& screen = walker.view.screen;
    screen.setScale(std::exp2(dice.Real(-2, 0)));
    const QTD::PairI range = screen.ScrollRange();
    if (range.first < 1 || range.second < 1) continue;
    folded += screen.properties.GetDouble("scroll.horz") > 1;
    const QTD::PairI set{dice.Whole(0, range.first), dice.Whole(0, range.second)};
    screen.setScrollPos(set.first, set.second);
    EXPECT_EQ(screen.ScrollPos(), set);
    const QTD::RectD before = screen.Picture();
    for (int i = 0; i < 10; ++i) screen.setScrollPos(screen.ScrollPos().first, screen.ScrollPos().second);
    const QTD::RectD after = screen.Picture();
    EXPECT_NEAR(after.x, before.x, kBound) << "round " << round;
    EXPECT_NEAR(after.y, before.y, kBound) << "round " << round;
  }
  EXPECT_GT(folded, 20);
}

// A resize goes on from the scale's text, which has six decimals: that is taken once, and no second resize
// takes more.
TEST(ViewLoops, resizing_to_and_fro_rounds_the_scale_once) {
  Walker walker(1, 640, 480, 4000, 3000);
  QTDScreen& screen = walker.view.screen;
  screen.setFit(0, false);
  screen.setScale(1 / 3.0);
  screen.setWindowSize(641, 480);
  screen.setWindowSize(640, 480);
  EXPECT_NEAR(screen.Scale(), 1 / 3.0, 5e-7);
  const double scale = screen.Scale();
  const Corners before(screen, walker.model);
  for (int i = 0; i < 500; ++i) {
    screen.setWindowSize(300 + i, 900 - i);
    screen.setWindowSize(640, 480);
  }
  EXPECT_EQ(screen.Scale(), scale);
  ExpectSame(Corners(screen, walker.model), before, "");
}

// A free zoom step goes on from the text, too: each step may round by half a millionth, and no more.
TEST(ViewLoops, free_zoom_steps_round_by_half_a_millionth_each) {
  Walker walker(1, 640, 480, 4000, 3000);
  QTDScreen& screen = walker.view.screen;
  screen.properties.Set("zoom.align", "0");
  constexpr int kCount = 10;
  for (int i = 0; i < kCount; ++i) screen.zoom(true, 1.1, false);
  for (int i = 0; i < kCount; ++i) screen.zoom(false, 1.1, false);
  EXPECT_NEAR(screen.Scale(), 1, 2 * kCount * 5e-7 * std::pow(1.1, kCount));
}
