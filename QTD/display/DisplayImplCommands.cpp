// The host's short commands and parameter names, and mouse messages to the host's native window.
#include <algorithm>
#include <cstring>
#include <string>

#include "QTD/display/CommandTable.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Text.h"
#include "QTD/platform/GuiThread.h"
#include "QTD/platform/Platform.h"

namespace {

constexpr int kMouseMessage = 1280;

// One row for each kind of mouse notification that reaches the host's window.
struct MouseRow {
  const char* code;
  bool left;       // the button that the row is for; moves have a row for either
  bool waits;      // sent, and the receiver's result comes back; otherwise posted
  uint32_t event;  // 0: no message
};

constexpr MouseRow kMouseRows[] = {
    {"mouse.down", true, true, 0x4002},  {"mouse.down", false, false, 0x4004},
    {"mouse.up", true, true, 0x4003},    {"mouse.up", false, false, 0},
    {"mouse.move", true, false, 0x4008}, {"mouse.move", false, false, 0x4008},
};

struct MouseMessage {
  uint64_t window;
  bool waits;
  uint64_t firstWord;
  int64_t secondWord;
};

uint32_t Deliver(const MouseMessage& message) {
  if (!QTD::platform::IsWindow(message.window)) return 0;
  if (message.waits) {
    return static_cast<uint32_t>(QTD::platform::SendWindowMessage(message.window, kMouseMessage,
                                                                  message.firstWord, message.secondWord));
  }
  QTD::platform::PostWindowMessage(message.window, kMouseMessage, message.firstWord, message.secondWord);
  return 0;
}

constexpr uint32_t kDumpColor = 0xC4C4;

}  // namespace

struct ZynDisplayImpl::ShortCommands {
  struct Row {
    const char* name;
    uint32_t (ZynDisplayImpl::*run)();
  };
  static constexpr Row kTable[] = {
      {"text.add", &ZynDisplayImpl::ExecuteTextAdd},
      {"text.del", &ZynDisplayImpl::ExecuteTextDelete},
      {"display.zoom.in", &ZynDisplayImpl::ExecuteZoomIn},
      {"display.zoom.out", &ZynDisplayImpl::ExecuteZoomOut},
      {"display.atcenter", &ZynDisplayImpl::ExecuteAtCenter},
      {"display.dump.on", &ZynDisplayImpl::ExecuteDumpOn},
      {"display.dump.off", &ZynDisplayImpl::ExecuteDumpOff},
  };
};

std::vector<std::string> ZynDisplayImpl::CommandNames() {
  return QTD::CommandNames(ShortCommands::kTable);
}

// The names are compared exactly; one that is not known does nothing, with success.
uint32_t ZynDisplayImpl::ExecuteCommand(const char* name) {
  QTD::LiveCall call(QTD::LiveObjects::Displays(), static_cast<ZynDisplay*>(this));
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  const std::string command = name ? name : "";
  for (const ShortCommands::Row& row : ShortCommands::kTable) {
    if (command == row.name) return (this->*row.run)();
  }
  return 0;
}

uint32_t ZynDisplayImpl::ExecuteZoomIn() {
  return RunControllerCommand("cmd.display.view.zoom.in", nullptr);
}

uint32_t ZynDisplayImpl::ExecuteZoomOut() {
  return RunControllerCommand("cmd.display.view.zoom.out", nullptr);
}

uint32_t ZynDisplayImpl::ExecuteAtCenter() {
  // One zero byte each: reads as 0.
  QTD::ARGUMENTS args{{"pos.x", std::string(1, '\0')}, {"pos.y", std::string(1, '\0')}, {"cs", "base"}};
  return RunControllerCommand("cmd.display.view.at", &args);
}

uint32_t ZynDisplayImpl::ExecuteDumpOff() {
  QTD::ARGUMENTS args{{"objectID", parameters.GetString("dump.objectID")}};
  return RunControllerCommand("cmd.display.overlay.del", &args);
}

uint32_t ZynDisplayImpl::RunControllerCommand(const char* command, QTD::ARGUMENTS* args) {
  return controller->RunCommand(command, args) == 1 ? 0 : Compose(ZYN_ERR_FAILED);
}

uint32_t ZynDisplayImpl::ExecuteTextAdd() {
  QTD::ARGUMENTS args{{"objectID", parameters.GetString("objectID")},
                      {"text.font", parameters.GetString("text.font", "default")},
                      {"text.clr", parameters.GetString("text.clr")},
                      {"cs", parameters.GetString("cs")}};
  parameters.Set("objectID", controller->AddText(parameters.GetString("text.text").c_str(),
                                                 parameters.GetInt("text.pos.x"),
                                                 parameters.GetInt("text.pos.y"), &args));
  return 0;
}

