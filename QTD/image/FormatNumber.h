// Numbers through a printf format that a user wrote.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace QTD {

constexpr size_t kFormatBuffer = 16384;  // bytes of the longest result, with the zero at its end

struct FormatValue {
  explicit FormatValue(uint32_t value) : bits(value), wide(false) {}
  explicit FormatValue(uint64_t value) : bits(value), wide(true) {}
  explicit FormatValue(int64_t value) : bits(static_cast<uint64_t>(value)), wide(true) {}

  uint64_t bits;
  bool wide;  // 64 bits, else 32
};

// Any thread. A conversion may have flags, width, precision and one of d i u x X o; its length comes from the
// value. "%%" is a percent sign. The text is empty when the format holds anything else behind a '%', or more
// conversions than there are values; it ends after kFormatBuffer - 1 characters.
std::string FormatNumbers(const std::string& format, std::initializer_list<FormatValue> values);

}  // namespace QTD
