// The coordinate systems of a view, and the one map between them: to a fraction of the picture and back. What
// the screen computes with positions is derived from these two functions.
#pragma once

namespace QTD {

enum class CoordinateSystem { kBase, kWindow, kImage, kScreen };

// By name, without regard to case: "base", "win", "img", "scr". False for an unknown, empty or null name.
bool FindCoordinateSystem(const char* name, CoordinateSystem* found);

// One axis of a view:
//
//        0          pictureStart                                     windowLength
//   win  |--------------|==================================|--------------|
//   scr                 0                            pictureLength
//   img                 0                             imageLength
//   fraction            0                                  1
struct ViewAxis {
  double pictureStart;   // in window pixels
  double pictureLength;  // in window pixels
  double imageLength;    // in image pixels
  double scale;          // image pixels per window pixel

  // A point, or a length where `position` is false (only "win" tells the two apart). Zero lengths give 0; a
  // value that is not finite is held first, so that neither function makes an infinity.
  double ToFraction(double value, CoordinateSystem system, bool position) const;
  double FromFraction(double fraction, CoordinateSystem system, bool position) const;
};

}  // namespace QTD
