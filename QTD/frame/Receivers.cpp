#include "QTD/frame/Receivers.h"

#include <QCoreApplication>
#include <algorithm>
#include <condition_variable>
#include <exception>
#include <list>
#include <thread>

#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/platform/Platform.h"

namespace QTD {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto guiSlice = std::chrono::milliseconds(1);  // between two looks at the event loop

// Releases a lock for a while.
class Unlocked {
 public:
  explicit Unlocked(std::unique_lock<std::mutex>& heldGuard) : guard(heldGuard) { guard.unlock(); }
  ~Unlocked() { guard.lock(); }
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  std::unique_lock<std::mutex>& guard;
};

// Who runs which receiver, and who waits for which. One register serves all messengers of the process, since
// threads may wait for each other across messengers.
class Register {
 public:
  struct Entry {
    const Receivers* owner;
    const ZynDisplayCommand* receiver;  // null in a wait for all
    std::thread::id thread;
    uint64_t number;  // of a delivery: the order of beginnings; of a wait: it is for smaller numbers
  };
  using Position = std::list<Entry>::iterator;

  // Never destroyed: threads may be delivering while the process ends.
  static Register& Instance() {
    static Register& instance = *new Register;
    return instance;
  }

  Position Enter(const Receivers* owner, const ZynDisplayCommand* receiver) {
    const std::lock_guard<std::mutex> guard(lock);
    return deliveries.insert(deliveries.end(), {owner, receiver, std::this_thread::get_id(), next++});
  }

  void Leave(Position delivery) {
    const std::lock_guard<std::mutex> guard(lock);
    deliveries.erase(delivery);
    changed.notify_all();
  }

  bool HasDeliveryOf(std::thread::id thread) {
    const std::lock_guard<std::mutex> guard(lock);
    return IsDeliveringOn(thread);
  }

  uint64_t Now() {
    const std::lock_guard<std::mutex> guard(lock);
    return next++;
  }

  void Wait(const Receivers* owner, const ZynDisplayCommand* receiver, uint64_t moment) {
    const bool gui = platform::OnGuiThread();
    std::unique_lock<std::mutex> guard(lock);
    const auto self = std::this_thread::get_id();
    if (std::any_of(deliveries.begin(), deliveries.end(),
                    [&](const Entry& e) { return e.receiver == receiver && e.thread == self; })) {
      return;
    }
    const bool bounded = IsDeliveringOn(self) || HostCodeUnderLocks::IsActive();
    const auto deadline = Clock::now() + Receivers::kPatience;
    const Waiting waiting(*this, {owner, receiver, self, moment});
    while (IsHeld(*waiting.position) && !(bounded && Clock::now() >= deadline)) {
      if (gui) {
        changed.wait_for(guard, guiSlice);
        if (!IsHeld(*waiting.position)) break;
        const Unlocked unlocked(guard);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
      } else if (bounded) {
        changed.wait_until(guard, deadline);
      } else {
        changed.wait(guard);
      }
    }
  }

  // The caller is about to wait, by its own means, for all deliveries of `owner`. Those who wait for the
  // caller look again.
  void BeginWait(const Receivers* owner) {
    const std::lock_guard<std::mutex> guard(lock);
    waits.push_back({owner, nullptr, std::this_thread::get_id(), next++});
    changed.notify_all();
  }

  void EndWait(const Receivers* owner) {
    const std::lock_guard<std::mutex> guard(lock);
    waits.remove_if([&](const Entry& e) { return e.owner == owner && !e.receiver; });
  }

 private:
  // A wait on the books. Made and ended while `lock` is held.
  struct Waiting {
    Waiting(Register& givenOwner, const Entry& entry)
        : owner(givenOwner), position(owner.waits.insert(owner.waits.end(), entry)) {}
    ~Waiting() { owner.waits.erase(position); }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    Register& owner;
    const Position position;
  };

  bool IsDeliveringOn(std::thread::id thread) const {
    return std::any_of(deliveries.begin(), deliveries.end(),
                       [thread](const Entry& e) { return e.thread == thread; });
  }

  bool IsHeld(const Entry& waiting) const {
    return std::any_of(deliveries.begin(), deliveries.end(),
                       [&](const Entry& e) { return Holds(e, waiting) && !WaitsFor(e, waiting.thread); });
  }

