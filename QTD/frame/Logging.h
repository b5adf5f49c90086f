// Set-up and end of the trace, at load and unload of the library, and the way to write its lines.
#pragma once

#include <log4cpp/Category.hh>

namespace QTD {

constexpr const char* kLogCategory = "ZynDisplayQt";

// Finds and reads "zynlog4cpp.property". A file that is missing or wrong leaves the trace silent; nothing but
// a lack of memory is raised. Runs once, before the first trace line.
void InitLogging();

// Writes the module's exit line and shuts the trace down; no line is written afterwards. A second call does
// nothing.
void ShutdownLogging();

// The library's one category. Any thread.
log4cpp::Category& LogCategory();

// Whether a debug line would be written. After the shutdown the category is not even looked at: objects that
// a host left over may be destroyed later than the category itself. Any thread.
bool TraceEnabled(log4cpp::Category& category);

// Writes a debug line, printf-style; the work of ZYN_TRACE.
[[gnu::format(printf, 2, 3)]] void Trace(log4cpp::Category& category, const char* format, ...);

}  // namespace QTD

// ZYN_TRACE(log, "text %d", value): a debug line. Nothing but the priority test is done while debug is off;
// the arguments are not evaluated then.
#define ZYN_TRACE(category, ...)                                          \
  do {                                                                    \
    if (QTD::TraceEnabled(category)) QTD::Trace((category), __VA_ARGS__); \
  } while (false)
