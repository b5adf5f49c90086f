#include "Commands.h"

#include <QByteArray>
#include <cstdio>

namespace zynview {

// The program's locale may have a decimal comma; that of the texts has a point.
std::string Number(double value) {
  return QByteArray::number(value, 'f', 6).toStdString();
}

double Number(const std::string& text) {
  return QByteArray::fromStdString(text).toDouble();
}

std::string PointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

void* PointerFrom(const std::string& text) {
  void* pointer = nullptr;
  return std::sscanf(text.c_str(), "%p", &pointer) == 1 ? pointer : nullptr;
}

bool Run(ZynDisplayProcessor* display, const char* name, QTD::ARGUMENTS arguments) {
  return display->RunCommand(name, &arguments) != 0;
}

bool IsOn(ZynDisplayProcessor* display, const char* parameter) {
  int64_t value = 0;
  return (display->GetComponent()->GetParameterInt(parameter, &value) & 0xFFFF) == 0 && value != 0;
}

}  // namespace zynview
