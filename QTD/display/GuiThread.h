// Waiting for others without holding up the GUI thread.
#pragma once

#include <functional>

namespace QTD {

// About a millisecond. On the GUI thread its events go on meanwhile, so that others who wait for it come to
// an end.
void WaitABit();

// Runs `job` on the GUI thread and waits for its end, however long that thread is busy; on the GUI thread
// itself it is a plain call. `job` must not throw. False when `giveUp` said so or the application ended
// first: `job` may then still run later. Any thread.
bool RunOnGuiThread(const std::function<void()>& job, const std::function<bool()>& giveUp);

}  // namespace QTD
