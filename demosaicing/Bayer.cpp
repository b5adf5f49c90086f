#include "ZynDemosaicing.h"

ZynBayer* ZynBayer::CreateComponent() {
  return nullptr;
}

void ZynBayer::DeleteComponent(ZynBayer*) {}
