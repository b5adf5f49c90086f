// The arguments of the notification that an image was processed.
#pragma once

#include "ZynComponent.h"

namespace QTD {

// One map for all displays, with "code" = "processed" and "result" = "0" from the start. GUI thread: no lock
// guards it, those of the displays being different ones. Receivers get the copy that `Messenger::Send` makes.
ARGUMENTS& ImageNotificationPayload();

}  // namespace QTD
