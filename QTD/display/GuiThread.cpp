#include "QTD/display/GuiThread.h"

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "QTD/platform/GuiThread.h"
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

bool RunOnGuiThread(const std::function<void()>& job, const std::function<bool()>& giveUp) {
  if (platform::OnGuiThread()) {
    job();
    return true;
  }
  const auto done = std::make_shared<std::atomic<bool>>(false);
  platform::QueueOnGuiThread([job, done] {
    job();
    *done = true;
  });
  while (!*done) {
    if (giveUp() || !QCoreApplication::instance() || QCoreApplication::closingDown()) return false;
    WaitABit();
  }
  return true;
}

}  // namespace QTD
