// The demosaicing stage: turns a Bayer image into three channels.
#pragma once

#include <cstdint>

#include "QTD/stages/Stage.h"
#include "ZynDemosaicing.h"
#include "ZynDisplay.h"

// The stage makes, prepares and drives a demosaicing component, which interpolates.
//
// Parameters, read by `Init`: "BayerAlgType" (the component's method; absent is 0) and "image.flip.vert"
// (turns the mark of the line order, no line is moved).
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`. No operation throws.
class CPUIPBayer : public QTD::Stage<ZynDisplayCPU::Bayer> {
 public:
  explicit CPUIPBayer(ZynComponent* parentComponent);
  ~CPUIPBayer() override;

  // `output`, which may be null, only chooses the channel order: BGR for a header of such a code, else RGB.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // A failure of the component is reported as 9, whatever its own code is.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

  // "params.apply" and "params.reset" only tell whether the stage is ready: 0, or 1 when it is not.
  uint32_t ExecuteCommand(const char* commandName) override;

 protected:
  // Where components come from and where they go.
  struct Interpolations {
    ZynBayer* (*create)();
    void (*destroy)(ZynBayer*);
  };
  CPUIPBayer(ZynComponent* parentComponent, const Interpolations& origin);

 private:
  struct Method;
  Method ReadMethod();
  uint32_t Prepare(const ZynImage& source, bool blueFirst, const Method& method);
  uint32_t PrepareInterpolation(const ZynImage& source, const Method& method);
  uint32_t Run(const ZynImage* source, ZynImage* output);

  const Interpolations interpolations;
  ZynImage* outputImage = nullptr;    // the stage's own result; guarded by `lock`
  ZynBayer* interpolation = nullptr;  // owned; guarded by `lock`
};
