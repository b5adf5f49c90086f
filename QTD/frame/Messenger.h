// Delivers named notifications to a list of receivers.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "QTD/frame/Properties.h"
#include "QTD/frame/RMutex.h"
#include "QTD/frame/Thread.h"
#include "ZynComponent.h"

namespace QTD {

class Receivers;

// `Send` delivers on the caller's thread and answers; `Post` queues for the messenger thread. Posted messages
// coalesce by name and "code". No lock of the messenger is held while a receiver runs, so a receiver may call
// anything, from any thread. The thread runs while there are receivers. Any thread may call any operation.
class Messenger : public Thread {
 public:
  Messenger();
  ~Messenger() override;

  bool Loop() override;

  // Null and known ones are ignored. Starts the thread.
  virtual void AddReceiver(ZynDisplayCommand* receiver);
  // Waits for a delivery to that receiver that is under way on another thread, so that the receiver may be
  // deleted afterwards. Does not wait inside a delivery to that receiver. Inside another delivery, of
  // whichever messenger, and inside `HostCodeUnderLocks` it waits one second at most: whoever called the host
  // may hold a lock that the receiver waits for. After that second the receiver may still be running: the
  // host must not delete it before it knows, by its own means, that it has returned. On the GUI thread events
  // are handled during the wait, so that a receiver may wait for that thread; the caller should hold no lock.
  // Always true.
  virtual bool RemoveReceiver(ZynDisplayCommand* receiver);
  // The OR of the receivers' results. Without `args` the receivers get an empty map, without the common
  // pairs. What a receiver throws goes on to the caller, when all the others have been told.
  virtual uint32_t Send(const char* message, ARGUMENTS* args);
  // False for a null name; an empty one is not queued.
  virtual bool Post(const char* message, ARGUMENTS* args);
  // For good: no further delivery begins, later receivers are ignored, and what was or will be posted is
  // dropped. Does not wait: a delivery that is under way goes on. The thread is asked to stop; `IsRunning`
  // turns false after its last touch of a receiver, and stays so. The destructor waits for that without
  // handling events, so an owner on the GUI thread, for which a receiver may be waiting, first handles events
  // until `IsRunning` is false.
  void Close();
  virtual PROPERTIES* GetCommonProperties();  // pairs that go with every message

  // Whether the calling thread is inside a receiver, of whichever messenger.
  static bool IsDelivering();

 private:
  // By name, then by "code".
  using Queue = std::map<std::pair<std::string, std::string>, PROPERTIES>;

  // Makes a change of the list, and the start or stop of the thread that follows from it, one step. Never
  // held while a receiver runs.
  std::recursive_mutex membershipLock;
  const std::shared_ptr<Receivers> receivers;  // deliveries hold a share, and may outlive the messenger
  Queue queue;
  std::recursive_mutex queueLock;  // guards `queue`
  PROPERTIES common;
  RMutex sendLock;  // serialises the making of messages, not their delivery; taken before `queueLock`
};

}  // namespace QTD
