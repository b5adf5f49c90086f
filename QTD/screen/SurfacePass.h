// One use of a drawing surface.
#pragma once

#include <cstdint>

class QTDSurface;

// `begin` at construction and `end` on the way out of the scope. A null surface is left alone. Never throws.
class SurfacePass {
 public:
  enum Purpose {
    kDrawing,
    kDeletion  // what lies on a card can be deleted also where nothing can be drawn any more
  };
  explicit SurfacePass(QTDSurface* usedSurface, Purpose purpose = kDrawing);
  ~SurfacePass();
  SurfacePass(const SurfacePass&) = delete;
  SurfacePass& operator=(const SurfacePass&) = delete;

  // Whether the surface has begun; true also without one.
  explicit operator bool() const { return begun; }

 private:
  QTDSurface* surface;
  uint64_t serial = 0;  // of the surface
  bool begun;
};
