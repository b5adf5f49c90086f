// Set-up and end of the trace, at load and unload of the library, and the way to write its lines.
#pragma once

#include <log4cpp/Category.hh>

namespace QTD {

constexpr const char* kLogCategory = "ZynDisplayQt";

// Finds and reads "zynlog4cpp.property". A file that is missing or wrong leaves the trace off, whatever the
// part of it that was read has set up; nothing but a lack of memory is raised. Runs once, before the first
// trace line.
void InitLogging();

// Writes the module's exit line and shuts the trace down; no line is written afterwards. Waits for the lines
// that other threads are writing: a second at most. A line that takes longer holds locks of the log library,
// which is left alone then. A second call does nothing.
void ShutdownLogging();

// The library's one category. Any thread.
log4cpp::Category& LogCategory();

// Writes a line of the module itself, unless the trace is off or closed.
void TraceInfo(const char* text);

// One debug line on its way: whether it is to be written, and the writing. Any thread. A line that is to be
// written keeps the shutdown waiting; after the shutdown the category is not even looked at: threads and
// objects that a host left over may outlive it. Costs one atomic load while the trace is off or closed.
class TraceLine {
 public:
  explicit TraceLine(log4cpp::Category& writtenTo);
  ~TraceLine();
  TraceLine(const TraceLine&) = delete;
  TraceLine& operator=(const TraceLine&) = delete;

  explicit operator bool() const { return wanted; }
  [[gnu::format(printf, 2, 3)]] void Write(const char* format, ...) const;  // printf-style

 private:
  log4cpp::Category& category;
  const bool wanted;
};

}  // namespace QTD

// ZYN_TRACE(log, "text %d", value): a debug line. The arguments are not evaluated while debug is off.
#define ZYN_TRACE(category, ...)                                                                    \
  do {                                                                                              \
    if (const QTD::TraceLine zynTraceLine(category); zynTraceLine) zynTraceLine.Write(__VA_ARGS__); \
  } while (false)
