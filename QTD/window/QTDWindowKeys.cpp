// The keys of the view: each with what it does, and what decides whether the window is painted anew.
#include "QTD/window/QTDWindow.h"

namespace {

enum class Counts { Zoom, Fit, Center };

constexpr double kOwnStep = -1.0;  // the screen's own coefficient

struct KeyRow {
  int code;
  bool (*act)(QTDScreen& screen);  // for a zoom whether it was one, true for the others
  Counts counts;                   // what must have changed
};

template <bool in>
bool Zoom(QTDScreen& screen) {
  return screen.zoom(in, kOwnStep, false);
}

template <int mode>
bool Fit(QTDScreen& screen) {
  screen.setFit(mode, false);
  return true;
}

bool Center(QTDScreen& screen) {
  screen.setCenter(0.5, 0.5);
  return true;
}

// Refused by the screen while a pan is running.
template <bool horizontal, int steps>
bool MoveBy(QTDScreen& screen) {
  return screen.moveBy(horizontal, steps);
}

constexpr KeyRow kKeys[] = {
    {Qt::Key_Plus, Zoom<true>, Counts::Zoom},         {Qt::Key_Minus, Zoom<false>, Counts::Zoom},
    {Qt::Key_0, Fit<QTD::kFitWhole>, Counts::Fit},    {Qt::Key_1, Fit<QTD::kFitOneToOne>, Counts::Fit},
    {Qt::Key_2, Fit<QTD::kFitFill>, Counts::Fit},     {Qt::Key_C, Center, Counts::Center},
    {Qt::Key_Left, MoveBy<true, -1>, Counts::Center}, {Qt::Key_Up, MoveBy<false, -1>, Counts::Center},
    {Qt::Key_Right, MoveBy<true, 1>, Counts::Center}, {Qt::Key_Down, MoveBy<false, 1>, Counts::Center},
};

// Acts, and answers whether what counts for the key has changed. A zoom step against its limit counts: the
// scale that was asked for is another one.
bool Act(const KeyRow& row, QTDScreen& screen) {
  const int fit = screen.properties.GetInt("fit");
  const QTD::PairD center = screen.Center();
  const bool zoomed = row.act(screen);
  switch (row.counts) {
    case Counts::Zoom:
      return zoomed;
    case Counts::Fit:
      return fit != screen.properties.GetInt("fit");
    case Counts::Center:
      break;
  }
  return center != screen.Center();
}

}  // namespace

bool QTDWindow::key(int code) {
  std::lock_guard<std::recursive_mutex> hold(inputLock);
  if (!screen) return false;
  for (const KeyRow& row : kKeys) {
    if (row.code != code) continue;
    // Without a picture there is nothing to move, and a centre that waits for the first one stays.
    if (row.counts == Counts::Center && !hasImage()) return true;
    const bool changed = Act(row, *screen);
    followView();  // a refit tells nobody of itself
    if (changed) update();
    return true;
  }
  // Keys that have no letter pass the low byte of their code, too.
  const std::string command = keyboard.process(static_cast<char>(code & 0xFF));
  if (!command.empty()) Execute(command.c_str(), nullptr);
  return false;
}
