#include "QTD/screen/ZoomLadder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace QTD {

namespace {

constexpr int kLadder[] = {5, 10, 15, 20, 30, 40, 50, 75, 100, 125, 150, 200, 250, 300};

int WholeHundreds(int64_t percent) {
  return static_cast<int>(std::min<int64_t>(percent / 100 * 100, std::numeric_limits<int>::max()));
}

int NextIn(int percent) {
  if (percent < kLadder[0]) return kLadder[0];
  const int* above = std::upper_bound(std::begin(kLadder), std::end(kLadder), percent);
  return above == std::end(kLadder) ? WholeHundreds(static_cast<int64_t>(percent) + 150) : *above;
}

// A percentage between two entries falls two places: 130 goes to 100. This is wanted.
int NextOut(int percent) {
  if (percent < kLadder[0]) return percent;
  if (percent > *std::prev(std::end(kLadder))) return WholeHundreds(static_cast<int64_t>(percent) - 50);
  const int* atOrBelow = std::prev(std::upper_bound(std::begin(kLadder), std::end(kLadder), percent));
  return atOrBelow == std::begin(kLadder) ? kLadder[0] : *std::prev(atOrBelow);
}

}  // namespace

int NextZoomPercent(int percent, bool in) {
  return in ? NextIn(percent) : NextOut(percent);
}

double HeldScale(double scale, double lower, double upper) {
  if (scale < lower) return lower;
  return scale > upper ? upper : scale;
}

}  // namespace QTD
