// The end of a chain. Code of the host's runs there, when its stages are released and deleted, and may wait
// for another thread: so this one may hold no lock of the library, nor be inside of a stage. Where that
// cannot be had at once, the end is put off.
#include <QTimer>
#include <utility>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/HostCodeUnderLocks.h"

namespace {

constexpr int kRetryMilliseconds = 1;

}  // namespace

// The caller has given its locks up; those of an outer one are looked after here.
void QTDDisplay::EndChain(std::unique_ptr<QTDProcessor> leaving) {
  if (!leaving || !QTD::HostCodeUnderLocks::IsActive()) return;
  {
    const std::lock_guard<std::mutex> guard(endingLock);
    ending.push_back(std::move(leaving));
  }
  QMetaObject::invokeMethod(
      this, [this] { EndChains(); }, Qt::QueuedConnection);
}

std::vector<std::unique_ptr<QTDProcessor>> QTDDisplay::TakeEnding() {
  const std::lock_guard<std::mutex> guard(endingLock);
  return std::exchange(ending, {});
}

// GUI thread. Comes again as long as host code runs the event loop in the middle of it all.
void QTDDisplay::EndChains() {
  if (!QTD::HostCodeUnderLocks::IsActive()) {
    TakeEnding();
    return;
  }
  {
    const std::lock_guard<std::mutex> guard(endingLock);
    if (ending.empty()) return;
  }
  QTimer::singleShot(kRetryMilliseconds, this, [this] { EndChains(); });
}

// Closes the display of a viewer that went during a walk, when that walk is over and whoever began it has
// given the processing lock up.
void QTDDisplay::CloseLost() {
  std::unique_ptr<QTDProcessor> leaving;
  {
    std::scoped_lock guard(viewLock, convertLock, handlerLock);
    if (viewerLost && walking == 0) leaving = FreeAll();
  }
  EndChain(std::move(leaving));
}
