#include "QTD/frame/ComponentImpl.h"

#include <cstring>
#include <limits>
#include <thread>
#include <utility>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"

namespace QTD {
namespace {

std::string TextOrEmpty(const char* text) {
  return text ? text : "";
}

}  // namespace

ComponentImpl::ComponentImpl() : log(LogCategory()) {}

ComponentImpl::~ComponentImpl() {
  WaitUntilFree(handlerLock);
}

uint8_t ComponentImpl::GetComponentID() {
  return componentID;
}

uint32_t ComponentImpl::Compose(uint32_t code) {
  if (code == 0) return 0;
  return 0x80000000u | static_cast<uint32_t>(componentID) << 16 | BareCode(code);
}

uint32_t ComponentImpl::GetParameterCount() {
  return static_cast<uint32_t>(parameters.Count());
}

// Copies `text` with its terminator. Lengths and sizes count as signed 32-bit numbers: a size from 2^31 on is
// too small.
uint32_t ComponentImpl::CopyText(const std::string& text, char* buffer, const uint32_t* size) {
  if (!buffer || !size || *size == 0) return Compose(ZYN_ERR_BAD_ARGUMENT);
  const bool countable = text.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max());
  if (!countable || static_cast<int32_t>(text.size()) >= static_cast<int32_t>(*size)) {
    return Compose(ZYN_ERR_BUFFER_TOO_SMALL);
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return 0;
}

uint32_t ComponentImpl::GetParameterName(uint32_t index, char* buffer, uint32_t* size) {
  const ParameterCall call(*this);
  const std::string name = parameters.NameAt(static_cast<int32_t>(index));
  if (name.empty()) return Compose(ZYN_ERR_NOT_FOUND);
  if (!buffer) return 0;  // the caller only asks whether the index exists
  return CopyText(name, buffer, size);
}

uint32_t ComponentImpl::GetParameter(const char* name, char* buffer, uint32_t* size) {
  return GetParameterString(name, buffer, size);
}

uint32_t ComponentImpl::SetParameter(const char* name, const char* value) {
  const ParameterCall call(*this);
  if (!name || !*name || !value || !*value) return Compose(ZYN_ERR_BAD_ARGUMENT);
  parameters.Set(name, value);
  return 0;
}

// The handler sees `offered`; `kept` is what the list gets.
uint32_t ComponentImpl::Store(const char* name, const std::string& offered, std::string kept) {
  const uint32_t refused = CallParameterHandler(true, name, offered);
  if (refused) return refused;  // as it is, without bit 31
  parameters.Set(TextOrEmpty(name), std::move(kept));
  return 0;
}

uint32_t ComponentImpl::SetParameterBool(const char* name, uint8_t value) {
  const ParameterCall call(*this);
  // Any byte but 0 is seen by the handler as it is, and kept as 1.
  return Store(name, ToText(static_cast<int>(value)), ToText(value != 0));
}

uint32_t ComponentImpl::SetParameterInt(const char* name, int64_t value) {
  const ParameterCall call(*this);
  const std::string text = ToText(static_cast<long long>(value));
  return Store(name, text, text);
}

uint32_t ComponentImpl::SetParameterDouble(const char* name, double value) {
  const ParameterCall call(*this);
  const std::string text = ToText(value);
  return Store(name, text, text);
}

uint32_t ComponentImpl::SetParameterString(const char* name, const char* value) {
  const ParameterCall call(*this);
  const std::string text = TextOrEmpty(value);
  return Store(name, text, text);
}

uint32_t ComponentImpl::SetParameterExtra(const char*, const void*) {
  return Compose(ZYN_ERR_NOT_SUPPORTED);
}

// The handler may bring the stored value up to date before it is read; its refusal comes before an absent
// name.
template <typename Value, typename Parse>
uint32_t ComponentImpl::Read(const char* name, Value* result, Parse parse) {
  const uint32_t refused = CallParameterHandler(false, name, ToText(static_cast<const void*>(result)));
  if (refused) return refused;
  std::string text;
  if (!parameters.Lookup(TextOrEmpty(name), &text)) return Compose(ZYN_ERR_NOT_FOUND);
  if (!result) return Compose(ZYN_ERR_BAD_ARGUMENT);
  *result = static_cast<Value>(parse(text));
  return 0;
}

uint32_t ComponentImpl::GetParameterBool(const char* name, uint8_t* result) {
  const ParameterCall call(*this);
  return Read(name, result, ParseBool);
}

uint32_t ComponentImpl::GetParameterInt(const char* name, int64_t* result) {
  const ParameterCall call(*this);
  return Read(name, result, ParseInt64);
}

uint32_t ComponentImpl::GetParameterDouble(const char* name, double* result) {
  const ParameterCall call(*this);
  return Read(name, result, ParseDouble);
}

uint32_t ComponentImpl::GetParameterString(const char* name, char* buffer, uint32_t* size) {
  const ParameterCall call(*this);
  std::string present;
  // A size from 2^31 on is refused below: nothing is read for it.
  if (buffer && size && static_cast<int32_t>(*size) > 0) present.assign(buffer, strnlen(buffer, *size));
  const uint32_t refused = CallParameterHandler(false, name, present);
  if (refused) return refused;
  std::string text;
  if (!parameters.Lookup(TextOrEmpty(name), &text)) return Compose(ZYN_ERR_NOT_FOUND);
  return CopyText(ParseString(text), buffer, size);
}

uint32_t ComponentImpl::GetParameterExtra(const char*, void*) {
  return Compose(ZYN_ERR_NOT_SUPPORTED);
}

uint32_t ComponentImpl::ExecuteCommand(const char*) {
  return Compose(ZYN_ERR_NOT_SUPPORTED);
}

thread_local const ComponentImpl::ParameterCall* ComponentImpl::ParameterCall::innermost = nullptr;

ComponentImpl::ParameterCall::ParameterCall(ComponentImpl& calledComponent)
    : component(calledComponent), outer(innermost) {
  innermost = this;
  ++component.parameterCalls;
}

ComponentImpl::ParameterCall::~ParameterCall() {
  innermost = outer;
  --component.parameterCalls;
}

int ComponentImpl::ParameterCall::OfThisThread(const ComponentImpl& component) {
  int count = 0;
  for (const ParameterCall* call = innermost; call; call = call->outer) {
    count += &call->component == &component;
  }
  return count;
}

void ComponentImpl::EndParameterCalls() {
  SetParameterHandlers(nullptr, nullptr);
  const int own = ParameterCall::OfThisThread(*this);
  while (parameterCalls > own) std::this_thread::yield();
}

void ComponentImpl::SetParameterHandlers(ZynDisplayCommand* setter, ZynDisplayCommand* getter) {
  const RMutexLock guard(&handlerLock);
  setHandler = setter;
  getHandler = getter;
}

uint32_t ComponentImpl::CallParameterHandler(bool isSet, const char* name, const std::string& value) {
  const RMutexLock guard(&handlerLock);
  ZynDisplayCommand* const handler = ParameterHandler(isSet);
  return handler ? AskParameterHandler(*handler, isSet, name, value) : 0;
}

uint32_t ComponentImpl::AskParameterHandler(ZynDisplayCommand& handler, bool isSet, const char* name,
                                            const std::string& value) {
  ARGUMENTS arguments = {{"name", TextOrEmpty(name)},
                         {"value", value},
                         {"props", ToText(static_cast<const void*>(&parameters))}};
  const char* const command = isSet ? "cmd.parameter.set" : "cmd.parameter.get";
  return handler.RunCommand(command, &arguments) != 0 ? 1 : 0;
}

}  // namespace QTD
