// The commands that begin with "cmd.display.view": zoom, fit, scale, position, translation. Any thread.
#include <cstdlib>
#include <string>
#include <vector>

#include "QTD/display/CommandTable.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/RMutex.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDWindow.h"

namespace {

double GetDouble(QTD::ArgumentView& args, const char* name, const char* fallback = "") {
  return QTD::ParseDouble(args.GetString(name, fallback));
}

}  // namespace

// Each handler answers the command's result. `viewLock` is held. The geometry changes at once, whatever the
// thread; widgets follow by calls that the window queues.
struct QTDDisplay::ViewCommands {
  struct Row {
    const char* name;
    uint32_t (*run)(QTDDisplay& display, QTD::ArgumentView& args);
  };
  static const Row kTable[10];

  // A coefficient that is not above 0 stands for the default step.
  static uint32_t ZoomIn(QTDDisplay& display, QTD::ArgumentView& args) {
    return display.Zoom(true, GetDouble(args, "zoom.coef", "-1."), true);
  }

  static uint32_t ZoomOut(QTDDisplay& display, QTD::ArgumentView& args) {
    return display.Zoom(false, GetDouble(args, "zoom.coef", "-1."), true);
  }

  static uint32_t Fit(QTDDisplay& display, QTD::ArgumentView& args) {
    const std::string mode = args.GetString("mode", "1");
    if (!display.SetFit(QTD::ParseInt(mode), true)) return 0;
    display.parameters.Set("display.view.fit", mode);
    return 1;
  }

  static uint32_t Scale(QTDDisplay& display, QTD::ArgumentView& args) {
    return display.SetScale(GetDouble(args, "scale", "1.000000"), true);
  }

  static uint32_t Translate(QTDDisplay& display, QTD::ArgumentView& args) {
    QTDScreen* screen = display.Screen();
    if (!screen) return 0;
    double x = GetDouble(args, "pos.x");
    double y = GetDouble(args, "pos.y");
    const std::string source = args.GetString("cs.src");
    const std::string target = args.GetString("cs.dst");
    const bool inside = screen->transform(&x, &y, source.c_str(), target.c_str(), true, false);
    args.Set("pos.x", QTD::ToText(x)).Set("pos.y", QTD::ToText(y)).Set("result", QTD::ToText(inside));
    return 1;
  }

  static uint32_t At(QTDDisplay& display, QTD::ArgumentView& args) {
    QTDScreen* screen = display.Screen();
    if (!screen) return 0;
    double y = GetDouble(args, "pos.y");
    double x = GetDouble(args, "pos.x");
    const std::string source = args.GetString("cs", "base");
    // Case counts here, unlike in the screen's own names. With the target normally absent the point comes
    // back as fractions of the picture, which is what the centre is given in.
    if (source != "base") {
      screen->transform(&x, &y, source.c_str(), args.GetString("base").c_str(), true, false);
    }
    return display.SetCenter(x, y, true);
  }

  static uint32_t Status(QTDDisplay& display, QTD::ArgumentView&) {
    if (Flip(display, "display.view.status")) {
      display.UpdateStatus();
    } else {
      display.RemoveObject("@status");
    }
    return 1;
  }

  static uint32_t Info(QTDDisplay& display, QTD::ArgumentView&) {
    if (Flip(display, "display.view.info")) {
      display.ShowInfo();
    } else {
      display.RemoveObject("@info");
    }
    return 1;
  }

  // Which part of the image is in view.
  static uint32_t Image(QTDDisplay& display, QTD::ArgumentView& args) {
    QTDScreen* screen = display.Screen();
    if (!screen) return 0;
    const QRect client = display.Window()->geometry(false);
    double x = 0;
    double y = 0;
    double width = std::abs(client.width());
    double height = std::abs(client.height());
    const bool pointInside = screen->transform(&x, &y, "win", "img", true, true);
    const bool sizeInside = screen->transform(&width, &height, "win", "img", false, true);
    args.Set("pos.x", QTD::ToText(x)).Set("pos.y", QTD::ToText(y));
    args.Set("dim.w", QTD::ToText(width)).Set("dim.h", QTD::ToText(height));
    args.Set("inside", QTD::ToText(pointInside && sizeInside));
    return 1;
  }

  static uint32_t NotificationFlags(QTDDisplay& display, QTD::ArgumentView& args) {
    QTDWindow* window = display.Window();
    if (!window) return 1;
    QTD::PROPERTIES list;
    list.Set("flags", args.GetString("flags"));
    window->Execute("cmd.notification.flags.set", &list);
    return 1;
  }

  // Answers whether the parameter was 0 and is switched on now.
  static bool Flip(QTDDisplay& display, const char* parameter) {
    const bool on = display.parameters.GetInt(parameter) == 0;
    display.parameters.Set(parameter, QTD::ToText(on));
    return on;
  }
};

const QTDDisplay::ViewCommands::Row QTDDisplay::ViewCommands::kTable[10] = {
    {"cmd.display.view.zoom.in", ZoomIn},
    {"cmd.display.view.zoom.out", ZoomOut},
    {"cmd.display.view.fit", Fit},
    {"cmd.display.view.scale", Scale},
    {"cmd.display.view.translate", Translate},
    {"cmd.display.view.at", At},
    {"cmd.display.view.status", Status},
    {"cmd.display.view.info", Info},
    {"cmd.display.view.image", Image},
    {"cmd.display.view.nofication", NotificationFlags},  // spelled like that on purpose: hosts send it so
};

std::vector<std::string> QTDDisplay::ViewCommandNames() {
  return QTD::CommandNames(ViewCommands::kTable);
}

uint32_t QTDDisplay::RunCommandDisplayView(const char* name, QTD::ARGUMENTS* args) {
  QTD::RMutexLock guard(&viewLock, "QTDDisplay::RunCommandDisplayView()");
  QTD::ArgumentView view(args);
  const ViewCommands::Row* row = QTD::FindCommand(ViewCommands::kTable, name);
  return row ? row->run(*this, view) : 0;
}
