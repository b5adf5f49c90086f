// The exposure coloration on the card: marks under-exposed and over-exposed pixels of the display picture.
#pragma once

#include <optional>

#include "QTD/stages/UnpackedStage.h"
#include "ZynDisplay.h"
#include "gl/passes/QGLExposureColoration.h"
#include "gl/stages/QGLStage.h"

// The values that count are those of the chain's stage "image.unpacked": one sample of a monochrome image,
// the sum of the three of an RGB or BGR one. The chain is the component given at construction; without it
// each run answers 8.
//
// Parameters: "thres.lo" (pixels below it are marked; negative: 1), "thres.hi" (pixels above it; negative:
// the largest value minus 1, three times that for three channels), "color.lo" and "color.hi" (0x00BBGGRR),
// "image.color.mono". `Init` alone reads them: the apply commands change nothing, unlike those of the
// processor's stage. This is kept. Commands do not throw: an argument that is no number ends one with 0.
class QGLIPExposureColoration : public QGLStage<ZynDisplayQGL::ExposureColoration> {
 public:
  QGLIPExposureColoration(ZynDisplayProcessor* display, ZynComponent* chainComponent);
  ~QGLIPExposureColoration() override;

  // 0 also where the input's texture could not be made: each run then answers 8.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // A disabled stage copies.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  // "enable", "disable", "params.apply", "params.reset", "readGPU"; others do nothing.
  uint32_t ExecuteCommand(const char* command) override;
  // "cmd.enable" ("enabled"; answers 0), "cmd.params.apply", "cmd.params.reset", "readGPU".
  uint32_t RunCommand(const char* command, QTD::ARGUMENTS* args) override;

 private:
  uint32_t Prepare(const ZynImage& source, const std::optional<ZynImage>& values);
  bool SetThresholds(const ZynImage& values);
  uint32_t Run(const ZynImage* source, const ZynImage* values);
  bool BindPicture(const ZynImage& picture);
  uint32_t WaitForPass();
  uint32_t ResetByCommand(QTD::ARGUMENTS* args);

  std::unique_ptr<RenderObjects::QGLExposureColoration> pass;
  QTD::PROPERTIES passArguments;  // of each picture; kept, so that a picture costs no memory
  QTD::ChainLink link;
};
