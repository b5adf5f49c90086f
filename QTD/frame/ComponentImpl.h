// The implementation of the parameter interface that every configurable object inherits.
#pragma once

#include <atomic>
#include <cstdint>
#include <log4cpp/Category.hh>
#include <mutex>
#include <string>

#include "QTD/frame/Properties.h"
#include "QTD/frame/RMutex.h"
#include "ZynComponent.h"

namespace QTD {

// The code alone, bits 15 to 0, of an answer that `ComponentImpl::Compose` made.
constexpr uint32_t BareCode(uint32_t answer) {
  return answer & 0xFFFF;
}

class ComponentImpl : public ZynComponent {
 public:
  ComponentImpl();
  ~ComponentImpl() override;

  uint8_t GetComponentID() override;
  uint32_t GetParameterCount() override;
  uint32_t GetParameterName(uint32_t index, char* buffer, uint32_t* size) override;
  uint32_t GetParameter(const char* name, char* buffer, uint32_t* size) override;
  uint32_t SetParameter(const char* name, const char* value) override;
  uint32_t SetParameterBool(const char* name, uint8_t value) override;
  uint32_t SetParameterInt(const char* name, int64_t value) override;
  uint32_t SetParameterDouble(const char* name, double value) override;
  uint32_t SetParameterString(const char* name, const char* value) override;
  uint32_t SetParameterExtra(const char* name, const void* value) override;
  uint32_t GetParameterBool(const char* name, uint8_t* result) override;
  uint32_t GetParameterInt(const char* name, int64_t* result) override;
  uint32_t GetParameterDouble(const char* name, double* result) override;
  uint32_t GetParameterString(const char* name, char* buffer, uint32_t* size) override;
  uint32_t GetParameterExtra(const char* name, void* result) override;
  uint32_t ExecuteCommand(const char* name) override;

  // Installs the sinks that may observe or refuse each access; not owned, null removes one.
  virtual void SetParameterHandlers(ZynDisplayCommand* setter, ZynDisplayCommand* getter);
  // Asks the handler, on the caller's thread and with `handlerLock` held: 0 go on, 1 stop.
  virtual uint32_t CallParameterHandler(bool isSet, const char* name, const std::string& value);

  // 0 for code 0, else 0x80000000 | component id << 16 | code. `BareCode` takes the code out again.
  uint32_t Compose(uint32_t code);

  PROPERTIES& Parameters() { return parameters; }

  // Takes the handlers away and waits for the parameter calls of other threads that are under way; those that
  // the calling thread itself is inside of are not waited for. A class whose objects hosts delete calls it
  // first in its destructor.
  void EndParameterCalls();

 protected:
  // Counts a call for the length of a scope. The calls that a thread is inside of hang together, so that each
  // thread knows its own.
  class ParameterCall {
   public:
    explicit ParameterCall(ComponentImpl& calledComponent);
    ~ParameterCall();
    ParameterCall(const ParameterCall&) = delete;
    ParameterCall& operator=(const ParameterCall&) = delete;

    static int OfThisThread(const ComponentImpl& component);  // how many of them are calls of `component`

   private:
    static thread_local const ParameterCall* innermost;

    ComponentImpl& component;
    const ParameterCall* const outer;  // the call that this one was made from
  };

  // The handler for a direction; hold `handlerLock`.
  ZynDisplayCommand* ParameterHandler(bool isSet) const { return isSet ? setHandler : getHandler; }
  // Puts the question to a handler: 0 go on, 1 stop.
  uint32_t AskParameterHandler(ZynDisplayCommand& handler, bool isSet, const char* name,
                               const std::string& value);

  std::atomic<int> parameterCalls{0};  // under way
  uint8_t componentID = 0xFF;
  PROPERTIES parameters;
  ZynDisplayCommand* setHandler = nullptr;  // guarded by `handlerLock`
  ZynDisplayCommand* getHandler = nullptr;  // guarded by `handlerLock`
  std::recursive_mutex handlerLock;         // guards the handlers; held for the whole of a handler call
  log4cpp::Category& log;                   // the category "ZynDisplayQt"; write to it through ZYN_TRACE

 private:
  uint32_t CopyText(const std::string& text, char* buffer, const uint32_t* size);
  uint32_t Store(const char* name, const std::string& offered, std::string kept);
  template <typename Value, typename Parse>
  uint32_t Read(const char* name, Value* result, Parse parse);
};

}  // namespace QTD
