#include "QTD/frame/Logging.h"

#include <atomic>
#include <cstdarg>
#include <log4cpp/PropertyConfigurator.hh>
#include <string>

#include "QTD/platform/Platform.h"

namespace QTD {
namespace {

constexpr const char* kLogFile = "zynlog4cpp.property";

// Set from the shutdown on. Needs no construction or destruction, so it holds until the process has ended.
std::atomic<bool> closed{false};

bool Configure(const std::string& path) {
  try {
    log4cpp::PropertyConfigurator::configure(path);
    return true;
  } catch (const log4cpp::ConfigureFailure&) {
    return false;
  }
}

}  // namespace

void InitLogging() {
  // Without a folder the bare name stays, which is looked for in the process's current folder.
  const std::string path = platform::TraceFolder() + kLogFile;
  platform::DebugChannel("ZynLog4Cpp: trying to load " + path + "\n");
  platform::DebugChannel(Configure(path)
                             ? "ZynLog4Cpp: PropertyConfigurator::configure succeeded!\n"
                             : "ZynLog4Cpp: PropertyConfigurator::configure failed, logging is disabled!\n");
  closed = false;
}

void ShutdownLogging() {
  if (closed.exchange(true)) return;
  LogCategory().info("DisplayQt: <- Exit");
  log4cpp::Category::shutdown();
}

log4cpp::Category& LogCategory() {
  static log4cpp::Category& category = log4cpp::Category::getInstance(kLogCategory);
  return category;
}

bool TraceEnabled(log4cpp::Category& category) {
  return !closed && category.isDebugEnabled();
}

void Trace(log4cpp::Category& category, const char* format, ...) {
  va_list values;
  va_start(values, format);
  category.logva(log4cpp::Priority::DEBUG, format, values);
  va_end(values);
}

}  // namespace QTD
