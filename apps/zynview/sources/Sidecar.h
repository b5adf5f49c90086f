// The small text file beside a raw frame that says how its bytes are to be read.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

#include "ZynImage.h"

namespace zynview {

// A frame has at most so many bytes: what a sidecar or a picture's header claims beyond it is not believed.
constexpr uint64_t kMostFrameBytes = uint64_t{1} << 30;

// NAME.json beside NAME.raw.
struct Sidecar {
  uint32_t pixelType = 0, width = 0, height = 0;
  uint32_t linePitch = 0;  // bytes from line to line in the file
  uint32_t origin = 0;     // 1: the first line is the bottom one of the picture
  uint64_t imageID = 0, timestamp = 0;
  QString source;  // what the frame came from
  QString date;    // when it was saved, ISO 8601

  uint64_t FileBytes() const { return uint64_t{linePitch} * height; }
};

QByteArray WriteSidecar(const Sidecar& sidecar);

// Never trusts the text: false, with the `error` that tells what is wrong with it, for anything but an object
// with a known format and a size that makes a frame.
bool ReadSidecar(const QByteArray& text, Sidecar* sidecar, QString* error);

// The other file of the pair.
QString SidecarFileOf(const QString& rawFile);
QString RawFileOf(const QString& sidecarFile);

}  // namespace zynview
