// The window's command side: what screen, keys and controller tell it by name.
#include <cstring>

#include "QTD/frame/Messenger.h"
#include "QTD/window/QTDWindow.h"

namespace {

constexpr const char* kViewChanged = "view.changed";
constexpr const char* kViewNotification = "notification.view";
constexpr const char* kSetFlags = "cmd.notification.flags.set";
constexpr int kKeepFlags = -1;

// Commands that are passed on as they are.
constexpr const char* kForwarded[] = {"cmd.display.view.status", "cmd.display.view.info"};

}  // namespace

void QTDWindow::Execute(const char* name, QTD::PROPERTIES* properties) {
  if (!name) return;
  QTD::Messenger* receiver = messenger;
  if (std::strcmp(name, kViewChanged) == 0) {
    moveObjects(Moved::kAll);
    if (receiver && (notificationFlags & QTD::kNotifyView)) {
      QTD::ARGUMENTS arguments{{"code", kViewChanged}};
      receiver->Post(kViewNotification, &arguments);
    }
    syncScrollBars(kBothBars);
    return;
  }
  if (std::strcmp(name, kSetFlags) == 0) {
    const int flags = properties ? properties->GetInt("flags", "-1") : kKeepFlags;
    if (flags != kKeepFlags) notificationFlags = static_cast<uint32_t>(flags);
    return;
  }
  for (const char* forwarded : kForwarded) {
    if (receiver && std::strcmp(name, forwarded) == 0) receiver->Post(name, nullptr);
  }
}

std::string QTDWindow::GetValue(const char* name, const char* fallback) {
  return parameters.GetString(name ? name : "", fallback ? fallback : "");
}

void QTDWindow::SetValue(const char* name, const char* value, bool) {
  parameters.Set(name ? name : "", value ? value : "");
}
