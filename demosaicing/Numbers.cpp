#include "demosaicing/Numbers.h"

#include <locale.h>
#include <stdlib.h>

#include <cerrno>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace Demosaicing {
namespace {

// The C locale, made once and never given back.
locale_t CLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// The blanks of the C locale.
bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

template <typename Value>
Value ParseDecimal(const std::string& text, const char* noDigits, const char* outOfRange) {
  const char* first = text.c_str();
  const char* const last = first + text.size();
  if (first == last) return 0;
  while (IsBlank(*first)) ++first;
  if (*first == '+') {
    ++first;
    if (*first == '-') throw std::invalid_argument(noDigits);  // from_chars would take the second sign
  }
  Value value = 0;
  const std::from_chars_result read = std::from_chars(first, last, value, 10);
  if (read.ec == std::errc::invalid_argument) throw std::invalid_argument(noDigits);
  if (read.ec == std::errc::result_out_of_range) throw std::out_of_range(outOfRange);
  return value;
}

}  // namespace

std::string ToText(int64_t value) {
  return std::to_string(value);
}

std::string ToText(double value) {
  // The longest number has as many digits as the exponent says, a sign, a point and six decimals.
  char text[std::numeric_limits<double>::max_exponent10 + 16];
  const std::to_chars_result done =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
  return std::string(text, done.ptr);
}

int ParseInt(const std::string& text) {
  return ParseDecimal<int>(text, "invalid stoi argument", "stoi argument out of range");
}

int64_t ParseInt64(const std::string& text) {
  return ParseDecimal<int64_t>(text, "invalid stoll argument", "stoll argument out of range");
}

double ParseDouble(const std::string& text) {
  if (text.empty()) return 0;
  const char* const first = text.c_str();
  const int errorBefore = errno;
  errno = 0;
  char* end = nullptr;
  const double value = strtod_l(first, &end, CLocale());
  const bool outOfRange = errno == ERANGE;
  errno = errorBefore;
  if (end == first) throw std::invalid_argument("invalid stod argument");
  if (outOfRange) throw std::out_of_range("stod argument out of range");
  return value;
}

}  // namespace Demosaicing
