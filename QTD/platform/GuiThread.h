// Questions from any thread that only the GUI thread may answer.
#pragma once

#include <cstdint>
#include <functional>

namespace QTD::platform {

// From now on `HasEnded` tells the end. For code that stands where there is an application; GUI thread.
void WatchForTheEnd();

// Whether the process destroys its static objects, and what Qt keeps in such ones with them: behind the end
// of `main`, even when an application is left over. Nothing of Qt's may be called any more. Any thread.
bool HasEnded();

// Runs `job` on the GUI thread when its event loop comes to it; drops it when there is no application. Any
// thread.
void QueueOnGuiThread(std::function<void()> job);

// Runs `question` on the GUI thread and waits for the answer; on the GUI thread itself it is a plain call.
// Nothing is locked while it waits. It gives up with 0 when there is no application, when the application is
// about to quit, or when the GUI thread does not come to it in time (it may itself be waiting for the
// caller); `question` may then still run later. Any thread.
int64_t AskGuiThread(std::function<int64_t()> question);

}  // namespace QTD::platform
