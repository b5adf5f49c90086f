// The debug lines that are written while it lives.
#pragma once

#include <log4cpp/AppenderSkeleton.hh>
#include <log4cpp/Category.hh>
#include <string>
#include <vector>

#include "QTD/frame/Logging.h"

namespace chain_test {

class TraceCapture {
 public:
  TraceCapture() : category(QTD::LogCategory()), before(category.getPriority()), appender(lines) {
    category.addAppender(appender);
    category.setPriority(log4cpp::Priority::DEBUG);
  }
  ~TraceCapture() {
    category.setPriority(before);
    category.removeAppender(&appender);
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  std::vector<std::string> lines;

 private:
  class Collector : public log4cpp::AppenderSkeleton {
   public:
    explicit Collector(std::vector<std::string>& target)
        : log4cpp::AppenderSkeleton("TraceCapture"), collected(target) {}
    void close() override {}
    bool requiresLayout() const override { return false; }
    void setLayout(log4cpp::Layout*) override {}

   protected:
    void _append(const log4cpp::LoggingEvent& event) override { collected.push_back(event.message); }

   private:
    std::vector<std::string>& collected;
  };

  log4cpp::Category& category;
  log4cpp::Priority::Value before;
  Collector appender;
};

}  // namespace chain_test
