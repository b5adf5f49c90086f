#include "demosaicing/Parameters.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "demosaicing/Numbers.h"

namespace Demosaicing {
namespace {

using Guard = std::lock_guard<std::mutex>;

std::string TextOrEmpty(const char* text) {
  return text ? text : "";
}

// Copies `text` with its terminator. Lengths and sizes count as signed 32-bit numbers: a size from 2^31 on is
// too small.
uint32_t CopyText(const std::string& text, char* buffer, const uint32_t* size) {
  if (!buffer || !size || *size == 0) return Failure(ZYN_ERR_BAD_ARGUMENT);
  const bool countable = text.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max());
  if (!countable || static_cast<int32_t>(text.size()) >= static_cast<int32_t>(*size)) {
    return Failure(ZYN_ERR_BUFFER_TOO_SMALL);
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return 0;
}

}  // namespace

Parameters::~Parameters() {
  const Guard guard(lock);
}

uint8_t Parameters::GetComponentID() {
  return kComponentID;
}

uint32_t Parameters::GetParameterCount() {
  const Guard guard(lock);
  return static_cast<uint32_t>(items.size());
}

uint32_t Parameters::GetParameterName(uint32_t index, char* buffer, uint32_t* size) {
  const Guard guard(lock);
  if (index >= items.size()) return Failure(ZYN_ERR_NOT_FOUND);
  if (!buffer) return 0;  // the caller only asks whether the index exists
  return CopyText(items[index].first, buffer, size);
}

uint32_t Parameters::GetParameter(const char* name, char* buffer, uint32_t* size) {
  return GetParameterString(name, buffer, size);
}

uint32_t Parameters::SetParameter(const char* name, const char* value) {
  if (!name || !*name || !value || !*value) return Failure(ZYN_ERR_BAD_ARGUMENT);
  return Store(name, value);
}

// An empty name is no failure, and stores nothing.
uint32_t Parameters::Store(const char* name, std::string value) {
  if (!name || !*name) return 0;
  const Guard guard(lock);
  const auto item =
      std::find_if(items.begin(), items.end(), [&](const auto& it) { return it.first == name; });
  if (item != items.end()) {
    item->second = std::move(value);
  } else {
    items.emplace_back(name, std::move(value));
  }
  return 0;
}

uint32_t Parameters::SetParameterBool(const char* name, uint8_t value) {
  return Store(name, value != 0 ? "1" : "0");
}

uint32_t Parameters::SetParameterInt(const char* name, int64_t value) {
  return Store(name, ToText(value));
}

uint32_t Parameters::SetParameterDouble(const char* name, double value) {
  return Store(name, ToText(value));
}

uint32_t Parameters::SetParameterString(const char* name, const char* value) {
  return Store(name, TextOrEmpty(value));
}

uint32_t Parameters::SetParameterExtra(const char*, const void*) {
  return Failure(ZYN_ERR_NOT_SUPPORTED);
}

bool Parameters::Lookup(const char* name, std::string* value) {
  if (!name) return false;
  const Guard guard(lock);
  const auto item =
      std::find_if(items.begin(), items.end(), [&](const auto& it) { return it.first == name; });
  if (item == items.end()) return false;
  *value = item->second;
  return true;
}

template <typename Value, typename Parse>
uint32_t Parameters::Read(const char* name, Value* result, Parse parse) {
  std::string text;
  if (!Lookup(name, &text)) return Failure(ZYN_ERR_NOT_FOUND);
  if (!result) return Failure(ZYN_ERR_BAD_ARGUMENT);
  *result = parse(text);
  return 0;
}

uint32_t Parameters::GetParameterBool(const char* name, uint8_t* result) {
  return Read(name, result, [](const std::string& text) -> uint8_t { return ParseInt(text) != 0; });
}

uint32_t Parameters::GetParameterInt(const char* name, int64_t* result) {
  return Read(name, result, ParseInt64);
}

uint32_t Parameters::GetParameterDouble(const char* name, double* result) {
  return Read(name, result, ParseDouble);
}

uint32_t Parameters::GetParameterString(const char* name, char* buffer, uint32_t* size) {
  std::string text;
  if (!Lookup(name, &text)) return Failure(ZYN_ERR_NOT_FOUND);
  return CopyText(text, buffer, size);
}

uint32_t Parameters::GetParameterExtra(const char*, void*) {
  return Failure(ZYN_ERR_NOT_SUPPORTED);
}

uint32_t Parameters::ExecuteCommand(const char*) {
  return Failure(ZYN_ERR_NOT_SUPPORTED);
}

}  // namespace Demosaicing
