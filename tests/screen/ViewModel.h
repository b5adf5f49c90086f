// The rules of the view written down a second time, as closed forms, for tests that walk: what a step must
// make of scale and centre, and where the picture then lies.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace view_walk {

// A number as it comes back from six decimals of text.
inline double AsText(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%f", value);
  return std::strtod(text, nullptr);
}

inline double HalfAway(double value) {
  return value < 0 ? std::ceil(value - 0.5) : std::floor(value + 0.5);
}

inline double Ratio(double dividend, double divisor) {
  return std::fabs(divisor) < 1e-7 ? 0 : dividend / divisor;
}

// The ladder as a table of what comes next. Past 300 per cent it goes on by whole hundreds.
struct Rung {
  int64_t percent, in, out;
};
constexpr Rung kRungs[] = {
    {5, 10, 5},      {10, 15, 5},     {15, 20, 10},    {20, 30, 15},    {30, 40, 20},
    {40, 50, 30},    {50, 75, 40},    {75, 100, 50},   {100, 125, 75},  {125, 150, 100},
    {150, 200, 125}, {200, 250, 150}, {250, 300, 200}, {300, 400, 250},
};

// The percentage that a step leads to. One between two rungs goes up to the next, and falls two places.
inline int64_t LadderStep(int64_t percent, bool in) {
  if (percent < 5) return in ? 5 : percent;
  if (percent > 300) return (in ? percent + 150 : percent - 50) / 100 * 100;
  const Rung* below = kRungs;
  for (const Rung& rung : kRungs) {
    if (rung.percent <= percent) below = &rung;
  }
  return in ? below->in : below->out;
}

struct Axis {
  double window = 0, image = 0;
  double fraction = 0.5;  // the picture's point at the window's centre

  double Length(double scale) const { return Ratio(image, scale); }
  double Start(double scale) const { return window / 2 - Length(scale) * fraction; }

  // The nearest fraction that leaves no gap beside a picture larger than the window; a smaller one is
  // centred. True when it had to move.
  bool Settle(double scale) {
    const double before = fraction;
    const double length = Length(scale);
    if (length > window) {
      const double margin = window / 2 / length;
      fraction = std::min(std::max(fraction, margin), 1 - margin);
    } else {
      fraction = 0.5;
    }
    return std::fabs(fraction - before) > 1e-12;
  }

  // The scroll range, and the picture pixels to one step of the bar.
  double Range(double scale, double* unit) const {
    constexpr double kMost = 32000;
    const double range = HalfAway(Length(scale) - window);
    *unit = range > kMost ? AsText(range / kMost) : 1;
    return std::min(range, kMost);
  }
};

// Starts like a view on a window that has a size, before its first picture.
struct Model {
  Axis x, y;
  double scale = 1;
  double ratio = 1;  // device pixels to one window pixel
  int fit = 3;
  bool ladder = true;
  bool moved = false;  // a centre had to be moved, or a scale was held at a limit, since it was last cleared

  double Lower() const { return std::max(x.image / 40000, y.image / 40000); }
  double Upper() const { return std::min(x.image / 60, y.image / 60); }
  int64_t Percent() const { return static_cast<int64_t>(HalfAway(100 * ratio / AsText(scale))); }

  void Settle() {
    const bool movedX = x.Settle(scale);
    const bool movedY = y.Settle(scale);
    moved = moved || movedX || movedY;
  }

  void SetScale(double wanted) {
    if (!(wanted >= 0)) return;
    // The limits of a long and thin picture cross: then one of the two it is.
    scale = wanted < Lower() ? Lower() : std::min(wanted, Upper());
    moved = moved || scale != wanted;
    Settle();
  }

  void SetCenter(double fx, double fy) {
    x.fraction = fx;
    y.fraction = fy;
    Settle();
  }

  void Refit() {
    const double across = x.image / x.window;
    const double down = y.image / y.window;
    if (fit == 1) {
      SetCenter(0.5, 0.5);
      SetScale(std::max(across, down));
    } else if (fit == 2) {
      SetScale(std::min(across, down));
    } else if (fit == 3) {
      SetScale(ratio);
    }
  }

  void SetFit(int mode) {
    fit = std::min(std::max(mode, 0), 3);
    Refit();
  }

  // A new size of window or picture. The scale goes on from its text.
  void Take(double& storedX, double& storedY, int width, int height) {
    const bool changed = storedX != width || storedY != height;
    storedX = width;
    storedY = height;
    Settle();
    if (!changed) return;
    SetScale(AsText(scale));
    Refit();
  }
  void SetWindow(int width, int height) { Take(x.window, y.window, width, height); }
  void SetImage(int width, int height) { Take(x.image, y.image, width, height); }

  void Zoom(bool in, double coefficient) {
    const double present = AsText(scale);
    if (present < 1e-7) return;
    double wanted = 0;
    if (ladder) {
      const int64_t percent = LadderStep(Percent(), in);
      wanted = percent == 0 ? present : Ratio(ratio, static_cast<double>(percent) / 100);
    } else {
      const double step = coefficient > 0 ? coefficient : 1.1;
      wanted = in ? present * Ratio(1, step) : present * step;
    }
    fit = 0;
    SetScale(wanted);
  }

  void ZoomToRect(int left, int top, int width, int height, bool in) {
    const double enlarge = Ratio(x.window, width);
    const double fx = Ratio(left + width / 2 - x.Start(scale), x.Length(scale));
    const double fy = Ratio(top + height / 2 - y.Start(scale), y.Length(scale));
    fit = 0;
    SetScale(scale * (in ? Ratio(1, enlarge) : enlarge));
    SetCenter(fx, fy);
  }

  void Drag(int byX, int byY) {
    SetCenter(x.fraction - byX / x.Length(scale), y.fraction - byY / y.Length(scale));
  }

  void MoveBy(bool horizontal, int steps) {
    Axis& axis = horizontal ? x : y;
    axis.fraction += 0.1 * axis.window * scale * steps / axis.Length(scale);
    Settle();
  }

  void MoveTo(int toX, int toY, bool window) {
    SetCenter((toX - (window ? x.Start(scale) : 0)) / x.Length(scale),
              (toY - (window ? y.Start(scale) : 0)) / y.Length(scale));
  }

  void Scroll(int toX, int toY) {
    double unit = 1;
    x.Range(scale, &unit);
    if (toX >= 0) x.fraction = (unit * toX + x.window / 2) / x.Length(scale);
    y.Range(scale, &unit);
    if (toY >= 0) y.fraction = (unit * toY + y.window / 2) / y.Length(scale);
    Settle();
  }
};

}  // namespace view_walk
