#include "sources/Preparation.h"

namespace zynview {

bool Preparation::Ask(const ZynImage& format) {
  std::unique_lock<std::mutex> guard(lock);
  if (closed) return false;
  wanted = format;
  wanted.imageData = nullptr;
  wanted.ownedData = nullptr;
  wanted.attachments = nullptr;
  ++asked;
  waiting = true;
  answered = false;
  call.Ask();
  changed.wait(guard, [this] { return closed || answered; });
  return answered && good;
}

void Preparation::Answer() {
  std::unique_lock<std::mutex> guard(lock);
  if (closed || !waiting) return;
  waiting = false;
  const uint64_t number = asked;
  const ZynImage format = wanted;
  guard.unlock();
  const bool result = prepare(format);
  guard.lock();
  if (closed || number != asked) return;
  answered = true;
  good = result;
  changed.notify_all();
}

void Preparation::Open() {
  const std::lock_guard<std::mutex> guard(lock);
  closed = false;
}

void Preparation::Close() {
  const std::lock_guard<std::mutex> guard(lock);
  closed = true;
  ++asked;  // an answer that is under way is out of date, even when it is opened again
  waiting = answered = false;
  changed.notify_all();
}

}  // namespace zynview
