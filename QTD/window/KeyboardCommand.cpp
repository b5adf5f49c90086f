#include "QTD/window/KeyboardCommand.h"

#include <algorithm>

namespace QTD {
namespace {

char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool EndsWith(const std::string& typed, const std::string& sequence) {
  return typed.size() >= sequence.size() &&
         std::equal(sequence.rbegin(), sequence.rend(), typed.rbegin(),
                    [](char one, char other) { return Lower(one) == Lower(other); });
}

}  // namespace

KeyboardCommand::~KeyboardCommand() = default;

std::string KeyboardCommand::process(char typed) {
  if (maxLength <= 0) return std::string();
  buffer += typed;
  for (int index = 0; sequences.IsIndexValid(index); ++index) {
    const std::string sequence = sequences.NameAt(index);
    if (!EndsWith(buffer, sequence)) continue;
    buffer.clear();
    return sequences.GetString(sequence);
  }
  const auto kept = static_cast<size_t>(maxLength);
  if (buffer.size() > kept) buffer.erase(0, buffer.size() - kept);
  return std::string();
}

}  // namespace QTD
