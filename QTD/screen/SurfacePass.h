// One use of a drawing surface.
#pragma once

class QTDSurface;

// `begin` at construction and `end` on the way out of the scope. A null surface is left alone. Never throws.
class SurfacePass {
 public:
  explicit SurfacePass(QTDSurface* usedSurface);
  ~SurfacePass();
  SurfacePass(const SurfacePass&) = delete;
  SurfacePass& operator=(const SurfacePass&) = delete;

 private:
  QTDSurface* surface;
};
