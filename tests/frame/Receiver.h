// A receiver of notifications that does what the test says, and writes down what it heard.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QTD/frame/Messenger.h"

class Receiver : public ZynDisplayCommand {
 public:
  using Action = std::function<uint32_t(const std::string& name, QTD::ARGUMENTS* args)>;
  struct Heard {
    std::string name;
    QTD::ARGUMENTS args;
  };

  explicit Receiver(Action givenAction = nullptr) : action(std::move(givenAction)) {}
  ~Receiver() override {
    if (QTD::Messenger* const known = messenger) known->RemoveReceiver(this);
  }

  // From now until the receiver's end, which must come before the messenger's.
  void ListenTo(QTD::Messenger& addedTo) {
    messenger = &addedTo;
    addedTo.AddReceiver(this);
  }

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    {
      const std::lock_guard<std::mutex> guard(lock);
      heard.push_back({name, *args});
    }
    ++calls;
    return action ? action(name, args) : 0;
  }

  std::vector<Heard> All() {
    const std::lock_guard<std::mutex> guard(lock);
    return heard;
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const Heard& one : All()) names.push_back(one.name);
    return names;
  }

  Action action;
  std::atomic<int> calls{0};

 private:
  std::atomic<QTD::Messenger*> messenger{nullptr};
  std::mutex lock;  // guards `heard`
  std::vector<Heard> heard;
};