uint32_t ZynDisplayImpl::ExecuteTextDelete() {
  std::string id = parameters.GetString("objectID");
  if (!controller->DeleteObject(id)) id.clear();
  parameters.Set("objectID", id);
  return 0;
}

uint32_t ZynDisplayImpl::ExecuteDumpOn() {
  QTD::ARGUMENTS args{{"rect.x", parameters.GetString("dump.x")},
                      {"rect.y", parameters.GetString("dump.y")},
                      {"rect.w", parameters.GetString("dump.w")},
                      {"rect.h", parameters.GetString("dump.h")},
                      {"cs", "img"},
                      {"line.width", "2"},
                      {"line.clr", parameters.GetString("dump.clr", QTD::ToText(kDumpColor))},
                      {"objectID", parameters.GetString("dump.objectID", "@dump")}};
  const uint32_t code = RunControllerCommand("cmd.display.overlay.rect.add", &args);
  if (code == 0) parameters.Set("dump.objectID", args["objectID"]);
  return code;
}

// The display as its own handler waits for the controller's locks, and the GUI thread may run host code that
// reads a parameter of the display while it holds these. So the display's own lock is free meanwhile; any
// other handler is called with it held.
uint32_t ZynDisplayImpl::CallParameterHandler(bool isSet, const char* name, const std::string& value) {
  {
    const QTD::RMutexLock guard(&handlerLock);
    if (ParameterHandler(isSet) != static_cast<ZynDisplayCommand*>(this)) {
      return QTD::ComponentImpl::CallParameterHandler(isSet, name, value);
    }
  }
  return AskParameterHandler(*this, isSet, name, value);
}

// As its own parameter handler, and as a receiver of the controller's notifications.
uint32_t ZynDisplayImpl::RunCommand(const char* name, QTD::ARGUMENTS* args) {
  constexpr const char* kNotification = "notification";
  const std::string command = name ? name : "";
  if (!args) return 0;
  if (command == "cmd.parameter.set") return SetParameterByCommand(*args);
  // Reading "display.bg.color" or "view.scale" yields what was last stored: for the message "parameter.get"
  // they would be brought up to date here, but no message of that name ever comes.
  if (command.compare(0, std::strlen(kNotification), kNotification, 0,
                      std::min(command.size(), std::strlen(kNotification))) != 0) {
    return 0;
  }
  (*args)["code"];  // an absent code is there afterwards, empty
  return command == "notification.mouse" ? ForwardMouse(*args) : 0;
}

uint32_t ZynDisplayImpl::SetParameterByCommand(QTD::ARGUMENTS& args) {
  QTD::ArgumentView view(&args);
  const std::string name = view.GetString("name");
  const std::string value = view.GetString("value");
  if (name == "display.fit") {
    // A refused fit keeps the old text.
    QTD::ARGUMENTS fit{{"mode", value}};
    return controller->RunCommand("cmd.display.view.fit", &fit) == 0 ? 1 : 0;
  }
  if (name == "display.bg.color") {
    controller->SetParameterInt("display.view.bgcolor", QTD::ParseInt64(value));
    int64_t color = 0;
    controller->GetParameterInt("display.view.bgcolor", &color);
    parameters.Set("display.bg.color", QTD::ToText(static_cast<int>(color)));
  }
  return 0;
}

uint32_t ZynDisplayImpl::ForwardMouse(QTD::ARGUMENTS& args) {
  QTD::ArgumentView view(&args);
  const auto window = static_cast<uint64_t>(parameters.GetInt64("window.command"));
  // Windows are the GUI thread's: a message from elsewhere is queued there, and answers 0.
  const bool here = QTD::platform::OnGuiThread();
  if (here && !QTD::platform::IsWindow(window)) return 0;
  const std::string code = view.GetString("code");
  const bool left = view.GetInt("left") != 0;
  const auto row = std::find_if(std::begin(kMouseRows), std::end(kMouseRows), [&](const MouseRow& candidate) {
    return code == candidate.code && left == candidate.left;
  });
  if (row == std::end(kMouseRows) || row->event == 0) return 0;

  // First word: signature above event code. Second word: y above x, 16 bits each, as a signed 32-bit value.
  const auto signature = static_cast<uint32_t>(parameters.GetInt64("system.signature")) & 0xFFFF;
  const auto x = static_cast<uint32_t>(view.GetInt("win.x")) & 0xFFFF;
  const auto y = static_cast<uint32_t>(view.GetInt("win.y")) & 0xFFFF;
  const MouseMessage message{window, row->waits, (uint64_t{signature} << 16) | row->event,
                             static_cast<int32_t>((y << 16) | x)};
  if (here) return Deliver(message);
  QTD::platform::QueueOnGuiThread([message] { Deliver(message); });
  return 0;
}
