// Folder of the trace's settings, debug channel and thread names.
#include <pthread.h>
#include <syslog.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "QTD/platform/Platform.h"

namespace QTD::platform {
namespace {

constexpr const char* kTraceFolder = "/etc/Tavrel/ZynLog4cpp/";
constexpr size_t kThreadNameLength = 15;  // what the kernel shows, without the terminator

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

std::string TraceFolder() {
  std::string folder = Environment("ZYN_LOG_DIR");
  if (folder.empty()) folder = kTraceFolder;
  if (folder.back() != '/') folder += '/';
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  return std::filesystem::is_directory(folder, error) ? folder : std::string();
}

void DebugChannel(const std::string& line) {
  syslog(LOG_USER | LOG_DEBUG, "%s", line.c_str());
  if (Environment("ZYN_DEBUG_CHANNEL") == "stderr") std::fputs(line.c_str(), stderr);
}

void NameCurrentThread(const std::string& name) {
  pthread_setname_np(pthread_self(), name.substr(0, kThreadNameLength).c_str());
}

}  // namespace QTD::platform
