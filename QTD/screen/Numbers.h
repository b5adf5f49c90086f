// The arithmetic rules of view geometry.
#pragma once

#include <cmath>

namespace QTD {

constexpr double kNearZero = 1e-7;

inline bool IsNearZero(double value) {
  return std::fabs(value) < kNearZero;
}

// The quotient, or 0.0 where the divisor is near zero.
inline double GuardedDivide(double dividend, double divisor) {
  return IsNearZero(divisor) ? 0.0 : dividend / divisor;
}

// Half away from zero; held in the range of int, NaN is 0.
int Round(double value);

}  // namespace QTD
