#include "gl/surface/ActiveSurface.h"

#include <QCoreApplication>
#include <QThread>

#include "gl/surface/LivingObjects.h"

ActiveSurface::ActiveSurface(const void* usedSurface) : surface(LivingSurface(usedSurface)) {
  if (!surface || surface->isActive()) return;
  begun = surface->begin(nullptr);
  if (!surface->isActive()) UseAnotherWindow();
}

void ActiveSurface::UseAnotherWindow() {
  context = surface->Context();
  if (!QCoreApplication::instance() || !context || context->thread() != QThread::currentThread() ||
      QOpenGLContext::currentContext())
    return;
  spare = std::make_unique<QOffscreenSurface>();
  spare->setFormat(context->format());
  spare->create();
  if (!spare->isValid() || !context->makeCurrent(spare.get())) spare.reset();
}

ActiveSurface::~ActiveSurface() {
  if (spare && context && context->surface() == spare.get()) context->doneCurrent();
  if (begun) surface->end(nullptr, false);
}
