// One shader pass, as a small image processor on textures.
#pragma once

#include "QTD/frame/Properties.h"
#include "QTD/frame/RMutex.h"
#include "ZynImage.h"

class QGLSurface;

namespace QTD {

// Its owner, a stage, binds the input texture and hands it a target ("output", a `QGLImage*`). GUI thread,
// between `begin` and `end` of the surface; `Lock` guards what commands of other threads change between two
// pictures.
class RenderObject {
 public:
  explicit RenderObject(QGLSurface* usedSurface) : surface(usedSurface) {}
  RenderObject(const RenderObject&) = delete;
  RenderObject& operator=(const RenderObject&) = delete;
  virtual ~RenderObject();

  virtual void Release();
  virtual bool Prepare();
  virtual bool Init(const ZynImage* image, PROPERTIES* list);
  virtual bool Render(const ZynImage* image, PROPERTIES* list);
  virtual ZynImage* Out();  // the target's record; null before `Init`
  virtual ZynImage* GetImageInfo(bool source);

  PROPERTIES& Parameters() { return parameters; }
  RMutex& Lock() { return lock; }

 protected:
  QGLSurface* surface;  // not owned
  PROPERTIES parameters;
  ZynImage* out = nullptr;         // not owned
  ZynImage* sourceInfo = nullptr;  // stays null
  ZynImage* outputInfo = nullptr;  // stays null
  RMutex lock;                     // guards Init, Render and the pass's parameters
};

}  // namespace QTD
