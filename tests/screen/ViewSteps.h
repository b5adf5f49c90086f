// Random steps that move a view: what the walks do, told so that a failure can be done again.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/screen/ViewModel.h"

namespace view_walk {

enum class Kind {
  ZoomIn,
  ZoomOut,
  FreeIn,  // by a coefficient instead of the ladder
  FreeOut,
  RectIn,
  RectOut,
  Drag,
  DragCancelled,
  Fit,
  Scale,
  Center,
  KeepCenter,
  MoveBy,
  MoveToWindow,
  MoveToScreen,
  Scroll,
  Window,
  Image,
};

constexpr const char* kKindNames[] = {
    "zoom in", "zoom out",       "free in",     "free out", "rect in", "rect out",
    "drag",    "drag cancelled", "fit",         "scale",    "center",  "keep center",
    "move by", "move to win",    "move to scr", "scroll",   "window",  "image"};

struct Step {
  Kind kind;
  int a = 0, b = 0, c = 0, d = 0;
  double u = 0, v = 0;

  std::string Told() const {
    char text[200];
    std::snprintf(text, sizeof text, "%s %d %d %d %d %.17g %.17g", kKindNames[static_cast<size_t>(kind)], a,
                  b, c, d, u, v);
    return text;
  }
};

using Steps = std::vector<Step>;

inline std::string Told(const Steps& steps, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += "  " + std::to_string(i) + ": " + steps[i].Told() + "\n";
  return text;
}

// The same numbers everywhere: the distributions of the standard library are not.
class Dice {
 public:
  explicit Dice(uint32_t seed) : engine(seed) {}
  int Whole(int low, int high) {
    return low + static_cast<int>(engine() % static_cast<uint32_t>(high - low + 1));
  }
  double Real(double low, double high) {
    return low + (high - low) * static_cast<double>(engine()) / 4294967295.0;
  }
  template <size_t count>
  int Of(const int (&values)[count]) {
    return values[engine() % count];
  }

