// The colour correction on the card: gain, offset and gamma for each channel.
#pragma once

#include "ZynDisplay.h"
#include "gl/passes/QGLColorCorrection.h"
#include "gl/stages/QGLStage.h"

// Computes with values of 0 to 1. Parameters act once they are applied, by "cmd.params.apply" or
// "params.apply": one picture never sees half a change. They are "gain.r", "gain.g", "gain.b" (multipliers),
// "offs.r", "offs.g", "offs.b" (added after the gain, fractions of the full range), "gamma" (exponent),
// "debug.mode" (1: automatic correction), "debug.output", "image.color.coef" (factor before anything else),
// "flip.vert" (read by "params.apply") and "image.flip.vert" (read by `Init` and "cmd.params.apply").
//
// Commands of `ExecuteCommand`: "params.apply", "params.reset", "enable", "disable", "readGPU"; others do
// nothing. Commands do not throw: a text that is no number ends one with 1, or 0 from `RunCommand`, and
// changes nothing.
class QGLIPColorCorrection : public QGLStage<ZynDisplayQGL::ColorCorrection> {
 public:
  explicit QGLIPColorCorrection(ZynDisplayProcessor* display);
  ~QGLIPColorCorrection() override;

  // Resets the correction. 0 also where the input's texture could not be made: each run then answers 8.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // A disabled stage copies.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  uint32_t ExecuteCommand(const char* command) override;
  // "cmd.params.apply" (arguments stand before the parameters, which do not change), "cmd.params.reset" (with
  // "apply" 1 also applies), "cmd.enable" ("enabled"; answers 0), "readGPU".
  uint32_t RunCommand(const char* command, QTD::ARGUMENTS* args) override;

 private:
  uint32_t Prepare(const ZynImage& source);
  uint32_t Run(const ZynImage* source);

  // The commands: bare codes.
  uint32_t Apply();
  uint32_t ApplyArguments(QTD::ARGUMENTS* args);
  uint32_t ResetParameters();
  uint32_t ResetByCommand(QTD::ARGUMENTS* args);

  std::unique_ptr<RenderObjects::QGLColorCorrection> pass;
};
