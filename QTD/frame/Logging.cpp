#include "QTD/frame/Logging.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <log4cpp/PropertyConfigurator.hh>
#include <string>
#include <thread>

#include "QTD/platform/Platform.h"

namespace QTD {
namespace {

constexpr const char* kLogFile = "zynlog4cpp.property";

// Why nothing is written. Neither of the two variables needs construction or destruction, so they hold until
// the process has ended.
enum Silence : unsigned { kOff = 1, kClosed = 2 };  // no good file; shut down
std::atomic<unsigned> silence{0};
std::atomic<int> linesUnderWay{0};

constexpr auto kLongestLine = std::chrono::seconds(1);

// Whether all lines came to their end in time.
bool WaitForLines() {
  const auto end = std::chrono::steady_clock::now() + kLongestLine;
  while (linesUnderWay > 0) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Counts first and looks then, while the shutdown closes first and counts then: one of the two sees the
// other.
bool EnterLine(log4cpp::Category& category) {
  if (silence != 0) return false;
  ++linesUnderWay;
  if (silence == 0 && category.isDebugEnabled()) return true;
  --linesUnderWay;
  return false;
}

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
  silence = kOff;
  LogCategory();  // made while the log library lives
  const bool good = Configure(path);
  platform::DebugChannel(good ? "ZynLog4Cpp: PropertyConfigurator::configure succeeded!\n"
                              : "ZynLog4Cpp: PropertyConfigurator::configure failed, logging is disabled!\n");
  if (good) silence = 0;
}

void ShutdownLogging() {
  const unsigned before = silence.fetch_or(kClosed);
  if ((before & kClosed) || !WaitForLines()) return;
  if (!(before & kOff)) LogCategory().info("DisplayQt: <- Exit");
  log4cpp::Category::shutdown();
}

log4cpp::Category& LogCategory() {
  static log4cpp::Category& category = log4cpp::Category::getInstance(kLogCategory);
  return category;
}

void TraceInfo(const char* text) {
  if (silence == 0) LogCategory().info(std::string(text));
}

TraceLine::TraceLine(log4cpp::Category& writtenTo) : category(writtenTo), wanted(EnterLine(writtenTo)) {}

TraceLine::~TraceLine() {
  if (wanted) --linesUnderWay;
}

void TraceLine::Write(const char* format, ...) const {
  va_list values;
  va_start(values, format);
  category.logva(log4cpp::Priority::DEBUG, format, values);
  va_end(values);
}

}  // namespace QTD
