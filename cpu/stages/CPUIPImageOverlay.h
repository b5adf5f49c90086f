// The overlay stage: burns text into the image that passes the chain, in place.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "QTD/screen/DrawObjects.h"
#include "ZynDisplay.h"
#include "cpu/screen/MEMSurface.h"
#include "cpu/stages/CPUStage.h"

// Rectangles are kept and listed like texts, but never painted: the surface over a memory image draws text
// alone. Text is drawn on monochrome, RGB and BGR images of whole samples.
//
// Parameters, the arguments of `ExecuteCommand`: "objectID", "text.text", "text.pos.x", "text.pos.y",
// "text.clr", "text.font", "rect.x", "rect.y", "rect.w", "rect.h", "line.clr", "line.width", "enabled".
//
// Any thread may call any operation. Commands do not wait for a run, but for the drawing in it.
class CPUIPImageOverlay : public CPUStage<ZynDisplayCPU::ImageOverlay> {
 public:
  explicit CPUIPImageOverlay(ZynComponent* parentComponent);
  ~CPUIPImageOverlay() override;

  // Objects live until the next `Init` or `Release`. Needs a QGuiApplication, for the fonts.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  uint32_t ExecuteCommand(const char* command) override;

  uint32_t RunCommand(const char* command, QTD::ARGUMENTS* args) override;
  bool SetDefaults(QTD::PROPERTIES* properties) override;
  bool SetTextVariables(QTD::PROPERTIES* properties) override;
  std::string AddText(const char* text, int x, int y, QTD::PROPERTIES* properties) override;
  bool DeleteObject(const std::string& id) override;
  std::string AddRect(int x, int y, int width, int height, QTD::PROPERTIES* properties) override;

 protected:
  std::unique_ptr<MEMSurface> surface;  // null before `Init`; guarded by `lock`
  QTD::DrawObjects store;               // has locks of its own, behind `lock`

 private:
  uint32_t Prepare(const ZynImage& format);
  uint32_t Run(const ZynImage* source);
  void Draw(const ZynImage& source);

  // The commands; `values` are the arguments of the caller, or the stage's own parameters.
  std::string AddTextFrom(QTD::ARGUMENTS& values);
  std::string AddRectFrom(QTD::ARGUMENTS& values);
  bool ApplyParameters();
};
