// The colour correction stage: gain, offset and gamma for each channel, through tables and in place.
#pragma once

#include <array>
#include <cstdint>

#include "QTD/stages/Stage.h"
#include "ZynDisplay.h"
#include "cpu/stages/ColorLUT.h"

// Writes into the image that it receives, which may be the host's own. The first table acts on the first
// channel of a pixel: "gain.r" acts on blue in a BGR image.
//
// An active correction of 8-bit images fails with 1: its tables are one entry longer than the image library
// takes. The default setting passes, as it touches no image.
//
// Any thread may call any operation; a change of the parameters falls between two images. No operation
// throws.
class CPUIPColorCorrection : public QTD::Stage<ZynDisplayCPU::ColorCorrection> {
 public:
  explicit CPUIPColorCorrection(ZynComponent* parentComponent);
  ~CPUIPColorCorrection() override;

  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

  // "params.apply" takes the parameters over, "params.reset" sets them back; the tables follow with the next
  // image. A parameter that is no number leaves everything as it was and gives 1.
  uint32_t ExecuteCommand(const char* commandName) override;
  // See `ZynDisplayQT::ColorCorrection`. An argument that is no number leaves everything as it was.
  uint32_t RunCommand(const char* commandName, QTD::ARGUMENTS* args) override;

 private:
  static constexpr size_t kSettings = 7;
  using Settings = std::array<double, kSettings>;  // gains, offsets, gamma

  Settings ReadSettings(const QTD::ARGUMENTS* args);
  void Use(const Settings& settings);
  bool IsNeutral() const;
  uint32_t Prepare(const ZynImage& source);
  uint32_t Run(const ZynImage& source);
  uint32_t ApplyParameters();
  uint32_t ApplyArguments(const QTD::ARGUMENTS* args);
  bool ResetParameters();

  ColorLUT table;  // guarded by `lock`
};
