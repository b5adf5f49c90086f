// The context of a surface, for what has to be deleted on it.
#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QPointer>
#include <memory>

#include "gl/surface/QGLSurface.h"

// Owners delete between `begin` and `end`; where one does not, or its surface is gone, this makes the context
// current for the scope, or is false. A window that has lost its native one does not keep its context's
// names. GUI thread.
class ActiveSurface {
 public:
  // May point to where a surface was.
  explicit ActiveSurface(const void* usedSurface);
  ~ActiveSurface();
  ActiveSurface(const ActiveSurface&) = delete;
  ActiveSurface& operator=(const ActiveSurface&) = delete;

  explicit operator bool() const { return surface && surface->isActive(); }
  QGLSurface* operator->() const { return surface; }

 private:
  void UseAnotherWindow();

  QGLSurface* surface;
  QPointer<QOpenGLContext> context;
  bool begun = false;
  std::unique_ptr<QOffscreenSurface> spare;  // in place of the window
};
