#include "QTD/screen/CoordinateMap.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "QTD/screen/Numbers.h"

namespace QTD {

namespace {

struct SystemName {
  const char* name;
  CoordinateSystem system;
};

constexpr SystemName kSystemNames[] = {
    {"base", CoordinateSystem::kBase},
    {"win", CoordinateSystem::kWindow},
    {"img", CoordinateSystem::kImage},
    {"scr", CoordinateSystem::kScreen},
};

char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool SameWord(const char* a, const char* b) {
  while (*a && Lower(*a) == Lower(*b)) ++a, ++b;
  return Lower(*a) == Lower(*b);
}

// Far outside any picture, and far enough inside the range of double that a change of system cannot leave it.
constexpr double kFar = 1e150;

double Held(double value) {
  return std::isnan(value) ? 0.0 : std::clamp(value, -kFar, kFar);
}

}  // namespace

bool FindCoordinateSystem(const char* name, CoordinateSystem* found) {
  for (const SystemName& entry : kSystemNames) {
    if (name && SameWord(name, entry.name)) {
      *found = entry.system;
      return true;
    }
  }
  return false;
}

double ViewAxis::ToFraction(double value, CoordinateSystem system, bool position) const {
  const double held = Held(value);
  switch (system) {
    case CoordinateSystem::kWindow:
      return GuardedDivide(position ? held - pictureStart : held, pictureLength);
    case CoordinateSystem::kImage:
      return GuardedDivide(held, imageLength);
    case CoordinateSystem::kScreen:
      return GuardedDivide(held, pictureLength);
    case CoordinateSystem::kBase:
      break;
  }
  return held;
}

double ViewAxis::FromFraction(double fraction, CoordinateSystem system, bool position) const {
  const double held = Held(fraction);
  switch (system) {
    case CoordinateSystem::kWindow:
      return (position ? GuardedDivide(pictureStart * scale, imageLength) + held : held) * pictureLength;
    case CoordinateSystem::kImage:
      return held * imageLength;
    case CoordinateSystem::kScreen:
      return held * pictureLength;
    case CoordinateSystem::kBase:
      break;
  }
  return held;
}

}  // namespace QTD
