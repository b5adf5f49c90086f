// What must hold of a view after every step, whatever led to it.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "QTD/screen/QTDScreen.h"
#include "tests/screen/ViewSteps.h"

namespace view_walk {

// The bound on every coordinate, in pixels. Doubles carry 16 digits, so that the sums and quotients of a
// picture of 1200000 window pixels, which is the longest that the limits let through, are good to about 1e-9:
// 1e-6 holds everywhere in and around the picture without regard to its magnitude, and a single rounding to
// float or to text on the way would break it.
constexpr double kBound = 1e-6;

class Checks {
 public:
  bool Near(const char* what, double is, double expected, double bound = kBound) {
    if (std::fabs(is - expected) <= bound) return true;
    char text[200];
    std::snprintf(text, sizeof text, "%s is %.12g, not %.12g; ", what, is, expected);
    problem += text;
    return false;
  }
  void True(const char* what, bool holds) {
    if (!holds) problem += std::string(what) + "; ";
  }
  std::string problem;  // empty when all holds
};

inline QTD::PairD Carried(QTDScreen& screen, QTD::PairD point, const char* from, const char* to) {
  screen.transform(&point.first, &point.second, from, to, true, false);
  return point;
}

// From one system to another, or through a third one, and back.
inline void CheckRoundTrips(Checks& checks, QTDScreen& screen, const QTD::PairD& point, const char* start) {
  static constexpr const char* kSystems[] = {"win", "img", "scr"};
  for (const char* second : kSystems) {
    for (const char* third : kSystems) {
      const QTD::PairD there = Carried(screen, Carried(screen, point, start, second), second, third);
      const QTD::PairD back = Carried(screen, there, third, start);
      const std::string road = std::string(start) + " to " + second + " to " + third + " and back: ";
      checks.Near((road + "x").c_str(), back.first, point.first);
      checks.Near((road + "y").c_str(), back.second, point.second);
    }
  }
}

// Where the model puts a point of the image in the window.
inline QTD::PairD InWindow(const Model& model, double imageX, double imageY) {
  return {model.x.Start(model.scale) + imageX / model.scale,
          model.y.Start(model.scale) + imageY / model.scale};
}

inline void CheckPoints(Checks& checks, QTDScreen& screen, const Model& model, Dice& dice) {
  const double w = model.x.window, h = model.y.window, iw = model.x.image, ih = model.y.image;
  const QTD::PairD inWindow[] = {{0, 0}, {w, 0},         {0, h},
                                 {w, h}, {w / 2, h / 2}, {dice.Real(-w, 2 * w), dice.Real(-h, 2 * h)}};
  const QTD::PairD inImage[] = {{0, 0},   {iw, 0},          {0, ih},
                                {iw, ih}, {iw / 2, ih / 2}, {dice.Real(0, iw), dice.Real(0, ih)}};
  for (const QTD::PairD& point : inWindow) CheckRoundTrips(checks, screen, point, "win");
  for (const QTD::PairD& point : inImage) {
    CheckRoundTrips(checks, screen, point, "img");
    const QTD::PairD shown = Carried(screen, point, "img", "win");
    const QTD::PairD expected = InWindow(model, point.first, point.second);
    checks.Near("an image point's x", shown.first, expected.first);
    checks.Near("an image point's y", shown.second, expected.second);
    const QTD::PairD zoomed = Carried(screen, point, "img", "scr");
    checks.Near("a zoomed point's x", zoomed.first, point.first / model.scale);
    checks.Near("a zoomed point's y", zoomed.second, point.second / model.scale);
  }
}

// One axis of the picture: where it lies, and the scroll bar that belongs to it.
inline void CheckAxis(Checks& checks, const Axis& axis, double scale, double start, double length, int range,
                      int position, double unit) {
  checks.Near("the picture's length", length, axis.image / scale);
  checks.Near("the picture's start", start, axis.Start(scale));
  if (length > axis.window + kBound) {
    checks.True("a gap before the picture", start <= kBound);
    checks.True("a gap behind the picture", start + length >= axis.window - kBound);
  } else {
    checks.Near("a smaller picture's start", start, (axis.window - length) / 2);
  }
  double expectedUnit = 1;
  checks.Near("the scroll range", range, axis.Range(scale, &expectedUnit), 0);
  checks.Near("the scroll unit", unit, expectedUnit, 0);
  // Rounded twice, to a pixel and to a step of the bar, and up to 32000 steps of a unit with six decimals.
  const double fold = unit > 1 ? unit / 2 + 32000 * 5e-7 : 0;
  checks.Near("the scroll position in pixels", position * unit, -start, 0.5 + fold + kBound);
  if (range > 0) checks.True("a scroll position out of its range", position >= 0 && position <= range);
}

// The whole view against the model.
inline std::string Problem(QTDScreen& screen, const Model& model, Dice& dice) {
  Checks checks;
  checks.Near("the scale", screen.Scale(), model.scale, model.scale * 1e-14);
  const double lower = model.Lower(), upper = model.Upper();
  if (lower <= upper) {
    checks.True("a scale beyond its limits", screen.Scale() >= lower && screen.Scale() <= upper);
  } else {
    checks.True("a scale that is no limit", screen.Scale() == lower || screen.Scale() == upper);
  }
  const QTD::PairD center = screen.Center();
  checks.Near("the centre's x in pixels", center.first * model.x.Length(model.scale),
              model.x.fraction * model.x.Length(model.scale));
  checks.Near("the centre's y in pixels", center.second * model.y.Length(model.scale),
              model.y.fraction * model.y.Length(model.scale));
  checks.True("a centre off the picture",
              center.first >= 0 && center.first <= 1 && center.second >= 0 && center.second <= 1);

  const QTD::RectD picture = screen.Picture();
  const QTD::PairI range = screen.ScrollRange(), position = screen.ScrollPos();
  CheckAxis(checks, model.x, model.scale, picture.x, picture.width, range.first, position.first,
            screen.properties.GetDouble("scroll.horz"));
  CheckAxis(checks, model.y, model.scale, picture.y, picture.height, range.second, position.second,
            screen.properties.GetDouble("scroll.vert"));

  checks.Near("the fit mode", screen.properties.GetInt("fit"), model.fit, 0);
  checks.Near("the scale's text", screen.properties.GetDouble("scale"), AsText(model.scale), 0);
  checks.Near("the per cent", screen.zoomPercent(), HalfAway(100 * model.ratio / model.scale), 0);
  CheckPoints(checks, screen, model, dice);
  return checks.problem;
}

// A step without window, mouse or keys.
inline void Apply(QTDScreen& screen, const Model& before, const Step& step) {
  switch (step.kind) {
    case Kind::ZoomIn:
    case Kind::ZoomOut:
    case Kind::FreeIn:
    case Kind::FreeOut: {
      const bool ladder = step.kind == Kind::ZoomIn || step.kind == Kind::ZoomOut;
      screen.properties.Set("zoom.align", ladder ? "1" : "0");
      screen.zoom(step.kind == Kind::ZoomIn || step.kind == Kind::FreeIn, ladder ? -1 : step.u, false);
      return;
    }
    case Kind::RectIn:
    case Kind::RectOut:
      return screen.zoomToRect({step.a, step.b, step.c, step.d}, step.kind == Kind::RectIn);
    case Kind::Drag:
    case Kind::DragCancelled: {
      const int x = std::abs(step.a), y = step.b;
      screen.dragStart(x, y);
      screen.dragMove(x + step.d, y - step.c);
      screen.dragMove(x + step.c, y + step.d);
      return step.kind == Kind::Drag ? screen.dragEnd() : screen.dragCancel();
    }
    case Kind::Fit:
      return screen.setFit(step.a, true);
    case Kind::Scale:
      return screen.setScale(step.u);
    case Kind::Center:
      return screen.setCenter(step.u, step.v);
    case Kind::KeepCenter:
      return screen.setCenter(-1, -1);
    case Kind::MoveBy:
      screen.moveBy(step.a != 0, step.b);
      return;
    case Kind::MoveToWindow:
    case Kind::MoveToScreen:
      return screen.moveTo(step.a, step.b, step.kind == Kind::MoveToWindow ? "win" : "scr");
    case Kind::Scroll:
      return screen.setScrollPos(ScrollValue(before.x, before.scale, step.a),
                                 ScrollValue(before.y, before.scale, step.b));
    case Kind::Window:
      return screen.setWindowSize(step.a, step.b);
    case Kind::Image:
      return screen.setImageSize(step.a, step.b);
  }
}

}  // namespace view_walk
