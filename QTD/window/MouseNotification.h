// What "notification.mouse" tells the host.
#pragma once

#include <QPoint>
#include <cstdint>

#include "ZynComponent.h"

class QTDScreen;

namespace QTD {

constexpr const char* kMouseNotification = "notification.mouse";

// Bits of the window's notification flags.
enum NotificationFlag : uint32_t {
  kNotifyView = 1,
  kNotifyMovement = 2,  // also "mouse.free"
  kNotifyButtons = 4,
};

enum class MouseNotice { LeftDown, RightClick, Move, LeftUp, Free };

// The flag that asks for the notice, and whether the host's answer is waited for.
uint32_t MouseNoticeFlag(MouseNotice notice);
bool MouseNoticeWaits(MouseNotice notice);

// The arguments of the notice: "code", and the position in the systems that it speaks of. `screen` may be
// null.
ARGUMENTS MouseNoticeArguments(MouseNotice notice, const QPoint& window, const QPoint& global,
                               QTDScreen* screen);

}  // namespace QTD
