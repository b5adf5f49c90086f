#include "gl/surface/LivingObjects.h"

#include <QGuiApplication>
#include <QWindow>

#include "QTD/frame/LivePointers.h"
#include "gl/surface/QGLSurface.h"

QWindow* LivingWindow(void* pointer) {
  auto* const window = static_cast<QWindow*>(pointer);
  return window && QGuiApplication::allWindows().contains(window) ? window : nullptr;
}

QGLSurface* LivingSurface(const void* pointer) {
  return QTD::LivePointers<QGLSurface>::Instance().Find(pointer);
}
