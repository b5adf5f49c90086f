// The YUV stage: YUV422_8_UYVY to RGB8.
#pragma once

#include <cstdint>

#include "ZynDisplay.h"
#include "cpu/stages/OwnImageStage.h"

// Parameter, read by `Init`: "image.flip.vert" (turns the mark of the line order, no line is moved). From
// `Init` on `Out` gives the output image, black until the first image has come. A failed conversion gives a
// black picture and counts as success; a source of another code is a failure.
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`.
class CPUIPYUV2RGB : public OwnImageStage<ZynDisplayCPU::YUV2RGB> {
 public:
  explicit CPUIPYUV2RGB(ZynComponent* parentComponent);

 private:
  bool Takes(uint32_t pixelType) const override;
  uint32_t ResultType(uint32_t pixelType) const override;
  bool Fill(const ZynImage& source, const ZynImage& output) const override;
};
