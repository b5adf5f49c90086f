// Where the GUI thread is.
#pragma once

namespace QTD {

// Whether the caller runs on the thread of the Qt application. Without an application every thread does.
bool IsGuiThread();

}  // namespace QTD
