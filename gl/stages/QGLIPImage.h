// The image stage on the card: uploads a picture or passes a texture on, and changes its format on the way.
#pragma once

#include "ZynDisplay.h"
#include "gl/stages/QGLStage.h"

// Two images: one like the source, and one like `output` of `Init`, which is the first where the formats
// agree and nothing is turned. Parameters: "image.color.coef" (factor of the second image; by default that
// between the depths), "image.color.mono" (1 spreads red; by default 1 for monochrome sources),
// "image.flip.vert", all read by `Init`; "readGPU" (each result is brought into memory).
//
// Command "readGPU" brings the last result into memory.
class QGLIPImage : public QGLStage<ZynDisplayQGL::Image> {
 public:
  explicit QGLIPImage(ZynDisplayProcessor* display);
  ~QGLIPImage() override;

  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  uint32_t ExecuteCommand(const char* command) override;

 private:
  uint32_t Prepare(const ZynImage& source, const ZynImage* output);
  uint32_t Run(const ZynImage* source);
  bool Upload(const ZynImage& source);
  QGLImage* Result() const override { return second ? second.get() : target.get(); }

  QTD::PROPERTIES plain;             // for a copy as it is
  std::unique_ptr<QGLImage> second;  // null where the first serves as both
};
