// The YUV stage: YUV422_8_UYVY to RGB8.
#pragma once

#include <cstdint>

#include "ZynDisplay.h"
#include "cpu/stages/CPUStage.h"

// Parameter, read by `Init`: "image.flip.vert" (turns the mark of the line order, no line is moved).
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`.
class CPUIPYUV2RGB : public CPUStage<ZynDisplayCPU::YUV2RGB> {
 public:
  explicit CPUIPYUV2RGB(ZynComponent* parentComponent);
  ~CPUIPYUV2RGB() override;

  // From here on `Out` gives the output image, black until the first image has come.
  uint32_t Init(const ZynImage* source, const ZynImage* ignored) override;
  // A failed conversion gives a black picture and counts as success; a source of another code is a failure.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* ignored, void* alsoIgnored) override;
  void Release() override;

 private:
  uint32_t Prepare(const ZynImage& source);
  uint32_t Run(const ZynImage* source);

  ZynImage* outputImage = nullptr;  // guarded by `lock`
};
