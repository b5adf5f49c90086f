// The controller behind a stage on the card, and the surface that the stage works on.
#pragma once

class QGLSurface;
class ZynDisplayProcessor;

// Only a controller of this library is accepted, by the text of its "class" and by its type; any other counts
// as none.
class StageOwner {
 public:
  explicit StageOwner(ZynDisplayProcessor* display);

  // The surface that the controller's "surface" names; null without an owner or when none lies there. GUI
  // thread.
  QGLSurface* Surface() const;

 private:
  ZynDisplayProcessor* display;  // not owned
};
