// Local time through a strftime format that a user wrote.
#pragma once

#include <cstdint>
#include <string>

namespace QTD {

// Any thread. The first "%f" stands for fractions of the second, with one digit per 'f' and at most three. An
// empty format is "%Y%m%d%H%M%S". The text is empty when it would pass 255 characters.
std::string FormatTime(std::string format, int64_t seconds, int32_t millisecond);

}  // namespace QTD
