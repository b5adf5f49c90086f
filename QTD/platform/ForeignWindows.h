// Windows of other toolkits and programs on the X server.
#pragma once

#include <cstdint>

namespace QTD::platform {

// Whether the X server that Qt runs on knows the window; false on other window systems. GUI thread.
bool IsForeignWindow(uint64_t window);

// A client message of type "ZYN_WINDOW_MESSAGE", format 32, with the message number and the low 32 bits of
// the two words. A window that does not exist gets nothing. GUI thread.
void SendForeignMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord);

}  // namespace QTD::platform
