#include "QTD/frame/Properties.h"

#include <algorithm>
#include <utility>

#include "QTD/frame/RMutex.h"
#include "QTD/frame/Text.h"

namespace QTD {

using Guard = std::lock_guard<std::recursive_mutex>;

PROPERTIES::PROPERTIES(const PROPERTIES& other) : items(other.Items()) {
  Counted();
}

PROPERTIES& PROPERTIES::operator=(const PROPERTIES& other) {
  // Out under the one lock, in under the other: two lists assigned to each other at once never wait for each
  // other.
  std::vector<Property> copy = other.Items();
  const Guard guard(lock);
  items = std::move(copy);
  Counted();
  return *this;
}

PROPERTIES::~PROPERTIES() {
  WaitUntilFree(lock);
}

std::vector<Property> PROPERTIES::Items() const {
  const Guard guard(lock);
  return items;
}

void PROPERTIES::Counted() {
  count = static_cast<int>(items.size());
}

PROPERTIES& PROPERTIES::Set(std::string name, std::string value, bool overwrite, bool* stored) {
  if (name.empty()) return *this;
  const Guard guard(lock);
  const auto item = Position(name);
  if (stored) *stored = true;
  if (item == items.end()) {
    items.push_back({std::move(name), std::move(value)});
    Counted();
  } else if (overwrite) {
    item->value = std::move(value);
  } else if (stored) {
    *stored = false;
  }
  return *this;
}

// A linear search on purpose: lists hold some dozens of items, and their order stays.
std::vector<Property>::iterator PROPERTIES::Position(std::string_view name) {
  return std::find_if(items.begin(), items.end(), [&](const Property& item) { return item.name == name; });
}

std::vector<Property>::iterator PROPERTIES::Find(std::string_view name) {
  const Guard guard(lock);
  return Position(name);
}

bool PROPERTIES::Has(std::string_view name) {
  const Guard guard(lock);
  return Position(name) != items.end();
}

bool PROPERTIES::Lookup(std::string_view name, std::string* value) {
  const Guard guard(lock);
  const auto item = Position(name);
  if (item == items.end()) return false;
  if (value) *value = item->value;
  return true;
}

std::string PROPERTIES::NameAt(int index) {
  const Guard guard(lock);
  return IsIndexValid(index) ? items[static_cast<size_t>(index)].name : std::string();
}

std::string PROPERTIES::TextOf(std::string_view name, std::string_view fallback) {
  std::string text;
  if (!Lookup(name, &text)) text = fallback;
  return text;
}

int PROPERTIES::GetInt(std::string_view name, std::string_view fallback) {
  return ParseInt(TextOf(name, fallback));
}

int64_t PROPERTIES::GetInt64(std::string_view name, std::string_view fallback) {
  return ParseInt64(TextOf(name, fallback));
}

bool PROPERTIES::GetBool(std::string_view name, std::string_view fallback) {
  return ParseBool(TextOf(name, fallback));
}

double PROPERTIES::GetDouble(std::string_view name, std::string_view fallback) {
  return ParseDouble(TextOf(name, fallback));
}

void* PROPERTIES::GetPointer(std::string_view name, std::string_view fallback) {
  return ParsePointer(TextOf(name, fallback));
}

std::string PROPERTIES::GetString(std::string_view name, std::string_view fallback) {
  return ParseString(TextOf(name, fallback));
}

void PROPERTIES::Merge(PROPERTIES* other) {
  if (!other) return;
  std::vector<Property> copy = other->Items();  // see operator=
  const Guard guard(lock);
  for (Property& item : copy) Set(std::move(item.name), std::move(item.value));
}

void PROPERTIES::ImportArguments(const ARGUMENTS& arguments) {
  const Guard guard(lock);
  for (const auto& [name, value] : arguments) Set(name, value);
}

int PROPERTIES::ExportArguments(ARGUMENTS& arguments) {
  const Guard guard(lock);
  int stored = 0;
  for (const Property& item : items) {
    if (item.name.empty()) continue;
    arguments[item.name] = item.value;
    ++stored;
  }
  return stored;
}

void PROPERTIES::Clear() {
  const Guard guard(lock);
  items.clear();
  Counted();
}

}  // namespace QTD
