// The overlay stage: burns text into the image that passes the chain, in place.
#pragma once

#include <cstdint>
#include <memory>

#include "QTD/stages/OverlayStage.h"
#include "ZynDisplay.h"
#include "cpu/screen/MEMSurface.h"

// Rectangles are kept and listed like texts, but never painted: the surface over a memory image draws text
// alone. Text is drawn on monochrome, RGB and BGR images of whole samples. Parameters and threads: see
// QTD::OverlayStage.
class CPUIPImageOverlay : public QTD::OverlayStage<ZynDisplayCPU::ImageOverlay> {
 public:
  explicit CPUIPImageOverlay(ZynComponent* parentComponent);
  ~CPUIPImageOverlay() override;

  // Objects live until the next `Init` or `Release`. Needs a QGuiApplication, for the fonts.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

 protected:
  std::unique_ptr<MEMSurface> surface;  // null before `Init`; guarded by `lock`

 private:
  uint32_t Prepare(const ZynImage& format);
  uint32_t Run(const ZynImage* source);
  void Draw(const ZynImage& source);
};
