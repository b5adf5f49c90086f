#include "QTD/frame/Messenger.h"

#include "QTD/frame/Receivers.h"

namespace QTD {

Messenger::Messenger() : Thread(LockedPasses::no), receivers(std::make_shared<Receivers>()) {
  name = "QTD::Messenger";
}

Messenger::~Messenger() {
  // From here on nobody starts the thread again, and what is left of its present pass is not delivered.
  std::unique_lock<std::recursive_mutex> guard(membershipLock);
  const Receivers::Closing closing(*receivers);
  guard.unlock();
  StopAndWait();
}

// After the delivery of a message the messenger itself may be gone, deleted by a receiver.
bool Messenger::Loop() {
  const std::shared_ptr<Receivers> present = receivers;
  Queue messages;
  {
    const std::lock_guard<std::recursive_mutex> guard(queueLock);
    if (queue.empty() || present->Empty()) return false;
    messages.swap(queue);
  }
  for (auto& [key, list] : messages) {
    ARGUMENTS args;
    list.ExportArguments(args);
    present->Deliver(key.first.c_str(), args, Receivers::Exceptions::swallow);
  }
  return false;
}

void Messenger::AddReceiver(ZynDisplayCommand* receiver) {
  const std::lock_guard<std::recursive_mutex> guard(membershipLock);
  if (!receivers->Add(receiver) || receivers->Empty()) return;
  // The old thread may still run although it was asked to stop, and may end at any moment.
  while (!Start(nullptr) && !StartOver()) {
  }
}

bool Messenger::RemoveReceiver(ZynDisplayCommand* receiver) {
  const std::shared_ptr<Receivers> present = receivers;
  uint64_t moment = 0;
  {
    const std::lock_guard<std::recursive_mutex> guard(membershipLock);
    moment = present->Remove(receiver);
    if (present->Empty()) RequestStop();
  }
  present->WaitForDeliveries(receiver, moment);
  return true;
}

uint32_t Messenger::Send(const char* message, ARGUMENTS* args) {
  const std::shared_ptr<Receivers> present = receivers;
  ARGUMENTS copy;
  if (args) {
    const RMutexLock guard(sendLock);
    copy = *args;
    common.ExportArguments(copy);
  }
  return present->Deliver(message ? message : "", copy, Receivers::Exceptions::pass);
}

bool Messenger::Post(const char* message, ARGUMENTS* args) {
  const RMutexLock guard(sendLock);
  if (!message) return false;
  PROPERTIES list;
  if (args) list.ImportArguments(*args);
  list.Merge(&common);
  const std::string text = message;
  if (text.empty()) return true;
  std::string code = list.GetString("code");
  const std::lock_guard<std::recursive_mutex> queueGuard(queueLock);
  if (!receivers->IsClosed()) queue[{text, std::move(code)}] = list;
  return true;
}

void Messenger::Close() {
  {
    const std::lock_guard<std::recursive_mutex> guard(membershipLock);
    receivers->Close();
    RequestStop();
  }
  const std::lock_guard<std::recursive_mutex> guard(queueLock);
  queue.clear();
}

PROPERTIES* Messenger::GetCommonProperties() {
  return &common;
}

bool Messenger::IsDelivering() {
  return Receivers::IsDelivering();
}

}  // namespace QTD
