#include "QTD/image/FormatNumber.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace QTD {
namespace {

// No number has more digits, signs and prefixes than the margin, so a field of this size fills the whole
// result with the same characters as any wider one.
constexpr int kDigitMargin = 64;
constexpr int kWidest = static_cast<int>(kFormatBuffer) + kDigitMargin;

// %[flags][width][.precision]conversion
struct Conversion {
  std::string flags;
  int width = 0;
  int precision = -1;  // none
  char letter = 0;
};

bool IsOneOf(char letter, const char* letters) {
  return letter != 0 && std::strchr(letters, letter) != nullptr;
}

bool IsDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

// Reads digits, at most kWidest in value; none are 0.
int ReadSize(const char*& at) {
  int size = 0;
  for (; IsDigit(*at); ++at) size = std::min(size * 10 + (*at - '0'), kWidest);
  return size;
}

// Reads the conversion behind a '%'; false when it is not one of the allowed kind.
bool ReadConversion(const char*& at, Conversion& conversion) {
  for (; IsOneOf(*at, "-+ #0"); ++at) {
    if (conversion.flags.find(*at) == std::string::npos) conversion.flags += *at;
  }
  conversion.width = ReadSize(at);
  if (*at == '.') {
    ++at;
    conversion.precision = ReadSize(at);
  }
  if (!IsOneOf(*at, "diuxXo")) return false;
  conversion.letter = *at++;
  // Only hexadecimal and octal numbers have an alternate form.
  const size_t alternate = conversion.flags.find('#');
  if (IsOneOf(conversion.letter, "diu") && alternate != std::string::npos)
    conversion.flags.erase(alternate, 1);
  return true;
}

template <typename Number>
std::string Convert(const Conversion& conversion, const char* length, Number number) {
  const std::string format = "%" + conversion.flags + "*.*" + length + conversion.letter;
  std::array<char, kWidest + kDigitMargin> field;
  // As a "*" size, a precision below 0 counts as none.
  const int size = std::snprintf(field.data(), field.size(), format.c_str(), conversion.width,
                                 conversion.precision, number);
  return size > 0 ? std::string(field.data()) : std::string();
}

std::string Convert(const Conversion& conversion, const FormatValue& value) {
  const bool isSigned = IsOneOf(conversion.letter, "di");
  if (value.wide) {
    return isSigned ? Convert(conversion, "ll", static_cast<long long>(value.bits))
                    : Convert(conversion, "ll", static_cast<unsigned long long>(value.bits));
  }
  const unsigned bits = static_cast<unsigned>(value.bits);
  return isSigned ? Convert(conversion, "", static_cast<int>(bits)) : Convert(conversion, "", bits);
}

}  // namespace

std::string FormatNumbers(const std::string& format, std::initializer_list<FormatValue> values) {
  std::string result;
  auto value = values.begin();
  const char* at = format.c_str();
  while (*at != 0) {
    if (*at != '%' || *++at == '%') {
      result += *at++;
    } else {
      Conversion conversion;
      if (value == values.end() || !ReadConversion(at, conversion)) return {};
      result += Convert(conversion, *value++);
    }
  }
  if (result.size() >= kFormatBuffer) result.resize(kFormatBuffer - 1);
  return result;
}

}  // namespace QTD
