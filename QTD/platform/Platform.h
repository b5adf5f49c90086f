// The few calls that differ by operating system. Nothing outside this folder asks which system it runs on.
#pragma once

#include <cstdint>
#include <string>

namespace QTD::platform {

// The folder of machine-wide settings of the trace, with a closing slash; made if it does not exist. Empty on
// failure.
std::string TraceFolder();

// A line for the system's debug channel, which works before the trace is up.
void DebugChannel(const std::string& line);

// Shows `name` for the calling thread in debuggers (cut to what the system takes).
void NameCurrentThread(const std::string& name);

// Whether the caller runs on the thread of the Qt application; false when there is no application.
bool OnGuiThread();

// The host's native windows, by the id that the window system gave them; see ZynWindowMessage.h. Any thread
// may call these; the look-up of the window happens on the GUI thread. From another thread the first two wait
// for that thread with nothing locked, and give up with false and 0 when the application ends or does not
// answer within two seconds; so code that must not wait (mouse notifications off the GUI thread) posts, which
// never waits and drops what has no window.
bool IsWindow(uint64_t window);
int64_t SendWindowMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord);
void PostWindowMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord);

}  // namespace QTD::platform
