#include "QTD/display/GuiThread.h"

#include <QCoreApplication>
#include <chrono>
#include <thread>

#include "QTD/platform/Platform.h"

namespace QTD {

void WaitABit() {
  if (platform::OnGuiThread()) {
    // Inside an event handler `processEvents` alone may leave posted events lying.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace QTD
