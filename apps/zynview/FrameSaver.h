// Writes a camera frame to a file: its bytes, or the picture that the display makes of it.
#pragma once

#include <QString>

#include "FrameKeeper.h"
#include "ZynDisplay.h"

namespace zynview {

// Such as zynview-000042.png, and for raw bytes zynview-000042-1280x960-BayerRG12p.raw; with a number behind
// it where such a file is there already.
QString FreeFileName(const QString& folder, const ZynImage& frame, bool raw);

// Both answer an empty text and the `file` written, or what is wrong. GUI thread.
// A raw frame is what the camera delivered, line by line without padding: the viewer opens it again.
QString SaveRawFrame(const OwnFrame& frame, const QString& folder, QString* file);
// The whole frame, in all its pixels, as the display's stages make it; whatever the window shows of it.
QString SaveWholePicture(OwnFrame frame, ZynDisplayProcessor* display, const QString& folder, QString* file);

}  // namespace zynview
