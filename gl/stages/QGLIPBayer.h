// The Bayer stage on the card.
#pragma once

#include <string>

#include "ZynDisplay.h"
#include "gl/passes/QGLBayerMHC.h"
#include "gl/stages/QGLStage.h"

// A Bayer mosaic of whole samples becomes RGB, or BGR where `output` of `Init` names a BGR code. Parameters,
// read by `Init`: "image.flip.vert" (1 turns the picture), "image.color.coef" (factor on each sample).
class QGLIPBayer : public QGLStage<ZynDisplayQGL::Bayer> {
 public:
  explicit QGLIPBayer(ZynDisplayProcessor* display);
  ~QGLIPBayer() override;

  // 0 also where a texture or the target could not be made: the stage is not ready then, and each run
  // answers 8.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // Runs whether the stage is enabled or not.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

 private:
  uint32_t Prepare(const ZynImage& source, uint32_t targetCode);
  uint32_t Run(const ZynImage* source);

  const std::string ownName = "bayer.gpu";  // the common one stays empty
  std::unique_ptr<RenderObjects::QGLBayerMHC> pass;
};
