// A disk that is full, for this process alone.
#pragma once

#include <sys/resource.h>

#include <csignal>

// While it lives no file grows beyond so many bytes.
class FullDisk {
 public:
  explicit FullDisk(rlim_t mostBytes) {
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit limit = before;
    limit.rlim_cur = mostBytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before{};
  void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);  // the write fails instead
};
