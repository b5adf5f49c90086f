#include "gl/surface/QGLSurfaceRef.h"

#include "QTD/screen/SurfaceText.h"
#include "gl/surface/LivingObjects.h"

QGLSurfaceRef::QGLSurfaceRef(QGLSurface* referenced) : referencedSurface(referenced) {}

QGLSurfaceRef::~QGLSurfaceRef() {
  QGLSurfaceRef::done();
}

bool QGLSurfaceRef::init(QTD::PROPERTIES* list) {
  done();
  const QTD::RMutexLock guard(lock);
  if (!referencedSurface && list) referencedSurface = LivingSurface(list->GetPointer("surface"));
  if (!referencedSurface || !LivingSurface(referencedSurface)) return false;
  const QTD::SizeI newSize{list ? list->GetInt("size.x", "0") : 0, list ? list->GetInt("size.y", "0") : 0};

  // The surface is asked itself: its "context" stays in the list after the context is gone. The functions
  // resolve against the context that is current, so another one than its own will not do.
  QOpenGLContext* const found = referencedSurface->Context();
  if (!found || QOpenGLContext::currentContext() != found) {
    properties.Set("state", "failed");
    return false;
  }
  properties.Merge(&referencedSurface->properties);
  context = found;
  window = list ? LivingWindow(list->GetPointer("window")) : nullptr;
  prepareFunctions();

  size = newSize;
  setArea({0, 0, static_cast<double>(size.width), static_cast<double>(size.height)});
  properties.Set("size", sizeText());
  properties.Set("area", areaText());
  properties.Set("class", "QGLSurfaceRef");
  properties.Set("state", "ready");
  return true;
}

// The context is the other surface's and stays.
bool QGLSurfaceRef::done() {
  const QTD::RMutexLock guard(lock);
  surfaceText.reset();
  context.clear();
  d_ptr = nullptr;
  window.clear();
  lastFlushTime = 0;
  properties.Set("state", "deleted");
  return true;
}

bool QGLSurfaceRef::begin(QTD::PROPERTIES*) {
  return true;
}

void QGLSurfaceRef::end(QTD::PROPERTIES*, bool) {}

void QGLSurfaceRef::flush(QTD::PROPERTIES*) {}
