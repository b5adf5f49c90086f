#include "gl/passes/RenderObject.h"

namespace QTD {

RenderObject::~RenderObject() {
  RenderObject::Release();
}

void RenderObject::Release() {
  const RMutexLock guard(lock);
  parameters.Clear();
  out = nullptr;
  sourceInfo = nullptr;
  outputInfo = nullptr;
}

bool RenderObject::Prepare() {
  return true;
}

bool RenderObject::Init(const ZynImage*, PROPERTIES*) {
  return true;
}

bool RenderObject::Render(const ZynImage*, PROPERTIES*) {
  return true;
}

ZynImage* RenderObject::Out() {
  return out;
}

ZynImage* RenderObject::GetImageInfo(bool source) {
  return source || !outputInfo ? sourceInfo : outputInfo;
}

}  // namespace QTD
