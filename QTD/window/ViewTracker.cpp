#include "QTD/window/ViewTracker.h"

#include <tuple>

namespace QTD {
namespace {

auto Parts(const ViewState& state) {
  return std::tie(state.picture.x, state.picture.y, state.picture.width, state.picture.height, state.scale,
                  state.position, state.range, state.page, state.hasImage);
}

}  // namespace

bool operator==(const ViewState& one, const ViewState& other) {
  return Parts(one) == Parts(other);
}

bool ViewTracker::IsCurrent(const ViewState& now) {
  std::lock_guard<std::mutex> hold(lock);
  return valid && passes == 0 && now == last;
}

void ViewTracker::BeginPass() {
  std::lock_guard<std::mutex> hold(lock);
  if (passes++ > 0) overlapped = true;
}

// Whether the caller was the last one inside. Passes that overlapped have left nothing to trust.
bool ViewTracker::LeaveLast() {
  if (--passes > 0) return false;
  if (overlapped) valid = false;
  return true;
}

void ViewTracker::EndPass(const ViewState& seen) {
  std::lock_guard<std::mutex> hold(lock);
  if (!LeaveLast()) return;
  valid = !overlapped;
  overlapped = false;
  last = seen;
}

void ViewTracker::Abandon() {
  std::lock_guard<std::mutex> hold(lock);
  if (LeaveLast()) overlapped = false;
  valid = false;
}

void ViewTracker::EndStore() {
  std::lock_guard<std::mutex> hold(lock);
  if (LeaveLast()) overlapped = false;
}

}  // namespace QTD
