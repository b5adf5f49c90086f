// The command side of a window.
#pragma once

#include <string>

#include "QTD/frame/Properties.h"

namespace QTD {

class CommandProcessor {
 public:
  virtual ~CommandProcessor() = default;
  virtual void Execute(const char* name, PROPERTIES* properties) = 0;
  virtual std::string GetValue(const char* name, const char* fallback) = 0;
  virtual void SetValue(const char* name, const char* value, bool flag) = 0;
};

}  // namespace QTD
