// Where frames come from.
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>

#include "ZynImage.h"

namespace zynview {

// Fills a record that describes `data`, which stays the caller's. A pitch of 0 means lines without padding.
ZynImage MakeRecord(uint32_t pixelType, uint32_t width, uint32_t height, uint32_t linePitch, uint8_t* data);

// Bytes of a line without padding.
uint32_t LineBytes(uint32_t pixelType, uint32_t width);

constexpr double kUsualRate = 25;  // frames per second, where nobody has said a rate

class CameraControls;

// A source delivers frames on the thread that calls `Run`, as a camera does on a thread of its own.
class FrameSource {
 public:
  // Answers false to end the stream. The pixels are good until it returns.
  using Sink = std::function<bool(const ZynImage& frame)>;

  virtual ~FrameSource() = default;

  // Opens the source; `error` tells the user what is wrong when it answers false.
  virtual bool Open(QString* error) = 0;
  // Format and size of the frames; valid after `Open`.
  virtual ZynImage Format() const = 0;
  // What the source is, for the status line.
  virtual QString Description() const = 0;
  // Delivers frames until the sink answers false. A record without pixels only asks whether to go on.
  virtual void Run(const Sink& sink) = 0;

  // What follows may be called by any thread, also while `Run` is under way.

  // A source that can stand still stays on its frame while it is held, delivers it once more at the
  // beginning, and then the frames that are stepped to. Others go on, and the feed drops their frames.
  virtual bool CanHold() const { return false; }
  virtual void Hold(bool) {}
  virtual void Step(int /*frames*/) {}  // backwards with a negative number

  // What went wrong since the last call, one sentence each.
  virtual QStringList TakeProblems() { return {}; }

  // What delivered the frames has gone: none will come before it is opened again.
  virtual bool IsLost() const { return false; }

  // Null for a source without anything to set.
  virtual CameraControls* Controls() { return nullptr; }
};

}  // namespace zynview
