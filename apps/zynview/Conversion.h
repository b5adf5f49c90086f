// Frames of a source into picture files, without a window.
#pragma once

#include <QTextStream>

#include "Options.h"
#include "ZynDisplay.h"
#include "sources/FrameSource.h"

namespace zynview {

// Opens the source; converts all frames of files, and the first one of a camera or a scene. What goes wrong
// is written to `messages`. Nothing is written where a picture cannot be written in that format, or would
// take the place of a file that is read. Answers the program's exit code: 0, or 2 when a frame is missing.
// GUI thread.
int ConvertFrames(FrameSource& source, ZynDisplayProcessor* display, const Options& options,
                  QTextStream& messages);

// Where the picture of the frame `number` (from 0) of `count` goes, when `out` is what the user wrote and
// `name` what the frame is called. A folder is one that is there, or ends with a slash, or has no ending
// while there are several frames.
QString PictureFileFor(const QString& out, const QString& name, uint64_t number, uint64_t count);

}  // namespace zynview
