// A picture file as a camera frame.
#pragma once

#include <QString>
#include <cstdint>

#include "sources/FrameKeeper.h"

namespace zynview {

// Reads a picture that Qt reads, and PGM and PPM in their full depth. With a `pixelType` of 0 it becomes
// Mono8 or RGB8, and one with more than 8 bits Mono10 to Mono16 or RGB10 to RGB16, with its own values; else
// it is drawn in that format, as a camera would deliver it. Any thread. False, and why, with the file's name.
bool LoadPicture(const QString& file, uint32_t pixelType, OwnFrame* frame, QString* error);

}  // namespace zynview
