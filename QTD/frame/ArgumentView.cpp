#include "QTD/frame/ArgumentView.h"

#include <utility>

#include "QTD/frame/Text.h"

namespace QTD {

using Guard = std::lock_guard<std::recursive_mutex>;

ArgumentView::ArgumentView(ARGUMENTS* arguments) : target(arguments ? arguments : &own) {}

ArgumentView& ArgumentView::Set(std::string name, std::string value) {
  const Guard guard(lock);
  if (!name.empty() && target) (*target)[std::move(name)] = std::move(value);
  return *this;
}

std::string ArgumentView::TextOf(const std::string& name, const std::string& fallback) {
  const Guard guard(lock);
  if (!target) return fallback;
  const auto entry = target->find(name);
  return entry == target->end() ? fallback : entry->second;
}

int ArgumentView::GetInt(std::string name, std::string fallback) {
  return ParseInt(TextOf(name, fallback));
}

void* ArgumentView::GetPointer(std::string name, std::string fallback) {
  return ParsePointer(TextOf(name, fallback));
}

std::string ArgumentView::GetString(std::string name, std::string fallback) {
  return ParseString(TextOf(name, fallback));
}

}  // namespace QTD
