#include "sources/Errands.h"

#include <utility>

namespace zynview {

Errands::~Errands() {
  for (Errand& each : errands) each.thread.join();
}

void Errands::Do(std::function<void()> errand) {
  for (auto each = errands.begin(); each != errands.end();) {
    if (!each->done) {
      ++each;
      continue;
    }
    each->thread.join();
    each = errands.erase(each);
  }
  Errand& place = errands.emplace_back();
  place.thread = std::thread([&done = place.done, call = std::move(errand)]() mutable {
    call();
    call = nullptr;
    done = true;
  });
}

}  // namespace zynview
