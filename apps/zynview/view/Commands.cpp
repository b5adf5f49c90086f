#include "view/Commands.h"

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

std::optional<ImagePoint> WindowToImage(ZynDisplayProcessor* display, double x, double y) {
  QTD::ARGUMENTS position{{"pos.x", Number(x)}, {"pos.y", Number(y)}, {"cs.src", "win"}, {"cs.dst", "img"}};
  if (display->RunCommand("cmd.display.view.translate", &position) == 0) return {};
  return ImagePoint{Number(position["pos.x"]), Number(position["pos.y"]), position["result"] == "1"};
}

bool DrawImageRect(ZynDisplayProcessor* display, const char* id, const QRect& rect, int pen,
                   uint32_t colour) {
  return Run(display, "cmd.display.overlay.rect.add",
             {{"objectID", id},
              {"cs", "img"},
              {"rect.x", std::to_string(rect.x())},
              {"rect.y", std::to_string(rect.y())},
              {"rect.w", std::to_string(rect.width())},
              {"rect.h", std::to_string(rect.height())},
              {"line.width", std::to_string(pen)},
              {"line.clr", std::to_string(colour)}});
}

}  // namespace zynview
