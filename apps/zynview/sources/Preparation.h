// How the thread of the frames has the display prepared for another format: on the GUI thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "ZynImage.h"
#include "sources/GuiCall.h"

namespace zynview {

class Preparation {
 public:
  // `prepare` is called on the GUI thread, from its event loop, and may run an event loop of its own.
  using Prepare = std::function<bool(const ZynImage& format)>;

  // GUI thread, both.
  explicit Preparation(Prepare function) : prepare(std::move(function)) {}
  ~Preparation() { Close(); }

  // The thread of the frames: waits for the answer, and false when there will be none. The record is copied,
  // and its pixels are not looked at.
  bool Ask(const ZynImage& format);

  // Any thread. While it is closed nobody waits, and `prepare` is not called any more, except for a call that
  // has begun.
  void Open();
  void Close();

 private:
  void Answer();  // GUI thread

  const Prepare prepare;
  std::mutex lock;  // guards what follows
  std::condition_variable changed;
  bool closed = false, answered = false, good = false;
  bool waiting = false;  // there is a question that nobody has begun to answer
  uint64_t asked = 0;    // its number, or that of the last one
  ZynImage wanted{};
  GuiCall call{[this] { Answer(); }};  // last, so that it goes first
};

}  // namespace zynview
