#include "cpu/screen/MEMSurface.h"

#include "cpu/screen/MEMSurfaceText.h"

MEMSurface::~MEMSurface() {
  MEMSurface::done();
}

bool MEMSurface::init(QTD::PROPERTIES*) {
  done();
  surfaceText = std::make_unique<MEMSurfaceText>();
  return true;
}

bool MEMSurface::done() {
  surfaceText.reset();
  return true;
}

bool MEMSurface::begin(QTD::PROPERTIES* list) {
  if (!isValid() || !list) return false;
  static_cast<MEMSurfaceText*>(surfaceText.get())
      ->setTarget(static_cast<ZynImage*>(list->GetPointer("image")));
  return true;
}

void MEMSurface::end(QTD::PROPERTIES*, bool) {
  if (surfaceText) static_cast<MEMSurfaceText*>(surfaceText.get())->setTarget(nullptr);
}

bool MEMSurface::isValid() {
  return surfaceText != nullptr;
}

void MEMSurface::rect(int, int, int, int, const ColorValue*, int, int) {}
