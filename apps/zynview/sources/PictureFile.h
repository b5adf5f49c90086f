// A picture file as a camera frame.
#pragma once

#include <QString>
#include <cstdint>

#include "sources/FrameKeeper.h"

namespace zynview {

// Reads a picture that Qt reads. With a `pixelType` of 0 grey ones become Mono8 or Mono16, all others RGB8;
// else it is drawn in that format, as a camera would deliver it. Any thread. False, and why, with the file's
// name.
bool LoadPicture(const QString& file, uint32_t pixelType, OwnFrame* frame, QString* error);

}  // namespace zynview
