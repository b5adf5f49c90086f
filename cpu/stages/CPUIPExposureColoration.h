// The exposure coloration: marks under-exposed and over-exposed pixels of the display picture.
#pragma once

#include <cstdint>
#include <optional>

#include "QTD/stages/Stage.h"
#include "QTD/stages/UnpackedStage.h"
#include "ZynDisplay.h"

// The values that count are those of the chain's stage "image.unpacked", before correction and overlay: one
// sample of a monochrome image, the sum of the three of an RGB or BGR one. The chain is the component given
// at construction; without it no picture passes.
//
// Parameters: "thres.lo" (pixels below it are marked; negative: 1), "thres.hi" (pixels above it; negative:
// the largest value minus 1), "color.lo" and "color.hi" (0x00BBGGRR).
//
// Any thread may call any operation; one that asks the chain waits for a run that is under way. No operation
// throws.
class CPUIPExposureColoration : public QTD::Stage<ZynDisplayCPU::ExposureColoration> {
 public:
  explicit CPUIPExposureColoration(ZynComponent* parentComponent);
  ~CPUIPExposureColoration() override;

  // `source` is the header of the picture to be marked.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // In place.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  // Counts for "image.unpacked" as well, so that it copies while the coloration is on.
  bool Enable(bool on) override;
  // A text that is no number leaves everything as it was: 1 from `ExecuteCommand` and `Init`, 0 from
  // `RunCommand`.
  uint32_t ExecuteCommand(const char* command) override;
  uint32_t RunCommand(const char* command, QTD::ARGUMENTS* args) override;

 private:
  void ReadParameters(const ZynImage& values);
  bool Apply(const std::optional<ZynImage>& values);
  bool ApplyArguments(QTD::ARGUMENTS& args, const std::optional<ZynImage>& values);
  uint32_t ResetParameters();
  uint32_t Run(const ZynImage* source, ZynImgProcessor* unpacked, const ZynImage* result,
               const std::optional<ZynImage>& info);
  uint32_t MarkPicture(ZynImage picture, ZynImage values);

  // Guarded by `lock`.
  uint32_t lowColor = 0;
  uint32_t highColor = 0;
  int32_t lowThreshold = 0;
  int32_t highThreshold = 0;

  QTD::ChainLink link;
};
