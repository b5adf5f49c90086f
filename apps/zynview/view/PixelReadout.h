// What stands under the mouse: position in the picture, and the camera's own sample.
#pragma once

#include <QPoint>
#include <QString>
#include <optional>

#include "ZynDisplay.h"
#include "sources/FrameKeeper.h"

namespace zynview {

// GUI thread.
class PixelReadout {
 public:
  // Neither is owned.
  PixelReadout(ZynDisplayProcessor* target, FrameKeeper* frameKeeper)
      : display(target), keeper(frameKeeper) {}

  void MoveTo(double x, double y);  // in pixels of the display's window
  void Leave() { pointing = false; }
  bool IsPointing() const { return pointing; }

  // The image pixel under the mouse; nothing when the mouse is not on the picture.
  std::optional<QPoint> Place() const;

  // The picture may have moved under the mouse, or another frame have come: asked anew each time. Empty when
  // the mouse is not on the picture. Asks for a newer frame.
  QString Text();

 private:
  ZynDisplayProcessor* display;
  FrameKeeper* keeper;
  bool pointing = false;
  double windowX = 0, windowY = 0;
};

}  // namespace zynview
