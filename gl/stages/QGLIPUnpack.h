// The unpack stage on the card: samples of 10 and 12 bits, bit by bit in a row, become words of 16 bits.
#pragma once

#include <string>

#include "ZynDisplay.h"
#include "gl/passes/QGLUnpackU3V.h"
#include "gl/stages/QGLStage.h"
#include "gl/surface/QGLSurfaceRef.h"

// The p formats alone, whose samples follow each other without gaps; others are refused with 3, and the chain
// takes the processor's stage. Samples keep their values. Parameter "image.flip.vert", read by `Init`.
class QGLIPUnpack : public QGLStage<ZynDisplayQGL::Unpack> {
 public:
  explicit QGLIPUnpack(ZynDisplayProcessor* display);
  ~QGLIPUnpack() override;

  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // The rows of a picture in memory may be padded.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

 private:
  uint32_t Prepare(const ZynImage& source);
  uint32_t Run(const ZynImage* source);
  ZynImage WithTruePitch(const ZynImage& source);

  const std::string ownName = "unpack.gpu";  // the common one stays empty
  std::unique_ptr<QGLSurfaceRef> ownSurface;
  std::unique_ptr<RenderObjects::QGLUnpackU3V> pass;
};