 private:
  std::mt19937 engine;
};

// Pictures from one pixel to very long ones, mostly with odd sides.
inline void RollImage(Dice& dice, int* width, int* height, int mostPixels) {
  static constexpr int kSides[] = {1, 2, 3, 7, 59, 60, 61, 101, 333, 641, 1025, 1999, 4097};
  static constexpr int kLong = 20000;
  *width = dice.Of(kSides);
  *height = dice.Of(kSides);
  switch (dice.Whole(0, 9)) {
    case 0:
      *width = *height = 1;
      break;
    case 1:
      *width = 1;
      break;
    case 2:
      *height = 1;
      break;
    case 3:
      *width = kLong;
      break;
    case 4:
      *height = kLong;
      break;
    default:
      break;
  }
  while (int64_t{*width} * *height > mostPixels) (*width > *height ? *height : *width) /= 2;
}

struct Limits {
  int longestWindow = 4001;
  int mostPixels = 1 << 30;
};

// What a step means does not depend on where the view stands, so that any steps may be left out of a walk.
inline Step RollStep(Dice& dice, const Limits& limits) {
  static constexpr Kind kOften[] = {Kind::ZoomIn, Kind::ZoomOut,      Kind::ZoomIn,        Kind::ZoomOut,
                                    Kind::FreeIn, Kind::FreeOut,      Kind::RectIn,        Kind::RectOut,
                                    Kind::Drag,   Kind::Drag,         Kind::DragCancelled, Kind::Fit,
                                    Kind::Scale,  Kind::Center,       Kind::KeepCenter,    Kind::MoveBy,
                                    Kind::MoveBy, Kind::MoveToWindow, Kind::MoveToScreen,  Kind::Scroll,
                                    Kind::Scroll, Kind::Window,       Kind::Image};
  Step step{kOften[static_cast<size_t>(dice.Whole(0, static_cast<int>(std::size(kOften)) - 1))]};
  step.a = dice.Whole(-300, 1500);
  step.b = dice.Whole(-300, 1500);
  step.c = dice.Whole(-2, 900);
  step.d = dice.Whole(-2, 900);
  step.u = dice.Real(-0.2, 1.2);
  step.v = dice.Real(-0.2, 1.2);
  switch (step.kind) {
    case Kind::FreeIn:
    case Kind::FreeOut:
      step.u = dice.Whole(0, 4) == 0 ? -1 : dice.Real(0.7, 2.5);
      break;
    case Kind::Drag:
    case Kind::DragCancelled:
      step.c = dice.Whole(-700, 700);
      step.d = dice.Whole(-700, 700);
      break;
    case Kind::Fit:
      step.a = dice.Whole(-1, 4);
      break;
    case Kind::Scale:
      step.u = std::exp2(dice.Real(-14, 10));
      break;
    case Kind::MoveBy:
      step.a = dice.Whole(0, 1);
      step.b = dice.Whole(-4, 4);
      break;
    case Kind::Scroll:  // thousandths of the range; a negative one leaves that axis
      step.a = dice.Whole(-200, 1000);
      step.b = dice.Whole(-200, 1000);
      break;
    case Kind::Window:
      step.a = dice.Whole(1, limits.longestWindow);
      step.b = dice.Whole(1, limits.longestWindow);
      break;
    case Kind::Image:
      RollImage(dice, &step.a, &step.b, limits.mostPixels);
      break;
    default:
      break;
  }
  return step;
}

inline Steps RollSteps(uint32_t seed, size_t count, const Limits& limits) {
  Dice dice(seed);
  Steps steps;
  while (steps.size() < count) steps.push_back(RollStep(dice, limits));
  return steps;
}

inline int ScrollValue(const Axis& axis, double scale, int thousandths) {
  double unit = 1;
  const double range = std::max(0.0, axis.Range(scale, &unit));
  return thousandths < 0 ? -1 : static_cast<int>(range * thousandths / 1000);
}

// What a step does to the model.
inline void Apply(Model& model, const Step& step) {
  switch (step.kind) {
    case Kind::ZoomIn:
    case Kind::ZoomOut:
      model.ladder = true;
      return model.Zoom(step.kind == Kind::ZoomIn, -1);
    case Kind::FreeIn:
    case Kind::FreeOut:
      model.ladder = false;
      return model.Zoom(step.kind == Kind::FreeIn, step.u);
    case Kind::RectIn:
    case Kind::RectOut:
      return model.ZoomToRect(step.a, step.b, step.c, step.d, step.kind == Kind::RectIn);
    case Kind::Drag:
      return model.Drag(step.c, step.d);
    case Kind::DragCancelled:
      return;
    case Kind::Fit:
      return model.SetFit(step.a);
    case Kind::Scale:
      return model.SetScale(step.u);
    case Kind::Center:
      return model.SetCenter(step.u, step.v);
    case Kind::KeepCenter:
      return;
    case Kind::MoveBy:
      return model.MoveBy(step.a != 0, step.b);
    case Kind::MoveToWindow:
    case Kind::MoveToScreen:
      return model.MoveTo(step.a, step.b, step.kind == Kind::MoveToWindow);
    case Kind::Scroll:
      return model.Scroll(ScrollValue(model.x, model.scale, step.a),
                          ScrollValue(model.y, model.scale, step.b));
    case Kind::Window:
      return model.SetWindow(step.a, step.b);
    case Kind::Image:
      return model.SetImage(step.a, step.b);
  }
}

// The steps without those that a failure does not need: `fails` tells whether a walk still fails.
inline Steps Shrunk(Steps steps, const std::function<bool(const Steps&)>& fails) {
  for (size_t size = steps.size() / 2; size > 0; size /= 2) {
    for (size_t at = 0; at + size <= steps.size();) {
      Steps fewer = steps;
      const auto first = fewer.begin() + static_cast<std::ptrdiff_t>(at);
      fewer.erase(first, first + static_cast<std::ptrdiff_t>(size));
      if (fails(fewer)) {
        steps = std::move(fewer);
      } else {
        at += size;
      }
    }
  }
  return steps;
}

}  // namespace view_walk
