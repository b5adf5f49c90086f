#include "QTD/frame/Text.h"

#include <locale.h>
#include <stdlib.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace QTD {
namespace {

// The C locale, made once and never given back: values are written and read until the process ends.
locale_t CLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// The calling thread speaks the C locale while this lives; other threads and the host's own setting stay as
// they are.
class CLocaleScope {
 public:
  CLocaleScope() : before(uselocale(CLocale())) {}
  ~CLocaleScope() { uselocale(before); }
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  locale_t before;
};

constexpr size_t kScratch = 64;

// The caller's format. Most values fit the scratch buffer; a longer one gets a buffer of its own and is never
// cut.
template <typename Value>
std::string Format(const char* format, Value value) {
  const CLocaleScope scope;
  char scratch[kScratch];
  const int length = std::snprintf(scratch, sizeof scratch, format, value);
  if (length < 0) return std::string();
  const size_t needed = static_cast<size_t>(length);
  if (needed < sizeof scratch) return std::string(scratch, needed);
  std::vector<char> large(needed + 1);
  std::snprintf(large.data(), large.size(), format, value);
  return std::string(large.data(), needed);
}

template <typename Value>
std::string Decimal(Value value) {
  char scratch[kScratch];
  const std::to_chars_result done = std::to_chars(scratch, scratch + sizeof scratch, value);
  return std::string(scratch, done.ptr);
}

// The blanks of the C locale.
bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// A base-10 number at the head of `text`: blanks, a sign, digits; what follows is not looked at.
template <typename Value>
Value ParseDecimal(const std::string& text, const char* noDigits, const char* outOfRange) {
  const char* first = text.c_str();
  const char* const last = first + std::char_traits<char>::length(first);
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

std::string ToText(int value, const char* format) {
  return format ? Format(format, value) : Decimal(value);
}

std::string ToText(long long value, const char* format) {
  return format ? Format(format, value) : Decimal(value);
}

std::string ToText(unsigned value) {
  return Decimal(value);
}

std::string ToText(double value, const char* format) {
  return Format(format ? format : "%f", value);
}

std::string ToText(const void* pointer) {
  return Format("%p", pointer);
}

int ParseInt(const std::string& text) {
  return ParseDecimal<int>(text, "invalid stoi argument", "stoi argument out of range");
}

int64_t ParseInt64(const std::string& text) {
  return ParseDecimal<int64_t>(text, "invalid stoll argument", "stoll argument out of range");
}

bool ParseBool(const std::string& text) {
  return ParseInt(text) != 0;
}

double ParseDouble(const std::string& text) {
  const char* const first = text.c_str();
  if (*first == '\0') return 0.0;
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

void* ParsePointer(const std::string& text) {
  const CLocaleScope scope;
  void* pointer = nullptr;
  return std::sscanf(text.c_str(), "%p", &pointer) == 1 ? pointer : nullptr;
}

std::string ParseString(const std::string& text) {
  return std::string(text.c_str());
}

}  // namespace QTD
