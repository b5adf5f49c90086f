// The commands that begin with "cmd.display.overlay": texts and rectangles over the picture. Any thread; the
// operations that they call take the view lock one by one.
#include <string>
#include <vector>

#include "QTD/display/CommandTable.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/ArgumentView.h"

namespace {

constexpr uint32_t kLowByte = 0xFF;

QTD::ARGUMENTS* Map(QTD::ArgumentView& args, const char* name) {
  return static_cast<QTD::ARGUMENTS*>(args.GetPointer(name));
}

}  // namespace

struct QTDDisplay::OverlayCommands {
  struct Row {
    const char* name;
    uint32_t (*run)(QTDDisplay& display, QTD::ArgumentView& args);
  };
  static const Row kTable[7];

  // Where the caller's map lacks an attribute, it gets the display's default.
  static void Complete(QTDDisplay& display, QTD::ArgumentView& args, const char* name, const char* parameter,
                       const char* fallback) {
    args.Set(name, args.GetString(name, display.parameters.GetString(parameter, fallback)));
  }

  // An argument that is not given keeps the old default.
  static void Keep(QTDDisplay& display, QTD::ArgumentView& args, const char* parameter, const char* name) {
    display.parameters.Set(parameter, args.GetString(name, display.parameters.GetString(parameter)));
  }

  static uint32_t Params(QTDDisplay& display, QTD::ArgumentView& args) {
    display.SetOverlayProperties(Map(args, "props"));
    display.SetOverlayVariables(Map(args, "vars"));
    Keep(display, args, "display.overlay.text.font", "text.font");
    Keep(display, args, "display.overlay.text.clr", "text.clr");
    return 1;
  }

  static uint32_t TextAdd(QTDDisplay& display, QTD::ArgumentView& args) {
    Complete(display, args, "text.font", "display.overlay.text.font", "default");
    Complete(display, args, "text.clr", "display.overlay.text.clr", "0");
    const int y = args.GetInt("text.pos.y");
    const int x = args.GetInt("text.pos.x");
    const std::string text = args.GetString("text.text");
    const std::string id = display.AddText(text.c_str(), x, y, args.Map());
    args.Set("objectID", id);
    return !id.empty();
  }

  static uint32_t RectAdd(QTDDisplay& display, QTD::ArgumentView& args) {
    Complete(display, args, "line.width", "display.overlay.line.width", "1");
    Complete(display, args, "line.clr", "display.overlay.line.clr", "0");
    const int height = args.GetInt("rect.h");
    const int width = args.GetInt("rect.w");
    const int y = args.GetInt("rect.y");
    const int x = args.GetInt("rect.x");
    const std::string id = display.AddRect(x, y, width, height, args.Map());
    args.Set("objectID", id);
    return !id.empty();
  }

  // Never adds anything: without "cmd." in front the names that it calls are unknown, and answer 0. Kept as
  // it stands.
  static uint32_t Add(QTDDisplay& display, QTD::ArgumentView& args) {
    const std::string type = args.GetString("type");
    if (type == "text") return display.RunCommand("display.overlay.text.add", args.Map());
    if (type == "rect") return display.RunCommand("display.overlay.rect.add", args.Map());
    return 0;
  }

  static uint32_t Delete(QTDDisplay& display, QTD::ArgumentView& args) {
    return display.DeleteObject(args.GetString("objectID")) & kLowByte;
  }
};

const QTDDisplay::OverlayCommands::Row QTDDisplay::OverlayCommands::kTable[7] = {
    {"cmd.display.overlay.params", Params},    {"cmd.display.overlay.text.add", TextAdd},
    {"cmd.display.overlay.rect.add", RectAdd}, {"cmd.display.overlay.add", Add},
    {"cmd.display.overlay.del", Delete},       {"cmd.display.overlay.text.del", Delete},
    {"cmd.display.overlay.rect.del", Delete},
};

std::vector<std::string> QTDDisplay::OverlayCommandNames() {
  return QTD::CommandNames(OverlayCommands::kTable);
}

uint32_t QTDDisplay::RunCommandDisplayOverlay(const char* name, QTD::ARGUMENTS* args) {
  if (!args) return 0;
  QTD::ArgumentView view(args);
  const OverlayCommands::Row* row = QTD::FindCommand(OverlayCommands::kTable, name);
  return row ? row->run(*this, view) : 0;
}
