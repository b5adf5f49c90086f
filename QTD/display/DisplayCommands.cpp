// Named commands of the controller: dispatch, parameter access, notifications.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/CommandTable.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

constexpr uint32_t kLowByte = 0xFF;

ZynDisplayCommand* Receiver(QTD::ARGUMENTS* args) {
  return static_cast<ZynDisplayCommand*>(QTD::ArgumentView(args).GetPointer("proc"));
}

// Compares as far as both go: a name that is shorter than the prefix fits too, an empty one does not.
bool HasPrefix(const std::string& name, const char* prefix) {
  const std::size_t length = std::min(name.size(), std::strlen(prefix));
  return length > 0 && name.compare(0, length, prefix, length) == 0;
}

}  // namespace

// The names are compared exactly; the arguments must not be missing, but where the row says so.
struct QTDDisplay::OwnCommands {
  struct Row {
    const char* name;
    bool withoutArguments;
    uint32_t (*run)(QTDDisplay& display, QTD::ARGUMENTS* args);
  };
  static const Row kTable[5];

  static uint32_t SetParameter(QTDDisplay& display, QTD::ARGUMENTS* args) {
    display.SetParameterByCommand(args);
    return 0;
  }

  static uint32_t GetParameter(QTDDisplay& display, QTD::ARGUMENTS* args) {
    display.GetParameterByCommand(args);
    return 0;
  }

  static uint32_t Add(QTDDisplay& display, QTD::ARGUMENTS* args) {
    return display.AddNotification(Receiver(args)) & kLowByte;
  }

  static uint32_t Delete(QTDDisplay& display, QTD::ARGUMENTS* args) {
    return display.DelNotification(Receiver(args)) & kLowByte;
  }

  static uint32_t Rebuild(QTDDisplay& display, QTD::ARGUMENTS*) {
    const bool exists = display.PreparedFormat().exists;  // without waiting for an image that is processed
    display.Queue(display.rebuildQueued, &QTDDisplay::signalRebuildImage);
    return exists ? 1 : 0;
  }
};

const QTDDisplay::OwnCommands::Row QTDDisplay::OwnCommands::kTable[5] = {
    {"cmd.parameter.set", false, SetParameter},  {"cmd.parameter.get", false, GetParameter},
    {"cmd.system.notification.add", false, Add}, {"cmd.system.notification.del", false, Delete},
    {"cmd.image.rebuild", true, Rebuild},
};

std::vector<std::string> QTDDisplay::CommandNames() {
  std::vector<std::string> names = QTD::CommandNames(OwnCommands::kTable);
  for (const auto& family : {ViewCommandNames(), OverlayCommandNames(), MenuCommandNames()})
    names.insert(names.end(), family.begin(), family.end());
  return names;
}

// Any thread. The locks that a command takes, in their order:
//
//   cmd.display.view...             `viewLock` throughout (ViewCommands.cpp); in it the screen's and the
//                                   window's for single steps
//   cmd.display.overlay...          `viewLock` for each operation (DisplayOperations.cpp), none between them
//   cmd.parameter.set, .get         `handlerLock`
//   cmd.system.notification.add     that of the list of receivers, for a moment
//   cmd.system.notification.del     the same; none while it waits for a delivery that is under way
//   cmd.image.rebuild               `preparedLock`, for a moment; the rebuild itself, in an event of its own,
//                                   `handlerLock` and the swap lock of `incoming` (`slotRebuildImage`)
//   cmd.system.menu.create          none while it waits for the GUI thread, which takes `viewLock`
//   cmd.system.menu.exec, .delete   none
//   @...                            none while it waits for the GUI thread; "@init.display" takes `viewLock`,
//                                   `convertLock` and `handlerLock` there
uint32_t QTDDisplay::RunCommand(const char* name, QTD::ARGUMENTS* args) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return 0;
  const std::string command = name ? name : "";
  for (const OwnCommands::Row& row : OwnCommands::kTable) {
    if (command == row.name && (args || row.withoutArguments)) return row.run(*this, args);
  }
  if (HasPrefix(command, "cmd.display.view")) return RunCommandDisplayView(command.c_str(), args);
  if (HasPrefix(command, "cmd.display.overlay")) return RunCommandDisplayOverlay(command.c_str(), args);
  if (HasPrefix(command, "cmd.system.menu")) return RunCommandSystemMenu(command.c_str(), args);
  if (!command.empty() && command.front() == '@') return SendMessageByCommand(command.c_str(), args);
  return 0;
}

uint32_t QTDDisplay::SendMessageByCommand(const char* name, QTD::ARGUMENTS* args) {
  QTD::PROPERTIES params;
  if (args) params.ImportArguments(*args);
  RunBlockingMessage(name, params);
  return 0;
}

void QTDDisplay::SetParameterByCommand(QTD::ARGUMENTS* args) {
  std::lock_guard<std::recursive_mutex> guard(handlerLock);
  QTD::ArgumentView view(args);
  const std::string name = view.GetString("name");
  if (name == "display.view.bgcolor" && Screen()) {
    Screen()->properties.Set("color", view.GetString("value"));
    if (HasPicture()) Window()->update();
  } else if (name == "image.notification.flags.set") {
    imageNotificationFlags |= static_cast<uint32_t>(view.GetInt("value"));
  } else if (name == "image.notification.flags.clear") {
    imageNotificationFlags &= ~static_cast<uint32_t>(view.GetInt("value"));
  } else {
    parameters.Set(name, view.GetString("value"));
  }
}

// Brings the stored value up to date before it is read.
void QTDDisplay::GetParameterByCommand(QTD::ARGUMENTS* args) {
  std::lock_guard<std::recursive_mutex> guard(handlerLock);
  QTD::ArgumentView view(args);
  const std::string name = view.GetString("name");
  QTDScreen* screen = Screen();
  if (name == "display.view.scale" && screen) {
    parameters.Set(name, QTD::ToText(screen->properties.GetDouble("scale")));
  } else if (name == "display.view.fit" && screen) {
    parameters.Set(name, QTD::ToText(screen->properties.GetInt("fit")));
  } else {
    view.Set("value", parameters.GetString(name));
  }
}

uint32_t QTDDisplay::ExecuteCommand(const char* name) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  std::lock_guard<std::recursive_mutex> guard(handlerLock);
  if (!name || std::strcmp(name, "text.add") != 0) {
    lastError = 0;
    return Compose(ZYN_ERR_NOT_SUPPORTED);
  }
  QTD::ARGUMENTS args;
  args["text.clr"] = parameters.GetString("text.clr");
  args["text.font"] = parameters.GetString("text.font", "default");
  args["cs"] = parameters.GetString("cs");
  args["objectID"] = parameters.GetString("objectID");
  const std::string id = AddText(parameters.GetString("text.text").c_str(), parameters.GetInt("text.pos.x"),
                                 parameters.GetInt("text.pos.y"), &args);
  parameters.Set("objectID", id);
  return Fail(id.empty() ? static_cast<uint32_t>(ZYN_ERR_FAILED) : 0u);
}

bool QTDDisplay::AddNotification(ZynDisplayCommand* receiver) {
  messenger.AddReceiver(receiver);
  return true;
}

bool QTDDisplay::DelNotification(ZynDisplayCommand* receiver) {
  return messenger.RemoveReceiver(receiver);
}

QTD::Messenger* QTDDisplay::GetMessenger() {
  return &messenger;
}
