// The unpack stage: packed monochrome and Bayer formats to one 16-bit word for each sample.
#pragma once

#include <cstdint>

#include "ZynDisplay.h"
#include "cpu/stages/CPUStage.h"

// Parameter, read by `Init`: "image.flip.vert" (turns the mark of the line order, no line is moved).
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`.
class CPUIPUnpack : public CPUStage<ZynDisplayCPU::Unpack> {
 public:
  explicit CPUIPUnpack(ZynComponent* parentComponent);
  ~CPUIPUnpack() override;

  // From here on `Out` gives the output image, black until the first image has come.
  uint32_t Init(const ZynImage* source, const ZynImage* ignored) override;
  // An image that cannot be unpacked, or has another size than prepared, gives a black picture and counts as
  // success; one that is not packed at all is a failure.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* ignored, void* alsoIgnored) override;
  void Release() override;

 private:
  uint32_t Prepare(const ZynImage& source);
  uint32_t Run(const ZynImage* source);

  ZynImage* outputImage = nullptr;  // guarded by `lock`
};
