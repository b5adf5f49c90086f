// The receivers of a messenger, and the deliveries to them that are under way.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <vector>

#include "ZynComponent.h"

namespace QTD {

// No lock is held while a receiver runs. A delivery works on its own share of this object, so that a receiver
// may even delete the messenger. Any thread may call any operation.
class Receivers {
 public:
  enum class Exceptions { pass, swallow };

  // How long a removal waits inside a delivery, and in other host code that runs under locks of the library.
  // Whoever called that code may hold a lock that the awaited receiver is waiting for, and gives it up only
  // when the code returns: without a limit both would wait for ever.
  static constexpr std::chrono::seconds kPatience{1};

  // Null and known ones are ignored; false when closed.
  bool Add(ZynDisplayCommand* receiver);
  // No delivery to it begins afterwards, unless it is added again. Answers the moment, for
  // `WaitForDeliveries`.
  uint64_t Remove(ZynDisplayCommand* receiver);
  bool Empty() const;
  // Removes all, for good: no delivery begins afterwards. Does not wait. Again: no effect.
  void Close();
  bool IsClosed() const;
  // `Close`; and while it lives, the calling thread counts as waiting for all deliveries of this
  // object.
  class Closing;

  // Waits for the deliveries to `receiver` that began before `moment` and are under way on other threads.
  // Returns at once inside a delivery to that receiver, and does not wait for a delivery that itself waits,
  // directly or through others, for this thread; inside any delivery, and inside `HostCodeUnderLocks`, it
  // waits `kPatience` at most. On the GUI thread it handles events meanwhile, since the receiver may be
  // waiting for that thread; no lock is held then.
  void WaitForDeliveries(const ZynDisplayCommand* receiver, uint64_t moment) const;

  // Calls each receiver in order of registration; the OR of their results. All see the same `args`. One that
  // throws does not hide the message from the others; with `pass` the first exception goes on to the caller
  // at the end.
  uint32_t Deliver(const char* message, ARGUMENTS& args, Exceptions exceptions);

  // Whether the calling thread is inside a delivery, of whichever messenger.
  static bool IsDelivering();

 private:
  class Delivery;
  std::vector<ZynDisplayCommand*> Copy() const;

  mutable std::mutex lock;  // guards all of the following; taken before the register of deliveries
  std::vector<ZynDisplayCommand*> receivers;  // no duplicates, no null
  bool closed = false;
};

class Receivers::Closing {
 public:
  explicit Closing(Receivers& closedReceivers);
  ~Closing();
  Closing(const Closing&) = delete;
  Closing& operator=(const Closing&) = delete;

 private:
  Receivers& receivers;
};

}  // namespace QTD
