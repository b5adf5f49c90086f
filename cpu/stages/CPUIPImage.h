// The image stage: copies an image and converts depth, channels and channel order on the way.
#pragma once

#include <cstdint>

#include "QTD/frame/RMutex.h"
#include "QTD/image/HeldRecords.h"
#include "QTD/stages/Stage.h"
#include "ZynDisplay.h"
#include "cpu/stages/ImageConversion.h"
#include "cpu/stages/UntouchedCopy.h"

// Parameters, read by `Init`: "depth" (8 reduces a deeper source where no output header is given),
// "image.flip.vert" (turns the mark of the line order, no line is moved), "external" (the caller brings the
// output of every `ProcessImage`).
//
// Any thread may call any operation. The information records and the output image live until the next `Init`
// or `Release`.
class CPUIPImage : public QTD::Stage<ZynDisplayCPU::Image> {
 public:
  explicit CPUIPImage(ZynComponent* parentComponent);
  ~CPUIPImage() override;

  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // A failed conversion leaves the target as it was, and `Out` gives that target all the same.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  // Under the lock that guards them here, not the stage's.
  ZynImage* Out() override;
  ZynImage* GetImageInfo(bool source) override;

  // Asks for a copy of each result, which later stages that work in place do not reach; `Release` takes that
  // back. There is none of mosaics, as nothing works in place on them.
  void KeepUntouched(bool on);
  // The copy of the last result, null when there is none; good as long as it is held.
  const ZynImage* Untouched(QTD::RecordHold& hold);

 private:
  enum ConversionFlag : uint32_t { kSwap = 1, kReduce = 2, kToColour = 4 };
  uint32_t Prepare(const ZynImage& source, uint32_t targetType, const ConversionSteps& steps);
  uint32_t SelectTarget(ZynImage* output, ZynImage** target);
  uint32_t Run(const ZynImage* source, ZynImage* output);

  ZynImage* outputImage = nullptr;  // the stage's own result; null while "external" is set
  uint32_t conversionFlags = 0;
  ConversionLimits limits;
  SourceCopy aside;
  UntouchedCopy untouched;

  // The component's lock. Guards the members above, the information records and `out`. `Init` and `Release`
  // take the stage's `lock` first, `ProcessImage` takes this one alone.
  QTD::RMutex componentLock;
};
