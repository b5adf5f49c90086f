// A host that keeps what it is told, and can tell that everything that was posted has arrived.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class RecordingHost : public ZynDisplayCommand {
 public:
  struct Message {
    std::string name;
    QTD::ARGUMENTS arguments;
  };

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    std::lock_guard<std::mutex> guard(lock);
    messages.push_back({name, args ? *args : QTD::ARGUMENTS()});
    return 0;
  }

  // The messages of that name; of that "code", where one is given.
  std::vector<QTD::ARGUMENTS> Of(const std::string& name, const std::string& code = "") {
    std::lock_guard<std::mutex> guard(lock);
    std::vector<QTD::ARGUMENTS> found;
    for (const Message& message : messages) {
      const auto entry = message.arguments.find("code");
      const bool fits = code.empty() || (entry != message.arguments.end() && entry->second == code);
      if (message.name == name && fits) found.push_back(message.arguments);
    }
    return found;
  }
  void Clear() {
    std::lock_guard<std::mutex> guard(lock);
    messages.clear();
  }

  // True when all that was posted before has arrived. What is posted is delivered in the order of the names
  // in each round, and a round begins with what waits: this name comes last.
  bool HeardAll(QTDDisplay& display) {
    const std::string probe = "zzz." + QTD::ToText(++probes);
    display.GetMessenger()->Post(probe.c_str(), nullptr);
    return WaitFor([&] { return !Of(probe).empty(); });
  }

 private:
  std::mutex lock;  // guards `messages`
  std::vector<Message> messages;
  int probes = 0;
};

// Whether a host that listens is told that the view changes.
inline bool HearsTheView(RecordingHost& host, QTDDisplay& display) {
  host.Clear();
  display.Viewer()->Window()->Execute("view.changed", nullptr);
  EXPECT_TRUE(host.HeardAll(display));
  return !host.Of("notification.view").empty();
}

}  // namespace display_test
