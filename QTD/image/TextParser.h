// Expands placeholders in text: the interface, which expands none.
#pragma once

#include <string>

#include "QTD/frame/Properties.h"

namespace QTD {

class TextParser {
 public:
  virtual ~TextParser() = default;
  virtual std::string Parse(const char* text);  // base: the text as it stands, "" for null

  std::string name;
  PROPERTIES variables;
  PROPERTIES options;
};

}  // namespace QTD
