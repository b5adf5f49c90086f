// Writes a camera frame to a file: its bytes, or the picture that the display makes of it.
#pragma once

#include <QImage>
#include <QString>

#include "ZynDisplay.h"
#include "sources/FrameKeeper.h"

namespace zynview {

// Such as zynview-000042.png, and for raw bytes zynview-000042-1280x960-BayerRG12p.raw; with a number behind
// it where such a file is there already.
QString FreeFileName(const QString& folder, const ZynImage& frame, bool raw);

// These answer an empty text and the `file` written, or what is wrong, and leave no file then. GUI thread.
// A raw frame is what the camera delivered, line by line without padding, with a sidecar beside it: the
// viewer opens it again. `source` tells what it came from.
QString SaveRawFrame(const OwnFrame& frame, const QString& folder, const QString& source, QString* file);
// The whole frame, in all its pixels, as the display's stages make it; whatever the window shows of it.
QString SaveWholePicture(OwnFrame frame, ZynDisplayProcessor* display, const QString& folder, QString* file);
// The same picture, not written yet.
QString MakeWholePicture(OwnFrame frame, ZynDisplayProcessor* display, QImage* picture);

}  // namespace zynview
