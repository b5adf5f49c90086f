#include "QTD/image/TextParser.h"

namespace QTD {

std::string TextParser::Parse(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace QTD
