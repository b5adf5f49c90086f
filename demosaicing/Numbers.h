// Numbers as text, in the C locale whatever the host set.
#pragma once

#include <cstdint>
#include <string>

namespace Demosaicing {

std::string ToText(int64_t value);  // as "%lld" does
std::string ToText(double value);   // as "%f" does

// An empty text is 0; blanks before and anything behind the number are ignored. A text without digits raises
// std::invalid_argument, one out of range std::out_of_range.
int ParseInt(const std::string& text);
int64_t ParseInt64(const std::string& text);
double ParseDouble(const std::string& text);

}  // namespace Demosaicing
