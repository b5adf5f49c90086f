#include "gl/surface/ActiveSurface.h"

#include "gl/surface/LivingObjects.h"

ActiveSurface::ActiveSurface(const void* usedSurface) : surface(LivingSurface(usedSurface)) {
  if (!surface || surface->isActive()) return;
  QTD::PROPERTIES list;
  list.Set("deletion", "1");
  begun = surface->begin(&list);
}

ActiveSurface::~ActiveSurface() {
  if (begun) surface->end(nullptr, false);
}
