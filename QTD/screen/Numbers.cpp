#include "QTD/screen/Numbers.h"

#include <limits>

namespace QTD {

int Round(double value) {
  if (std::isnan(value)) return 0;
  const double shifted = value < 0 ? value - 0.5 : value + 0.5;
  if (shifted >= static_cast<double>(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
  if (shifted <= static_cast<double>(std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
  return static_cast<int>(shifted);
}

}  // namespace QTD
