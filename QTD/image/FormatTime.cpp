#include "QTD/image/FormatTime.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "QTD/frame/Text.h"

namespace QTD {
namespace {

std::string Fraction(size_t digits, int32_t millisecond) {
  if (digits == 1) return ToText(millisecond / 100, "%01d");
  if (digits == 2) return ToText(millisecond / 10, "%02d");
  return ToText(millisecond, "%03d");
}

void PutFraction(std::string& format, int32_t millisecond) {
  const size_t position = format.find("%f");
  if (position == std::string::npos) return;
  const size_t end = std::min(format.find_first_not_of('f', position + 1), format.size());
  const size_t run = std::min<size_t>(end - (position + 1), 3);
  // The stretch grows with its own position, so a "%f" late in the format swallows characters behind it.
  format.replace(position, 1 + run + position, Fraction(run, millisecond));
}

}  // namespace

std::string FormatTime(std::string format, int64_t seconds, int32_t millisecond) {
  if (format.empty()) format = "%Y%m%d%H%M%S";
  PutFraction(format, millisecond);
  const time_t clock = static_cast<time_t>(seconds);
  std::tm local{};
  if (localtime_r(&clock, &local) == nullptr) return {};
  std::array<char, 256> buffer;
  return std::string(buffer.data(), std::strftime(buffer.data(), buffer.size(), format.c_str(), &local));
}

}  // namespace QTD
