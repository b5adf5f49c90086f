// The unpack stage: packed monochrome and Bayer formats to one 16-bit word for each sample.
#pragma once

#include <cstdint>

#include "ZynDisplay.h"
#include "cpu/stages/OwnImageStage.h"

// Parameter, read by `Init`: "image.flip.vert" (turns the mark of the line order, no line is moved). From
// `Init` on `Out` gives the output image, black until the first image has come. An image that cannot be
// unpacked, or has another size than prepared, gives a black picture and counts as success; one that is not
// packed at all is a failure.
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`.
class CPUIPUnpack : public OwnImageStage<ZynDisplayCPU::Unpack> {
 public:
  explicit CPUIPUnpack(ZynComponent* parentComponent);

 private:
  bool Takes(uint32_t pixelType) const override;
  uint32_t ResultType(uint32_t pixelType) const override;
  bool Fill(const ZynImage& source, const ZynImage& output) const override;
};
