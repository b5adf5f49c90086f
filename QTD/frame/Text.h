// Values as text: the one place where numbers, flags and pointers are written and read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace QTD {

// Writing. All forms use the C locale, whatever the host set, and never cut a value. A null format selects
// the default; a format that a caller gives must fit the type.
std::string ToText(int value, const char* format = nullptr);        // "%d"
std::string ToText(long long value, const char* format = nullptr);  // "%lld"
std::string ToText(unsigned value);                                 // "%u"
std::string ToText(double value, const char* format = nullptr);     // "%f"
std::string ToText(const void* pointer);                            // "%p"; null is "(nil)"
inline std::string ToText(std::nullptr_t) {
  return ToText(static_cast<const void*>(nullptr));
}
std::string ToText(const char*) = delete;  // a text is no value: its address would be written
inline std::string ToText(bool flag) {
  return flag ? "1" : "0";
}
inline std::string ToText(long value, const char* format = nullptr) {
  return ToText(static_cast<long long>(value), format);
}

// Reading, in the C locale as well. The text counts up to its first zero byte; an empty text is the zero of
// the kind; trailing characters are ignored. A text without digits raises std::invalid_argument with the name
// of the kind's function ("invalid stoi argument", stoll, stod), one out of range std::out_of_range ("stoi
// argument out of range").
int ParseInt(const std::string& text);
int64_t ParseInt64(const std::string& text);
bool ParseBool(const std::string& text);
double ParseDouble(const std::string& text);
void* ParsePointer(const std::string& text);  // unreadable: null; "(nil)", "0" and "0x..." alike
std::string ParseString(const std::string& text);

// The pointer in `text` as a T*.
template <typename T>
T* ParsePointerAs(const std::string& text) {
  return static_cast<T*>(ParsePointer(text));
}

}  // namespace QTD
