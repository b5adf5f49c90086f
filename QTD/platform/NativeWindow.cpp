// Messages to the host's native windows.
#include <QCoreApplication>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include "QTD/platform/ForeignWindows.h"
#include "QTD/platform/GuiThread.h"
#include "QTD/platform/Platform.h"
#include "ZynWindowMessage.h"

namespace QTD::platform {
namespace {

// The widget of this process that has the native window, else the QWindow, else null. GUI thread.
QObject* FindObject(uint64_t window) {
  if (window == 0) return nullptr;
  if (QWidget* const widget = QWidget::find(static_cast<WId>(window))) return widget;
  for (QWindow* const candidate : QGuiApplication::allWindows()) {
    // A window without a handle has no id yet, and asking for one would make it.
    if (candidate->handle() && candidate->winId() == window) return candidate;
  }
  return nullptr;
}

// Objects of this process know one message, the one that ZynWindowMessage carries.
bool HasEvent(int message) {
  return message == ZynWindowMessage::kMessage;
}

int64_t SendHere(uint64_t window, int message, uint64_t firstWord, int64_t secondWord) {
  QObject* const receiver = FindObject(window);
  if (!receiver) {
    SendForeignMessage(window, message, firstWord, secondWord);
    return 0;
  }
  if (!HasEvent(message)) return 0;
  ZynWindowMessage event(firstWord, secondWord);
  QCoreApplication::sendEvent(receiver, &event);
  return event.result;
}

void PostHere(uint64_t window, int message, uint64_t firstWord, int64_t secondWord) {
  QObject* const receiver = FindObject(window);
  if (!receiver) {
    SendForeignMessage(window, message, firstWord, secondWord);
  } else if (HasEvent(message)) {
    QCoreApplication::postEvent(receiver, new ZynWindowMessage(firstWord, secondWord));
  }
}

}  // namespace

bool IsWindow(uint64_t window) {
  if (window == 0) return false;
  return AskGuiThread([window] { return FindObject(window) || IsForeignWindow(window) ? 1 : 0; }) != 0;
}

int64_t SendWindowMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord) {
  return AskGuiThread([=] { return SendHere(window, message, firstWord, secondWord); });
}

void PostWindowMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord) {
  if (OnGuiThread()) {
    PostHere(window, message, firstWord, secondWord);
  } else {
    QueueOnGuiThread([=] { PostHere(window, message, firstWord, secondWord); });
  }
}

}  // namespace QTD::platform