  static bool Holds(const Entry& delivery, const Entry& waiting) {
    return delivery.owner == waiting.owner && delivery.number < waiting.number &&
           (!waiting.receiver || delivery.receiver == waiting.receiver);
  }

  // Whether the end of `held` waits for the end of a delivery on `goal`, directly or through other threads. A
  // wait holds up only the deliveries that it began in: while the GUI thread waits, it handles events, and
  // the deliveries that these begin end first.
  bool WaitsFor(const Entry& held, std::thread::id goal) const {
    std::vector<const Entry*> seen{&held};
    for (size_t i = 0; i < seen.size(); ++i) {
      if (seen[i]->thread == goal) return true;
      for (const Entry& waiting : waits) {
        if (waiting.thread != seen[i]->thread || waiting.number < seen[i]->number) continue;
        for (const Entry& delivery : deliveries) {
          if (!Holds(delivery, waiting)) continue;
          if (std::find(seen.begin(), seen.end(), &delivery) == seen.end()) seen.push_back(&delivery);
        }
      }
    }
    return false;
  }

  std::mutex lock;  // guards all of the following
  std::condition_variable changed;
  std::list<Entry> deliveries;
  std::list<Entry> waits;
  uint64_t next = 0;
};

}  // namespace

// The time in which one receiver is called, on the books of the register.
class Receivers::Delivery {
 public:
  // The look at the list and the entry are one step: what `Remove` has taken out is not called any more.
  Delivery(const Receivers& owner, ZynDisplayCommand* receiver) {
    const std::lock_guard<std::mutex> guard(owner.lock);
    registered = std::find(owner.receivers.begin(), owner.receivers.end(), receiver) != owner.receivers.end();
    if (registered) position = Register::Instance().Enter(&owner, receiver);
  }
  ~Delivery() {
    if (registered) Register::Instance().Leave(position);
  }
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  explicit operator bool() const { return registered; }

 private:
  bool registered = false;
  Register::Position position;
};

bool Receivers::Add(ZynDisplayCommand* receiver) {
  const std::lock_guard<std::mutex> guard(lock);
  if (closed) return false;
  if (receiver && std::find(receivers.begin(), receivers.end(), receiver) == receivers.end()) {
    receivers.push_back(receiver);
  }
  return true;
}

uint64_t Receivers::Remove(ZynDisplayCommand* receiver) {
  const std::lock_guard<std::mutex> guard(lock);
  receivers.erase(std::remove(receivers.begin(), receivers.end(), receiver), receivers.end());
  return Register::Instance().Now();
}

bool Receivers::Empty() const {
  const std::lock_guard<std::mutex> guard(lock);
  return receivers.empty();
}

void Receivers::Close() {
  const std::lock_guard<std::mutex> guard(lock);
  closed = true;
  receivers.clear();
}

bool Receivers::IsClosed() const {
  const std::lock_guard<std::mutex> guard(lock);
  return closed;
}

void Receivers::WaitForDeliveries(const ZynDisplayCommand* receiver, uint64_t moment) const {
  if (receiver) Register::Instance().Wait(this, receiver, moment);
}

Receivers::Closing::Closing(Receivers& closedReceivers) : receivers(closedReceivers) {
  receivers.Close();
  Register::Instance().BeginWait(&receivers);
}

Receivers::Closing::~Closing() {
  Register::Instance().EndWait(&receivers);
}

std::vector<ZynDisplayCommand*> Receivers::Copy() const {
  const std::lock_guard<std::mutex> guard(lock);
  return receivers;
}

uint32_t Receivers::Deliver(const char* message, ARGUMENTS& args, Exceptions exceptions) {
  uint32_t results = 0;
  std::exception_ptr first;
  for (ZynDisplayCommand* receiver : Copy()) {
    const Delivery delivery(*this, receiver);
    if (!delivery) continue;
    try {
      if (ZynDisplayCommand* target = receiver->GetCommandTarget(message)) {
        results |= target->RunCommand(message, &args);
      }
    } catch (...) {
      // The others hear the message all the same.
      if (!first) first = std::current_exception();
    }
  }
  if (first && exceptions == Exceptions::pass) std::rethrow_exception(first);
  return results;
}

bool Receivers::IsDelivering() {
  return Register::Instance().HasDeliveryOf(std::this_thread::get_id());
}

}  // namespace QTD
