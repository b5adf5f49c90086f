// Locked access to the arguments of one command.
#pragma once

#include <mutex>
#include <string>

#include "ZynComponent.h"

namespace QTD {

// Stands on the stack at the head of a command handler, around the map that the caller passed. It neither
// copies nor owns that map; built on null, it works on an empty map of its own.
class ArgumentView {
 public:
  explicit ArgumentView(ARGUMENTS* arguments);
  ArgumentView(const ArgumentView&) = delete;
  ArgumentView& operator=(const ArgumentView&) = delete;

  ArgumentView& Set(std::string name, std::string value);  // an empty name stores nothing
  int GetInt(std::string name, std::string fallback = "");
  void* GetPointer(std::string name, std::string fallback = "");
  std::string GetString(std::string name, std::string fallback = "");
  ARGUMENTS* Map() { return target; }

 private:
  std::string TextOf(const std::string& name, const std::string& fallback);

  ARGUMENTS* target;
  std::recursive_mutex lock;  // guards the map while handler code nests
  ARGUMENTS own;
};

}  // namespace QTD
