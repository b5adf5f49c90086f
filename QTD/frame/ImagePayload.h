// The arguments of the notification that an image was processed.
#pragma once

#include "ZynComponent.h"

namespace QTD {

// One map for the whole library, with "code" = "processed" and "result" = "0" from the start. It has no lock
// of its own: the display that sends it guards it with its component's lock.
ARGUMENTS& ImageNotificationPayload();

}  // namespace QTD
