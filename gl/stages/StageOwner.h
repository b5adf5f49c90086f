// The controller behind a stage on the card, and the surface that the stage works on.
#pragma once

class QGLSurface;
class ZynDisplayProcessor;

// Only a controller of this library is accepted, one that exists and by the text of its "class"; any other
// counts as none, and so does one that has gone since.
class StageOwner {
 public:
  explicit StageOwner(ZynDisplayProcessor* display);

  // The surface that the controller's "surface" names; null without an owner or when none lies there. GUI
  // thread.
  QGLSurface* Surface() const;

 private:
  ZynDisplayProcessor* display;  // not owned
};
